#include "readers/mounts/MountInfo.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kMountInfo = "/proc/self/mountinfo";
// Thousands of containers with long lists of layers; the table is the kernel's own.
constexpr size_t kTableLimit = 64u << 20;
constexpr size_t kEscapeLength = 4;  // a backslash and three octal digits
constexpr std::string_view kDeleted = "//deleted";
constexpr std::string_view kEndOfOptionalFields = "-";

bool isOctal(char byte) { return byte >= '0' && byte <= '7'; }

// The byte that the escape at the beginning of the text means; -1 where there is none.
int escapedByte(std::string_view text) {
  const bool isEscape = text.size() >= kEscapeLength && text[0] == '\\' && isOctal(text[1]) &&
                        isOctal(text[2]) && isOctal(text[3]);
  if (!isEscape) return -1;
  const int value = (text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0');
  return value < 256 ? value : -1;
}

// One line taken apart at single blanks: two in a row have an empty field between them.
class Fields {
 public:
  explicit Fields(std::string_view line) : m_rest(line) {}

  std::optional<std::string_view> next() {
    if (m_isAtEnd) return {};
    const size_t end = m_rest.find(' ');
    const std::string_view field = m_rest.substr(0, end);
    m_isAtEnd = end == std::string_view::npos;
    if (!m_isAtEnd) m_rest.remove_prefix(end + 1);
    return field;
  }
  bool number(uint32_t& value) {
    const auto field = next();
    if (!field) return false;
    const char* end = field->data() + field->size();
    const auto result = std::from_chars(field->data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
  }
  bool text(std::string& value) {
    const auto field = next();
    if (field) value = decodeOctalEscapes(*field);
    return field.has_value();
  }
  bool deviceNumber(uint32_t& major, uint32_t& minor) {
    const auto field = next();
    const size_t colon = field ? field->find(':') : std::string_view::npos;
    if (colon == std::string_view::npos) return false;
    return Fields(field->substr(0, colon)).number(major) &&
           Fields(field->substr(colon + 1)).number(minor);
  }
  // True if the lone hyphen behind any number of optional fields was found.
  bool skipOptionalFields() {
    while (const auto field = next()) {
      if (*field == kEndOfOptionalFields) return true;
    }
    return false;
  }

 private:
  std::string_view m_rest;
  bool m_isAtEnd = false;
};

void removeDeletedMark(Mount& mount) {
  if (mount.root.size() <= kDeleted.size() || !mount.root.ends_with(kDeleted)) return;
  mount.root.erase(mount.root.size() - kDeleted.size());
  mount.isDeleted = true;
}

std::optional<Mount> parseLine(std::string_view line) {
  Fields fields(line);
  Mount mount;
  const bool isMount = fields.number(mount.id) && fields.number(mount.parent) &&
                       fields.deviceNumber(mount.major, mount.minor) && fields.text(mount.root) &&
                       fields.text(mount.point) && fields.text(mount.options) &&
                       fields.skipOptionalFields() && fields.text(mount.type) &&
                       fields.text(mount.source);
  if (!isMount || !mount.point.starts_with('/')) return {};
  fields.text(mount.superOptions);
  removeDeletedMark(mount);
  return mount;
}

// Follows paths through the mounts as the kernel does.
class MountTree {
 public:
  explicit MountTree(const std::vector<Mount>& mounts);

  // Id of the mount in which a path ends.
  uint32_t lookUp(std::string_view path) const;

 private:
  // A mount below which nothing of the table stands: the scanner's root may be a directory of a
  // mount that it cannot see.
  static constexpr uint32_t kOutside = 0;

  uint32_t enter(uint32_t mount, const std::string& point) const;

  // By parent and mount point. Of several at one place the last one is on top.
  std::unordered_map<std::string, uint32_t> m_children;
};

std::string childKey(uint32_t parent, std::string_view point) {
  std::string key = std::to_string(parent);
  key += point;
  return key;
}

MountTree::MountTree(const std::vector<Mount>& mounts) {
  std::unordered_set<uint32_t> ids;
  for (const Mount& mount : mounts) ids.insert(mount.id);
  for (const Mount& mount : mounts) {
    const bool isTop = mount.parent == mount.id || !ids.contains(mount.parent);
    m_children[childKey(isTop ? kOutside : mount.parent, mount.point)] = mount.id;
  }
}

// A mount may have another one over its own root, and that one again.
uint32_t MountTree::enter(uint32_t mount, const std::string& point) const {
  for (size_t steps = 0; steps <= m_children.size(); ++steps) {
    const auto found = m_children.find(childKey(mount, point));
    if (found == m_children.end() || found->second == mount) break;
    mount = found->second;
  }
  return mount;
}

uint32_t MountTree::lookUp(std::string_view path) const {
  uint32_t mount = enter(kOutside, "/");
  for (size_t end = 1; end < path.size();) {
    end = std::min(path.find('/', end), path.size());
    mount = enter(mount, std::string(path.substr(0, end)));
    ++end;
  }
  return mount;
}

std::optional<std::vector<Mount>> readOnce(Outcome& outcome, bool& isConsistent) {
  const WholeFile file = readWholeFile(kMountInfo, kTableLimit);
  if (file.status != FileStatus::kRead) {
    const bool isRefused = file.status == FileStatus::kRefused;
    outcome.note(isRefused ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                 isRefused ? "mounts: refused" : "mounts: no table");
    return {};
  }
  return parseMountInfo(file.bytes, isConsistent);
}

}  // namespace

MountTable readMounts() {
  MountTable table;
  bool isConsistent = false;
  for (int attempt = 0; attempt < 2 && !isConsistent; ++attempt) {
    auto mounts = readOnce(table.outcome, isConsistent);
    if (!mounts) break;
    table.mounts = *std::move(mounts);
  }
  const bool isRead = table.outcome.status() == OutcomeStatus::kComplete;
  if (isRead && !isConsistent) table.outcome.note(OutcomeStatus::kPartial, "mounts: table changed");
  markHidden(table.mounts);
  return table;
}

std::vector<Mount> parseMountInfo(std::string_view text, bool& isConsistent) {
  std::vector<Mount> mounts;
  std::unordered_set<uint32_t> ids;
  isConsistent = true;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::optional<Mount> mount = parseLine(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (mount && ids.insert(mount->id).second) {
      mounts.push_back(*std::move(mount));
    } else {
      isConsistent = false;
    }
  }
  return mounts;
}

void markHidden(std::vector<Mount>& mounts) {
  const MountTree tree(mounts);
  for (Mount& mount : mounts) mount.isHidden = tree.lookUp(mount.point) != mount.id;
}

std::string decodeOctalEscapes(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const int byte = escapedByte(text);
    decoded += byte < 0 ? text.front() : static_cast<char>(byte);
    text.remove_prefix(byte < 0 ? 1 : kEscapeLength);
  }
  return decoded;
}

bool hasOption(std::string_view options, std::string_view word) {
  while (!options.empty()) {
    const size_t end = std::min(options.find(','), options.size());
    if (options.substr(0, end) == word) return true;
    options.remove_prefix(std::min(end + 1, options.size()));
  }
  return false;
}

}  // namespace quenlor
