#include "scan/quenlor.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "config/DovCfg.h"
#include "factory/GroupFactory.h"
#include "host/ScanState.h"
#include "listing/EntryBuilder.h"
#include "log/CcLogWrapper.h"
#include "tables/VelTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

namespace fs = std::filesystem;

// What the fake groups of a test do and what became of them.
struct GroupLog {
  std::vector<uint32_t> collected;
  std::function<void(uint32_t id)> onCollect;
  std::function<void(uint32_t id)> onDelete;
  bool nullTables = false;
  int extraTables = 0;
  int alive = 0;
};
GroupLog g_log;

class LoggingGroup : public VelGroup {
 public:
  explicit LoggingGroup(uint32_t id) : VelGroup(id, 1) { ++g_log.alive; }
  ~LoggingGroup() override {
    --g_log.alive;
    if (g_log.onDelete) g_log.onDelete(getGroupId());
  }

  VelTable* getTable() override {
    g_log.collected.push_back(getGroupId());
    if (g_log.onCollect) g_log.onCollect(getGroupId());
    for (int i = 0; i < g_log.extraTables; ++i)
      addExtraTable(tableWith(100 + static_cast<uint32_t>(i)));
    return g_log.nullTables ? nullptr : tableWith(getGroupId());
  }

 private:
  VelTable* tableWith(uint32_t value) const {
    auto table = std::make_unique<VelTable>(getGroupId(), 1);
    auto row = std::make_unique<VelTableRow>();
    addUlong(*row, 1, value);
    table->addRow(row.release());
    return table.release();
  }
};

class FailingBuilder : public EntryBuilder {
 public:
  int BuildAllEntries(int argument) override {
    arguments.push_back(argument);
    return -1;
  }
  std::vector<int> arguments;
};

// Knows whose turn it was while the list was printed.
class PrintingBuilder : public EntryBuilder {
 public:
  int BuildAllEntries(int) override {
    wasReadersTurn = scanState().isReadersTurn;
    return 0;
  }
  bool PrintEntries(const char*) override {
    isReadersTurn = scanState().isReadersTurn;
    return true;
  }
  bool wasReadersTurn = false;
  bool isReadersTurn = false;
};

class QuenlorTest : public ::testing::Test {
 protected:
  QuenlorTest() {
    write("quenlor", "");
    write("quenlor.conf", "");
    g_log = {};
    GroupFactory::getInstance().setCreator([](unsigned long id) -> VelGroup* {
      return id == 0 ? nullptr : new LoggingGroup(static_cast<uint32_t>(id));
    });
  }
  ~QuenlorTest() override { GroupFactory::getInstance().setCreator(nullptr); }

  std::string path(const std::string& name) const { return directory.path(name); }

  void write(const std::string& name, const std::string& text) const {
    directory.write(name, text);
  }

  std::string read(const std::string& name) const { return directory.read(name); }

  int run(std::vector<std::string> arguments) {
    EntryBuilder builder;
    return run(std::move(arguments), builder);
  }

  int run(std::vector<std::string> arguments, EntryBuilder& builder) {
    arguments.insert(arguments.begin(), path("quenlor"));
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = quenlor(static_cast<int>(arguments.size()), pointers.data(), builder);
    fflush(stdout);
    out = testing::internal::GetCapturedStdout();
    err = testing::internal::GetCapturedStderr();
    return status;
  }

  // Runs with a scan configuration; the ids collected.
  std::vector<uint32_t> scan(const std::string& configuration, int expectedStatus = 0) {
    write("scan.xml", configuration);
    g_log.collected.clear();
    EXPECT_EQ(run({"-c", path("scan.xml"), "-o", path("out")}), expectedStatus);
    return g_log.collected;
  }

  test::TemporaryDirectory directory;
  std::string out;
  std::string err;
};

constexpr const char* kOneMemoryTable =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Hardware>\n"
    "\n\n\t<Memory version=\"1\">\n\t\t<TotalPhysical>3</TotalPhysical>\n\t</Memory>"
    "\n\n</Hardware>\n";

