#include "factory/GroupFactory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "config/DovCfg.h"
#include "factory/HWXmlDovParser.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"
#include "tests/support/ProcessorTime.h"
#include "tests/support/TemporaryDirectory.h"
#include "xmltree/Node.h"

namespace quenlor {
namespace {

namespace fs = std::filesystem;

class GroupFactoryTest : public ::testing::Test {
 protected:
  std::string write(const std::string& name, const std::string& text) const {
    return directory.write(name, text);
  }

  // Names that loading the text adds, after the names that earlier tests left in the process-wide
  // list.
  std::vector<std::string> groupsOf(const std::string& text, int expectedResult) {
    const size_t before = factory.groupNames().size();
    EXPECT_EQ(factory.loadNodeFromFile(write("scan.xml", text), kHardwareSection), expectedResult);
    std::vector<std::string> added;
    for (const String& name : factory.groupNames()) added.push_back(name.str());
    added.erase(added.begin(), added.begin() + static_cast<std::ptrdiff_t>(before));
    return added;
  }

  test::TemporaryDirectory directory;
  GroupFactory& factory = GroupFactory::getInstance();
};

using Names = std::vector<std::string>;

TEST_F(GroupFactoryTest, groupsAreTakenInFileOrderDuplicatesIncluded) {
  EXPECT_EQ(groupsOf("<Hardware><Group Name='Memory'/><Group Name='Processor'/>"
                     "<Group Name='Memory'/></Hardware>",
                     0),
            (Names{"Memory", "Processor", "Memory"}));
}

TEST_F(GroupFactoryTest, hardwareSectionIsFoundAnywhereAndNestedOnesAreSearched) {
  EXPECT_EQ(
      groupsOf("<Scan><Other/><Hardware><Group Name='A'/><Hardware><Group Name='B'/></Hardware>"
               "</Hardware><Hardware><Group Name='C'/></Hardware></Scan>",
               0),
      (Names{"A", "B", "C"}));
}

TEST_F(GroupFactoryTest, groupWithoutNameAndOtherElementsAddNothing) {
  EXPECT_EQ(groupsOf("<Hardware><Group/><group Name='x'/><Other><Group Name='y'/></Other>"
                     "<Group name='z'/></Hardware>",
                     0),
            Names{});
}

TEST_F(GroupFactoryTest, emptyNameOfAGroupIsTakenAsItStands) {
  EXPECT_EQ(groupsOf("<Hardware><Group Name=''/><Group Name=' Memory'/></Hardware>", 0),
            (Names{"", " Memory"}));
}

TEST_F(GroupFactoryTest, fileWithoutHardwareSectionSaysSo) {
  EXPECT_EQ(groupsOf("<Software><Group Name='A'/></Software>", -1), Names{});
  EXPECT_EQ(groupsOf("<hardware><Group Name='A'/></hardware>", -1), Names{});
}

TEST_F(GroupFactoryTest, malformedFilesAreParseErrors) {
  EXPECT_EQ(groupsOf("<Hardware><Group Name='A'/>", 2), Names{});
  EXPECT_EQ(groupsOf("", 2), Names{});
  EXPECT_EQ(groupsOf("just text", 2), Names{});
}

TEST_F(GroupFactoryTest, whatIsNoFileCannotBeOpened_fifoIsNotWaitedFor) {
  EXPECT_EQ(factory.loadNodeFromFile(directory.path().string(), kHardwareSection), 5);
  EXPECT_EQ(factory.loadNodeFromFile("/dev/null", kHardwareSection), 5);
  const std::string fifo = directory.path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(factory.loadNodeFromFile(fifo, kHardwareSection), 5);
}

TEST_F(GroupFactoryTest, thousandLevelsAreTaken_moreThanTheLimitIsToldApartFromOtherErrors) {
  const auto nested = [](int levels) {
    std::string text;
    for (int i = 1; i < levels; ++i) text += "<Hardware>";
    text += "<Group Name='deep'/>";
    for (int i = 1; i < levels; ++i) text += "</Hardware>";
    return text;
  };
  EXPECT_EQ(groupsOf(nested(1000), 0), Names{"deep"});
  EXPECT_FALSE(factory.isTooDeep());
  EXPECT_EQ(groupsOf(nested(1025), 2), Names{});
  EXPECT_TRUE(factory.isTooDeep());
  EXPECT_EQ(groupsOf("<Hardware>", 2), Names{});
  EXPECT_FALSE(factory.isTooDeep());
}

TEST_F(GroupFactoryTest, missingFileCannotBeOpened) {
  EXPECT_EQ(factory.loadNodeFromFile(directory.path("none.xml"), kHardwareSection), 5);
  EXPECT_EQ(factory.loadNodeFromFile(directory.path("none.xml"), kProcessorsSection), 5);
}

TEST_F(GroupFactoryTest, otherSectionsAreIgnoredWithoutReadingTheFile) {
  EXPECT_EQ(factory.loadNodeFromFile(directory.path("none.xml"), 2), 0);
  EXPECT_EQ(factory.loadNodeFromFile("", 0), 0);
}

TEST_F(GroupFactoryTest, entityBombsAndExternalEntitiesAreRefusedQuickly) {
  std::string bomb = "<!DOCTYPE H [<!ENTITY a '0123456789'>";
  for (char c = 'b'; c <= 'z'; ++c) {
    bomb += std::string("<!ENTITY ") + c + " '";
    for (int i = 0; i < 10; ++i) bomb += std::string("&") + static_cast<char>(c - 1) + ";";
    bomb += "'>";
  }
  bomb += "]><Hardware><Group Name='&z;'/></Hardware>";
  const auto start = test::processorTime();
  EXPECT_EQ(groupsOf(bomb, 2), Names{});
  EXPECT_EQ(
      groupsOf("<!DOCTYPE H [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><Hardware>&e;</Hardware>", 2),
      Names{});
  EXPECT_LT(test::processorTime() - start, std::chrono::seconds(2));
}

TEST_F(GroupFactoryTest, nestingBeyondTheLimitIsAParseError) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<Hardware>";
  EXPECT_EQ(groupsOf(deep, 2), Names{});
}

TEST_F(GroupFactoryTest, aMillionGroupsAreRead) {
  std::string many = "<Hardware>";
  for (int i = 0; i < 1000000; ++i) many += "<Group/>";
  EXPECT_EQ(groupsOf(many + "<Group Name='last'/></Hardware>", 0), Names{"last"});
}

TEST_F(GroupFactoryTest, processorsKeepTheirNineTexts) {
  const size_t before = factory.processors().size();
  const std::string path =
      write("hw.xml",
            "<X><Processors><Processor Manufactor='INTEL' BrandID='1' Signature='2' Type='0' "
            "Family='6' Model='7' PCX='8' Description='d' TypeEnum='t'/><Cpu/><Processor/>"
            "</Processors></X>");
  ASSERT_EQ(factory.loadNodeFromFile(path, kProcessorsSection), 0);
  ASSERT_EQ(factory.processors().size(), before + 2);
  const ProcessorInfo& full = *factory.processors()[before];
  EXPECT_EQ(full.manufacturer.str() + full.brandId.str() + full.signature.str() + full.type.str() +
                full.family.str() + full.model.str() + full.pcx.str() + full.description.str() +
                full.typeEnum.str(),
            "INTEL120678dt");
  EXPECT_TRUE(factory.processors()[before + 1]->manufacturer.empty());
}

TEST_F(GroupFactoryTest, laterProcessorsSectionReplacesTheEarlierOne) {
  const size_t before = factory.processors().size();
  const std::string path = write("hw.xml",
                                 "<X><Processors><Processor Model='1'/></Processors>"
                                 "<Processors><Processor Model='2'/></Processors></X>");
  ASSERT_EQ(factory.loadNodeFromFile(path, kProcessorsSection), 0);
  ASSERT_EQ(factory.processors().size(), before + 1);
  EXPECT_EQ(factory.processors()[before]->model.str(), "2");
}

TEST_F(GroupFactoryTest, coresPerPackageDetectsItsBase) {
  const size_t before = factory.qcms().size();
  const std::string path =
      write("hw.xml",
            "<QCMs><QCM CoresPerPackage='0x10'/><QCM/><QCM CoresPerPackage=''/><Cpu/>"
            "<QCM CoresPerPackage='010' Family='f' CC='c' NewFamily='n'/>"
            "<QCM CoresPerPackage='4294967298'/></QCMs>");
  ASSERT_EQ(factory.loadNodeFromFile(path, kQcmsSection), 0);
  ASSERT_EQ(factory.qcms().size(), before + 5);
  EXPECT_EQ(factory.qcms()[before]->coresPerPackage, 16U);
  EXPECT_EQ(factory.qcms()[before + 1]->coresPerPackage, 1U);
  EXPECT_EQ(factory.qcms()[before + 2]->coresPerPackage, 1U);
  EXPECT_EQ(factory.qcms()[before + 3]->coresPerPackage, 8U);
  EXPECT_EQ(factory.qcms()[before + 3]->family.str(), "f");
  EXPECT_EQ(factory.qcms()[before + 3]->cc.str(), "c");
  EXPECT_EQ(factory.qcms()[before + 3]->newFamily.str(), "n");
  EXPECT_EQ(factory.qcms()[before + 4]->coresPerPackage, 4294967295U);
}

TEST_F(GroupFactoryTest, sectionsAreHandedOverOnceAlsoWhenNested) {
  HWParseNodeSink sink;
  const HWXmlDovParser parser(
      write("hw.xml", "<Processors><QCMs><QCM/></QCMs><Processor/></Processors>"), sink);
  EXPECT_EQ(parser.error(), 0);
  EXPECT_EQ(sink.getNode(kHardwareSection), nullptr);
  const std::unique_ptr<Node> processors(sink.getNode(kProcessorsSection));
  ASSERT_TRUE(processors);
  EXPECT_EQ(sink.getNode(kProcessorsSection), nullptr);
  EXPECT_EQ(sink.getNode(kQcmsSection), nullptr);  // left together with the node around it
}

TEST_F(GroupFactoryTest, allGroupsAreAppendedInCatalogueOrder) {
  std::list<String> names{"before"};
  EXPECT_EQ(factory.getAllGroups(names), 0);
  ASSERT_EQ(names.size(), 20U);
  EXPECT_EQ(names.front().str(), "before");
  EXPECT_EQ(std::next(names.begin())->str(), "ComponentID");
  EXPECT_EQ(names.back().str(), "UnixCpuMeter");
}

TEST_F(GroupFactoryTest, unknownNamesHaveNoGroup) {
  static int calls = 0;
  factory.setCreator([](unsigned long id) -> VelGroup* {
    ++calls;
    EXPECT_EQ(id, 0UL);
    return nullptr;
  });
  EXPECT_EQ(factory.getGroup("processor"), nullptr);
  EXPECT_EQ(calls, 1);
  factory.setCreator(nullptr);
  EXPECT_EQ(factory.getVELGroup(group::kMemory), nullptr);
}

TEST_F(GroupFactoryTest, hardwareConfigurationFileHasADefaultName) {
  const std::string program = write("quenlor", "");
  write("quenlor.conf", "config_dir = /some/dir\nhwscanner.config_file =\n");
  DovCfg::initialize(program.c_str());
  EXPECT_EQ(factory.initialise(), 1);
  EXPECT_EQ(factory.hwConfigFile().str(), "/some/dir/DovHWConfig.xml");
  write("quenlor.conf", "config_dir = /some/dir\nhwscanner.config_file = x\n");
  DovCfg::initialize(program.c_str());
  factory.initialise();
  EXPECT_EQ(factory.hwConfigFile().str(), "/some/dir/x");
}

TEST_F(GroupFactoryTest, initialisingReadsTheFirmwareOnceForAllGroups) {
  while (globalSMBIOSTable != nullptr) SMBIOSTable::terminateGlobalTable();
  const test::FakeHost machine;
  factory.initialise();
  EXPECT_NE(globalSMBIOSTable, nullptr);
  const size_t attempts = machine.opened.size();
  EXPECT_GT(attempts, 0U);
  EXPECT_EQ(machine.opened.front(), "/dev/mem");
  factory.initialise();
  EXPECT_EQ(machine.opened.size(), attempts);
  while (globalSMBIOSTable != nullptr) SMBIOSTable::terminateGlobalTable();
}

using Records = std::vector<std::string>;

TEST_F(GroupFactoryTest, loadingGroupsTracesEveryStep) {
  const std::string path =
      write("scan.xml", "<Hardware><Group Name='A'/><Group/><Group Name='B'/></Hardware>");
  const test::CapturedTraces traces;
  ASSERT_EQ(factory.loadNodeFromFile(path, kHardwareSection), 0);
  const std::string max = "MAX com/GroupFactory.cpp loadNodeFromFile() hardware ";
  const std::string added =
      "MAX com/GroupFactory.cpp getHWGroupFromNode() hardware add a new element to the group...";
  EXPECT_EQ(traces.texts(),
            (Records{max + "Open config file " + path + " for read", max + "After ParseNodeSink()",
                     max + "After new XmlDovParser()", max + "After sink->getNode()",
                     max + "Error from dovparser is 0", added, added,
                     max + "After parsing config file " + path,
                     "MID exit com/GroupFactory.cpp loadNodeFromFile() hardware return =0"}));
}

TEST_F(GroupFactoryTest, loadingProcessorsTracesNodesAndElements) {
  const std::string path =
      write("hw.xml", "<X><Processors><Processor/></Processors><QCMs><QCM/></QCMs></X>");
  const test::CapturedTraces traces;
  ASSERT_EQ(factory.loadNodeFromFile(path, kProcessorsSection), 0);
  const std::string max = "MAX com/GroupFactory.cpp loadNodeFromFile() hardware ";
  const std::string node = "MAX com/HWParseNodeSink.cpp HWParseNodeSink::onNodeTree hardware ";
  EXPECT_EQ(
      traces.texts(),
      (Records{max + "Open config file " + path + " for read", max + "After HWParseNodeSink()",
               node + "Node name is X", node + "Node name is Processors",
               node + "Processor node stored", node + "Node name is Processor",
               node + "no children", node + "Node name is QCMs", node + "QCM node stored",
               node + "Node name is QCM", node + "no children", max + "After new HWXmlDovParser()",
               max + "After sink->getNode()", max + "Error from dovparser is 0",
               "MAX com/GroupFactory.cpp getProcessorFromNode() hardware add a new element",
               max + "After parsing config file " + path,
               "MID exit com/GroupFactory.cpp loadNodeFromFile() hardware return =0"}));
  ASSERT_EQ(factory.loadNodeFromFile(path, kQcmsSection), 0);
  EXPECT_EQ(traces.count(" getQCMFromNode() hardware add a new element"), 1);
}

TEST_F(GroupFactoryTest, failingLoadsTraceWhatFailedAtTheLowestLevel) {
  const std::string broken = write("broken.xml", "<Processors>\n");
  const std::string missing = directory.path("none.xml");
  const test::CapturedTraces traces;
  EXPECT_EQ(factory.loadNodeFromFile(missing, kProcessorsSection), 5);
  const std::string at = " com/GroupFactory.cpp loadNodeFromFile() hardware ";
  EXPECT_EQ(traces.texts(), (Records{"MIN" + at + "Can't open file " + missing + " for read",
                                     "MID exit" + at + "return =5"}));
  EXPECT_EQ(factory.loadNodeFromFile(broken, kProcessorsSection), 2);
  Records records = traces.texts();
  ASSERT_EQ(records.size(), 11U);
  EXPECT_EQ(records[2], "MAX" + at + "Open config file " + broken + " for read");
  EXPECT_EQ(records[3], "MAX" + at + "After HWParseNodeSink()");
  EXPECT_EQ(records[4],
            "MAX com/HWParseNodeSink.cpp HWParseNodeSink::onCriticalError hardware Message is no "
            "element found at line 2");
  EXPECT_EQ(records[7], "MAX" + at + "Error from dovparser is -1009");
  EXPECT_EQ(records[8], "MIN" + at + "Error parsing the xmlfile " + broken);
  EXPECT_EQ(records[9], "MAX" + at + "After parsing config file " + broken);
  EXPECT_EQ(records[10], "MID exit" + at + "return =2");
}

TEST_F(GroupFactoryTest, ignoredSectionIsTracedWithItsResult) {
  const test::CapturedTraces traces;
  EXPECT_EQ(factory.loadNodeFromFile("none.xml", 7), 0);
  const std::string at = " com/GroupFactory.cpp loadNodeFromFile() hardware ";
  EXPECT_EQ(traces.texts(), (Records{"MAX" + at + "After parsing config file none.xml",
                                     "MID exit" + at + "return =0"}));
}

TEST_F(GroupFactoryTest, warningsAndErrorsOfTheSinkAreTracedWithTheirLine) {
  HWParseNodeSink sink;
  const test::CapturedTraces traces;
  EXPECT_EQ(sink.onWarning("w", 1), 0);
  EXPECT_EQ(sink.onError("e", 2), -1009);
  EXPECT_EQ(sink.onCriticalError("c", 3), -1009);
  const std::string at = "MAX com/HWParseNodeSink.cpp HWParseNodeSink::";
  EXPECT_EQ(traces.texts(), (Records{at + "onWarning hardware Message is w at line 1",
                                     at + "onError hardware Message is e at line 2",
                                     at + "onCriticalError hardware Message is c at line 3"}));
}

TEST_F(GroupFactoryTest, gettingAGroupTracesItsNameOnEntryAndItsIdOnExit) {
  const test::CapturedTraces traces;
  EXPECT_EQ(factory.getGroup("Memory"), nullptr);
  EXPECT_EQ(factory.getGroup("memory"), nullptr);
  const std::string at = " com/GroupFactory.cpp getGroup() hardware ";
  EXPECT_EQ(traces.texts(),
            (Records{"MID entry" + at + "groupName=Memory", "MID exit" + at + "groupId=3",
                     "MID entry" + at + "groupName=memory", "MID exit" + at + "groupId=0"}));
}

TEST_F(GroupFactoryTest, listOfAllGroupsAndConfigurationNameAreTraced) {
  const test::CapturedTraces traces;
  std::list<String> names;
  factory.getAllGroups(names);
  const Records groups = traces.texts();
  ASSERT_EQ(groups.size(), 19U);
  EXPECT_EQ(groups.front(), "MAX com/GroupFactory.cpp getAllGroups() hardware group = ComponentID");
  EXPECT_EQ(groups.back(), "MAX com/GroupFactory.cpp getAllGroups() hardware group = UnixCpuMeter");
  factory.initialise();
  EXPECT_EQ(traces.count("hardware m_HWConfigFile = " + factory.hwConfigFile().str()), 1);
}

TEST_F(GroupFactoryTest, shippedHardwareConfigurationLoads) {
  const size_t before = factory.processors().size();
  const std::string path = std::string(QUENLOR_SOURCE_DIR) + "/data/DovHWConfig.xml";
  ASSERT_EQ(factory.loadNodeFromFile(path, kProcessorsSection), 0);
  EXPECT_EQ(factory.processors().size(), before + 363);
  for (size_t i = before; i < factory.processors().size(); ++i) {
    EXPECT_LE(factory.processors()[i]->typeEnum.length(), 32U);
    EXPECT_FALSE(factory.processors()[i]->typeEnum.empty());
  }
  EXPECT_EQ(factory.loadNodeFromFile(path, kHardwareSection), -1);
}

}  // namespace
}  // namespace quenlor
