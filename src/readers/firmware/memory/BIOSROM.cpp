#include "readers/firmware/memory/BIOSROM.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <cstdio>
#include <cstring>

#include "host/Handles.h"
#include "host/Host.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/memory/PhysicalMemory.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/com/BIOSROM.cpp";
constexpr TraceFunction at{kSourcePath, "getPhysMem()"};

void* mapPages(const Descriptor& memory, uint64_t start, size_t length) {
  if (!isMappable(memory.get(), start, length)) return kMapFailed;
  return host().mmap(length, PROT_READ, MAP_SHARED, memory.get(), static_cast<off_t>(start));
}

bool copyMapped(void* buf, uint64_t physAddr, size_t count) {
  CcLogWrapper* log = getCcLogHw();
  const Descriptor memory(host().open(kPhysicalMemoryPath, O_RDONLY, 0));
  if (!memory) {
    log->traceMIN(at(), "hardware failed to open memory");
    return false;
  }
  const auto pageOffset = static_cast<size_t>(slm_page_off(physAddr));
  const size_t length = pageOffset + count;
  void* mapped = mapPages(memory, physAddr - pageOffset, length);
  if (mapped == kMapFailed) {
    log->traceMIN(at(), "hardware Unable to mmap memory");
    return false;
  }
  log->traceMAX(at(), "hardware Copy the required chunk");
  std::memcpy(buf, static_cast<const unsigned char*>(mapped) + pageOffset, count);
  log->traceMAX(at(), "hardware munmap()");
  host().munmap(mapped, length);
  log->traceMAX(at(), "hardware Close %s", kPhysicalMemoryPath);
  return true;
}

// Kernels that refuse to map a range may still let it be read.
bool copyRead(void* buf, uint64_t physAddr, size_t count) {
  const FileStream memory = openFile(kPhysicalMemoryPath, "rb");
  if (!memory || fseeko(memory.get(), static_cast<off_t>(physAddr), SEEK_SET) != 0) return false;
  return std::fread(buf, 1, count, memory.get()) == count;
}

}  // namespace

int BIOSROM::getPhysMem(void* buf, int /*size*/, uint64_t physAddr, size_t count) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "getPhysMem");
  const bool copied = copyMapped(buf, physAddr, count) || copyRead(buf, physAddr, count);
  const int result = copied ? 0 : kReadFailed;
  log->traceMidExit(at(), "hardware return %d", result);
  return result;
}

}  // namespace quenlor
