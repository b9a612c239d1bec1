#include "readers/virtualization/retriever.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <chrono>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/readers/virtualization/VmwareGuest.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

constexpr const char* kCommand = "agent";

TEST(GetInfo, firstLineWithoutTrailingBlanks) {
  FakeHost host;
  host.commands[kCommand] = {"KQ XYZ12 \t \r\nsecond line\n", 0};
  std::string text = "before";
  EXPECT_EQ(getInfo(text, kCommand), 0);
  EXPECT_EQ(text, "KQ XYZ12");
  EXPECT_EQ(host.openCommands(), 0);
}

TEST(GetInfo, firstCharacterIsNeverStripped) {
  FakeHost host;
  std::string text;
  for (const auto& [output, expected] :
       {std::pair{"\n", "\n"}, {" \n", " "}, {"   \n", " "}, {" ", " "}, {"x", "x"}}) {
    host.commands[kCommand] = {output, 0};
    EXPECT_EQ(getInfo(text, kCommand), 0);
    EXPECT_EQ(text, expected);
  }
}

TEST(GetInfo, exitCodeIsReturnedAndTheOutputUntouched) {
  CapturedTraces trace("MIN");
  FakeHost host;
  host.commands[kCommand] = {"No value found\n", 3 << 8};
  std::string text = "before";
  EXPECT_EQ(getInfo(text, kCommand), 3);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(host.openCommands(), 0);
  EXPECT_TRUE(trace.contains("hardware command 'agent' exit with problems: return code = 3"));
}

TEST(GetInfo, stepsAreTraced) {
  CapturedTraces trace;
  FakeHost host;
  host.commands[kCommand] = {"answer\n", 0};
  std::string text;
  EXPECT_EQ(getInfo(text, kCommand), 0);
  for (const char* record :
       {"hardware after command=agent", "hardware info retrieved successful = answer"}) {
    EXPECT_TRUE(trace.contains(record)) << record;
  }
}

TEST(GetInfo, exitCodeIsASignedByte) {
  FakeHost host;
  std::string text = "before";
  for (const auto& [code, expected] : {std::pair{127, 127}, {128, -128}, {255, -1}}) {
    host.commands[kCommand] = {"x\n", code << 8};
    EXPECT_EQ(getInfo(text, kCommand), expected);
  }
  EXPECT_EQ(text, "before");
}

TEST(GetInfo, endByASignalIsNoExitCode) {
  FakeHost host;
  host.commands[kCommand] = {"x\n", SIGKILL};
  std::string text;
  EXPECT_EQ(getInfo(text, kCommand), 0);
  EXPECT_EQ(text, "x");
}

TEST(GetInfo, commandThatCannotBeRunIsMinusOne) {
  CapturedTraces trace("MIN");
  FakeHost host;
  host.unstartableCommands.insert(kCommand);
  std::string text = "before";
  EXPECT_EQ(getInfo(text, kCommand), -1);
  EXPECT_EQ(text, "before");
  EXPECT_TRUE(trace.contains("hardware unable to obtain output stream from command 'agent'"));
}

TEST(GetInfo, commandThatPrintsNothingIsMinusOneWhateverItsExitCode) {
  CapturedTraces trace("MIN");
  FakeHost host;
  std::string text = "before";
  EXPECT_EQ(getInfo(text, kCommand), -1);  // missing: 127
  host.commands[kCommand] = {"", 0};
  EXPECT_EQ(getInfo(text, kCommand), -1);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(host.openCommands(), 0);
  EXPECT_EQ(trace.countHolding("hardware no suitable output text from command 'agent'"), 2);
}

TEST(GetInfo, lineGrowsBeyondAnyBuffer) {
  FakeHost host;
  std::string text;
  for (const size_t size : {298u, 299u, 300u, 301u, 100000u}) {
    host.commands[kCommand] = {std::string(size, 'x') + "\n", 0};
    EXPECT_EQ(getInfo(text, kCommand), 0);
    EXPECT_EQ(text.size(), size);
  }
}