// Records that a run leaves in the file named by the trace properties of its "config_dir".
class QuenlorTraceTest : public QuenlorTest {
 protected:
  QuenlorTraceTest() {
    write("quenlor.conf", "config_dir = " + directory.path().string() + "\n");
    write("DovTrace.properties", "trace.file = trace\ntrace.level = MAX\n");
    GroupFactory::getInstance().setCreator([](unsigned long id) -> VelGroup* {
      return id == group::kMemory ? new LoggingGroup(group::kMemory) : nullptr;
    });
  }
  ~QuenlorTraceTest() override { CcLogWrapper::initialize(nullptr); }

  // Those of the driver alone.
  std::vector<std::string> tracesOf(const std::vector<std::string>& arguments) {
    run(arguments);
    std::vector<std::string> records;
    for (const std::string& record : test::readTraces(directory.path("trace"))) {
      if (record.find(" scanengine/quenlor.cpp ") != std::string::npos) records.push_back(record);
    }
    fs::remove(directory.path("trace"));
    return records;
  }

  test::FakeHost machine;
};

using Records = std::vector<std::string>;

TEST_F(QuenlorTraceTest, scanOfEverything) {
  Records expected{"MID entry scanengine/quenlor.cpp quenlor() hardware",
                   "MAX scanengine/quenlor.cpp quenlor() hardware After getIstance",
                   "MAX scanengine/quenlor.cpp quenlor() hardware No config filename entered",
                   "MAX scanengine/quenlor.cpp quenlor() hardware Get all supported groups",
                   "MAX scanengine/quenlor.cpp quenlor() hardware getTable()",
                   "MAX scanengine/quenlor.cpp quenlor() hardware printXML()",
                   "MID exit scanengine/quenlor.cpp quenlor() hardware return=0"};
  EXPECT_EQ(tracesOf({}), expected);
  expected[5] = "MAX scanengine/quenlor.cpp quenlor() hardware printMif()";
  EXPECT_EQ(tracesOf({"-m"}), expected);
}

TEST_F(QuenlorTraceTest, scanWithoutHardwareSection) {
  write("scan.xml", "<Software/>");
  machine.files[path("scan.xml")] = "<Software/>";
  EXPECT_EQ(
      tracesOf({"-c", path("scan.xml")}),
      (Records{"MID entry scanengine/quenlor.cpp quenlor() hardware",
               "MAX scanengine/quenlor.cpp quenlor() hardware After getIstance",
               "MAX scanengine/quenlor.cpp quenlor() hardware HW_TAG_TYPE section not present "
               "in the config file, taking the default hw group",
               "MAX scanengine/quenlor.cpp quenlor() hardware getTable()",
               "MAX scanengine/quenlor.cpp quenlor() hardware printXML()",
               "MID exit scanengine/quenlor.cpp quenlor() hardware return=0"}));
}

TEST_F(QuenlorTraceTest, failuresAreTheStatusOfTheExitRecord) {
  EXPECT_EQ(tracesOf({"-c", path("none.xml")}),
            (Records{"MID entry scanengine/quenlor.cpp quenlor() hardware",
                     "MAX scanengine/quenlor.cpp quenlor() hardware After getIstance",
                     "MID exit scanengine/quenlor.cpp quenlor() hardware return=5"}));
  EXPECT_EQ(tracesOf({"-o", "/nonexistent/directory/out"}).back(),
            "MID exit scanengine/quenlor.cpp quenlor() hardware return=4");
}

