#include "groups/network/IpAddressGroup.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/groups/network/FakeInterfaces.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::ethernets;
using test::loopback;
using test::RowValues;
using test::valueOf;

constexpr const char* kIfconfig = "/sbin/ifconfig -a 2>/dev/null";
constexpr uint32_t kIndex = 1;
constexpr uint32_t kAddress = 2;
constexpr uint32_t kHostname = 3;
constexpr uint32_t kDomain = 4;
constexpr uint32_t kSubnet = 5;
constexpr uint32_t kGateway = 6;
constexpr uint32_t kMac = 10;
constexpr uint32_t kIpv6 = 11;

class IpAddressGroupTest : public ::testing::Test {
 protected:
  ~IpAddressGroupTest() override {
    EXPECT_EQ(machine.openDescriptors(), 0);
    EXPECT_EQ(machine.openCommands(), 0);
  }

  // The only row of a machine with one interface more than the loopback.
  RowValues onlyRow() {
    const auto rows = collect<IpAddressGroup>();
    EXPECT_EQ(rows.size(), 1U);
    return rows.empty() ? RowValues{} : rows[0];
  }

  test::SocketRecorder machine;
  test::FakeInterfaces network{machine};
};

TEST_F(IpAddressGroupTest, isGroup6Version1) {
  IpAddressGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getGroupId(), 6U);
  EXPECT_EQ(table->getGroupVersion(), 1U);
}

TEST_F(IpAddressGroupTest, reportsAllThatIsKnownInTheCatalogueOrder) {
  network.interfaces = {loopback(), {"eth0", "192.168.1.5", "255.255.255.0", "00:a0:c9:12:34:56"}};
  machine.hostNames["192.168.1.5"] = "node5.example.com";
  machine.files["/etc/resolv.conf"] =
      "domain other.org\nnameserver 10.0.0.1\nnameserver 10.0.0.2\n";
  machine.files["/etc/sysconfig/network"] = "GATEWAY=192.168.1.1\n";
  machine.commands[kIfconfig].output =
      "eth0      Link encap:Ethernet  HWaddr 00:A0:C9:12:34:56\n"
      "          inet addr:192.168.1.5  Bcast:192.168.1.255  Mask:255.255.255.0\n"
      "          inet6 addr: fe80::2a0:c9ff:fe12:3456/64 Scope:Link\n";
  EXPECT_EQ(onlyRow(), (RowValues{{1, "1"},
                                  {2, "192.168.1.5"},
                                  {3, "node5"},
                                  {4, "example.com"},
                                  {5, "255.255.255.0"},
                                  {6, "192.168.1.1"},
                                  {7, "10.0.0.1"},
                                  {8, "10.0.0.2"},
                                  {10, "00:A0:C9:12:34:56"},
                                  {11, "fe80::2a0:c9ff:fe12:3456/64"}}));
}

TEST_F(IpAddressGroupTest, leavesOutGatewayAndNameServersThatAreNotKnown) {
  network.interfaces = ethernets(1);
  EXPECT_EQ(onlyRow(), (RowValues{{1, "1"},
                                  {2, "10.0.0.1"},
                                  {3, ""},
                                  {4, ""},
                                  {5, "255.255.255.0"},
                                  {10, "02:00:00:00:00:00"},
                                  {11, ""}}));
}

TEST_F(IpAddressGroupTest, asksThroughADatagramSocketWithA2000ByteBuffer) {
  network.interfaces = ethernets(1);
  onlyRow();
  EXPECT_EQ(machine.sockets, (std::vector<std::pair<int, int>>{{AF_INET, SOCK_DGRAM}}));
  EXPECT_EQ(network.listBufferSizes, std::vector<size_t>{2000});
}

TEST_F(IpAddressGroupTest, loopbackAloneGivesNoRow) {
  network.interfaces = {loopback()};
  EXPECT_TRUE(collect<IpAddressGroup>().empty());
  EXPECT_EQ(machine.started, (std::vector<std::string>{"ifconfig -a 2>/dev/null", kIfconfig}));
}

TEST_F(IpAddressGroupTest, onlyTheFirstLoopbackAddressIsLeftOut) {
  network.interfaces = {loopback(), {"lo:1", "127.0.0.2", "255.0.0.0", "00:00:00:00:00:00"}};
  EXPECT_EQ(valueOf(onlyRow(), kAddress), "127.0.0.2");
}

