#include "tables/VelTable.h"

#include <gmock/gmock.h>

#include <memory>
#include <new>
#include <string>

#include "tables/ValueBlock.h"

namespace {

// No memory for arrays whose creator says that it copes without.
bool g_arraysFail = false;

}  // namespace

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return g_arraysFail ? nullptr : ::operator new[](size);
}

namespace quenlor {
namespace {

class EmptyGroup : public VelGroup {
 public:
  explicit EmptyGroup(uint32_t id = group::kMemory) : VelGroup(id, 3) {}
  VelTable* getTable() override { return VelGroup::getTable(); }
};

std::unique_ptr<VelTable> tableOfIds(std::initializer_list<uint32_t> ids) {
  auto table = std::make_unique<VelTable>(group::kMemory, 1u);
  for (const uint32_t id : ids) {
    auto row = std::make_unique<VelTableRow>();
    addUlong(*row, id, 0);
    table->addRow(row.release());
  }
  return table;
}

uint32_t firstId(VelTableRow* row) {
  row->reset();
  return row->getNext()->getId();
}

template <class Dumped>
std::string dump(Dumped& dumped) {
  testing::internal::CaptureStdout();
  dumped.toString();
  return testing::internal::GetCapturedStdout();
}

TEST(VelTableTest, idComesBeforeVersion) {
  const VelTable table(group::kStorage, 2);
  EXPECT_EQ(table.getGroupId(), group::kStorage);
  EXPECT_EQ(table.getGroupVersion(), 2u);
  EXPECT_STREQ(table.getGroupName(), "Storage");
  EXPECT_EQ(table.getGroupDefinitionFromId(), getGroupDefinitionFromId(group::kStorage));
}

TEST(VelTableTest, emptyTableHasNoNextRow) {
  VelTable table(group::kMemory, 1);
  EXPECT_EQ(table.getNext(), nullptr);
  EXPECT_EQ(table.getNumRows(), 0u);
}

TEST(VelTableTest, rowsComeInTheOrderOfTheirAddition) {
  const auto table = tableOfIds({3, 1, 2});
  EXPECT_EQ(firstId(table->getNext()), 3u);
  EXPECT_EQ(firstId(table->getNext()), 1u);
  EXPECT_EQ(firstId(table->getNext()), 2u);
  EXPECT_EQ(table->getNext(), nullptr);
}

TEST(VelTableTest, theCursorStaysAtTheEnd) {
  const auto table = tableOfIds({1});
  table->getNext();
  EXPECT_EQ(table->getNext(), nullptr);
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, 2, 0);
  table->addRow(row.release());
  EXPECT_EQ(firstId(table->getNext()), 2u);
}

TEST(VelTableTest, resetStartsAnew) {
  const auto table = tableOfIds({5, 6});
  table->getNext();
  table->getNext();
  EXPECT_EQ(table->reset(), 1);
  VelTableRow* first = table->getNext();
  EXPECT_EQ(first->getNext()->getId(), 5u);
  EXPECT_EQ(first->getNext(), nullptr);
  EXPECT_EQ(first->reset(), 1);
  EXPECT_EQ(first->getNext()->getId(), 5u);
}

TEST(VelTableTest, addingReturnsOne) {
  VelTable table(group::kMemory, 1);
  auto row = std::make_unique<VelTableRow>();
  EXPECT_EQ(row->addAttrib(new VelTableAttrib(1, uint32_t{1})), 1);
  EXPECT_EQ(row->getNumAttribs(), 1u);
  EXPECT_EQ(table.addRow(row.release()), 1);
  EXPECT_EQ(table.getNumRows(), 1u);
}

TEST(VelTableTest, nullRowEndsTheLoopEarlyAndIsSkippedOnDestruction) {
  const auto table = tableOfIds({1});
  table->addRow(nullptr);
  table->addRow(new VelTableRow);
  EXPECT_NE(table->getNext(), nullptr);
  EXPECT_EQ(table->getNext(), nullptr);
  EXPECT_NE(table->getNext(), nullptr);
  EXPECT_EQ(table->getNumRows(), 3u);
}

TEST(VelTableTest, nullAttributeEndsTheLoopEarlyAndIsSkippedOnDestruction) {
  VelTableRow row;
  row.addAttrib(nullptr);
  addUlong(row, 1, 1);
  EXPECT_EQ(row.getNext(), nullptr);
  EXPECT_EQ(row.getNext()->getId(), 1u);
}

TEST(VelTableTest, idOutsideTheCatalogueIsUnknown) {
  const VelTable table(26, 1);
  EXPECT_STREQ(table.getGroupName(), "Unknown");
  EXPECT_EQ(table.getGroupDefinitionFromId(), nullptr);
}

TEST(VelTableTest, otherCatalogueNamesTheGroup) {
  const velGroupDef own[] = {{26, "Own", nullptr, nullptr, 0, 1, 0},
                             {kCatalogueEnd, nullptr, nullptr, nullptr, 0, 0, 0}};
  EXPECT_STREQ(VelTable(own, 26, 1).getGroupName(), "Own");
  EXPECT_STREQ(VelTable(own, group::kMemory, 1).getGroupName(), "Unknown");
  EXPECT_STREQ(VelTable(own + 1, 26, 1).getGroupName(), "Unknown");
  EXPECT_STREQ(VelTable(nullptr, 26, 1).getGroupName(), "Unknown");
}

TEST(VelTableTest, dumpOfAnEmptyTableReportsNoRows) {
  VelTable table(group::kMemoryModules, 1);
  EXPECT_EQ(dump(table), "\n--------Table Memory Modules (0000001F) ver=1\nRows=0");
}

TEST(VelTableTest, dumpShowsRowsAndAttributesAndLeavesTheTableFresh) {
  const auto table = tableOfIds({1, 2});
  const std::string attribute =
      "\n\t\t---len      : 16\n\t\t   attribId : x0000000%\n\t\t   vel_type : 3 (VEL_ULONG)"
      "\n\t\t   value    : 0 (0x00000000)";
  auto row = [&](char id) {
    std::string text = "\n\t Attribs=1" + attribute;
    text[text.find('%')] = id;
    return text;
  };
  const std::string expected =
      "\n--------Table Memory (00000003) ver=1\nRows=2" + row('1') + row('2');
  EXPECT_EQ(dump(*table), expected);
  VelTableRow* first = table->getNext();
  EXPECT_EQ(first->getNext()->getId(), 1u);
  EXPECT_EQ(dump(*table), expected) << "from the start, wherever the cursors stand";
  EXPECT_EQ(table->getNext(), first);
  EXPECT_EQ(first->getNext()->getId(), 1u);
}

TEST(VelTableTest, buildersNameTheirWidth) {
  VelTableRow row;
  addUlong(row, 1, 0xFFFFFFFF);
  addUlongLong(row, 2, UINT64_MAX);
  addLongLong(row, 3, INT64_MIN);
  addFloat(row, 4, 0.5f);
  addText(row, 5, "literal");
  addText(row, 6, std::string("standard"));
  addText(row, 7, String("own"));
  addText(row, 8, nullptr);
  addTime(row, 9, time_t{0});
  std::vector<uint32_t> types;
  while (const VelTableAttrib* attrib = row.getNext()) types.push_back(attrib->getType());
  EXPECT_THAT(types,
              testing::ElementsAre(VEL_ULONG, VEL_ULONGLONG, VEL_LONGLONG, VEL_FLOAT, VEL_STRING,
                                   VEL_STRING, VEL_STRING, VEL_STRING, VEL_DATETIME));
}

TEST(VelTableTest, numbersTooLargeForAUlongSaturate) {
  EXPECT_EQ(saturateToUlong(0xFFFFFFFE), 0xFFFFFFFEu);
  EXPECT_EQ(saturateToUlong(0xFFFFFFFF), 0xFFFFFFFFu);
  EXPECT_EQ(saturateToUlong(0x100000000), 0xFFFFFFFFu);
  EXPECT_EQ(saturateToUlong(UINT64_MAX), 0xFFFFFFFFu);
}

TEST(VelGroupTest, holdsIdVersionAndName) {
  const EmptyGroup memory;
  EXPECT_EQ(memory.getGroupId(), group::kMemory);
  EXPECT_EQ(memory.getGroupVersion(), 3u);
  EXPECT_EQ(memory.getGroupName(), String("Memory"));
  EXPECT_EQ(EmptyGroup(26).getGroupName(), String("Unknown"));
}

TEST(VelGroupTest, reportsNothingByItself) {
  EmptyGroup group;
  EXPECT_EQ(group.getTable(), nullptr);
  EXPECT_EQ(group.generateTable(), nullptr);
}

TEST(VelGroupTest, extraTablesKeepTheirOrder) {
  EmptyGroup group;
  VelTable first(group::kMemory, 1);
  VelTable second(group::kMemory, 1);
  group.addExtraTable(&first);
  group.addExtraTable(&second);
  EXPECT_EQ(group.getExtraTableCount(), 2);
  EXPECT_EQ(group.getExtraTable(0), &first);
  EXPECT_EQ(group.getExtraTable(1), &second);
}

TEST(VelGroupTest, extraTableOutsideTheRangeIsNull) {
  EmptyGroup group;
  EXPECT_EQ(group.getExtraTable(0), nullptr);
  VelTable table(group::kMemory, 1);
  group.addExtraTable(&table);
  EXPECT_EQ(group.getExtraTable(-1), nullptr);
  EXPECT_EQ(group.getExtraTable(1), nullptr);
}

TEST(VelGroupTest, extraTableThatFindsNoMemoryIsDropped_theOthersStay) {
  EmptyGroup group;
  VelTable first(group::kMemory, 1);
  VelTable second(group::kMemory, 1);
  group.addExtraTable(&first);
  g_arraysFail = true;
  group.addExtraTable(&second);
  g_arraysFail = false;
  EXPECT_EQ(group.getExtraTableCount(), 1);
  EXPECT_EQ(group.getExtraTable(0), &first);
}

TEST(VelGroupTest, extraTablesOutliveTheGroup_theirReceiverDeletesThem) {
  auto group = std::make_unique<EmptyGroup>();
  group->addExtraTable(new VelTable(group::kMemory, 7));
  const std::unique_ptr<VelTable> extra(group->getExtraTable(0));
  group.reset();
  EXPECT_EQ(extra->getGroupVersion(), 7u);
}

}  // namespace
}  // namespace quenlor
