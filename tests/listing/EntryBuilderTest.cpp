#include "listing/EntryBuilder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "factory/GroupFactory.h"
#include "listing/PlainPrinter.h"
#include "tables/VelTable.h"

namespace quenlor {
namespace {

namespace fs = std::filesystem;

// One value of a fake group's row.
struct FakeValue {
  uint32_t id;
  std::optional<std::string> text;  // else the number is the value
  uint64_t number = 0;
  bool wide = false;  // 64-bit number
};

using FakeRows = std::vector<std::vector<FakeValue>>;
std::map<unsigned long, FakeRows> g_groups;
std::map<unsigned long, int> g_collections;

class FakeGroup : public VelGroup {
 public:
  explicit FakeGroup(uint32_t id) : VelGroup(id, 1) {}
  VelTable* getTable() override {
    ++g_collections[getGroupId()];
    auto table = std::make_unique<VelTable>(getGroupId(), 1);
    for (const auto& values : g_groups[getGroupId()]) {
      auto row = std::make_unique<VelTableRow>();
      for (const FakeValue& value : values) {
        if (value.text) {
          addText(*row, value.id, *value.text);
        } else if (value.wide) {
          addUlongLong(*row, value.id, value.number);
        } else {
          addUlong(*row, value.id, static_cast<uint32_t>(value.number));
        }
      }
      table->addRow(row.release());
    }
    return table.release();
  }
};

class EntryBuilderTest : public ::testing::Test {
 protected:
  EntryBuilderTest() {
    g_groups.clear();
    g_collections.clear();
    GroupFactory::getInstance().setCreator([](unsigned long id) -> VelGroup* {
      return g_groups.count(id) == 0 ? nullptr : new FakeGroup(static_cast<uint32_t>(id));
    });
  }
  ~EntryBuilderTest() override { GroupFactory::getInstance().setCreator(nullptr); }

  static std::string listing() {
    EntryBuilder builder;
    EXPECT_GE(builder.BuildAllEntries(1), 8);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(builder.PrintEntries("stdout"));
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
  }

