#include "readers/dmi/DmiStructure.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quenlor {
namespace {

constexpr size_t kHeaderSize = 4;
constexpr std::string_view kEndOfStrings("\0\0", 2);

constexpr uint8_t kInactive = 126;
constexpr uint8_t kEndOfTable = 127;

constexpr uint8_t kManagementDevice = 34;
constexpr size_t kManagementDeviceLength = 0x0B;
constexpr size_t kManagementDeviceWrongLength = 0x10;

// Hypervisors have written these other tables of firmware over the end of this one.
constexpr std::string_view FOREIGN_TABLES[] = {"_MP_", "PCMP"};

bool isPrintable(char c) { return c >= ' ' && c <= '~'; }

// Boards state the length of management devices with five characters of the first string in it.
bool hasWrongLength(std::string_view fields) {
  if (fields[0] != kManagementDevice || fields.size() != kManagementDeviceWrongLength) return false;
  return std::all_of(fields.begin() + kManagementDeviceLength, fields.end(), isPrintable);
}

bool isForeign(std::string_view bytes) {
  return std::any_of(std::begin(FOREIGN_TABLES), std::end(FOREIGN_TABLES),
                     [bytes](std::string_view anchor) { return bytes.starts_with(anchor); });
}

// The formatted area at the start of the bytes; nothing when no structure can begin there.
std::optional<std::string_view> fieldsAt(std::string_view rest) {
  if (rest.size() < kHeaderSize || isForeign(rest)) return {};
  const size_t length = static_cast<unsigned char>(rest[1]);
  if (length < kHeaderSize || length > rest.size()) return {};
  const std::string_view fields = rest.substr(0, length);
  return hasWrongLength(fields) ? fields.substr(0, kManagementDeviceLength) : fields;
}

class Walker {
 public:
  Walker(std::string_view table, const DmiEntryPoint& entryPoint)
      : m_rest(table.substr(0, entryPoint.tableLength)), m_entryPoint(entryPoint) {}

  DmiWalk walk() {
    while (!isAtEnd() && step()) ++m_seen;
    return std::move(m_walk);
  }

 private:
  bool isAtEnd() const {
    if (m_rest.empty() || (m_sawEnd && m_entryPoint.endsAtEndStructure)) return true;
    return m_seen >= m_entryPoint.structureCount.value_or(UINT32_MAX);
  }

  // Keeps the structure at the position and moves behind it; false when the walk cannot go on.
  bool step() {
    const auto fields = fieldsAt(m_rest);
    if (!fields) return stop();
    const std::string_view behind = m_rest.substr(fields->size());
    const size_t end = behind.find(kEndOfStrings);
    keep(DmiStructure(*fields, behind.substr(0, end)));
    if (end == behind.npos) return stop();
    m_rest = behind.substr(end + kEndOfStrings.size());
    return true;
  }

  // What stands behind the end of the table, or cuts it, and filling zeros are nothing that is
  // missed.
  bool stop() {
    m_walk.isDamaged = !m_sawEnd && m_rest.find_first_not_of('\0') != m_rest.npos;
    return false;
  }

  void keep(const DmiStructure& structure) {
    m_sawEnd = m_sawEnd || structure.type() == kEndOfTable;
    if (structure.type() != kInactive) m_walk.structures.push_back(structure);
  }

  std::string_view m_rest;
  const DmiEntryPoint& m_entryPoint;
  uint32_t m_seen = 0;
  bool m_sawEnd = false;
  DmiWalk m_walk;
};

}  // namespace

std::optional<std::string_view> DmiStructure::bytes(size_t offset, size_t count) const {
  if (offset > m_fields.size() || m_fields.size() - offset < count) return std::nullopt;
  return m_fields.substr(offset, count);
}

std::optional<std::string> DmiStructure::text(size_t offset) const {
  std::string_view rest = m_strings;
  for (unsigned number = byte(offset).value_or(0); number > 0 && !rest.empty(); --number) {
    const size_t end = rest.find('\0');
    if (number == 1) return std::string(rest.substr(0, end));
    rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
  }
  return std::nullopt;
}

DmiWalk walkDmiTable(std::string_view table, const DmiEntryPoint& entryPoint) {
  return Walker(table, entryPoint).walk();
}

}  // namespace quenlor
