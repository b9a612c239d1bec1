// The attributes of one directory of sysfs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

// An unsigned decimal number that is the whole text.
std::optional<uint64_t> parseDecimal(std::string_view text);

// What stands in a directory, in natural order; nothing when it cannot be listed.
std::vector<std::string> namesIn(const std::string& directory);

class SysfsAttributes {
 public:
  explicit SysfsAttributes(std::string directory) : m_directory(std::move(directory)) {}

  const std::string& directory() const { return m_directory; }
  // Each reads the file once at every call. Empty or nothing where it cannot be read.
  std::string text(std::string_view name) const;   // without blanks at both ends
  std::string bytes(std::string_view name) const;  // as they are
  std::optional<uint64_t> number(std::string_view name) const;
  std::optional<bool> flag(std::string_view name) const;  // 0 or not
  // Last component of what a link names: "driver" names the driver's directory.
  std::string linkName(std::string_view name) const;

 private:
  std::string m_directory;
};

}  // namespace quenlor
