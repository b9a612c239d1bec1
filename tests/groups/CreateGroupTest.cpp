#include "groups/createGroup.h"

#include <gtest/gtest.h>

#include <memory>

namespace quenlor {
namespace {

TEST(CreateGroupTest, everyCatalogueGroupHasItsCollector) {
  for (const velGroupDef* record = GROUPS_DEF; record->id != kCatalogueEnd; ++record) {
    const std::unique_ptr<VelGroup> group(createGroup(record->id));
    ASSERT_TRUE(group) << record->name;
    EXPECT_EQ(group->getGroupId(), record->id);
    EXPECT_EQ(group->getGroupVersion(), 1U);
    EXPECT_EQ(group->getGroupName().str(), record->name);
  }
}

TEST(CreateGroupTest, otherIdsHaveNone) {
  EXPECT_EQ(createGroup(0), nullptr);
  EXPECT_EQ(createGroup(26), nullptr);
  EXPECT_EQ(createGroup(kCatalogueEnd), nullptr);
  EXPECT_EQ(createGroup(0x100000001UL), nullptr);
}

}  // namespace
}  // namespace quenlor
