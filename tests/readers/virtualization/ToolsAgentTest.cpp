#include "readers/virtualization/ToolsAgent.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "readers/virtualization/AgentAnswer.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;
using State = ToolsAgent::State;

constexpr const char* kAgent = "/usr/bin/vmtoolsd";
constexpr const char* kKey = agent_key::kNodeId;
constexpr const char* kOtherKey = agent_key::kVmId;
constexpr int kExit1 = 1 << 8;

// A guest with an agent that tells what a test gives it.
class ToolsAgentTest : public testing::Test {
 protected:
  void install(const std::string& path) {
    m_host.files[path] = "x";
    m_host.permissions[path] = 0755;
  }
  void answer(const char* key, const std::string& output, int status = 0) {
    m_host.programs[{kAgent, "--cmd", agentQuestion(key)}] = {output, status};
  }
  std::optional<std::string> told(const std::string& output, int status = 0) {
    install(kAgent);
    answer(kKey, output, status);
    return m_agent.ask(kKey);
  }

  FakeHost m_host;
  ToolsAgent m_agent{[] { return 1000ms; }};
};

TEST_F(ToolsAgentTest, aKeyIsAskedForOnceByTheProgramsPath) {
  EXPECT_EQ(told("KQXYZ12\n"), "KQXYZ12");
  EXPECT_EQ(m_agent.ask(kKey), "KQXYZ12");
  EXPECT_EQ(m_host.started, Texts{"/usr/bin/vmtoolsd --cmd info-get guestinfo.dov_node_id"});
  EXPECT_EQ(m_agent.state(), State::kAnswered);
  EXPECT_FALSE(m_agent.wasCutOff());
  EXPECT_EQ(m_host.openCommands(), 0);
}

TEST_F(ToolsAgentTest, theAgentOfTheFirstToolsIsTheFirstChoice) {
  install(kAgent);
  install("/usr/sbin/vmware-guestd");
  m_agent.ask(kKey);
  EXPECT_EQ(m_host.started, Texts{"/usr/sbin/vmware-guestd --cmd info-get guestinfo.dov_node_id"});
}

TEST_F(ToolsAgentTest, whereThereIsNoProgramNothingIsStarted) {
  EXPECT_EQ(m_agent.ask(kKey), std::nullopt);
  m_host.directories[kAgent] = {};
  EXPECT_EQ(m_agent.ask(kOtherKey), std::nullopt);
  m_host.directories.clear();
  m_host.files[kAgent] = "may not be executed";
  EXPECT_EQ(m_agent.ask(agent_key::kVmCapacity), std::nullopt);
  EXPECT_EQ(m_host.started, Texts{});
  EXPECT_EQ(m_agent.state(), State::kNotThere);
}

TEST_F(ToolsAgentTest, anAgentThatIsNoProgramTellsNothing) {
  install(kAgent);
  EXPECT_EQ(m_agent.ask(kKey), std::nullopt);
  EXPECT_EQ(m_agent.state(), State::kNoProgram);
  EXPECT_FALSE(m_agent.wasCutOff());
}

TEST_F(ToolsAgentTest, aKeyThatNobodyPublishedHasNoText) {
  EXPECT_EQ(told("No value found\n", kExit1), std::nullopt);
  EXPECT_EQ(m_agent.state(), State::kSilent);
  answer(kOtherKey, "");
  EXPECT_EQ(m_agent.ask(kOtherKey), std::nullopt);
  EXPECT_EQ(m_agent.state(), State::kSilent);
  answer(agent_key::kNodeType, "None \t\r\nmore\n");
  EXPECT_EQ(m_agent.ask(agent_key::kNodeType), "None");
  EXPECT_EQ(m_agent.state(), State::kAnswered);
}

TEST_F(ToolsAgentTest, junkEndsAtItsFirstZeroAndIsNoTextWhereItIsLong) {
  EXPECT_EQ(told(std::string("a\x01\xFF\0b\n", 6)), "a\x01\xFF");
  answer(kOtherKey, std::string(5000, 'x') + "\n");
  EXPECT_EQ(m_agent.ask(kOtherKey), std::nullopt);
  EXPECT_FALSE(m_agent.wasCutOff());
}

TEST_F(ToolsAgentTest, whatAKilledAgentHasToldOfALineCountsOnlyWhole) {
  EXPECT_EQ(told("KQXYZ12\n", SIGKILL), "KQXYZ12");
  EXPECT_FALSE(m_agent.wasCutOff());
  answer(kOtherKey, "gue", SIGKILL);
  EXPECT_EQ(m_agent.ask(kOtherKey), std::nullopt);
  EXPECT_TRUE(m_agent.wasCutOff());
}

