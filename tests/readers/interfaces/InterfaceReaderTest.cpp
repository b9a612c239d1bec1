#include "readers/interfaces/InterfaceReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>

#include <cstring>
#include <string>

#include "tests/support/FakeHost.h"
#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::attribute;
using test::dumpEnd;
using test::dumpMessage;
using test::FakeNetlink;
using test::numberAttribute;
using test::textAttribute;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr uint16_t kEthtool = 21;

std::string link(int index, const std::string& name, const std::string& more = "",
                 uint16_t type = ARPHRD_ETHER) {
  ifinfomsg header{};
  header.ifi_index = index;
  header.ifi_type = type;
  return dumpMessage(RTM_NEWLINK, header, textAttribute(IFLA_IFNAME, name) + more);
}

std::string mac(const std::string& last) { return std::string("\x02\0\0\0\0", 5) + last; }

std::string settings(uint8_t command, uint32_t index, const std::string& attributes) {
  return dumpMessage(
      kEthtool, genlmsghdr{command, 1, 0},
      attribute(ETHTOOL_A_LINKINFO_HEADER, numberAttribute(ETHTOOL_A_HEADER_DEV_INDEX, index)) +
          attributes);
}

class InterfaceReaderTest : public ::testing::Test {
 protected:
  InterfaceReaderTest() {
    machine.netlink = [this](int protocol, const std::string& request, std::string& reply) {
      return kernel(protocol, request, reply);
    };
    machine.directories["/sys/devices/virtual/net"] = {"lo"};
  }
  ~InterfaceReaderTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void answerLinks(std::vector<std::string> replies) {
    kernel.answer(NETLINK_ROUTE, RTM_GETLINK, AF_UNSPEC, std::move(replies));
  }

  void answerEthtool() {
    kernel.answer(NETLINK_GENERIC, GENL_ID_CTRL, CTRL_CMD_GETFAMILY,
                  {dumpMessage(GENL_ID_CTRL, genlmsghdr{CTRL_CMD_NEWFAMILY, 2, 0},
                               textAttribute(CTRL_ATTR_FAMILY_NAME, "ethtool") +
                                   numberAttribute(CTRL_ATTR_FAMILY_ID, kEthtool)) +
                   dumpEnd()});
  }

  void addCard(const std::string& name, uint32_t index, const std::string& device) {
    const std::string folder = "/sys/class/net/" + name;
    machine.links[folder] = "../../devices/" + device + "/net/" + name;
    machine.links[folder + "/device/driver"] = "../../bus/pci/drivers/igb";
    machine.files[folder + "/uevent"] = "IFINDEX=" + std::to_string(index) + "\n";
  }

  static std::vector<std::string> namesOf(const NetworkInterfaces& found) {
    std::vector<std::string> names;
    for (const NetworkInterface& item : found.interfaces) names.push_back(item.link.name);
    return names;
  }

  size_t timesAsked(uint16_t type) const {
    return static_cast<size_t>(
        std::count_if(kernel.requests.begin(), kernel.requests.end(),
                      [=](const FakeNetlink::Key& key) { return std::get<1>(key) == type; }));
  }

  test::FakeHost machine;
  FakeNetlink kernel;
};

