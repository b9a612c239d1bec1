#include "catalogue/Catalogue.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "catalogue/Tables.h"

namespace quenlor {
namespace {

using testing::ElementsAre;

#define NAMED(table) \
  { #table, table }

const std::vector<std::pair<const char*, const velAttribDef*>> kAttributeTables = {
    NAMED(COMPONENTID_ATTRS_DEF),    NAMED(PROCESSOR_ATTRS_DEF),  NAMED(MEMORY_ATTRS_DEF),
    NAMED(MEMORY_MODULES_ATTRS_DEF), NAMED(OPER_SYS_ATTRS_DEF),   NAMED(STORAGE_ATTRS_DEF),
    NAMED(IP_ADDR_ATTRS_DEF),        NAMED(NET_ADPTR_ATTRS_DEF),  NAMED(REGIONAL_ATTRS_DEF),
    NAMED(UNIX_PAR_ATTRS_DEF),       NAMED(SCAN_INFO_ATTRS_DEF),  NAMED(PART_ATTRS_DEF),
    NAMED(SMBIOS_ATTRS_DEF),         NAMED(PCI_DEVICE_ATTRS_DEF), NAMED(LPAR_ATTRS_DEF),
    NAMED(PHYS_PROC_ATTRS_DEF),      NAMED(CPU_METER_ATTRS_DEF),  NAMED(CPU_UNIX_METER_ATTRS_DEF),
};

const std::vector<std::pair<const char*, const velEnumDef*>> kEnumTables = {
    NAMED(PROCESSOR_INTERFACE_ENUM_DEF),
    NAMED(STORAGE_SECURITY_ENABLED_ENUM_DEF),
    NAMED(HWSEC_POP_ENUM_DEF),
    NAMED(REGIONAL_TZ_PLUS_MINUS),
    NAMED(REGIONAL_TZ_DAYLIGHT),
    NAMED(PART_TYPE_ENUM_DEF),
    NAMED(PART_MEDIA_TYPE_ENUM_DEF),
    NAMED(ADAPTER_TYPE_ENUM_DEF),
    NAMED(VEL_ATTRIB_SMBIOS_ENCLOSURE_TYPE_ENUM_DEF),
    NAMED(MODERN_ENCLOSURE_TYPE_ENUM_DEF),
    NAMED(OS_TYPE_ENUM_DEF),
    NAMED(STORAGE_TYPE_ENUM_DEF),
    NAMED(FILE_SYSTEM_TYPE_ENUM_DEF),
};

template <class Table>
std::string nameOf(const std::vector<std::pair<const char*, const Table*>>& tables,
                   const Table* table) {
  for (const auto& [name, known] : tables) {
    if (known == table) return name;
  }
  return "(unlisted table)";
}

std::vector<velGroupDef> groups() {
  std::vector<velGroupDef> all;
  for (const velGroupDef* group = GROUPS_DEF; group->id != kCatalogueEnd; ++group) {
    all.push_back(*group);
  }
  return all;
}

std::vector<velAttribDef> attributes(const velAttribDef* table) {
  std::vector<velAttribDef> all;
  for (; table->id != kCatalogueEnd; ++table) all.push_back(*table);
  return all;
}

std::vector<velEnumDef> pairs(const velEnumDef* table) {
  std::vector<velEnumDef> all;
  for (; table->value != kCatalogueEnd; ++table) all.push_back(*table);
  return all;
}

std::vector<uint32_t> keys(const velGroupDef& group) {
  return {group.keys, group.keys + group.keyCount};
}

size_t attributeCount(uint32_t groupId) {
  return attributes(getGroupDefinitionFromId(groupId)->attribs).size();
}

std::string typeText(const velAttribDef& attrib) {
  switch (attrib.type) {
    case VEL_ULONG:
      return "U";
    case VEL_FLOAT:
      return "F";
    case VEL_DATETIME:
      return "D";
    case VEL_LONGLONG:
      return "LL";
    case VEL_STRING:
      return "S" + std::to_string(attrib.length);
    default:
      return "?";
  }
}

void listGroups(std::ostream& out) {
  for (const velGroupDef& group : groups()) {
    out << "group " << group.id << " \"" << group.name << "\" "
        << nameOf(kAttributeTables, group.attribs) << " attributes "
        << attributes(group.attribs).size() << " keys ";
    if (group.keys == nullptr) out << "none";
    const char* separator = "";
    for (const uint32_t key : keys(group)) {
      out << separator << key;
      separator = ", ";
    }
    out << "\n";
  }
}

void listTables(std::ostream& out) {
  for (const auto& [name, table] : kAttributeTables) {
    out << "\nattributes " << name << "\n";
    for (const velAttribDef& attrib : attributes(table)) {
      out << attrib.id << " \"" << attrib.name << "\" " << typeText(attrib);
      if (attrib.enumTable != nullptr) out << " : " << nameOf(kEnumTables, attrib.enumTable);
      out << "\n";
    }
  }
  for (const auto& [name, table] : kEnumTables) {
    out << "\nenumeration " << name << "\n";
    for (const velEnumDef& pair : pairs(table)) {
      out << pair.value << " \"" << pair.text << "\"\n";
    }
  }
}

// Receivers of inventories know every number, name, order and blank: any change is to be meant.
TEST(CatalogueTest, everyRowStandsAsListed) {
  std::ifstream file(QUENLOR_SOURCE_DIR "/tests/catalogue/catalogue.txt");
  std::stringstream expected;
  expected << file.rdbuf();
  std::stringstream actual;
  listGroups(actual);
  listTables(actual);
  std::string expectedLine;
  std::string line;
  while (std::getline(actual, line)) {
    ASSERT_TRUE(std::getline(expected, expectedLine)) << "not listed: " << line;
    ASSERT_EQ(line, expectedLine);
  }
  EXPECT_FALSE(std::getline(expected, expectedLine)) << "only listed: " << expectedLine;
}

TEST(CatalogueTest, nineteenGroupsInTheOrderOfAFullScan) {
  std::vector<uint32_t> ids;
  for (const velGroupDef& group : groups()) ids.push_back(group.id);
  EXPECT_THAT(ids,
              ElementsAre(1, 2, 3, 31, 4, 5, 6, 7, 15, 19, 20, 27, 24, 29, 34, 44, 45, 46, 47));
}

TEST(CatalogueTest, processorHas45Attributes) { EXPECT_EQ(attributeCount(group::kProcessor), 45u); }

TEST(CatalogueTest, smbiosHas23Attributes) { EXPECT_EQ(attributeCount(group::kSmbios), 23u); }

TEST(CatalogueTest, componentIdentitiesShareOneTable) {
  EXPECT_EQ(getGroupDefinitionFromId(group::kComponentId)->attribs,
            getGroupDefinitionFromId(group::kHostComponentId)->attribs);
}

TEST(CatalogueTest, everyGroupIsEnabledAndHasNoDebugMask) {
  for (const velGroupDef& group : groups()) {
    EXPECT_EQ(group.enabled, 1u) << group.name;
    EXPECT_EQ(group.debugMask, 0u) << group.name;
  }
}

TEST(CatalogueTest, groupIdsAndNamesAreUnique) {
  std::set<uint32_t> ids;
  std::set<std::string> names;
  for (const velGroupDef& group : groups()) {
    EXPECT_TRUE(ids.insert(group.id).second) << group.id;
    EXPECT_TRUE(names.insert(group.name).second) << group.name;
  }
}

TEST(CatalogueTest, attributeIdsAndNamesAreUniqueWithinTheirTable) {
  for (const auto& [name, table] : kAttributeTables) {
    std::set<uint32_t> ids;
    std::set<std::string> names;
    for (const velAttribDef& attrib : attributes(table)) {
      EXPECT_TRUE(ids.insert(attrib.id).second) << name << attrib.id;
      EXPECT_TRUE(names.insert(attrib.name).second) << name << attrib.name;
    }
  }
}

TEST(CatalogueTest, keysAreAttributesOfTheirGroup) {
  for (const velGroupDef& group : groups()) {
    EXPECT_EQ(group.keys == nullptr, group.keyCount == 0) << group.name;
    for (const uint32_t key : keys(group)) {
      EXPECT_NE(getAttribDefinitionFromId(&group, key), nullptr) << group.name << key;
    }
  }
}

TEST(CatalogueTest, onlyTextsHaveALength) {
  for (const auto& [name, table] : kAttributeTables) {
    for (const velAttribDef& attrib : attributes(table)) {
      EXPECT_EQ(attrib.type == VEL_STRING, attrib.length > 0) << name << attrib.name;
    }
  }
}

TEST(CatalogueTest, enumerationsHaveTheirNumberOfRows) {
  std::map<std::string, size_t> counts;
  for (const auto& [name, table] : kEnumTables) counts[name] = pairs(table).size();
  EXPECT_EQ(counts["PROCESSOR_INTERFACE_ENUM_DEF"], 18u);
  EXPECT_EQ(counts["STORAGE_SECURITY_ENABLED_ENUM_DEF"], 4u);
  EXPECT_EQ(counts["HWSEC_POP_ENUM_DEF"], 4u);
  EXPECT_EQ(counts["REGIONAL_TZ_PLUS_MINUS"], 2u);
  EXPECT_EQ(counts["REGIONAL_TZ_DAYLIGHT"], 2u);
  EXPECT_EQ(counts["PART_TYPE_ENUM_DEF"], 4u);
  EXPECT_EQ(counts["PART_MEDIA_TYPE_ENUM_DEF"], 7u);
  EXPECT_EQ(counts["ADAPTER_TYPE_ENUM_DEF"], 18u);
  EXPECT_EQ(counts["VEL_ATTRIB_SMBIOS_ENCLOSURE_TYPE_ENUM_DEF"], 25u);
  EXPECT_EQ(counts["MODERN_ENCLOSURE_TYPE_ENUM_DEF"], 36u);
  EXPECT_EQ(counts["OS_TYPE_ENUM_DEF"], 69u);
  EXPECT_EQ(counts["STORAGE_TYPE_ENUM_DEF"], 69u);
  EXPECT_EQ(counts["FILE_SYSTEM_TYPE_ENUM_DEF"], 99u);
}

TEST(CatalogueTest, enumeratedValuesAreUniqueWithinTheirTable) {
  for (const auto& [name, table] : kEnumTables) {
    std::set<uint32_t> values;
    for (const velEnumDef& pair : pairs(table)) {
      EXPECT_TRUE(values.insert(pair.value).second) << name << pair.value;
    }
  }
}

TEST(CatalogueTest, winchesterRemovableDiskEndsWithABlank) {
  EXPECT_STREQ(pairs(STORAGE_TYPE_ENUM_DEF)[15].text, "Winchester Removable Disk ");
}

bool isPlainText(const std::string& text) {
  return text.find_first_of("<&\"\\") == std::string::npos &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// Both writers print the catalogue's texts as they stand.
TEST(CatalogueTest, noTextNeedsEscaping) {
  for (const velGroupDef& group : groups()) EXPECT_TRUE(isPlainText(group.name)) << group.name;
  for (const auto& [name, table] : kAttributeTables) {
    for (const velAttribDef& attrib : attributes(table)) {
      EXPECT_TRUE(isPlainText(attrib.name)) << name << ": " << attrib.name;
    }
  }
  for (const auto& [name, table] : kEnumTables) {
    for (const velEnumDef& pair : pairs(table)) {
      EXPECT_TRUE(isPlainText(pair.text)) << name << ": " << pair.text;
    }
  }
}

// A partition type is one byte; the scanner's own numbers for others print as numbers.
TEST(CatalogueTest, fileSystemTypesAreBytes) {
  for (const velEnumDef& pair : pairs(FILE_SYSTEM_TYPE_ENUM_DEF)) EXPECT_LE(pair.value, 255u);
}

TEST(CatalogueTest, groupNameOfAnId) {
  EXPECT_EQ(getGroupNameFromId(group::kMemoryModules), String("Memory Modules"));
}

TEST(CatalogueTest, groupNameOfAnUnknownIdIsUnknown) {
  EXPECT_EQ(getGroupNameFromId(26), String("Unknown"));
  EXPECT_EQ(getGroupNameFromId(kCatalogueEnd), String("Unknown"));
}

TEST(CatalogueTest, groupIdOfAName) {
  for (const velGroupDef& group : groups()) EXPECT_EQ(getGroupIdFromName(group.name), group.id);
}

TEST(CatalogueTest, groupNamesAreCaseSensitiveAndExact) {
  EXPECT_EQ(getGroupIdFromName("processor"), 0u);
  EXPECT_EQ(getGroupIdFromName("Processor "), 0u);
  EXPECT_EQ(getGroupIdFromName(""), 0u);
}

TEST(CatalogueTest, definitionOfAnUnknownGroupIsNull) {
  EXPECT_EQ(getGroupDefinitionFromId(26), nullptr);
  EXPECT_EQ(getGroupDefinitionFromId(kCatalogueEnd), nullptr);
}

TEST(CatalogueTest, debugMaskIsZeroForEveryName) {
  EXPECT_EQ(getDebugMaskFromName("Processor"), 0u);
  EXPECT_EQ(getDebugMaskFromName("Nothing"), 0u);
  EXPECT_EQ(getDebugMaskFromName(nullptr), 0u);
}

TEST(CatalogueTest, attributeNameOfAnId) {
  const velGroupDef* partition = getGroupDefinitionFromId(group::kPartition);
  EXPECT_STREQ(getAttribNameFromId(partition, 8), "FS Mount Point");
}

TEST(CatalogueTest, attributeNameIsNullWhenAnythingIsMissing) {
  constexpr velGroupDef kNoTable = {1, "No Table", nullptr, nullptr, 0, 1, 0};
  const velGroupDef* lpar = getGroupDefinitionFromId(group::kLpar);
  EXPECT_EQ(getAttribNameFromId(nullptr, 1), nullptr);
  EXPECT_EQ(getAttribNameFromId(&kNoTable, 1), nullptr);
  EXPECT_EQ(getAttribNameFromId(lpar, 1), nullptr);
  EXPECT_EQ(getAttribNameFromId(lpar, kCatalogueEnd), nullptr);
  EXPECT_EQ(getAttribDefinitionFromId(lpar, 1), nullptr);
}

TEST(CatalogueTest, attributeDefinitionHoldsTypeAndLength) {
  const velAttribDef* name =
      getAttribDefinitionFromId(getGroupDefinitionFromId(group::kPciDevice), 2);
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(name->type, VEL_STRING);
  EXPECT_EQ(name->length, 180u);
}

TEST(CatalogueTest, enumTextComesFromTheFirstAttributesTable_callersRelyOnIt) {
  constexpr velEnumDef kFirst[] = {{1, "first's one"}, {kCatalogueEnd, nullptr}};
  constexpr velEnumDef kSecond[] = {{1, "second's one"}, {2, "two"}, {kCatalogueEnd, nullptr}};
  const velAttribDef attribs[] = {{1, "First", VEL_ULONG, 0, kFirst},
                                  {2, "Second", VEL_ULONG, 0, kSecond},
                                  {kCatalogueEnd, nullptr, 0, 0, nullptr}};
  const velGroupDef group = {1, "Group", attribs, nullptr, 0, 1, 0};
  EXPECT_STREQ(getEnumAsciiValue(&group, 2, 1), "first's one");
  EXPECT_EQ(getEnumAsciiValue(&group, 2, 2), nullptr);
  EXPECT_EQ(getEnumAsciiValue(&group, 3, 1), nullptr);
  EXPECT_EQ(getEnumAsciiValue(nullptr, 1, 1), nullptr);
}

TEST(CatalogueTest, enumTextIsNullWhenTheFirstAttributeHasNoTable) {
  const velGroupDef* storage = getGroupDefinitionFromId(group::kStorage);
  EXPECT_EQ(getEnumAsciiValue(storage, 3, 30), nullptr);
}

}  // namespace
}  // namespace quenlor
