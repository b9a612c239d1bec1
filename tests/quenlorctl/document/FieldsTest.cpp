#include "quenlorctl/document/Fields.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "writers/xmlUtil.h"

namespace quenlor::ctl {
namespace {

// As documents are written.
std::string writtenElement(const char* name) {
  char* element = spaceOut(name);
  const std::string text = element;
  std::free(element);
  return text;
}

TEST(Fields, elementNamesAreThoseThatDocumentsAreWrittenWith) {
  for (const Group& group : groups()) {
    EXPECT_EQ(writtenElement(group.name), group.element);
    for (const Field& field : group.fields) EXPECT_EQ(writtenElement(field.name), field.element);
  }
}

TEST(Fields, everyGroupAndAttributeOfTheCatalogueIsThere) {
  size_t count = 0;
  for (const velGroupDef* def = MODERN_GROUPS_DEF; def->id != kCatalogueEnd; ++def, ++count) {
    ASSERT_NE(nullptr, findGroupId(def->id));
    for (const velAttribDef* attrib = def->attribs; attrib->id != kCatalogueEnd; ++attrib) {
      EXPECT_NE(nullptr, findGroupId(def->id)->findId(attrib->id));
    }
  }
  EXPECT_EQ(count, groups().size());
}

TEST(Fields, flagsMayDifferBetweenClassicAndModernDocuments) {
  const Field& id = *findGroupElement("Processor")->findElement("ID");
  EXPECT_EQ(Change::kVolatile, id.changeIn(Sources::kClassic));
  EXPECT_EQ(Change::kStable, id.changeIn(Sources::kModern));
  const Field& serial = *findGroupElement("Storage")->findElement("SerialNumber");
  EXPECT_EQ(1, serial.identityIn(Sources::kClassic));
  EXPECT_EQ(2, serial.identityIn(Sources::kModern));
  EXPECT_EQ(Privacy::kSerial, serial.privacy[0]);
}

TEST(Fields, formsFollowTheCatalogue) {
  const auto form = [](const char* group, const char* field) {
    return findGroupElement(group)->findElement(field)->form;
  };
  EXPECT_EQ(Form::kNumber, form("Storage", "TotalSize"));
  EXPECT_EQ(Form::kInteger, form("Storage", "SizeBytes"));
  EXPECT_EQ(Form::kWord, form("Storage", "Type"));
  EXPECT_EQ(Form::kText, form("Storage", "Bus"));
  EXPECT_EQ(Form::kYesNo, form("Storage", "Removable"));
  EXPECT_EQ(Form::kReal, form("UnixCpuMeter", "LoadAvg1"));
  EXPECT_EQ(Form::kDateTime, form("ScanInfo", "ScanDate"));
  EXPECT_EQ(Form::kText, form("Processor", "CPUEnabled"));  // "H", neither yes nor no
}

TEST(Fields, hintNeverHidesAnElement) {
  const Group& storage = *findGroupElement("Storage");
  for (uint32_t hint = 0; hint < 99; ++hint) {
    EXPECT_EQ(2U, storage.findElement("ID", hint)->id);
    EXPECT_EQ(nullptr, storage.findElement("Nothing", hint));
    EXPECT_EQ(&storage, findGroupElement("Storage", hint));
  }
}

TEST(Fields, groupsAreNamedByCatalogueElementOrSqlName) {
  for (const char* name : {"Memory Modules", "MemoryModules", "memory_modules", "MEMORY MODULES"}) {
    ASSERT_NE(nullptr, findGroupName(name)) << name;
    EXPECT_STREQ("Memory Modules", findGroupName(name)->name);
  }
  EXPECT_EQ(nullptr, findGroupName("Memory Module"));
  EXPECT_EQ(nullptr, findGroupName(""));
}

}  // namespace
}  // namespace quenlor::ctl
