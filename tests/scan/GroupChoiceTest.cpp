#include "scan/GroupChoice.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

std::string joined(const std::list<String>& names) {
  std::string text;
  for (const String& name : names) text += std::string(name.c_str()) + ";";
  return text;
}

TEST(GroupChoiceTest, groupsKeepTheOrderInWhichTheyAreNamedAndTheResultIsLast) {
  const auto choice = chooseModernGroups({"Storage", "Machine", "Memory"}, MODERN_GROUPS_DEF);
  EXPECT_EQ(joined(choice.groups), "Storage;Machine;Memory;Scan Result;");
  EXPECT_TRUE(choice.unknown.empty());
}

TEST(GroupChoiceTest, aGroupNamedTwiceIsScannedOnce) {
  const auto choice =
      chooseModernGroups({"Memory", "Scan Result", "Memory", "Scan Result"}, MODERN_GROUPS_DEF);
  EXPECT_EQ(joined(choice.groups), "Memory;Scan Result;");
}

TEST(GroupChoiceTest, namesOutsideBothHalvesAreTold) {
  const auto choice = chooseModernGroups({"memory", "Fan", "Memory"}, MODERN_GROUPS_DEF);
  EXPECT_EQ(joined(choice.groups), "Memory;Scan Result;");
  ASSERT_EQ(choice.unknown.size(), 2u);
  EXPECT_EQ(choice.unknown[0], "memory");
  EXPECT_EQ(choice.unknown[1], "Fan");
}

TEST(GroupChoiceTest, withoutANameTheResultAloneIsWritten) {
  EXPECT_EQ(joined(chooseModernGroups({}, MODERN_GROUPS_DEF).groups), "Scan Result;");
}

}  // namespace
}  // namespace quenlor
