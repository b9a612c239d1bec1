#include "readers/block/SysfsAttributes.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "base/NaturalOrder.h"
#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr size_t kLargestAttribute = 65536;  // a vital product data page with its header

std::string joined(const std::string& directory, std::string_view name) {
  std::string path = directory;
  path += '/';
  path += name;
  return path;
}

}  // namespace

std::optional<uint64_t> parseDecimal(std::string_view text) {
  uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end) return {};
  return value;
}

std::vector<std::string> namesIn(const std::string& directory) {
  std::vector<DirectoryEntry> entries;
  host().listEntries(directory.c_str(), entries);
  std::vector<std::string> names;
  names.reserve(entries.size());
  for (DirectoryEntry& entry : entries) names.push_back(std::move(entry.name));
  std::sort(names.begin(), names.end(), naturalLess);
  return names;
}

std::string SysfsAttributes::text(std::string_view name) const {
  const std::optional<std::string> value = readAttribute(joined(m_directory, name));
  return value ? std::string(trimmed(*value)) : std::string();
}

std::string SysfsAttributes::bytes(std::string_view name) const {
  return readWholeFile(joined(m_directory, name), kLargestAttribute).bytes;
}

std::optional<uint64_t> SysfsAttributes::number(std::string_view name) const {
  return parseDecimal(text(name));
}

std::optional<bool> SysfsAttributes::flag(std::string_view name) const {
  const std::optional<uint64_t> value = number(name);
  return value ? std::optional(*value != 0) : std::nullopt;
}

std::string SysfsAttributes::linkName(std::string_view name) const {
  std::string target;
  if (!host().readLink(joined(m_directory, name).c_str(), target)) return {};
  return target.substr(target.rfind('/') + 1);
}

}  // namespace quenlor
