#include "readers/dmi/DmiMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <string>

#include "host/Handles.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr char kMemoryPath[] = "/dev/mem";
constexpr char kTablesPath[] = "/sys/firmware/dmi";
constexpr char kSystabPath[] = "/sys/firmware/efi/systab";

constexpr uint64_t kSegmentAddress = 0xF0000;  // where firmware without UEFI puts entry points
constexpr size_t kSegmentSize = 0x10000;
constexpr size_t kLongestEntryPoint = 0x20;
constexpr size_t kTableLimit = 16u << 20;

constexpr uint32_t kSevLeaf = 0x8000001F;
constexpr uint32_t kSevBits = 1u << 1 | 1u << 3 | 1u << 4;  // SEV, SEV-ES, SEV-SNP
constexpr uint32_t kHypervisorBit = 1u << 31;               // of leaf 1, ECX
constexpr uint32_t kTdxLeaf = 0x21;
constexpr uint32_t kTdxEbx = 0x65746E49;  // "Inte"
constexpr uint32_t kTdxEdx = 0x5844546C;  // "lTDX"
constexpr uint32_t kTdxEcx = 0x20202020;

// The processor of a host says that it can encrypt guests, the same leaf in a guest that it does.
bool isSevGuest() {
  CpuidRegisters basic;
  CpuidRegisters sev;
  return host().cpuid(1, 0, &basic) && (basic.ecx & kHypervisorBit) != 0 &&
         host().cpuid(kSevLeaf, 0, &sev) && (sev.eax & kSevBits) != 0;
}

bool isTdxGuest() {
  CpuidRegisters tdx;
  return host().cpuid(kTdxLeaf, 0, &tdx) && tdx.ebx == kTdxEbx && tdx.edx == kTdxEdx &&
         tdx.ecx == kTdxEcx;
}

bool exists(const char* path) {
  struct stat facts {};
  return host().stat(path, &facts) == 0;
}

// A regular file or a FIFO in the device's place is not opened at all.
bool isMemoryDevice() {
  struct stat facts {};
  return host().stat(kMemoryPath, &facts) == 0 && S_ISCHR(facts.st_mode);
}

bool mayReadMemory() {
  return host().geteuid() == 0 && !exists(kTablesPath) && isMemoryDevice() && !isEncryptedGuest();
}

// The open device. Pages that the kernel does not give fail to map.
class Memory {
 public:
  Memory() : m_device(host().open(kMemoryPath, O_RDONLY | O_CLOEXEC, 0)) {}

  explicit operator bool() const { return static_cast<bool>(m_device); }

  // Nothing when they cannot be mapped.
  std::optional<std::string> bytes(uint64_t address, size_t size) const {
    const uint64_t page = static_cast<uint64_t>(host().getpagesize());
    const uint64_t before = address % page;
    const size_t length = static_cast<size_t>(before) + size;
    if (size == 0 || address > INT64_MAX - size) return {};
    void* mapped = host().mmap(length, PROT_READ, MAP_SHARED, m_device.get(),
                               static_cast<off_t>(address - before));
    if (mapped == MAP_FAILED) return {};
    std::string copy(static_cast<const char*>(mapped) + before, size);
    host().munmap(mapped, length);
    return copy;
  }

 private:
  Descriptor m_device;
};

std::optional<DmiEntryPoint> entryPointAt(const Memory& memory, uint64_t address) {
  const auto bytes = memory.bytes(address, kLongestEntryPoint);
  return bytes ? parseDmiEntryPoint(*bytes) : std::nullopt;
}

std::optional<DmiEntryPoint> findEntryPoint(const Memory& memory) {
  const auto systab = readAttribute(kSystabPath);
  const auto address = systab ? parseEfiSystab(*systab) : std::nullopt;
  if (address) return entryPointAt(memory, *address);
  const auto segment = memory.bytes(kSegmentAddress, kSegmentSize);
  return segment ? findDmiEntryPoint(*segment) : std::nullopt;
}

std::optional<uint64_t> addressBehind(std::string_view text, std::string_view label) {
  const size_t start = text.starts_with(label) ? 0 : text.find("\n" + std::string(label));
  if (start == text.npos) return {};
  const size_t digits = text.find("0x", start);
  if (digits == text.npos) return {};
  uint64_t address = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data() + digits + 2, end, address, 16);
  return parsed.ec == std::errc() ? std::optional(address) : std::nullopt;
}

}  // namespace

bool isEncryptedGuest() { return isSevGuest() || isTdxGuest(); }

std::optional<uint64_t> parseEfiSystab(std::string_view systab) {
  const auto address = addressBehind(systab, "SMBIOS3=");
  return address ? address : addressBehind(systab, "SMBIOS=");
}

std::optional<DmiTable> readDmiFromMemory() {
  if (!mayReadMemory()) return {};
  const Memory memory;
  if (!memory) return {};
  const auto entryPoint = findEntryPoint(memory);
  if (!entryPoint) return {};
  const size_t size = std::min<size_t>(entryPoint->tableLength, kTableLimit);
  const auto table = memory.bytes(entryPoint->tableAddress, size);
  return table ? std::optional(decodeDmiTable(*table, *entryPoint)) : std::nullopt;
}

}  // namespace quenlor
