#include "groups/processor/BrandName.h"

#include <gtest/gtest.h>

namespace quenlor {
namespace {

TEST(BrandName, marksAndSpeedAreLeftOut) {
  EXPECT_EQ(plainBrandName("Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz"),
            "Intel Xeon CPU E5-2680 v4");
  EXPECT_EQ(plainBrandName("12th Gen Intel(R) Core(TM) i7-1260P"), "12th Gen Intel Core i7-1260P");
  EXPECT_EQ(plainBrandName("AMD Ryzen(tm)  7 5800X"), "AMD Ryzen 7 5800X");
  EXPECT_EQ(plainBrandName("       Intel(r) Pentium(R)4"), "Intel Pentium 4");
}

TEST(BrandName, aTextWithoutAnythingElseIsEmpty) {
  EXPECT_EQ(plainBrandName(""), "");
  EXPECT_EQ(plainBrandName("(R)(TM) @ 1GHz"), "");
}

}  // namespace
}  // namespace quenlor
