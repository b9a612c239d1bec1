#include "groups/capacity/HostCapacity.h"

#include <gtest/gtest.h>

#include <csignal>

#include "groups/capacity/AgentOutcome.h"
#include "readers/virtualization/AgentAnswer.h"
#include "tests/groups/capacity/GuestSdk.h"

namespace quenlor::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kAgent = "/usr/bin/vmtoolsd";
constexpr const char* kLibrary = "/usr/lib64/libguestlib.so.0";

// A guest with two packages of two cores, and an agent that knows what a test publishes.
class HostCapacityTest : public testing::Test {
 protected:
  HostCapacityTest() {
    m_host.files[kAgent] = "x";
    m_host.permissions[kAgent] = 0755;
    for (CpuPackage& package : m_own.packages) package.cores.resize(2);
  }
  void publish(const char* key, const std::string& value, int status = 0) {
    m_host.programs[{kAgent, "--cmd", agentQuestion(key)}] = {value, status};
  }
  void installLibrary(uint32_t limit, uint32_t hostMhz) {
    m_host.files[kLibrary] = "x";
    GuestSdk::installOn(m_host, limit, hostMhz);
  }
  HostCapacity read() { return readHostCapacity(m_agent, m_own); }
  Outcome outcome() {
    Outcome result;
    noteAgent(result, m_agent, "capacity");
    return result;
  }

  FakeHost m_host;
  CpuInventory m_own{std::vector<CpuPackage>(2), 4, 0, {}};
  ToolsAgent m_agent{[] { return 1000ms; }};
};

void expectCapacities(const HostCapacity& found, int packages, float cores, float guestPackages,
                      float guestCores) {
  EXPECT_EQ(found.packages, packages);
  EXPECT_EQ(found.cores, cores);
  EXPECT_EQ(found.guestPackages, guestPackages);
  EXPECT_EQ(found.guestCores, guestCores);
}

TEST_F(HostCapacityTest, anUnlimitedGuestMayUseTheWholeHost) {
  publish(agent_key::kNodeCapacity, "4\n");
  installLibrary(kUnlimited, 2000);
  expectCapacities(read(), 4, 8, 4, 8);
  EXPECT_EQ(m_host.openLibraries(), 0);
}

TEST_F(HostCapacityTest, aLimitedGuestMayUseWhatItsLimitIsWorth) {
  publish(agent_key::kNodeCapacity, "4\n");
  installLibrary(3000, 2000);
  expectCapacities(read(), 4, 8, 1.5F, 3);
}

TEST_F(HostCapacityTest, aLimitWithoutTheHostsSpeedLeavesTheAgentsCapacity) {
  publish(agent_key::kNodeCapacity, "4\n");
  publish(agent_key::kVmCapacity, "2.5\n");
  installLibrary(3000, 0);
  expectCapacities(read(), 4, 8, 2.5F, 5);
}

TEST_F(HostCapacityTest, withoutTheLibraryTheGuestsOwnCoresAreItsCapacity) {
  publish(agent_key::kPhysicalProcessor, "8:GenuineIntel:Xeon:MP:10:2:2300\n");
  publish(agent_key::kNodeCapacity, "4\n");
  expectCapacities(read(), 8, 80, 2, 4);
}

TEST_F(HostCapacityTest, withoutTheAgentsPackagesTheLibraryIsNotLoaded) {
  publish(agent_key::kPhysicalProcessor, "8:GenuineIntel:Xeon:MP:10:2:2300\n");
  publish(agent_key::kVmCapacity, "0.5\n");
  installLibrary(kUnlimited, 2000);
  bool isLoaded = false;
  m_host.loadLibrary = [&isLoaded](const char*, int) -> void* {
    isLoaded = true;
    return nullptr;
  };
  expectCapacities(read(), 8, 80, 0.5F, 5);
  EXPECT_FALSE(isLoaded);
}

TEST_F(HostCapacityTest, junkOfTheAgentIsNoCapacity) {
  publish(agent_key::kPhysicalProcessor, ":::::\n");
  publish(agent_key::kNodeCapacity, "-3 many\n");
  publish(agent_key::kVmCapacity, "nan\n");
  m_own.packages.clear();
  expectCapacities(read(), -1, -1, 0, -1);
}

TEST_F(HostCapacityTest, idsAreThoseOfTheAgent) {
  publish(agent_key::kNodeId, "KQXYZ12\n");
  publish(agent_key::kVmId, "guest-7\n");
  const HostCapacity found = read();
  EXPECT_EQ(found.hostId, "KQXYZ12");
  EXPECT_EQ(found.guestId, "guest-7");
  expectCapacities(found, -1, -1, -1, -1);
}

TEST_F(HostCapacityTest, whatBecameOfTheAgentIsTold) {
  m_host.permissions[kAgent] = 0644;
  read();
  EXPECT_EQ(outcome().status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(outcome().reason(), "capacity: no tools agent");
  m_host.permissions[kAgent] = 0755;
  ToolsAgent& agent = m_agent;
  agent.ask("missing");
  EXPECT_EQ(outcome().status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(outcome().reason(), "capacity: tools agent does not start");
  publish("unknown", "No value found\n", 1 << 8);
  agent.ask("unknown");
  EXPECT_EQ(outcome().status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(outcome().reason(), "tools agent: asked; capacity: the host publishes nothing");
  publish("known", "x\n");
  agent.ask("known");
  EXPECT_EQ(outcome().status(), OutcomeStatus::kComplete);
  EXPECT_EQ(outcome().reason(), "tools agent: asked");
  publish("stuck", "", SIGKILL);
  agent.ask("stuck");
  EXPECT_EQ(outcome().status(), OutcomeStatus::kPartial);
  EXPECT_EQ(outcome().reason(), "tools agent: asked; tools agent: timed out");
}

TEST_F(HostCapacityTest, anAgentThatTellsNothingInTimeIsATimeOut) {
  publish(agent_key::kPhysicalProcessor, "", SIGKILL);
  read();
  EXPECT_EQ(outcome().status(), OutcomeStatus::kTimedOut);
}

}  // namespace
}  // namespace quenlor::test