TEST(GetInfo, endlessLineDoesNotFillTheMemory) {
  FakeHost host;
  host.commands[kCommand] = {std::string(3 << 20, 'x'), 0};
  std::string text;
  EXPECT_EQ(getInfo(text, kCommand), 0);
  EXPECT_EQ(text.size(), size_t{1} << 20);
}

TEST(GetInfo, textBehindANulByteIsNotSeen) {
  FakeHost host;
  std::string text;
  host.commands[kCommand] = {std::string("ab\0cd\nef\n", 9), 0};
  EXPECT_EQ(getInfo(text, kCommand), 0);
  EXPECT_EQ(text, "ab");
  host.commands[kCommand] = {std::string("\0\n", 2), 0};
  EXPECT_EQ(getInfo(text, kCommand), 0);
  EXPECT_EQ(text, "");
}

TEST(GetInfo, binaryTextPassesThrough) {
  FakeHost host;
  host.commands[kCommand] = {"\xff\xfe\x01\n", 0};
  std::string text;
  EXPECT_EQ(getInfo(text, kCommand), 0);
  EXPECT_EQ(text, "\xff\xfe\x01");
}

TEST(Retriever, eachFunctionRunsItsOwnCommand) {
  FakeHost host;
  std::string text;
  int number = 0;
  double real = 0;
  getNodeId(text);
  getNodeCapacity(&number);
  getVMId(text);
  getVMCapacity(&real);
  getPhysicalProc(text);
  HostInfo record;
  getHostInfo(record);
  EXPECT_EQ(host.started,
            (std::vector<std::string>{
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_id' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_capacity' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_vm_id' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_vm_capacity' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_physical_processor' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_man' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_id' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_prod' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_ver' 2>/dev/null",
                "vmware-guestd --cmd 'info-get guestinfo.dov_node_type' 2>/dev/null"}));
}

TEST(Retriever, textsAreUntouchedAndNumbersZeroOnFailure) {
  FakeHost host;
  std::string text = "before";
  int number = -1;
  double real = -1;
  EXPECT_EQ(getNodeId(text), 0);
  EXPECT_EQ(getVMId(text), 0);
  EXPECT_EQ(getPhysicalProc(text), 0);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(getNodeCapacity(&number), 0);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(getVMCapacity(&real), 0);
  EXPECT_EQ(real, 0);
}

int nodeCapacityOf(FakeHost& host, const std::string& text) {
  setAgentValue(host, "dov_node_capacity", text);
  int capacity = -1;
  EXPECT_EQ(getNodeCapacity(&capacity), 1);
  return capacity;
}

TEST(Retriever, nodeCapacityIsTheLeadingDecimal) {
  FakeHost host;
  EXPECT_EQ(nodeCapacityOf(host, "4"), 4);
  EXPECT_EQ(nodeCapacityOf(host, " 12 packages"), 12);
  EXPECT_EQ(nodeCapacityOf(host, "-2"), -2);
  EXPECT_EQ(nodeCapacityOf(host, "many"), 0);
  EXPECT_EQ(nodeCapacityOf(host, ""), 0);
  EXPECT_EQ(nodeCapacityOf(host, "99999999999999999999"), INT_MAX);
}

double vmCapacityOf(FakeHost& host, const std::string& text) {
  setAgentValue(host, "dov_vm_capacity", text);
  double capacity = -1;
  EXPECT_EQ(getVMCapacity(&capacity), 1);
  return capacity;
}

TEST(Retriever, guestCapacityHasADecimalPoint) {
  FakeHost host;
  EXPECT_DOUBLE_EQ(vmCapacityOf(host, "1.500000"), 1.5);
  EXPECT_DOUBLE_EQ(vmCapacityOf(host, " +2.25x"), 2.25);
  EXPECT_DOUBLE_EQ(vmCapacityOf(host, "1,5"), 1);
  EXPECT_DOUBLE_EQ(vmCapacityOf(host, "-1"), -1);
  EXPECT_DOUBLE_EQ(vmCapacityOf(host, "0x18"), 24);
}

