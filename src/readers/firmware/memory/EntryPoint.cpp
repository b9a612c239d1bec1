#include "readers/firmware/memory/EntryPoint.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

#include "readers/firmware/memory/PhysicalMemory.h"

namespace quenlor {
namespace {

constexpr char kAnchor[] = {'_', 'S', 'M', '_'};
constexpr size_t kParagraph = 16;  // entry points lie on 16-byte boundaries
constexpr size_t kLengthOffset = 5;
constexpr size_t kIntermediateOffset = 16;
constexpr size_t kIntermediateLength = 15;
constexpr unsigned kOldestMajorVersion = 2;

using Bytes = std::span<const unsigned char>;

uint32_t readWord(const unsigned char* at) { return at[0] | static_cast<uint32_t>(at[1]) << 8; }

bool sumsToZero(Bytes bytes, size_t from, size_t count) {
  if (from + count > bytes.size()) return false;
  unsigned char sum = 0;
  for (unsigned char byte : bytes.subspan(from, count))
    sum = static_cast<unsigned char>(sum + byte);
  return sum == 0;
}

// Bytes of a mapping that can be read from the address asked for: all of its pages, not only the
// length asked for.
size_t mappedBytes(uint64_t address, uint64_t length) {
  const uint64_t offset = slm_page_off(address);
  return static_cast<size_t>(slm_page_align(offset + length, kAlignUp) - offset);
}

// `bytes` runs from the anchor to the end of the mapping.
bool readEntryPoint(Bytes bytes, smbios_table_entry_point* ep) {
  if (!sumsToZero(bytes, 0, bytes[kLengthOffset])) return false;
  if (!sumsToZero(bytes, kIntermediateOffset, kIntermediateLength)) return false;
  smbios_table_entry_point found;
  std::memcpy(found.bytes, bytes.data(), std::min(bytes.size(), sizeof found.bytes));
  if (found.majorVersion() < kOldestMajorVersion) return false;
  *ep = found;
  return true;
}

// The table behind one position.
class TableCursor {
 public:
  explicit TableCursor(Bytes table) : m_rest(table) {}

  bool atEnd() const { return m_rest.empty(); }
  unsigned char type() const { return m_rest[0]; }
  Bytes structure() const { return m_rest; }
  Bytes strings() const { return m_rest.subspan(std::min(formattedLength(), m_rest.size())); }

  // Moves behind the two zeros that end the string set; false when there are none.
  bool skipStructure() {
    const std::optional<size_t> end = endOfStrings(strings());
    if (!end) return false;
    m_rest = strings().subspan(*end);
    return true;
  }

 private:
  size_t formattedLength() const { return m_rest.size() < 2 ? m_rest.size() : m_rest[1]; }

  static std::optional<size_t> endOfStrings(Bytes strings) {
    for (size_t i = 0; i + 1 < strings.size(); ++i) {
      if (strings[i] == 0 && strings[i + 1] == 0) return i + 2;
    }
    return std::nullopt;
  }

  Bytes m_rest;
};

std::string takeString(Bytes& strings) {
  const auto end = std::find(strings.begin(), strings.end(), 0);
  std::string text(strings.begin(), end);
  strings = strings.subspan(std::min(text.size() + 1, strings.size()));
  return text;
}

int copySystemInformation(const TableCursor& cursor, smbios_sysinfo_table_entry* out) {
  const Bytes structure = cursor.structure();
  std::memcpy(out->head, structure.data(), std::min(structure.size(), sizeof out->head));
  const unsigned count = *std::max_element(out->head + 4, out->head + sizeof out->head);
  Bytes strings = cursor.strings();
  out->strings.clear();
  for (unsigned i = 0; i < count; ++i) out->strings.push_back(takeString(strings));
  return static_cast<int>(count);
}

}  // namespace

uint32_t smbios_table_entry_point::tableLength() const { return readWord(bytes + 22); }

uint32_t smbios_table_entry_point::tableAddress() const {
  return readWord(bytes + 24) | readWord(bytes + 26) << 16;
}

uint32_t smbios_table_entry_point::structureCount() const { return readWord(bytes + 28); }

const unsigned char* find_signature(const unsigned char* buf, size_t len) {
  for (size_t at = 0; at + kParagraph <= len; at += kParagraph) {
    if (std::memcmp(buf + at, kAnchor, sizeof kAnchor) == 0) return buf + at;
  }
  return nullptr;
}

int find_table_ep(smbios_table_entry_point* ep_out) {
  slm_handle handle = nullptr;
  void* mapped = slm_phys_mmap(PHYS_START, PHYS_END, kPageAligned, &handle);
  if (mapped == kMapFailed) return -1;
  const Bytes segment(static_cast<const unsigned char*>(mapped) + slm_page_off(PHYS_START),
                      mappedBytes(PHYS_START, PHYS_END - PHYS_START));
  // An anchor at 0xFFFE0, the last that this range allows, announces an entry point that ends with
  // the segment, behind PHYS_END.
  const unsigned char* anchor = find_signature(segment.data(), PHYS_END - PHYS_START);
  const bool found =
      anchor != nullptr &&
      readEntryPoint(segment.subspan(static_cast<size_t>(anchor - segment.data())), ep_out);
  slm_phys_munmap(&handle);
  return found ? 0 : -1;
}

int find_entry(const unsigned char* table, const smbios_table_entry_point* ep,
               smbios_sysinfo_table_entry* sysinfo_out) {
  // The number of structures ends the walk, not the announced length, which is too small now and
  // then: meant so. Nothing behind the mapping exists.
  TableCursor cursor(Bytes(table, mappedBytes(ep->tableAddress(), ep->tableLength())));
  for (uint32_t seen = 0; seen < ep->structureCount() && !cursor.atEnd(); ++seen) {
    if (cursor.type() == sys_info_type) return copySystemInformation(cursor, sysinfo_out);
    if (!cursor.skipStructure()) return 0;
  }
  return 0;
}

}  // namespace quenlor
