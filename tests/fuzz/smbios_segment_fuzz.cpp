// The F0000 segment of any content, searched both ways: by "_SM_" with checksums and by "_DMI_"
// without.
//
// Input: a byte whose lowest bit says that the first entry point's checksums are to be put right,
// then the segment's bytes from its start.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "groups/firmware/ComponentIDGroup.h"
#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/support/FakeHost.h"

namespace {

using namespace quenlor;

constexpr size_t kSegmentStart = 0xF0000;
constexpr size_t kMemorySize = 0x100000;
constexpr size_t kEntryPointSize = 31;

void putChecksum(std::string& memory, size_t from, size_t count, size_t at) {
  memory[at] = 0;
  unsigned sum = 0;
  for (size_t i = from; i < from + count; ++i) sum += static_cast<unsigned char>(memory[i]);
  memory[at] = static_cast<char>(-sum & 0xFF);
}

void putChecksums(std::string& memory) {
  for (size_t at = kSegmentStart; at + 64 < kMemorySize; at += 16) {
    if (memory.compare(at, 4, "_SM_") != 0) continue;
    memory[at + 5] = kEntryPointSize;
    putChecksum(memory, at + 16, 15, at + 21);
    putChecksum(memory, at, kEntryPointSize, at + 4);
    return;
  }
}

template <class Group>
void collect() {
  Group group;
  const std::unique_ptr<VelTable> table(group.getTable());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  test::FakeHost machine;
  std::string& memory = machine.files["/dev/mem"];
  memory.resize(kMemorySize);
  std::copy_n(data + 1, std::min(size - 1, kMemorySize - kSegmentStart),
              memory.begin() + kSegmentStart);
  if ((data[0] & 1) != 0) putChecksums(memory);
  SMBIOSTable::initializeGlobalTable(1);
  collect<ComponentIDGroup>();
  collect<SMBIOSGroup>();
  collect<MemoryModulesGroup>();
  SMBIOSTable::terminateGlobalTable();
  if (machine.openDescriptors() != 0 || machine.openMappings() != 0) std::abort();
  return 0;
}