TEST(Retriever, guestCapacityThatIsNoFiniteNumberIsZero) {
  FakeHost host;
  for (const char* text :
       {"", "unlimited", "nan", "inf", "-inf", "1e999", ".", "+-5", "-+5", "+"}) {
    EXPECT_EQ(vmCapacityOf(host, text), 0) << text;
  }
}

// What the command runner does to an agent that never answers.
constexpr int kKilled = SIGKILL;

class StuckAgent : public testing::Test {
 protected:
  StuckAgent() { askStuckAgentAgain(); }
  ~StuckAgent() override { askStuckAgentAgain(); }

  FakeHost m_host;
};

TEST_F(StuckAgent, isNotWaitedForASecondTime) {
  const CapturedTraces trace("MIN");
  m_host.commands[agentCommand("dov_node_id")] = {"", kKilled};
  setAgentValue(m_host, "dov_vm_id", "guest-7");
  std::string text = "before";
  EXPECT_EQ(getNodeId(text), 0);
  EXPECT_EQ(getVMId(text), 0);
  HostInfo record;
  EXPECT_EQ(getHostInfo(record), -1);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(m_host.started.size(), 1u);
  EXPECT_EQ(trace.count("hardware unable to obtain output stream from command '" +
                        agentCommand("dov_vm_id") + "'"),
            1);
}

// On the real machine: the agent is a program of this name on the path.
class HangingAgent : public testing::Test {
 protected:
  void install(const std::string& script) {
    const auto agent = m_directory.path() / "vmware-guestd";
    std::ofstream(agent) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(agent, std::filesystem::perms::owner_all);
    setenv("PATH", (m_directory.path().string() + ":" + m_path).c_str(), 1);
    askStuckAgentAgain();
  }
  ~HangingAgent() override {
    setenv("PATH", m_path.c_str(), 1);
    askStuckAgentAgain();
  }

  TemporaryDirectory m_directory;
  const std::string m_path = getenv("PATH");
  const std::chrono::steady_clock::time_point m_before = std::chrono::steady_clock::now();
};

TEST_F(HangingAgent, isWaitedForOneSecondAfterItsLine_whatItPrintedIsTaken) {
  install("echo KQXYZ12\nsleep 100\n");
  std::string text;
  EXPECT_EQ(getNodeId(text), 1);
  EXPECT_EQ(text, "KQXYZ12");
  const auto waited = std::chrono::steady_clock::now() - m_before;
  EXPECT_GE(waited, std::chrono::seconds(1));
  EXPECT_LT(waited, std::chrono::seconds(5));
}

TEST_F(HangingAgent, thatGoesOnPrintingEndsAsSoon) {
  install("while echo KQXYZ12; do :; done\n");
  std::string text;
  EXPECT_EQ(getNodeId(text), 1);
  EXPECT_EQ(text, "KQXYZ12");
  EXPECT_LT(std::chrono::steady_clock::now() - m_before, std::chrono::seconds(5));
}

TEST_F(HangingAgent, thatEndsInTimeKeepsItsExitCode) {
  install("echo no value\nsleep 0.2\nexit 3\n");
  std::string text = "before";
  EXPECT_EQ(getNodeId(text), 0);
  EXPECT_EQ(text, "before");
}

TEST_F(StuckAgent, isAskedAgainWhenToldSo) {
  m_host.commands[agentCommand("dov_node_id")] = {"", kKilled};
  setAgentValue(m_host, "dov_vm_id", "guest-7");
  std::string text;
  EXPECT_EQ(getNodeId(text), 0);
  askStuckAgentAgain();
  EXPECT_EQ(getVMId(text), 1);
  EXPECT_EQ(text, "guest-7");
}

