// One record of udev's database, /run/udev/data/bMAJOR:MINOR: lines of a letter, a colon and a
// value (systemd, sd-device).
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

struct UdevRecord {
  std::map<std::string, std::string, std::less<>> properties;  // lines "E:KEY=value"
  std::vector<std::string> links;  // lines "S:disk/by-id/…", paths below /dev

  // Empty when the property is not there.
  std::string_view property(std::string_view key) const;
  // The property with its escapes decoded and without blanks at both ends.
  std::string text(std::string_view key) const;
};

// Lines of other kinds, and those without a key, are left out.
UdevRecord parseUdevRecord(std::string_view text);

// "\x20" and its like, with which udev writes blanks, slashes and control characters, become bytes.
std::string decodeUdevEscapes(std::string_view text);

}  // namespace quenlor