  static std::string line(const std::string& id) {
    std::istringstream lines(listing());
    for (std::string text; std::getline(lines, text);) {
      if (text.rfind(id + ":\t", 0) == 0) return text;
    }
    return "(absent)";
  }
};

TEST_F(EntryBuilderTest, machineWithoutAnyGroupListsEveryIdWithoutValues) {
  EXPECT_EQ(listing(),
            "cpu_mhertz:\t\nscandate:\t\nguid:\t\nhostname:\t\nosType:\t\nosVersion:\t\n"
            "hwPlatform:\t\nram_mbytes:\t\n");
}

TEST_F(EntryBuilderTest, severalValuesOfOneAttributeAreAllListedInOrder) {
  g_groups[group::kProcessor] = {{{1, {}, 1}, {4, {}, 2800}}, {{1, {}, 2}, {4, {}, 2400}}};
  g_groups[group::kIpAddress] = {{{3, "one"}, {10, "00:01"}}, {{3, "two"}, {10, "00:02"}}};
  EXPECT_EQ(line("cpu_mhertz"), "cpu_mhertz:\t2800 2400 ");
  EXPECT_EQ(line("hostname"), "hostname:\tone two ");
  EXPECT_EQ(line("guid"), "guid:\t00:01 00:02 ");
}

TEST_F(EntryBuilderTest, operatingSystemGivesTypeVersionAndPlatform) {
  g_groups[group::kOperatingSystem] = {
      {{1, "Red Hat Linux"}, {3, {}, 2}, {4, {}, 4}, {10, "i686"}, {11, "64-bit"}}};
  EXPECT_EQ(line("osType"), "osType:\tLINUX ");
  EXPECT_EQ(line("osVersion"), "osVersion:\t2.4 ");
  EXPECT_EQ(line("hwPlatform"), "hwPlatform:\tIA64 ");
}

TEST_F(EntryBuilderTest, kernelModeOfThirtyTwoBitsAndEmptyOneAreTheDefaultPlatform) {
  g_groups[group::kOperatingSystem] = {{{10, "x86_64"}, {11, ""}}};
  EXPECT_EQ(line("hwPlatform"), "hwPlatform:\tIA32 ");
  g_groups[group::kOperatingSystem] = {{{1, "Unheard Of"}, {11, "32-bit"}}};
  EXPECT_EQ(line("hwPlatform"), "hwPlatform:\tIA32 ");
  EXPECT_EQ(line("osType"), "osType:\tUnheard Of ");
  EXPECT_EQ(line("osVersion"), "osVersion:\t");
}

TEST_F(EntryBuilderTest, versionOfWhichHalfIsMissingHasNoValue) {
  g_groups[group::kOperatingSystem] = {{{3, {}, 2}}};
  EXPECT_EQ(line("osVersion"), "osVersion:\t");
  g_groups[group::kOperatingSystem] = {{{4, {}, 4}}};
  EXPECT_EQ(line("osVersion"), "osVersion:\t");
}

TEST_F(EntryBuilderTest, everyReplacementOfSystemTypeAndPlatform) {
  const auto entryOf = [](const std::string& id, const std::string& name, const std::string& mode) {
    g_groups[group::kOperatingSystem] = {{{1, name}, {11, mode}}};
    return line(id);
  };
  const std::vector<std::pair<const char*, const char*>> types{
      {"Windows 2000", "WINDOWS2000"},
      {"Windows XP", "WINDOWSXP"},
      {"Windows 2003", "WINDOWS2003"},
      {"Windows Server 2003", "WINDOWS2003"},
      {"Caldera Linux", "LINUX"},
      {"SLES 9", "LINUX"},
      {"a Kov system", "KOV"},
      {"Solaris", "SOLARIS"},
      {"SunOS", "SOLARIS"},
      {"HP-UX", "HPUX"}};
  for (const auto& [name, type] : types) {
    EXPECT_EQ(entryOf("osType", name, ""), std::string("osType:\t") + type + " ");
  }
  const std::vector<std::pair<const char*, const char*>> platforms{
      {"a 64", "IA64"}, {"Sparc", "SPARC"}, {"RISC", "PARISC"}, {"Power", "POWER"}};
  for (const auto& [mode, platform] : platforms) {
    EXPECT_EQ(entryOf("hwPlatform", "", mode), std::string("hwPlatform:\t") + platform + " ");
  }
}

TEST_F(EntryBuilderTest, eachGroupIsCollectedOnce) {
  const std::vector<uint32_t> groups{group::kProcessor,       group::kScanInfo, group::kIpAddress,
                                     group::kOperatingSystem, group::kMemory,   group::kPartition};
  for (const uint32_t id : groups) g_groups[id] = {};
  EntryBuilder().BuildAllEntries(1);
  for (const uint32_t id : groups) EXPECT_EQ(g_collections[id], 1) << id;
}

TEST_F(EntryBuilderTest, buildingAgainReplacesTheEntries) {
  g_groups[group::kMemory] = {{{1, {}, 2048}}};
  EntryBuilder builder;
  EXPECT_EQ(builder.BuildAllEntries(1), 8);
  g_groups[group::kPartition] = {{{3, {}, 3}, {5, {}, 5242880}}};
  EXPECT_EQ(builder.BuildAllEntries(1), 9);
}

TEST_F(EntryBuilderTest, memoryIsInWholeMegabytes) {
  g_groups[group::kMemory] = {{{1, {}, 1048576}}};
  EXPECT_EQ(line("ram_mbytes"), "ram_mbytes:\t1024 ");
  g_groups[group::kMemory] = {{{1, {}, 2047}}};
  EXPECT_EQ(line("ram_mbytes"), "ram_mbytes:\t1 ");
}

TEST_F(EntryBuilderTest, diskLineNeedsALocalDisk) {
  g_groups[group::kPartition] = {{{3, {}, 4}, {5, {}, 5242880, true}}};
  EXPECT_EQ(line("hdd_gbytes"), "(absent)");
  g_groups[group::kPartition] = {{{3, {}, 3}, {5, {}, 5242880, true}},
                                 {{3, {}, 3}, {5, {}, 1048575}}};
  EXPECT_EQ(line("hdd_gbytes"), "hdd_gbytes:\t5 ");
}

TEST_F(EntryBuilderTest, localDiskTakesTheLastSizeNotYetConsumedWhicheverRowItCameFrom) {
  const std::string gb7 = std::to_string(7 * 1048576);
  const std::string gb2 = std::to_string(2 * 1048576);
  const auto sum = sumLocalDisks(
      {{"Media Type", "4"}, {"Physical Size", gb7}, {"Media Type", "3"}, {"Physical Size", gb2}});
  // The remote row's size goes with the local disk at once; the disk's own size then stays pending.
  EXPECT_EQ(sum, (std::pair<long long, bool>(7, true)));
}

TEST_F(EntryBuilderTest, sizesOfManyTerabytesDoNotWrap) {
  EXPECT_EQ(sumLocalDisks({{"Media Type", "3"}, {"Physical Size", "9007199254740992"}}).first,
            8589934592);
}

TEST_F(EntryBuilderTest, sizesThatAreNoCountAddNothing) {
  for (const char* size : {"-1", "", "unknown"}) {
    EXPECT_EQ(sumLocalDisks({{"Media Type", "3"}, {"Physical Size", size}}),
              (std::pair<long long, bool>(0, true)))
        << size;
  }
}

TEST_F(EntryBuilderTest, retrieveKeepsTheNamedAttributesOfEveryRowInOrder) {
  g_groups[group::kPartition] = {{{1, {}, 9}, {3, {}, 3}, {5, {}, 10, true}},
                                 {{5, {}, 20}, {99, "no such attribute"}, {3, {}, 4}}};
  std::vector<NVPair> pairs;
  const std::vector<std::string> names{"Physical Size", "Media Type", "Media Type"};
  EXPECT_EQ(EntryBuilder::RetrieveAttributeValue("Partition", &names, &pairs), 4);
  EXPECT_EQ(pairs, (std::vector<NVPair>{{"Media Type", "3"},
                                        {"Physical Size", "10"},
                                        {"Physical Size", "20"},
                                        {"Media Type", "4"}}));
}

TEST_F(EntryBuilderTest, retrieveWithoutArgumentsOrGroupGivesNothing) {
  std::vector<NVPair> pairs{{"old", "value"}};
  const std::vector<std::string> names{"Name"};
  EXPECT_EQ(EntryBuilder::RetrieveAttributeValue("Memory", nullptr, &pairs), 0);
  EXPECT_EQ(EntryBuilder::RetrieveAttributeValue("Memory", &names, nullptr), 0);
  EXPECT_EQ(EntryBuilder::RetrieveAttributeValue("Nothing", &names, &pairs), 0);
  EXPECT_TRUE(pairs.empty());
}

TEST_F(EntryBuilderTest, retrieveFromAGroupWithoutTableGivesNothing) {
  class NoTable : public VelGroup {
   public:
    NoTable() : VelGroup(group::kMemory, 1) {}
    VelTable* getTable() override { return nullptr; }
  };
  GroupFactory::getInstance().setCreator([](unsigned long) -> VelGroup* { return new NoTable; });
  std::vector<NVPair> pairs{{"old", "value"}};
  const std::vector<std::string> names{"Total Physical"};
  EXPECT_EQ(EntryBuilder::RetrieveAttributeValue("Memory", &names, &pairs), 0);
  EXPECT_TRUE(pairs.empty());
  EXPECT_EQ(line("ram_mbytes"), "ram_mbytes:\t");
}

TEST_F(EntryBuilderTest, retrieveFromATableOutsideTheCatalogueGivesNothing) {
  class Unlisted : public VelGroup {
   public:
    Unlisted() : VelGroup(group::kMemory, 1) {}
    VelTable* getTable() override {
      auto table = std::make_unique<VelTable>(26U, 1U);
      auto row = std::make_unique<VelTableRow>();
      addUlong(*row, 1, 5);
      table->addRow(row.release());
      return table.release();
    }
  };
  GroupFactory::getInstance().setCreator([](unsigned long) -> VelGroup* { return new Unlisted; });
  std::vector<NVPair> pairs{{"old", "value"}};
  const std::vector<std::string> names{"Total Physical"};
  EXPECT_EQ(EntryBuilder::RetrieveAttributeValue("Memory", &names, &pairs), 0);
  EXPECT_TRUE(pairs.empty());
}

TEST_F(EntryBuilderTest, firstSearchTextInSortedOrderDecides) {
  AttributeReplacingEntry entry;
  entry.SetReplacement("Windows Server 2003", "second");
  entry.SetReplacement("Windows 2003", "first");
  entry.addEntryAttribute("Windows Server 2003 (a Windows 2003)");
  entry.addEntryAttribute("other");
  EXPECT_EQ(entry.getEntryAttribute(0), "first");
  EXPECT_EQ(entry.getEntryAttribute(1), "other");
  entry.SetDefaultReplacement("default");
  EXPECT_EQ(entry.getEntryAttribute(1), "default");
  EXPECT_EQ(entry.getEntryAttribute(-1), "default");
}

TEST_F(EntryBuilderTest, valueOutsideTheNumberOfValuesIsEmpty) {
  SimpleEntry entry;
  EXPECT_EQ(entry.getEntryAttribute(0), "");
  entry.addEntryAttribute("only");
  EXPECT_EQ(entry.getAttributeNumber(), 1);
  EXPECT_EQ(entry.getEntryAttribute(0), "only");
  EXPECT_EQ(entry.getEntryAttribute(1), "");
  EXPECT_EQ(entry.getEntryAttribute(-1), "");
}

TEST_F(EntryBuilderTest, valuesAreRenderedByType) {
  setenv("TZ", "UTC", 1);
  tzset();
  const auto text = [](const VelTableAttrib& attrib) {
    return EntryBuilder::GetVELAttributeAsString(attrib.getAttribPtr());
  };
  EXPECT_EQ(text({1, static_cast<unsigned char>(200)}), "200");
  EXPECT_EQ(text({1, static_cast<unsigned short>(65535)}), "65535");
  EXPECT_EQ(text({1, 4294967295U}), "4294967295");
  EXPECT_EQ(text({1, _uquad{0xFFFFFFFFU, 7}}), "-1");
  EXPECT_EQ(text({1, 1.5F}), "1.500000");
  EXPECT_EQ(text({1, "a \"b\" \\"}), "a \"b\" \\");
  EXPECT_EQ(text({1, reinterpret_cast<const unsigned char*>("\x01\xAB"), 2}), "\"01AB\"");
  EXPECT_EQ(text({1, 0L}), "1970-01-01-00.00.00.000000");
  EXPECT_EQ(text({1, 18446744073709551615ULL}), "18446744073709551615");
  EXPECT_EQ(text({1, -5LL}), "-5");
}

TEST_F(EntryBuilderTest, fileIsTruncatedAndHoldsTheSameLines) {
  const fs::path path = testing::TempDir() + "quenlor-list-" + std::to_string(getpid());
  std::ofstream(path) << std::string(10000, 'x');
  EntryBuilder builder;
  builder.BuildAllEntries(1);
  ASSERT_TRUE(builder.PrintEntries(path.c_str()));
  std::stringstream content;
  content << std::ifstream(path).rdbuf();
  EXPECT_EQ(content.str(), listing());
  EXPECT_FALSE(builder.PrintEntries("/nonexistent/list.txt"));
  EXPECT_FALSE(builder.PrintEntries(nullptr));
  fs::remove(path);
}

TEST_F(EntryBuilderTest, onlyAFailedOpenIsReported_linesLostOnAFullDeviceAreNot) {
  EntryBuilder builder;
  builder.BuildAllEntries(1);
  EXPECT_TRUE(builder.PrintEntries("/dev/full"));
}

TEST_F(EntryBuilderTest, nullEntriesAreSkipped) {
  EXPECT_EQ(PlainFormatter().format(nullptr), "");
  SimpleEntry entry;
  entry.setEntryID("id");
  entry.addEntryAttribute("v");
  const std::vector<IEntry*> entries{nullptr, &entry};
  PlainPrinter printer;
  printer.SetEntries(&entries);
  EXPECT_EQ(printer.Print("/dev/null"), 1);
  testing::internal::CaptureStdout();
  EXPECT_EQ(printer.Print("stdout"), 1);
  fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "id:\tv \n");
}

}  // namespace
}  // namespace quenlor