TEST_F(StuckAgent, isNoneThatAnsweredBeforeItsEndOrEndedByItself) {
  m_host.commands[agentCommand("dov_node_id")] = {"KQXYZ12\n", kKilled};
  m_host.commands[agentCommand("dov_node_capacity")] = {"", SIGTERM};
  m_host.commands[agentCommand("dov_physical_processor")] = {"", 127 << 8};
  setAgentValue(m_host, "dov_vm_id", "guest-7");
  std::string text;
  int capacity = 0;
  EXPECT_EQ(getNodeId(text), 1);
  EXPECT_EQ(getNodeCapacity(&capacity), 0);
  EXPECT_EQ(getPhysicalProc(text), 0);
  EXPECT_EQ(getVMId(text), 1);
}

TEST_F(StuckAgent, isTheAgentsAloneNotOfOtherCommands) {
  m_host.commands[kCommand] = {"", kKilled};
  setAgentValue(m_host, "dov_vm_id", "guest-7");
  std::string text;
  EXPECT_EQ(getInfo(text, kCommand), -1);
  EXPECT_EQ(getVMId(text), 1);
  EXPECT_EQ(getInfo(text, kCommand), -1);
  EXPECT_EQ(m_host.started.size(), 3u);
}

TEST(Retriever, guestInfoStopsAtTheFirstFailure) {
  FakeHost host;
  std::string nodeId;
  std::string vmId;
  int nodeCapacity = -1;
  double vmCapacity = -1;
  setAgentValue(host, "dov_node_id", "KQXYZ12");
  setAgentIgnorant(host, "dov_node_capacity");
  EXPECT_EQ(getGuestInfo(nodeId, &nodeCapacity, vmId, &vmCapacity), 0);
  EXPECT_EQ(nodeId, "KQXYZ12");
  EXPECT_EQ(host.started.size(), 2u);

  setAgentValue(host, "dov_node_capacity", "4");
  setAgentValue(host, "dov_vm_id", "guest-7");
  setAgentValue(host, "dov_vm_capacity", "1.5");
  EXPECT_EQ(getGuestInfo(nodeId, &nodeCapacity, vmId, &vmCapacity), 1);
  EXPECT_EQ(nodeCapacity, 4);
  EXPECT_EQ(vmId, "guest-7");
  EXPECT_DOUBLE_EQ(vmCapacity, 1.5);
}

TEST(Retriever, hostInfoTurnsNoneIntoTheEmptyTextForThreeFields) {
  FakeHost host;
  for (const char* key :
       {"dov_node_man", "dov_node_id", "dov_node_prod", "dov_node_ver", "dov_node_type"}) {
    setAgentValue(host, key, "None");
  }
  HostInfo record;
  EXPECT_EQ(getHostInfo(record), 0);
  EXPECT_EQ(record.manufacturer, "None");
  EXPECT_EQ(record.serialNumber, "None");
  EXPECT_EQ(record.product, "");
  EXPECT_EQ(record.version, "");
  EXPECT_EQ(record.type, "");
  setAgentValue(host, "dov_node_prod", "none");
  getHostInfo(record);
  EXPECT_EQ(record.product, "none");
}

TEST(Retriever, hostInfoTracesItsResult) {
  CapturedTraces trace;
  FakeHost host;
  for (const char* key :
       {"dov_node_man", "dov_node_id", "dov_node_prod", "dov_node_ver", "dov_node_type"}) {
    setAgentValue(host, key, "known");
  }
  HostInfo record;
  EXPECT_EQ(getHostInfo(record), 0);
  const std::vector<std::string> texts = trace.texts();
  ASSERT_FALSE(texts.empty());
  EXPECT_EQ(texts.front(),
            "MID entry linux/enabler/retriever.cpp getHostInfo() hardware getHostInfo()");
  EXPECT_EQ(trace.count("hardware buf=known"), 5);
  EXPECT_EQ(texts.back(), "MID exit linux/enabler/retriever.cpp getHostInfo() hardware return = 0");
}