TEST_F(IpAddressGroupTest, addressWithoutMaskGivesNoRowAndNoGapInTheIndex) {
  network.interfaces = ethernets(3);
  network.interfaces[1].mask.reset();
  const auto rows = collect<IpAddressGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(valueOf(rows[1], kIndex), "2");
  EXPECT_EQ(valueOf(rows[1], kAddress), "10.0.0.3");
}

TEST_F(IpAddressGroupTest, interfaceWithoutAddressGivesNoRow) {
  network.interfaces = ethernets(2);
  network.interfaces[0].address.reset();
  EXPECT_EQ(valueOf(onlyRow(), kAddress), "10.0.0.2");
}

TEST_F(IpAddressGroupTest, fourAndMoreInterfacesAreCountedByTheRecordSizeOfThisMachine) {
  for (const int count : {4, 5, 9, 50}) {
    network.interfaces = ethernets(count);
    const auto rows = collect<IpAddressGroup>();
    ASSERT_EQ(rows.size(), static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(valueOf(rows[static_cast<size_t>(i)], kIndex), std::to_string(i + 1));
      EXPECT_EQ(valueOf(rows[static_cast<size_t>(i)], kAddress), "10.0.0." + std::to_string(i + 1));
    }
  }
}

TEST_F(IpAddressGroupTest, listThatDoesNotFitEndsAtTheLastWholeRecord) {
  network.interfaces = ethernets(60);
  EXPECT_EQ(collect<IpAddressGroup>().size(), 2000 / sizeof(ifreq));
}

TEST_F(IpAddressGroupTest, lengthThatIsNoMultipleOrBeyondTheBufferIsNotBelieved) {
  network.interfaces = ethernets(3);
  network.lengthReturned = 2 * static_cast<int>(sizeof(ifreq)) + 39;
  EXPECT_EQ(collect<IpAddressGroup>().size(), 2U);
  network.lengthReturned = 1 << 30;  // records without a name behind the three
  EXPECT_EQ(collect<IpAddressGroup>().size(), 3U);
  network.lengthReturned = -1;
  EXPECT_TRUE(collect<IpAddressGroup>().empty());
}

TEST_F(IpAddressGroupTest, noSocketOrNoListIsAnEmptyTable) {
  network.interfaces = ethernets(1);
  network.listFails = true;
  EXPECT_TRUE(collect<IpAddressGroup>().empty());
  EXPECT_EQ(machine.openDescriptors(), 0);
  machine.socketsFail = true;
  EXPECT_TRUE(collect<IpAddressGroup>().empty());
}

TEST_F(IpAddressGroupTest, namesOfFullLengthAreAskedForAsAWhole) {
  network.interfaces = {{"abcdefghijklmnop", "10.0.0.1", "255.0.0.0", "02:00:00:00:00:01"}};
  EXPECT_EQ(valueOf(onlyRow(), kMac), "02:00:00:00:00:01");
}

TEST_F(IpAddressGroupTest, rowWithoutHardwareAddressHasAnEmptyOne) {
  network.interfaces = ethernets(1);
  network.interfaces[0].mac.reset();
  const test::CapturedTraces traces;
  EXPECT_EQ(valueOf(onlyRow(), kMac), "");
  EXPECT_THAT(
      traces.texts(),
      testing::Contains("MIN linux/IpAddressGroup.cpp getTable() hardware MAC addr Failed"));
}

TEST_F(IpAddressGroupTest, aliasesAreRowsOfTheirOwn) {
  network.interfaces = {{"eth0", "10.0.0.1", "255.0.0.0", "02:00:00:00:00:01"},
                        {"eth0:1", "10.0.0.2", "255.0.0.0", "02:00:00:00:00:01"}};
  EXPECT_EQ(collect<IpAddressGroup>().size(), 2U);
}

TEST_F(IpAddressGroupTest, addressesOfOneInterfaceUnderOneNameAreRowsOfTheirOwn) {
  network.interfaces = {{"eth0", "10.0.0.1", "255.0.0.0", "02:00:00:00:00:01"},
                        {"eth0", "192.168.5.1", "255.255.255.0", "02:00:00:00:00:01"}};
  machine.hostNames = {{"10.0.0.1", "one"}, {"192.168.5.1", "two"}};
  const auto rows = collect<IpAddressGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(valueOf(rows[0], kAddress), "10.0.0.1");
  EXPECT_EQ(valueOf(rows[0], kHostname), "one");
  EXPECT_EQ(valueOf(rows[1], kAddress), "192.168.5.1");
  EXPECT_EQ(valueOf(rows[1], kHostname), "two");
  EXPECT_EQ(valueOf(rows[1], kSubnet), "255.255.255.0");
}

