// The time stamp of the build. The build passes it as YY/MM/DD and hh:mm:ss, in UTC.
#include <array>
#include <cstdio>

#include "tables/Render.h"

namespace quenlor {
namespace {

using Stamp = std::array<char, 32>;

Stamp formatBuildDate() {
  Stamp stamp{};
  std::snprintf(stamp.data(), stamp.size(), "20%s-%s.000000", QUENLOR_BUILD_DATE,
                QUENLOR_BUILD_TIME);
  stamp[4] = stamp[7] = '-';
  stamp[13] = stamp[16] = '.';
  return stamp;
}

}  // namespace

const char* getBuildDate() {
  static const Stamp stamp = formatBuildDate();
  return stamp.data();
}

}  // namespace quenlor