TEST_F(QuenlorTraceTest, errorsOfTheTableAndOfTheFooterAreTracedOnceOnExit) {
  fs::create_directories(path("sub"));
  g_log.onCollect = [this](uint32_t) { fs::remove_all(path("sub")); };
  const Records collected{
      "MID entry scanengine/quenlor.cpp quenlor() hardware",
      "MAX scanengine/quenlor.cpp quenlor() hardware After getIstance",
      "MAX scanengine/quenlor.cpp quenlor() hardware No config filename entered",
      "MAX scanengine/quenlor.cpp quenlor() hardware Get all supported groups",
      "MAX scanengine/quenlor.cpp quenlor() hardware getTable()"};
  const std::string exit = "MID exit scanengine/quenlor.cpp quenlor() hardware return=11";
  Records expected = collected;
  expected.push_back("MAX scanengine/quenlor.cpp quenlor() hardware printXML()");
  expected.push_back(exit);
  EXPECT_EQ(tracesOf({"-o", path("sub/out")}), expected);

  fs::create_directories(path("sub"));
  g_log.nullTables = true;  // then the footer is the first to fail
  expected = collected;
  expected.push_back(exit);
  EXPECT_EQ(tracesOf({"-o", path("sub/out")}), expected);
}

TEST_F(QuenlorTraceTest, usageErrorsAndListModeHaveNoExitRecord) {
  const Records entry{"MID entry scanengine/quenlor.cpp quenlor() hardware"};
  EXPECT_EQ(tracesOf({"-x"}), entry);
  EXPECT_EQ(tracesOf({"-l"}), entry);
}

// The factory collects names for the whole process, so this file loads each of its
// configurations in one test that knows what came before.
TEST_F(QuenlorTest, scanConfigurationChoosesGroupsOrderAndRepetition) {
  EXPECT_EQ(scan("<Hardware><Group Name='Memory'/><Group Name='Nonsense'/>"
                 "<Group Name='Processor'/><Group Name='Memory'/></Hardware>"),
            (std::vector<uint32_t>{group::kMemory, group::kProcessor, group::kMemory}));
  EXPECT_EQ(g_log.alive, 0);
}

TEST_F(QuenlorTest, withoutConfigurationTheWholeCatalogueGoesToStandardOutput) {
  EXPECT_EQ(run({}), 0);
  EXPECT_EQ(g_log.collected.size(), 19U);
  EXPECT_EQ(g_log.collected.front(), group::kComponentId);
  EXPECT_EQ(g_log.collected[3], group::kMemoryModules);
  EXPECT_EQ(out.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Hardware>\n", 0), 0U);
  EXPECT_EQ(out.substr(out.size() - 14), "\n\n</Hardware>\n");
  EXPECT_EQ(err, "");
}

TEST_F(QuenlorTest, outputNamedStdoutIsStandardOutput) {
  ASSERT_EQ(run({}), 0);
  const std::string plain = out;
  ASSERT_EQ(run({"-o", "stdout"}), 0);
  EXPECT_EQ(out, plain);
}

TEST_F(QuenlorTest, emptyConfigurationNameCountsAsNone) {
  EXPECT_EQ(run({"-c", ""}), 0);
  EXPECT_EQ(g_log.collected.size(), 19U);
}

TEST_F(QuenlorTest, configurationWithoutHardwareSectionScansEverything) {
  EXPECT_EQ(scan("<Software/>").size(), 19U);
}

TEST_F(QuenlorTest, malformedConfigurationEndsWithTwoBeforeAnyOutput) {
  EXPECT_TRUE(scan("<Hardware>", 2).empty());
  EXPECT_FALSE(fs::exists(path("out")));
  EXPECT_EQ(err,
            "quenlor: " + path("scan.xml") + ": the scan configuration is not well-formed XML\n");
}

TEST_F(QuenlorTest, missingConfigurationEndsWithFive) {
  EXPECT_EQ(run({"-c", path("none.xml")}), 5);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err, "quenlor: " + path("none.xml") + ": the scan configuration cannot be read\n");
}

TEST_F(QuenlorTest, ownConfigurationErrorEndsWithItsCodeAndScansNothing) {
  write("quenlor.conf", "this is no setting\n");
  EXPECT_EQ(run({"-h"}), DovCfg::kMalformed);
  EXPECT_EQ(out, "");
  EXPECT_NE(err.find("quenlor.conf"), std::string::npos);
  EXPECT_TRUE(g_log.collected.empty());
}

