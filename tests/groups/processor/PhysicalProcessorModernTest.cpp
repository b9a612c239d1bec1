#include <gtest/gtest.h>

#include "groups/modern/Collectors.h"
#include "tests/groups/ModernRows.h"
#include "tests/groups/firmware/ModernFirmware.h"
#include "tests/readers/topology/TopologyMachine.h"

namespace quenlor {
namespace {

using test::collectModern;
using test::FakeHost;
using test::Structure;
using test::TopologyMachine;
using test::valueOf;

constexpr uint32_t kThreads = 102;

// A populated socket of central processors, up to the count of threads.
Structure socket(const std::string& name, uint8_t threads) {
  Structure out(4);
  out.text(name).byte(3).byte(0xB3).text("").dword(0).dword(0).text("").byte(0).word(0).word(0);
  out.word(2400).byte(0x41).byte(1).word(0xFFFF).word(0xFFFF).word(0xFFFF).text("").text("");
  return out.text("").byte(4).byte(4).byte(threads);
}

std::string threadsOf(const TopologyMachine& topology, const std::vector<Structure>& sockets) {
  FakeHost machine;
  topology.installOn(machine);
  installFirmware(machine, sockets);
  const auto rows = collectModern(group::kPhysicalProcessor, collectPhysicalProcessor).rows;
  return rows.empty() ? "no row" : valueOf(rows[0], kThreads);
}

TEST(PhysicalProcessorModern, threadsThatAreOfflineBelongToTheOnlyPackage) {
  EXPECT_EQ(threadsOf({.offline = {7}}, {socket("CPU0", 8)}), "8");
  EXPECT_EQ(threadsOf({.offline = {7}}, {}), "8");
}

// Only the firmware tells that there is another package, and then the rest may be all its own.
TEST(PhysicalProcessorModern, threadsOfAPackageBesideOneThatIsOfflineAreUnknown) {
  const TopologyMachine topology{
      .packages = 2, .coresPerPackage = 2, .threadsPerCore = 1, .offline = {2, 3}};
  EXPECT_EQ(threadsOf(topology, {socket("CPU0", 2), socket("CPU1", 2)}), "(absent)");
}

TEST(PhysicalProcessorModern, theFirmwareCountsTheThreadsOfSeveralPackages) {
  const TopologyMachine topology{
      .packages = 2, .coresPerPackage = 2, .threadsPerCore = 1, .offline = {3}};
  EXPECT_EQ(threadsOf(topology, {socket("CPU0", 2), socket("CPU1", 2)}), "2");
  EXPECT_EQ(threadsOf(topology, {}), "(absent)");
}

}  // namespace
}  // namespace quenlor
