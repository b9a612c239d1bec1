#include "readers/interfaces/Leases.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LeasesTest : public ::testing::Test {
 protected:
  ~LeasesTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void add(const std::string& folder, const std::string& name, const std::string& text) {
    machine.directories[folder].push_back(name);
    machine.files[folder + "/" + name] = text;
  }

  test::FakeHost machine;
};

TEST_F(LeasesTest, machineWithoutClientsHasNone) {
  const Leases leases = readLeases();
  EXPECT_THAT(leases.indexes, IsEmpty());
  EXPECT_THAT(leases.names, IsEmpty());
}

TEST_F(LeasesTest, networkdNamesItsFilesByIndex) {
  add("/run/systemd/netif/leases", "2", "ADDRESS=192.0.2.5\n");
  add("/run/systemd/netif/leases", ".#2abc", "");
  EXPECT_THAT(readLeases().indexes, ElementsAre(2u));
  EXPECT_TRUE(readLeases().hold(2, "eth0"));
  EXPECT_FALSE(readLeases().hold(3, "eth1"));
}

TEST_F(LeasesTest, networkManagerKeepsAFileOfEveryInterfaceLeasedOrNot) {
  add("/run/NetworkManager/devices", "2", "[device]\nmanaged=full\nnext-server=192.0.2.1\n");
  add("/run/NetworkManager/devices", "3", "[device]\nmanaged=full\nroute-metric-default=100\n");
  EXPECT_THAT(readLeases().indexes, ElementsAre(2u));
}

TEST_F(LeasesTest, keyWithoutAValueIsNoOption) {
  EXPECT_FALSE(tellsOfLease("next-server=\nroot-path="));
  EXPECT_TRUE(tellsOfLease("x\nroot-path=/boot"));
  EXPECT_FALSE(tellsOfLease("# next-server=192.0.2.1"));
}

TEST_F(LeasesTest, wickedNamesTheInterfaceInTheFilesName) {
  machine.directories["/run/wicked"] = {"leaseinfo.eth0.dhcp.ipv4", "leaseinfo.eth1.auto.ipv6",
                                        "leaseinfo..dhcp.ipv4", "leaseinfo.dhcp.ipv4",
                                        "leaseinfo.br.5.dhcp.ipv4"};
  EXPECT_THAT(readLeases().names, ElementsAre("br.5", "eth0"));
}

TEST_F(LeasesTest, initramfsTellsHowItGotItsNetwork) {
  add("/run", "net-eth0.conf", "DEVICE='eth0'\nPROTO='dhcp'\n");
  add("/run", "net-eth1.conf", "DEVICE='eth1'\nPROTO='none'\n");
  add("/run", "net-.conf", "PROTO='dhcp'\n");
  EXPECT_THAT(readLeases().names, ElementsAre("eth0"));
}

TEST_F(LeasesTest, protocolMayStandWithoutQuotes) {
  EXPECT_TRUE(isLeasedAtBoot("PROTO=dhcp"));
  EXPECT_FALSE(isLeasedAtBoot("PROTO='"));
  EXPECT_FALSE(isLeasedAtBoot("PROTO=static"));
  EXPECT_FALSE(isLeasedAtBoot(""));
}

}  // namespace
}  // namespace quenlor
