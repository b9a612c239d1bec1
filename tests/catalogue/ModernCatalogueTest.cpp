#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "catalogue/Catalogue.h"

namespace quenlor {
namespace {

std::vector<const velGroupDef*> groupsOf(const velGroupDef* catalogue) {
  std::vector<const velGroupDef*> groups;
  for (; catalogue->id != kCatalogueEnd; ++catalogue) groups.push_back(catalogue);
  return groups;
}

std::vector<velAttribDef> attributesOf(const velGroupDef& group) {
  std::vector<velAttribDef> attributes;
  for (const velAttribDef* at = group.attribs; at->id != kCatalogueEnd; ++at) {
    attributes.push_back(*at);
  }
  return attributes;
}

// True when the first enumeration begins with all values and texts of the second.
bool goesOn(const velEnumDef* longer, const velEnumDef* shorter) {
  if (longer == shorter) return true;
  if (longer == nullptr || shorter == nullptr) return false;
  for (; shorter->value != kCatalogueEnd; ++longer, ++shorter) {
    if (longer->value != shorter->value || std::string(shorter->text) != longer->text) return false;
  }
  return true;
}

bool isSame(const velAttribDef& a, const velAttribDef& b) {
  return a.id == b.id && std::string(a.name) == b.name && a.type == b.type &&
         a.length == b.length && goesOn(a.enumTable, b.enumTable);
}

std::string typeText(const velAttribDef& attrib) {
  switch (attrib.type) {
    case VEL_ULONG:
      return "U";
    case VEL_LONGLONG:
      return "LL";
    case VEL_FLOAT:
      return "F";
    case VEL_STRING:
      return "S" + std::to_string(attrib.length);
    default:
      return "?";
  }
}

// What modern documents have beside the classic attributes.
std::vector<velAttribDef> addedTo(const velGroupDef& group) {
  std::vector<velAttribDef> all = attributesOf(group);
  const velGroupDef* classic = getGroupDefinitionFromId(group.id);
  const size_t known = classic == nullptr ? 0 : attributesOf(*classic).size();
  return {all.begin() + static_cast<ptrdiff_t>(known), all.end()};
}

std::string listing() {
  std::ostringstream out;
  for (const velGroupDef* group : groupsOf(MODERN_GROUPS_DEF)) {
    out << "group " << group->id << " \"" << group->name << "\" keys ";
    if (group->keyCount == 0) out << "none";
    for (uint32_t i = 0; i < group->keyCount; ++i) out << (i == 0 ? "" : ", ") << group->keys[i];
    out << '\n';
    for (const velAttribDef& attrib : addedTo(*group)) {
      out << attrib.id << " \"" << attrib.name << "\" " << typeText(attrib) << '\n';
    }
  }
  return out.str();
}

// Receivers of inventories know every number, name and order: any change is to be meant.
TEST(ModernCatalogueTest, everyRowStandsAsListed) {
  std::ifstream file(QUENLOR_SOURCE_DIR "/tests/catalogue/modern-catalogue.txt");
  std::stringstream expected;
  expected << file.rdbuf();
  EXPECT_EQ(listing(), expected.str());
}

TEST(ModernCatalogueTest, classicGroupsComeFirstAndInTheirOrder) {
  const auto classic = groupsOf(GROUPS_DEF);
  const auto modern = groupsOf(MODERN_GROUPS_DEF);
  ASSERT_EQ(modern.size(), classic.size() + 9);
  for (size_t i = 0; i < classic.size(); ++i) EXPECT_EQ(modern[i]->id, classic[i]->id);
  EXPECT_EQ(modern.back()->id, group::kScanResult);
}

TEST(ModernCatalogueTest, aGroupBeginsWithAllOfItsClassicAttributes) {
  for (const velGroupDef* group : groupsOf(GROUPS_DEF)) {
    const auto classic = attributesOf(*group);
    const auto modern = attributesOf(*findGroup(MODERN_GROUPS_DEF, group->id));
    ASSERT_GE(modern.size(), classic.size());
    for (size_t i = 0; i < classic.size(); ++i) {
      EXPECT_TRUE(isSame(modern[i], classic[i])) << group->name << ' ' << classic[i].name;
    }
  }
}

// Receivers of classic documents do not know the later ones.
TEST(ModernCatalogueTest, onlyModernEnclosuresHaveNamesAbove25) {
  const auto nameOf = [](const velGroupDef* groups, uint32_t value) -> std::string {
    constexpr uint32_t kEnclosureType = 15;
    const velAttribDef* attrib =
        getAttribDefinitionFromId(findGroup(groups, group::kSmbios), kEnclosureType);
    for (const velEnumDef* pair = attrib->enumTable; pair->value != kCatalogueEnd; ++pair) {
      if (pair->value == value) return pair->text;
    }
    return "";
  };
  EXPECT_EQ(nameOf(GROUPS_DEF, 25), "Multi-system chassis");
  EXPECT_EQ(nameOf(GROUPS_DEF, 26), "");
  EXPECT_EQ(nameOf(MODERN_GROUPS_DEF, 25), "Multi-system chassis");
  EXPECT_EQ(nameOf(MODERN_GROUPS_DEF, 31), "Convertible");
  EXPECT_EQ(nameOf(MODERN_GROUPS_DEF, 36), "Stick PC");
  EXPECT_EQ(nameOf(MODERN_GROUPS_DEF, 37), "");
}

TEST(ModernCatalogueTest, addedIdsBeginAt101AndNewGroupsAt1001) {
  for (const velGroupDef* group : groupsOf(MODERN_GROUPS_DEF)) {
    const bool isNew = getGroupDefinitionFromId(group->id) == nullptr;
    EXPECT_EQ(isNew, group->id >= 1001) << group->name;
    for (const velAttribDef& attrib : addedTo(*group)) {
      EXPECT_EQ(isNew, attrib.id < 101) << group->name << ' ' << attrib.name;
    }
  }
}

TEST(ModernCatalogueTest, namesAreUniqueWithinTheirGroup) {
  for (const velGroupDef* group : groupsOf(MODERN_GROUPS_DEF)) {
    std::set<std::string> names;
    for (const velAttribDef& attrib : attributesOf(*group)) {
      EXPECT_TRUE(names.insert(attrib.name).second) << group->name << ' ' << attrib.name;
    }
  }
}

TEST(ModernCatalogueTest, keysAreAttributesOfTheirGroup) {
  for (const velGroupDef* group : groupsOf(MODERN_GROUPS_DEF)) {
    EXPECT_EQ(group->keys == nullptr, group->keyCount == 0) << group->name;
    for (uint32_t i = 0; i < group->keyCount; ++i) {
      EXPECT_NE(getAttribDefinitionFromId(group, group->keys[i]), nullptr) << group->name;
    }
  }
}

TEST(ModernCatalogueTest, onlyTheClassicCatalogueIsSearchedWithoutAnother) {
  EXPECT_EQ(getGroupIdFromName("Machine"), 0u);
  EXPECT_EQ(findGroup(MODERN_GROUPS_DEF, "Machine")->id, group::kMachine);
  EXPECT_EQ(findGroup(MODERN_GROUPS_DEF, "No such group"), nullptr);
}

}  // namespace
}  // namespace quenlor