TEST_F(QuenlorTest, groupWithoutTableStillHasItsExtraTablesWritten) {
  g_log.nullTables = true;
  g_log.extraTables = 2;
  EXPECT_EQ(run({}), 0);
  EXPECT_NE(out.find("<TotalPhysical>100</TotalPhysical>"), std::string::npos);
  EXPECT_NE(out.find("<TotalPhysical>101</TotalPhysical>"), std::string::npos);
  EXPECT_EQ(g_log.alive, 0);
}

TEST_F(QuenlorTest, mifOptionWritesAComponent) {
  EXPECT_EQ(run({"-m"}), 0);
  EXPECT_EQ(
      out.rfind("Start Component\nName = \"Marrow Hardware Inventory UNIX MIF Generator\"", 0), 0U);
  EXPECT_EQ(out.substr(out.size() - 15), "\nEnd Component\n");
}

TEST_F(QuenlorTest, headerErrorEndsTheRunBeforeAnyCollection) {
  EXPECT_EQ(run({"-o", "/nonexistent/directory/out"}), 4);
  EXPECT_TRUE(g_log.collected.empty());
  EXPECT_EQ(err, "quenlor: /nonexistent/directory/out: the output cannot be written\n");
  EXPECT_EQ(run({"-o", directory.path().string()}), 11);  // a directory opens for reading only
  EXPECT_EQ(err, "quenlor: " + directory.path().string() + ": the output cannot be written\n");
  EXPECT_TRUE(g_log.collected.empty());
}

TEST_F(QuenlorTest, fullDeviceIsAFailedWrite) {
  EXPECT_EQ(run({"-o", "/dev/full"}), 4);
  EXPECT_TRUE(g_log.collected.empty());
}

TEST_F(QuenlorTest, writerErrorStopsTheScanAfterTheCurrentGroup) {
  fs::create_directories(path("sub"));
  g_log.onCollect = [this](uint32_t id) {
    if (id == group::kMemory) fs::remove_all(path("sub"));
  };
  EXPECT_EQ(run({"-o", path("sub/out")}), 11);
  EXPECT_EQ(g_log.collected,
            (std::vector<uint32_t>{group::kComponentId, group::kProcessor, group::kMemory}));
  EXPECT_EQ(g_log.alive, 0);
}

TEST_F(QuenlorTest, writerErrorLeavesOutTheOtherTablesOfItsGroupAndTheFooter) {
  for (const bool mainTable : {true, false}) {
    test::FakeHost machine;
    fs::create_directories(path("sub"));
    g_log = {};
    g_log.extraTables = 2;
    g_log.nullTables = !mainTable;
    g_log.onCollect = [this](uint32_t) { fs::remove_all(path("sub")); };
    // From here on the output could be written again.
    g_log.onDelete = [this](uint32_t) { fs::create_directories(path("sub")); };
    EXPECT_EQ(run({"-o", path("sub/out")}), 11);
    EXPECT_EQ(machine.sleptMicroseconds, 1000000U) << "the delay of one table's second attempt";
    EXPECT_EQ(g_log.collected, std::vector<uint32_t>{group::kComponentId});
    EXPECT_FALSE(fs::exists(path("sub/out")));
  }
}

TEST_F(QuenlorTest, localeOfTheEnvironmentIsSet) {
  struct LocaleHost : test::FakeHost {
    const char* setlocale(int category, const char* locale) override {
      if (locale != nullptr) set.emplace_back(category, locale);
      return FakeHost::setlocale(category, locale);
    }
    std::vector<std::pair<int, std::string>> set;
  } machine;
  EXPECT_EQ(run({"-h"}), 0);
  EXPECT_EQ(machine.set, (std::vector<std::pair<int, std::string>>{{LC_ALL, ""}}));
}

