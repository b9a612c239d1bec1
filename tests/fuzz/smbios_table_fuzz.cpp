// A structure table of any content: parsed, every accessor called, dumped, reported by the groups.
//
// Input: minor and major version, number of structures (two bytes, little-endian), then the table.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "groups/firmware/ComponentIDGroup.h"
#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
#include "host/Handles.h"
#include "readers/firmware/smbios/DumpFile.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "readers/firmware/smbios/SMMemory.h"
#include "tests/support/FakeHost.h"

namespace {

using namespace quenlor;

constexpr size_t kHeaderSize = 4;
constexpr char kDumpPath[] = "/dump";

void require(bool condition) {
  if (!condition) std::abort();
}

using Bios = SMBIOSTable0Data;

constexpr bool (Bios::*kBiosTests[])() const = {
    &Bios::isISASupported,          &Bios::isMCASupported,      &Bios::isEISASupported,
    &Bios::isPCISupported,          &Bios::isPCMCIASupported,   &Bios::isPnPSupported,
    &Bios::isAPMSupported,          &Bios::isFlashableBIOS,     &Bios::isBIOSShadowing,
    &Bios::isVLVESASupported,       &Bios::isESCDSupported,     &Bios::isCDBootSupported,
    &Bios::isSelectableBoot,        &Bios::isBIOSROMSocketed,   &Bios::isPCCardBootable,
    &Bios::isEnhancedDiskDrive,     &Bios::isACPISupported,     &Bios::isUSBLegacySupported,
    &Bios::isAGPSupported,          &Bios::isI2OBootSupported,  &Bios::isLS120BootSupported,
    &Bios::isATAPIZipBootSupported, &Bios::is1394BootSupported, &Bios::isSmartBatteryBIOS};

void callBiosAccessors(const Bios& bios) {
  for (const auto test : kBiosTests) (bios.*test)();
  std::free(bios.getReleaseDateAsYYYYMMDD());
  bios.getReleaseDateAsTimeT();
}

// What dump() does not call.
void callAccessors(const SMBIOSTable& table) {
  if (table.getTable0() != nullptr) callBiosAccessors(*table.getTable0());
  for (int i = -1; i <= table.getTable6Total(); ++i) {
    const SMBIOSTable6Data* module = table.getTable6(i);
    if (module != nullptr) require(module->getInstalledSizeMB() >= -1);
  }
  for (int i = -1; i <= table.getTable4Total(); ++i) {
    const SMBIOSTable4Data* processor = table.getTable4(i);
    for (int n = -1; processor != nullptr && n < 20; ++n) processor->stringFromIndex(n);
  }
  require(table.getTable4Total() <= 80 && table.getTable17Total() <= 1000);
  require(table.getTable4PopulatedTotal() <= table.getTable4Total());
  require(table.getTable11() == nullptr);
  table.dump();
}

template <class Group>
void collect() {
  Group group;
  const std::unique_ptr<VelTable> table(group.getTable());
}

void callFacts() {
  unsigned short words[3];
  unsigned int edx = 0;
  SM_Processor(&words[0], &words[1], &words[2], &edx);
  unsigned int limit = 0;
  unsigned int slots = 0;
  require((getMemorySpecs(&limit, &slots) == 1) == (limit + slots != 0));
}

void report(SMBIOSTable& table) {
  globalSMBIOSTable = &table;
  collect<SMBIOSGroup>();
  collect<MemoryModulesGroup>();
  collect<ComponentIDGroup>();
  callFacts();
  globalSMBIOSTable = nullptr;
}

// A revision word with a major version, which tables from a buffer do not have, comes with a file.
void readBack(const SMBIOSTable& original, int revision, test::FakeHost& machine) {
  TableBytes bytes(original.getTotalLength());
  if (bytes.size() > 0) {
    std::memcpy(bytes.data(), original.getData(), static_cast<size_t>(bytes.size()));
  }
  writeDump(openFile(kDumpPath, "w").get(), bytes, original.getNumTables(), revision);
  SMBIOSTable table(kDumpPath);
  require(table.getTotalLength() == original.getTotalLength());
  require(table.getNumTables() == original.getNumTables());
  require(table.getRevision() == revision);
  require(bytes.size() == 0 ||
          std::memcmp(table.getData(), original.getData(), static_cast<size_t>(bytes.size())) == 0);
  table.parseData();
  callAccessors(table);
  machine.files.clear();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kHeaderSize) return 0;
  test::FakeHost machine;
  const int count = data[2] | data[3] << 8;
  const uint8_t bcd = static_cast<uint8_t>(data[1] << 4 | (data[0] & 15));
  // A copy of exactly this size: a read of the caller's bytes past their end is an error.
  const std::vector<unsigned char> bytes(data + kHeaderSize, data + size);
  SMBIOSTable table(bytes.data(), static_cast<int>(bytes.size()), bcd, count);
  table.parseData();
  callAccessors(table);
  report(table);
  readBack(table, data[1] << 8 | data[0], machine);
  return 0;
}
