// The stamp of a build whose day and hour are known: the file is compiled once more, for the test
// alone, under another function name.
#include <gtest/gtest.h>

#define QUENLOR_BUILD_DATE "07/06/18"
#define QUENLOR_BUILD_TIME "16:35:21"
#define getBuildDate buildDateOf2007
#include "tables/BuildDate.cpp"  // NOLINT(bugprone-suspicious-include)

namespace quenlor {
namespace {

TEST(BuildDateTest, dayAndTimeOfABuildBecomeADateTime) {
  EXPECT_STREQ(buildDateOf2007(), "2007-06-18-16.35.21.000000");
  EXPECT_EQ(buildDateOf2007(), buildDateOf2007());
}

}  // namespace
}  // namespace quenlor