TEST_F(QuenlorTest, factoryKnowsItsConfigurationBeforeTheFirstGroup) {
  write("quenlor.conf", "config_dir = /first/dir\nhwscanner.config_file = known.xml\n");
  std::string seen;
  g_log.onCollect = [&seen](uint32_t) {
    if (seen.empty()) seen = GroupFactory::getInstance().hwConfigFile().str();
  };
  const test::FakeHost machine;
  EXPECT_EQ(run({}), 0);
  EXPECT_EQ(seen, "/first/dir/known.xml");
}

TEST_F(QuenlorTest, footerErrorIsTheStatus) {
  fs::create_directories(path("sub"));
  g_log.nullTables = true;
  g_log.onCollect = [this](uint32_t id) {
    if (id == group::kUnixCpuMeter) fs::remove_all(path("sub"));
  };
  EXPECT_EQ(run({"-o", path("sub/out")}), 11);
}

TEST_F(QuenlorTest, olderDocumentIsReplaced) {
  write("out", std::string(100000, 'x'));
  g_log.nullTables = true;
  EXPECT_EQ(run({"-o", path("out")}), 0);
  EXPECT_EQ(read("out"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Hardware>\n\n\n</Hardware>\n");
}

TEST_F(QuenlorTest, documentHasItsExactForm) {
  GroupFactory::getInstance().setCreator([](unsigned long id) -> VelGroup* {
    return id == group::kMemory ? new LoggingGroup(group::kMemory) : nullptr;
  });
  EXPECT_EQ(run({}), 0);
  EXPECT_EQ(out, kOneMemoryTable);
}

TEST_F(QuenlorTest, listModePrintsEntriesAndScansNoDocument) {
  EXPECT_EQ(run({"-l", "-w"}), 0);
  EXPECT_EQ(out.rfind("cpu_mhertz:\t", 0), 0U);
  EXPECT_EQ(out.find("<Hardware>"), std::string::npos);
}

TEST_F(QuenlorTest, listWaitsForItsReader_butNotForFile) {
  PrintingBuilder builder;
  EXPECT_EQ(run({"-l"}, builder), 0);
  EXPECT_FALSE(builder.wasReadersTurn) << "collecting is the scan's own time";
  EXPECT_TRUE(builder.isReadersTurn);
  EXPECT_FALSE(scanState().isReadersTurn);
  EXPECT_EQ(run({"-l", "-o", path("list")}, builder), 0);
  EXPECT_FALSE(builder.isReadersTurn);
}

TEST_F(QuenlorTest, listModeGoesToTheOutputFileWhereverTheOptionStands) {
  EXPECT_EQ(run({"-l", "-o", path("list.txt")}), 0);
  EXPECT_EQ(out, "");
  EXPECT_EQ(read("list.txt").rfind("cpu_mhertz:\t", 0), 0U);
  EXPECT_EQ(run({"-l", "-o", "/nonexistent/list.txt"}), 18);
  EXPECT_EQ(err, "quenlor: /nonexistent/list.txt: the output cannot be written\n");
}

TEST_F(QuenlorTest, failingListBuildEndsWithEight) {
  FailingBuilder builder;
  EXPECT_EQ(run({"-l"}, builder), 8);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err, "");
  EXPECT_EQ(builder.arguments, std::vector<int>{1});
}

TEST_F(QuenlorTest, wAlonePrintsTheUsageText) {
  EXPECT_EQ(run({"-w"}), 1);
  EXPECT_EQ(err.rfind("Usage:  quenlor", 0), 0U);
  EXPECT_TRUE(err.ends_with("-m              Generate the MIF output for hardware scan.\n"));
  EXPECT_TRUE(g_log.collected.empty());
}

TEST_F(QuenlorTest, helpEndsWithZero) {
  EXPECT_EQ(run({"-h"}), 0);
  EXPECT_EQ(out, "");
}

TEST_F(QuenlorTest, lowerCaseTouchesAsciiCapitalsOnly) {
  char text[] = "AzZ09_\xC4\xDC@[";
  char* pointer = text;
  lowerCase(pointer);
  EXPECT_STREQ(text, "azz09_\xC4\xDC@[");
}

}  // namespace
}  // namespace quenlor