TEST(Retriever, hostInfoGivesTheResultOfTheLastKeyAndEmptiesWhatIsUnknown) {
  FakeHost host;
  setAgentValue(host, "dov_node_man", "Maker");
  host.commands[agentCommand("dov_node_type")] = {"No value found\n", 5 << 8};
  HostInfo record;
  record.product = "stale";
  EXPECT_EQ(getHostInfo(record), 5);
  EXPECT_EQ(record.manufacturer, "Maker");
  EXPECT_EQ(record.product, "");
  EXPECT_EQ(record.type, "");
  EXPECT_EQ(host.openCommands(), 0);
}

// A real agent script, started by the real command runner.
class AgentScript : public testing::Test {
 protected:
  void SetUp() override {
    const char* path = getenv("PATH");
    m_path = path == nullptr ? "" : path;
    setenv("PATH", (m_directory.path().string() + ":" + m_path).c_str(), 1);
  }
  void TearDown() override { setenv("PATH", m_path.c_str(), 1); }
  void write(const std::string& body) const {
    const std::string file = m_directory.write("vmware-guestd", "#!/bin/sh\n" + body);
    chmod(file.c_str(), 0755);
  }

  test::TemporaryDirectory m_directory;
  std::string m_path;
};

TEST_F(AgentScript, agentThatKnowsEverything) {
  write(
      "case \"$1 $2\" in\n"
      "  '--cmd info-get guestinfo.dov_node_id') echo KQXYZ12;;\n"
      "  '--cmd info-get guestinfo.dov_node_capacity') echo 4;;\n"
      "  '--cmd info-get guestinfo.dov_vm_id') echo guest-7;;\n"
      "  '--cmd info-get guestinfo.dov_vm_capacity') echo 1.500000;;\n"
      "  *) echo 'No value found'; exit 1;;\n"
      "esac\n");
  std::string nodeId;
  std::string vmId;
  int nodeCapacity = -1;
  double vmCapacity = -1;
  EXPECT_EQ(getGuestInfo(nodeId, &nodeCapacity, vmId, &vmCapacity), 1);
  EXPECT_EQ(nodeId, "KQXYZ12");
  EXPECT_EQ(nodeCapacity, 4);
  EXPECT_EQ(vmId, "guest-7");
  EXPECT_DOUBLE_EQ(vmCapacity, 1.5);
}

TEST_F(AgentScript, agentThatKnowsNothing) {
  write("echo 'No value found'\nexit 1\n");
  std::string text = "before";
  EXPECT_EQ(getInfo(text, agentCommand("dov_node_id").c_str()), 1);
  EXPECT_EQ(text, "before");
}

TEST_F(AgentScript, missingAgentPrintsNothing) {
  setenv("PATH", m_directory.path().c_str(), 1);
  std::string text = "before";
  EXPECT_EQ(getInfo(text, agentCommand("dov_node_id").c_str()), -1);
  EXPECT_EQ(text, "before");
}

TEST_F(AgentScript, agentThatAnswersSlowlyIsWaitedFor) {
  write("sleep 0.3\necho KQXYZ12\nsleep 0.3\n");
  std::string text;
  EXPECT_EQ(getNodeId(text), 1);
  EXPECT_EQ(text, "KQXYZ12");
}

TEST_F(AgentScript, agentWithMuchMoreToSayIsReadToItsEnd) {
  // Closing its output early would end it by a signal, and its shell with a code that is not its
  // own.
  write("echo KQXYZ12\nhead -c 1000000 /dev/zero | tr '\\0' 'x'\necho\nexit 0\n");
  std::string text;
  EXPECT_EQ(getNodeId(text), 1);
  EXPECT_EQ(text, "KQXYZ12");
}

TEST_F(AgentScript, exitCode255IsMinusOne) {
  write("echo KQXYZ12\nexit 255\n");
  std::string text;
  EXPECT_EQ(getInfo(text, agentCommand("dov_node_id").c_str()), -1);
}

}  // namespace
}  // namespace quenlor::test