TEST_F(IpAddressGroupTest, reverseNameWithoutDomainTakesThatOfResolvConf) {
  network.interfaces = ethernets(1);
  machine.hostNames["10.0.0.1"] = "node1";
  EXPECT_EQ(valueOf(onlyRow(), kHostname), "node1");
  EXPECT_EQ(valueOf(onlyRow(), kDomain), "");
  machine.files["/etc/resolv.conf"] = "domain example.com\n";
  EXPECT_EQ(valueOf(onlyRow(), kDomain), "example.com");
}

TEST_F(IpAddressGroupTest, reverseNameIsCutAtItsFirstDot) {
  network.interfaces = ethernets(2);
  machine.hostNames = {{"10.0.0.1", "a.b.c"}, {"10.0.0.2", "a."}};
  machine.files["/etc/resolv.conf"] = "domain example.com\n";
  const auto rows = collect<IpAddressGroup>();
  EXPECT_EQ(valueOf(rows.at(0), kDomain), "b.c");
  EXPECT_EQ(valueOf(rows.at(1), kHostname), "a");
  EXPECT_EQ(valueOf(rows.at(1), kDomain), "example.com");
}

TEST_F(IpAddressGroupTest, addressWithoutNameTakesTheMachinesOwn) {
  network.interfaces = ethernets(1);
  machine.commands["hostname"].output = " node7\tand more\n";
  EXPECT_EQ(valueOf(onlyRow(), kHostname), "node7");
}

TEST_F(IpAddressGroupTest, machinesOwnNameIsNotSplitIntoNameAndDomain) {
  network.interfaces = ethernets(1);
  machine.commands["hostname"].output = "node7.example.com\n";
  EXPECT_EQ(valueOf(onlyRow(), kHostname), "node7.example.com");
  EXPECT_EQ(valueOf(onlyRow(), kDomain), "");
}

TEST_F(IpAddressGroupTest, machinesOwnNameIsAskedForOnceAndOnlyIfNeeded) {
  network.interfaces = ethernets(50);
  machine.commands["hostname"].output = "node7\n";
  EXPECT_EQ(valueOf(collect<IpAddressGroup>().at(49), kHostname), "node7");
  EXPECT_EQ(std::count(machine.started.begin(), machine.started.end(), "hostname"), 1);

  machine.started.clear();
  network.interfaces = ethernets(1);
  machine.hostNames["10.0.0.1"] = "node1";
  onlyRow();
  EXPECT_EQ(std::count(machine.started.begin(), machine.started.end(), "hostname"), 0);
}

TEST_F(IpAddressGroupTest, hostNameCommandThatSaysNothingLeavesTheNameEmpty) {
  network.interfaces = ethernets(1);
  for (const char* output : {"", "\n", " \t\n"}) {
    machine.commands["hostname"].output = output;
    EXPECT_EQ(valueOf(onlyRow(), kHostname), "");
  }
  machine.commands["hostname"].output = std::string(1000, 'h');
  EXPECT_EQ(valueOf(onlyRow(), kHostname), std::string(254, 'h'));
  machine.unstartableCommands.insert("hostname");
  EXPECT_EQ(valueOf(onlyRow(), kHostname), "");
}

TEST_F(IpAddressGroupTest, newIfconfigGivesNoIpv6Address) {
  network.interfaces = ethernets(1);
  machine.commands[kIfconfig].output =
      "eth0: flags=4163<UP>  mtu 1500\n        inet 10.0.0.1  netmask 255.255.255.0\n"
      "        inet6 fe80::1  prefixlen 64  scopeid 0x20<link>\n";
  EXPECT_EQ(valueOf(onlyRow(), kIpv6), "");
}