TEST_F(ToolsAgentTest, oneThatHadToBeKilledIsNotStartedAgain) {
  EXPECT_EQ(told("", SIGKILL), std::nullopt);
  answer(kOtherKey, "guest-7\n");
  EXPECT_EQ(m_agent.ask(kOtherKey), std::nullopt);
  EXPECT_EQ(m_host.started.size(), 1u);
  EXPECT_EQ(m_agent.state(), State::kSilent);
  EXPECT_TRUE(m_agent.wasCutOff());
}

TEST_F(ToolsAgentTest, aCommandGetsFourFifthsOfTheGroupsTimeAndASecondBehindItsLine) {
  told("KQXYZ12\n");
  EXPECT_EQ(m_host.limited, (std::vector<std::chrono::milliseconds>{800ms, 1000ms}));
}

TEST_F(ToolsAgentTest, withoutTimeNothingIsStarted) {
  install(kAgent);
  ToolsAgent hurried([] { return 1ms; });
  EXPECT_EQ(hurried.ask(kKey), std::nullopt);
  EXPECT_TRUE(hurried.wasCutOff());
  EXPECT_EQ(m_host.started, Texts{});
}

// A script in the agent's place, started by the real machine.
class AgentProgram : public FakeHost {
 public:
  explicit AgentProgram(const std::string& script) : m_script(m_directory.write("agent", script)) {
    chmod(m_script.c_str(), 0755);
    files[kAgent] = "x";
    permissions[kAgent] = 0755;
  }
  FILE* startProgram(const char*, const std::vector<std::string>& arguments) override {
    return systemHost().startProgram(m_script.c_str(), arguments);
  }
  int pclose(FILE* stream) override { return systemHost().pclose(stream); }
  void limitCommand(FILE* stream, std::chrono::milliseconds rest) override {
    systemHost().limitCommand(stream, rest);
  }

 private:
  const TemporaryDirectory m_directory;
  const std::string m_script;
};

// What an agent with a limit told, and how long that took.
struct Asked {
  explicit Asked(const std::string& script, std::chrono::milliseconds limit = 500ms)
      : machine(script), agent([limit] { return limit; }) {
    const auto before = std::chrono::steady_clock::now();
    text = agent.ask(kKey);
    time = std::chrono::steady_clock::now() - before;
  }

  AgentProgram machine;
  ToolsAgent agent;
  std::optional<std::string> text;
  std::chrono::nanoseconds time{};
};

TEST(ToolsAgentProgram, isToldTheQuestionAsOneArgumentInTheCLocale) {
  const Asked asked("#!/bin/sh\necho \"$#:$1:$2:$LC_ALL\"\n", 60000ms);
  EXPECT_EQ(asked.text, "2:--cmd:info-get guestinfo.dov_node_id:C");
}

TEST(ToolsAgentProgram, thatHangsIsKilledWithinTheGroupsLimit) {
  Asked asked("#!/bin/sh\nsleep 100\n");
  EXPECT_EQ(asked.text, std::nullopt);
  EXPECT_GE(asked.time, 400ms);
  EXPECT_LT(asked.time, 10s);
  EXPECT_TRUE(asked.agent.wasCutOff());
}

TEST(ToolsAgentProgram, thatPrintsAndHangsHasToldItsLine) {
  const Asked asked("#!/bin/sh\necho KQXYZ12\nsleep 100\n", 2000ms);
  EXPECT_EQ(asked.text, "KQXYZ12");
  EXPECT_LT(asked.time, 30s);
  EXPECT_FALSE(asked.agent.wasCutOff());
}

TEST(ToolsAgentProgram, thatNeverEndsItsLineIsKilled) {
  const Asked asked("#!/bin/sh\nexec cat /dev/zero\n");
  EXPECT_EQ(asked.text, std::nullopt);
  EXPECT_TRUE(asked.agent.wasCutOff());
}

TEST(ToolsAgentProgram, thatIsATextIsNotHandedToAShell) {
  const Asked asked("echo KQXYZ12\n");
  EXPECT_EQ(asked.text, std::nullopt);
  EXPECT_EQ(asked.agent.state(), State::kNoProgram);
}

}  // namespace
}  // namespace quenlor::test
