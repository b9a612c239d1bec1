// The distribution: os-release(5), else the release files that came before it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Outcome.h"

namespace quenlor {

// Texts as the files have them; empty: not told.
struct Distribution {
  std::string name;      // for people: PRETTY_NAME, or a release file's line
  std::string id;        // ID: "debian"
  std::string version;   // VERSION_ID
  std::string codename;  // VERSION_CODENAME
};

Distribution parseOsRelease(std::string_view text);

// The first line of a release file that has a text, control characters folded.
std::string parseReleaseFile(std::string_view text);

// /etc/os-release, else /usr/lib/os-release, else a release file. What could not be read is noted.
Distribution readDistribution(Outcome& outcome);

}  // namespace quenlor