TEST_F(InterfaceReaderTest, interfacesComeInTheOrderInWhichPeopleCountThem) {
  answerLinks({link(1, "lo") + link(10, "eth10") + link(3, "eth2") + dumpEnd()});
  addCard("eth10", 10, "pci0000:00/0000:00:04.0");
  addCard("eth2", 3, "pci0000:00/0000:00:03.0");
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_THAT(namesOf(found), ElementsAre("eth2", "eth10", "lo"));
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(InterfaceReaderTest, cardHasItsDeviceDriverAndLinkSettings) {
  answerLinks({link(2, "eth0", attribute(IFLA_PERM_ADDRESS, mac("\x07"))) + dumpEnd()});
  answerEthtool();
  kernel.answer(NETLINK_GENERIC, kEthtool, ETHTOOL_MSG_LINKMODES_GET,
                {settings(ETHTOOL_MSG_LINKMODES_GET_REPLY, 2,
                          numberAttribute(ETHTOOL_A_LINKMODES_SPEED, uint32_t{1000}) +
                              numberAttribute(ETHTOOL_A_LINKMODES_DUPLEX, uint8_t{1})) +
                 dumpEnd()});
  kernel.answer(NETLINK_GENERIC, kEthtool, ETHTOOL_MSG_LINKINFO_GET,
                {settings(ETHTOOL_MSG_LINKINFO_GET_REPLY, 2,
                          numberAttribute(ETHTOOL_A_LINKINFO_PORT, uint8_t{PORT_TP})) +
                 dumpEnd()});
  addCard("eth0", 2, "pci0000:00/0000:00:03.0");
  machine.socketDevice.ioctl = [](unsigned long, void* argument) {
    auto* info = reinterpret_cast<ethtool_drvinfo*>(static_cast<ifreq*>(argument)->ifr_data);
    if (info->cmd != ETHTOOL_GDRVINFO) return -1;
    std::strcpy(info->fw_version, "1.63");
    return 0;
  };
  const NetworkInterfaces found = readNetworkInterfaces();
  ASSERT_EQ(found.interfaces.size(), 1u);
  const NetworkInterface& card = found.interfaces[0];
  EXPECT_TRUE(card.isPhysical);
  EXPECT_FALSE(card.isWireless);
  EXPECT_EQ(card.driver, "igb");
  EXPECT_EQ(card.firmware, "1.63");
  EXPECT_EQ(card.pciAddress->text(), "0000:00:03.0");
  EXPECT_EQ(card.speed, 1000u);
  EXPECT_EQ(card.duplex, "full");
  EXPECT_EQ(card.connector, "Twisted Pair");
  EXPECT_EQ(hardwareAddressText(card.burntInAddress()), "02:00:00:00:00:07");
}

TEST_F(InterfaceReaderTest, kernelWithoutTheEthtoolFamilyIsReadByFilesAndCalls) {
  answerLinks({link(2, "eth0") + dumpEnd()});
  addCard("eth0", 2, "pci0000:00/0000:00:03.0");
  machine.files["/sys/class/net/eth0/speed"] = "100\n";
  machine.files["/sys/class/net/eth0/duplex"] = "half\n";
  machine.files["/sys/class/net/eth0/bonding_slave/perm_hwaddr"] = "02:00:00:00:00:09\n";
  machine.socketDevice.ioctl = [](unsigned long, void* argument) {
    auto* request = reinterpret_cast<ethtool_cmd*>(static_cast<ifreq*>(argument)->ifr_data);
    if (request->cmd != ETHTOOL_GSET) return -1;
    request->port = PORT_FIBRE;
    return 0;
  };
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_EQ(found.interfaces[0].speed, 100u);
  EXPECT_EQ(found.interfaces[0].duplex, "half");
  EXPECT_EQ(found.interfaces[0].connector, "Fibre");
  EXPECT_EQ(hardwareAddressText(found.interfaces[0].burntInAddress()), "02:00:00:00:00:09");
}

TEST_F(InterfaceReaderTest, driversAreAskedOnlyForInterfacesWithADevice) {
  answerLinks({link(1, "lo") + link(2, "veth0") + dumpEnd()});
  machine.directories["/sys/devices/virtual/net"] = {"lo", "veth0"};
  bool isAsked = false;
  machine.socketDevice.ioctl = [&](unsigned long, void*) {
    isAsked = true;
    return -1;
  };
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_FALSE(isAsked);
  EXPECT_FALSE(found.interfaces[1].isPhysical);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(InterfaceReaderTest, interruptedListIsAskedForOnceMore) {
  answerLinks(
      {link(1, "lo") + dumpEnd(0, NLM_F_DUMP_INTR), link(1, "lo") + link(2, "lo2") + dumpEnd()});
  machine.directories["/sys/devices/virtual/net"] = {"lo", "lo2"};
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_THAT(namesOf(found), ElementsAre("lo", "lo2"));
  EXPECT_EQ(timesAsked(RTM_GETLINK), 2u);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(InterfaceReaderTest, listThatKeepsChangingIsTakenAndSaidSo) {
  answerLinks({link(1, "lo") + link(1, "lo9") + dumpEnd(0, NLM_F_DUMP_INTR)});
  machine.directories["/sys/devices/virtual/net"] = {"lo", "lo9"};
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_EQ(timesAsked(RTM_GETLINK), 2u);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(found.outcome.reason(), "interfaces: changed while listed");
  // The later entry of one index holds: it was renamed meanwhile.
  EXPECT_THAT(namesOf(found), ElementsAre("lo9"));
}

TEST_F(InterfaceReaderTest, cutListIsPartial) {
  answerLinks({link(1, "lo")});
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_THAT(namesOf(found), ElementsAre("lo"));
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(found.outcome.reason(), "interfaces: list cut");
}

TEST_F(InterfaceReaderTest, answerThatEndsInAnErrorOfTheCallIsPartial) {
  answerLinks({link(1, "lo")});
  kernel.fail(NETLINK_ROUTE, RTM_GETLINK, EAGAIN);
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_THAT(namesOf(found), ElementsAre("lo"));
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
}

TEST_F(InterfaceReaderTest, refusedListIsRefused) {
  answerLinks({test::netlinkError(EPERM)});
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_THAT(found.interfaces, IsEmpty());
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kRefused);
}

TEST_F(InterfaceReaderTest, kernelWithoutNetlinkHasNoSource) {
  machine.netlink = nullptr;
  EXPECT_EQ(readNetworkInterfaces().outcome.status(), OutcomeStatus::kNoSource);
}

TEST_F(InterfaceReaderTest, machineWithoutSysfsSaysThatDevicesAreMissing) {
  machine.directories.clear();
  answerLinks({link(2, "eth0") + dumpEnd()});
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_THAT(namesOf(found), ElementsAre("eth0"));
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_THAT(found.outcome.reason(), HasSubstr("devices"));
}

TEST_F(InterfaceReaderTest, interfaceRenamedMeanwhileKeepsWhatTheListSaid) {
  answerLinks({link(2, "eth0") + dumpEnd()});
  addCard("eth0", 5, "pci0000:00/0000:00:03.0");  // another card took its name
  const NetworkInterfaces found = readNetworkInterfaces();
  ASSERT_EQ(found.interfaces.size(), 1u);
  EXPECT_EQ(found.interfaces[0].driver, "");
  EXPECT_FALSE(found.interfaces[0].pciAddress.has_value());
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
}

TEST_F(InterfaceReaderTest, infinibandPortIsKnownByItsOwnEightBytes) {
  const std::string address =
      std::string(12, '\x11') + std::string("\0\x02\xC9\x03\0\x12\x34\x56", 8);
  answerLinks(
      {link(2, "ib0", attribute(IFLA_ADDRESS, address) + attribute(IFLA_PERM_ADDRESS, address),
            ARPHRD_INFINIBAND) +
       dumpEnd()});
  addCard("ib0", 2, "pci0000:00/0000:00:03.0");
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_EQ(hardwareAddressText(found.interfaces[0].burntInAddress()), "00:02:C9:03:00:12:34:56");
  EXPECT_EQ(hardwareAddressText(found.interfaces[0].link.address).size(), 59u);
}

TEST_F(InterfaceReaderTest, tenThousandInterfacesTakeOneListing) {
  std::string reply;
  std::vector<std::string> names;
  for (int i = 1; i <= 10000; ++i) {
    names.push_back("dummy" + std::to_string(i));
    reply += link(i, names.back());
  }
  answerLinks({reply + dumpEnd()});
  answerEthtool();
  machine.directories["/sys/devices/virtual/net"] = names;
  const NetworkInterfaces found = readNetworkInterfaces();
  EXPECT_EQ(namesOf(found), names);
  EXPECT_THAT(machine.opened, IsEmpty());
  EXPECT_EQ(kernel.requests.size(), 4u);
}

TEST_F(InterfaceReaderTest, noPathIsOpenedTwice) {
  answerLinks({link(2, "eth0") + dumpEnd()});
  addCard("eth0", 2, "pci0000:00/0000:00:03.0");
  readNetworkInterfaces();
  std::sort(machine.opened.begin(), machine.opened.end());
  EXPECT_EQ(std::adjacent_find(machine.opened.begin(), machine.opened.end()), machine.opened.end());
}

TEST(InterfaceIndexTest, findsByIndexOrNothing) {
  std::vector<NetworkInterface> interfaces(2);
  interfaces[1].link.index = 7;
  const InterfaceIndex index(interfaces);
  EXPECT_EQ(index.find(7u), &interfaces[1]);
  EXPECT_EQ(index.find(8u), nullptr);
  EXPECT_EQ(index.find(std::nullopt), nullptr);
}

TEST(HardwareAddressTextTest, noBytesAreNoText) {
  EXPECT_EQ(hardwareAddressText(""), "");
  EXPECT_EQ(hardwareAddressText(std::string("\xFF\0", 2)), "FF:00");
}

}  // namespace
}  // namespace quenlor