TEST_F(IpAddressGroupTest, ipv6AddressIsThatOfTheInterfaceWithTheSameIpv4Address) {
  network.interfaces = ethernets(2);
  machine.commands[kIfconfig].output =
      "eth0 \n inet addr:10.0.0.1\neth1 \n inet addr:10.0.0.2\n inet6 addr: fe80::2/64\n";
  const auto rows = collect<IpAddressGroup>();
  EXPECT_EQ(valueOf(rows.at(0), kIpv6), "");
  EXPECT_EQ(valueOf(rows.at(1), kIpv6), "fe80::2/64");
}

TEST_F(IpAddressGroupTest, everyRowHasTheSameGateway) {
  network.interfaces = ethernets(5);
  machine.files["/etc/sysconfig/network/routes"] = "default 10.0.0.254 - -\n";
  for (const RowValues& row : collect<IpAddressGroup>()) {
    EXPECT_EQ(valueOf(row, kGateway), "10.0.0.254");
  }
}

TEST_F(IpAddressGroupTest, fiftyAddressesLeaveNothingOpen) {
  network.interfaces = ethernets(50);
  for (const char* path :
       {"/etc/sysconfig/network-scripts/ifcfg-eth0", "/etc/route.conf",
        "/etc/sysconfig/network/routes", "/etc/sysconfig/network", "/etc/resolv.conf"}) {
    machine.files[path] = "nothing\n";
  }
  EXPECT_EQ(collect<IpAddressGroup>().size(), 50U);
  EXPECT_EQ(machine.openDescriptors(), 0);
  EXPECT_EQ(machine.openCommands(), 0);
}

TEST_F(IpAddressGroupTest, tracesEachInterfaceInTurn) {
  network.interfaces = {loopback(),
                        {"eth0", "10.0.0.1", "255.255.255.0", "02:00:00:00:00:01"},
                        {"eth1", "10.0.0.2", "255.255.255.0", "02:00:00:00:00:02"}};
  machine.hostNames["10.0.0.1"] = "node1.example.com";
  machine.commands["hostname"].output = "node\n";
  machine.files["/etc/resolv.conf"] = "nameserver 10.0.0.9\n";
  machine.files["/etc/sysconfig/network"] = "GATEWAY=10.0.0.254\n";
  const test::CapturedTraces traces;
  collect<IpAddressGroup>();
  const char* expected[] = {
      "hardware IpAddressGroup",
      "hardware ifc_len= 120",
      "hardware count = 3",
      "hardware ifr_name= lo",
      "hardware ip addr= 127.0.0.1",
      "hardware MAC addr= 00:00:00:00:00:00",
      "hardware subnet= 255.0.0.0",
      "hardware ifr_name= eth0",
      "hardware ip addr= 10.0.0.1",
      "hardware MAC addr= 02:00:00:00:00:01",
      "hardware hostname=>node1< domain=>example.com",
      "hardware hostname=<node1>",
      "hardware subnet= 255.255.255.0",
      "hardware default gateway= 10.0.0.254",
      "hardware ifr_name= eth1",
      "hardware ip addr= 10.0.0.2",
      "hardware token1=node",
      "hardware hostname=<node>",
  };
  long last = -1;
  for (const char* text : expected) {
    const long position = traces.position(text);
    EXPECT_GT(position, last) << text;
    last = position;
  }
  EXPECT_EQ(traces.count("hardware nameserver1= 10.0.0.9"), 3);
  EXPECT_EQ(traces.count("hardware done parsing resolv.conf..."), 3);
  EXPECT_EQ(traces.count("hardware IpAddressGroup"), 2);
}

TEST_F(IpAddressGroupTest, entryAndExitStandAroundDetails) {
  network.interfaces = ethernets(2);
  const test::CapturedTraces traces;
  collect<IpAddressGroup>();
  std::vector<std::string> records = traces.texts();
  ASSERT_GE(records.size(), 3U);
  EXPECT_EQ(records.front(),
            "MID entry linux/IpAddressGroup.cpp getTable() hardware IpAddressGroup");
  EXPECT_EQ(records.back(), "MID exit linux/IpAddressGroup.cpp getTable() hardware IpAddressGroup");
  records.pop_back();
  records.erase(records.begin());
  EXPECT_THAT(
      records,
      testing::Each(testing::AnyOf(
          testing::StartsWith("MAX linux/IpAddressGroup.cpp getTable() hardware "),
          testing::StartsWith("MAX linux/IpAddressGroup.cpp getDefaultGateway() hardware "))));
}

}  // namespace
}  // namespace quenlor
