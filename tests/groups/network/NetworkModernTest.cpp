// Groups of the modern sources that tell of the network: on a machine whose kernel answers with
// tables made here.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fib_rules.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>

#include <string>

#include "groups/modern/Collectors.h"
#include "identity/Identity.h"
#include "tests/support/FakeHost.h"
#include "tests/support/NetlinkBytes.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::attribute;
using test::dumpEnd;
using test::dumpMessage;
using test::hasValue;
using test::ipv4;
using test::numberAttribute;
using test::RowValues;
using test::textAttribute;
using test::valueOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint8_t kDhcpRoute = 16;

std::string ipv6(const char* text) {
  std::string bytes(16, '\0');
  inet_pton(AF_INET6, text, bytes.data());
  return bytes;
}

std::string mac(char last) { return std::string("\x02\0\0\0\0", 5) + last; }

std::string permanent(char last) { return attribute(IFLA_PERM_ADDRESS, mac(last)); }
std::string current(char last) { return attribute(IFLA_ADDRESS, mac(last)); }
std::string kind(const std::string& word, const std::string& data = "") {
  return attribute(IFLA_LINKINFO, textAttribute(IFLA_INFO_KIND, word) + data);
}
std::string master(uint32_t index) { return numberAttribute(IFLA_MASTER, index); }
std::string parent(uint32_t index) { return numberAttribute(IFLA_LINK, index); }

class NetworkModernTest : public ::testing::Test {
 protected:
  NetworkModernTest() {
    machine.netlink = [this](int protocol, const std::string& request, std::string& reply) {
      return answer(protocol, request, reply);
    };
    machine.directories["/sys/devices/virtual/net"] = {};
    machine.setUname("web1.example.com", "6.1", "x86_64");
    addVirtual(1, "lo", "", ARPHRD_LOOPBACK, IFF_LOOPBACK);
  }
  ~NetworkModernTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void addLink(int index, const std::string& name, const std::string& more, uint16_t type,
               unsigned flags) {
    ifinfomsg header{};
    header.ifi_index = index;
    header.ifi_type = type;
    header.ifi_flags = flags;
    links += dumpMessage(RTM_NEWLINK, header, textAttribute(IFLA_IFNAME, name) + more);
  }

  void addVirtual(int index, const std::string& name, const std::string& more,
                  uint16_t type = ARPHRD_ETHER, unsigned flags = 0) {
    addLink(index, name, more, type, flags);
    machine.directories["/sys/devices/virtual/net"].push_back(name);
  }

  // A card on PCI, or below it where `below` names a path.
  void addCard(int index, const std::string& name, const std::string& more,
               const std::string& function, const std::string& below = "",
               const std::string& type = "") {
    addLink(index, name, more, ARPHRD_ETHER, 0);
    const std::string folder = "/sys/class/net/" + name;
    machine.links[folder] = "../../devices/pci0000:00/" + function + below + "/net/" + name;
    machine.links[folder + "/device/driver"] = "../../bus/pci/drivers/igb";
    machine.files[folder + "/uevent"] =
        (type.empty() ? "" : "DEVTYPE=" + type + "\n") + "IFINDEX=" + std::to_string(index) + "\n";
  }

  void addFunction(const std::string& address) {
    machine.directories["/sys/bus/pci/devices"].push_back(address);
    machine.files["/sys/bus/pci/devices/" + address + "/uevent"] =
        "PCI_CLASS=20000\nPCI_ID=8086:10D3\n";
    machine.files["/usr/share/misc/pci.ids"] =
        "8086  Intel Corporation\n\t10d3  82574L Gigabit Network Connection\n";
  }

  void addAddress(uint32_t interface, const std::string& bytes, uint8_t prefix,
                  const std::string& more = "", uint8_t scope = RT_SCOPE_UNIVERSE) {
    ifaddrmsg header{};
    header.ifa_family = bytes.size() == 4 ? AF_INET : AF_INET6;
    header.ifa_prefixlen = prefix;
    header.ifa_index = interface;
    header.ifa_scope = scope;
    addresses += dumpMessage(RTM_NEWADDR, header, attribute(IFA_ADDRESS, bytes) + more);
  }

  void addDefault(uint32_t interface, const std::string& router, uint32_t metric,
                  uint8_t protocol = RTPROT_BOOT, uint32_t tableId = RT_TABLE_MAIN) {
    rtmsg header{};
    header.rtm_family = router.size() == 4 ? AF_INET : AF_INET6;
    header.rtm_protocol = protocol;
    header.rtm_type = RTN_UNICAST;
    routes[header.rtm_family] += dumpMessage(
        RTM_NEWROUTE, header,
        numberAttribute(RTA_OIF, interface) + attribute(RTA_GATEWAY, router) +
            numberAttribute(RTA_PRIORITY, metric) + numberAttribute(RTA_TABLE, tableId));
  }

  void addRule(uint32_t tableId, const std::string& selector = "") {
    fib_rule_hdr header{};
    header.family = AF_INET;
    header.action = FR_ACT_TO_TBL;
    rules += dumpMessage(RTM_NEWRULE, header, numberAttribute(FRA_TABLE, tableId) + selector);
  }

  std::vector<RowValues> collect(uint32_t group, ModernCollector collector) {
    scan = std::make_shared<ModernScan>(ScanSettings{});
    table = std::make_unique<ModernTable>(*findGroup(MODERN_GROUPS_DEF, group));
    collector(*scan, *table);
    return test::rowsOf(table->build().get());
  }

  std::vector<RowValues> adapters() {
    return collect(group::kNetworkAdapter, collectNetworkAdapters);
  }
  std::vector<RowValues> ipAddresses() { return collect(group::kIpAddress, collectIpAddresses); }

  // One attribute of all rows.
  static std::vector<std::string> column(const std::vector<RowValues>& rows, uint32_t id) {
    std::vector<std::string> values;
    for (const RowValues& row : rows) values.push_back(hasValue(row, id) ? valueOf(row, id) : "-");
    return values;
  }

  test::FakeHost machine;
  std::string links;
  std::string addresses;
  std::map<uint8_t, std::string> routes;
  std::string rules;
  bool isCut = false;  // no list has its end
  std::shared_ptr<ModernScan> scan;
  std::unique_ptr<ModernTable> table;

 private:
  int answer(int protocol, const std::string& request, std::string& reply) {
    if (protocol != NETLINK_ROUTE) return EOPNOTSUPP;
    nlmsghdr header{};
    std::memcpy(&header, request.data(), sizeof header);
    const auto family = static_cast<uint8_t>(request[sizeof header]);
    if (header.nlmsg_type == RTM_GETLINK) reply = links;
    if (header.nlmsg_type == RTM_GETADDR) reply = addresses;
    if (header.nlmsg_type == RTM_GETROUTE) reply = routes[family];
    if (header.nlmsg_type == RTM_GETRULE) reply = rules;
    if (!isCut) reply += dumpEnd();
    return 0;
  }
};

TEST_F(NetworkModernTest, cardIsReportedWithItsDevice) {
  addCard(2, "ens3",
          permanent('\x07') + current('\x08') + numberAttribute(IFLA_MTU, 9000u) +
              numberAttribute(IFLA_OPERSTATE, uint8_t{6}),
          "0000:02:00.0");
  addFunction("0000:02:00.0");
  const RowValues row = adapters()[0];
  EXPECT_EQ(valueOf(row, 1), "1");
  EXPECT_EQ(valueOf(row, 2), md5Text("02:00:00:00:00:070000:02:00.0"));
  EXPECT_EQ(valueOf(row, 3), "02:00:00:00:00:07");
  EXPECT_EQ(valueOf(row, 4), "02:00:00:00:00:08");
  EXPECT_EQ(valueOf(row, 5), "3");
  EXPECT_EQ(valueOf(row, 6), "82574L Gigabit Network Connection");
  EXPECT_EQ(valueOf(row, 7), "Intel Corporation");
  EXPECT_EQ(valueOf(row, 101), "ens3");
  EXPECT_EQ(valueOf(row, 102), "physical");
  EXPECT_EQ(valueOf(row, 103), "igb");
  EXPECT_EQ(valueOf(row, 107), "9000");
  EXPECT_EQ(valueOf(row, 108), "up");
  EXPECT_EQ(valueOf(row, 109), "0000:02:00.0");
  EXPECT_EQ(valueOf(row, 111), "8086");
  EXPECT_EQ(valueOf(row, 112), "10d3");
  EXPECT_EQ(table->outcome().status(), OutcomeStatus::kComplete);
}

TEST_F(NetworkModernTest, whatIsNotKnownIsLeftOut) {
  addCard(2, "ens3", "", "0000:02:00.0");
  const RowValues row = adapters()[0];
  for (const uint32_t id : {7u, 8u, 9u, 104u, 105u, 106u, 107u, 108u, 110u, 111u, 112u}) {
    EXPECT_FALSE(hasValue(row, id)) << id;
  }
  for (const uint32_t id : {1u, 2u, 3u, 4u, 5u, 6u, 101u}) EXPECT_TRUE(hasValue(row, id)) << id;
}

TEST_F(NetworkModernTest, cardsComeBeforeWirelessOnesAndThoseBeforeAllOthers) {
  addVirtual(9, "br0", kind("bridge"));
  addCard(4, "wlp3s0", permanent('\x03'), "0000:03:00.0", "", "wlan");
  addCard(3, "eth10", permanent('\x02'), "0000:02:00.1");
  addCard(2, "eth2", permanent('\x01'), "0000:02:00.0");
  EXPECT_THAT(column(adapters(), 101), ElementsAre("eth2", "eth10", "wlp3s0", "br0", "lo"));
  EXPECT_THAT(column(adapters(), 102),
              ElementsAre("physical", "physical", "wireless", "bridge", "loopback"));
  EXPECT_THAT(column(adapters(), 5), ElementsAre("3", "3", "3", "3", "2"));
}

TEST_F(NetworkModernTest, bondHasTheAddressOfACardWhoseOwnStaysKnown) {
  addCard(2, "eth0", permanent('\x01') + current('\x01') + master(5), "0000:02:00.0");
  addCard(3, "eth1", permanent('\x02') + current('\x01') + master(5), "0000:02:00.1");
  addVirtual(5, "bond0", current('\x01') + kind("bond"));
  const auto rows = adapters();
  EXPECT_THAT(column(rows, 3), ElementsAre("02:00:00:00:00:01", "02:00:00:00:00:02", "", ""));
  EXPECT_THAT(column(rows, 4),
              ElementsAre("02:00:00:00:00:01", "02:00:00:00:00:01", "02:00:00:00:00:01", ""));
  EXPECT_THAT(column(rows, 110), ElementsAre("bond0", "bond0", "-", "-"));
}

TEST_F(NetworkModernTest, idOfAVlanHangsOnItsCardAndNotOnTheOrder) {
  addCard(2, "eth0", permanent('\x01'), "0000:02:00.0");
  addVirtual(7, "eth0.5", parent(2) + kind("vlan"));
  const std::string card = md5Text("02:00:00:00:00:010000:02:00.0");
  EXPECT_EQ(column(adapters(), 2)[1], md5Text("vlaneth0.5" + card));
}

TEST_F(NetworkModernTest, parentsInARingEnd) {
  addVirtual(7, "a", parent(8) + kind("vlan"));
  addVirtual(8, "b", parent(7) + kind("vlan"));
  EXPECT_EQ(adapters().size(), 3u);
}

TEST_F(NetworkModernTest, twoPortsOfOneFunctionAreToldApart) {
  addCard(2, "eth0", permanent('\x01'), "0000:02:00.0");
  addCard(3, "eth1", permanent('\x01'), "0000:02:00.0");
  machine.files["/sys/class/net/eth1/dev_port"] = "1\n";
  const auto rows = adapters();
  EXPECT_THAT(column(rows, 109), ElementsAre("0000:02:00.0", "0000:02:00.0/1", "-"));
  EXPECT_NE(column(rows, 2)[0], column(rows, 2)[1]);
}

TEST_F(NetworkModernTest, equalIdsAreMadeUnique) {
  addCard(2, "eth0", permanent('\x01'), "0000:02:00.0");
  addCard(3, "eth1", permanent('\x01'), "0000:02:00.0");
  const auto ids = column(adapters(), 2);
  EXPECT_NE(ids[0], ids[1]);
}

TEST_F(NetworkModernTest, cardOnUsbHasTheStringsOfItsDevice) {
  addCard(2, "enx1", permanent('\x01'), "0000:00:14.0", "/usb1/1-2/1-2.4/1-2.4:1.0");
  machine.directories["/sys/bus/usb/devices"] = {"1-2.4"};
  machine.links["/sys/bus/usb/devices/1-2.4"] =
      "../../../devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2.4";
  const std::string folder = "/sys/bus/usb/devices/1-2.4/";
  machine.files[folder + "idVendor"] = "0bda\n";
  machine.files[folder + "idProduct"] = "8153\n";
  machine.files[folder + "product"] = "USB 10/100/1000 LAN\n";
  machine.files[folder + "manufacturer"] = "Realtek\n";
  const RowValues row = adapters()[0];
  EXPECT_EQ(valueOf(row, 6), "USB 10/100/1000 LAN");
  EXPECT_EQ(valueOf(row, 7), "Realtek");
  EXPECT_EQ(valueOf(row, 109), "0000:00:14.0/2.4");
  EXPECT_EQ(valueOf(row, 111), "0bda");
  EXPECT_EQ(valueOf(row, 112), "8153");
}

TEST_F(NetworkModernTest, addressOfATunnelIsNoHardwareAddress) {
  addVirtual(7, "gre1", attribute(IFLA_ADDRESS, ipv4(192, 0, 2, 5)) + kind("gre"), ARPHRD_IPGRE);
  EXPECT_EQ(column(adapters(), 4)[0], "");
}

TEST_F(NetworkModernTest, typeIsThatOfTheHardware) {
  addVirtual(2, "a", kind("ppp"), ARPHRD_PPP);
  addVirtual(3, "b", "", ARPHRD_SLIP);
  addVirtual(4, "c", "", ARPHRD_FDDI);
  addVirtual(5, "d", "", ARPHRD_IEEE802_TR);
  addVirtual(6, "e", kind("wireguard"), ARPHRD_NONE);
  EXPECT_THAT(column(adapters(), 5), ElementsAre("10", "6", "17", "4", "2", "2"));
}

TEST_F(NetworkModernTest, nameThatIsNoTextIsCleaned) {
  addVirtual(2, "e\x01\xFF", kind("dummy"));
  EXPECT_EQ(column(adapters(), 101)[0], "e??");  // U+FFFD twice, in the test's locale
}

TEST_F(NetworkModernTest, cutListOfInterfacesIsPartial) {
  isCut = true;
  EXPECT_EQ(adapters().size(), 1u);
  EXPECT_EQ(table->outcome().status(), OutcomeStatus::kPartial);
}

TEST_F(NetworkModernTest, addressIsReportedWithItsInterfaceAndRouter) {
  addCard(2, "ens3", permanent('\x07') + current('\x08'), "0000:02:00.0");
  addAddress(2, ipv4(192, 0, 2, 5), 24);
  addAddress(2, ipv6("2001:db8::5"), 64);
  addAddress(1, ipv4(127, 0, 0, 1), 8, "", RT_SCOPE_HOST);
  addDefault(2, ipv4(192, 0, 2, 1), 100);
  machine.files["/etc/resolv.conf"] = "nameserver 192.0.2.53\nnameserver 2001:db8::53\n";
  const auto rows = ipAddresses();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 1), "1");
  EXPECT_EQ(valueOf(rows[0], 2), "192.0.2.5");
  EXPECT_EQ(valueOf(rows[0], 3), "web1");
  EXPECT_EQ(valueOf(rows[0], 4), "example.com");
  EXPECT_EQ(valueOf(rows[0], 5), "255.255.255.0");
  EXPECT_EQ(valueOf(rows[0], 6), "192.0.2.1");
  EXPECT_EQ(valueOf(rows[0], 7), "192.0.2.53");
  EXPECT_EQ(valueOf(rows[0], 8), "2001:db8::53");
  EXPECT_EQ(valueOf(rows[0], 9), "N");
  EXPECT_EQ(valueOf(rows[0], 10), "02:00:00:00:00:07");
  EXPECT_EQ(valueOf(rows[0], 11), "2001:db8::5");
  EXPECT_EQ(valueOf(rows[0], 101), "ens3");
  EXPECT_EQ(valueOf(rows[0], 102), "24");
  EXPECT_EQ(valueOf(rows[0], 103), "global");
  EXPECT_EQ(valueOf(rows[0], 104), "ipv4");
  EXPECT_EQ(valueOf(rows[0], 105), "100");
  EXPECT_EQ(valueOf(rows[0], 106), "static");
  EXPECT_TRUE(machine.started.empty());
}

TEST_F(NetworkModernTest, rowOfTheOtherFamilyHasNeitherItsRouterNorASecondAddress) {
  addVirtual(2, "d0", kind("dummy"));
  addAddress(2, ipv6("2001:db8::5"), 64);
  addDefault(2, ipv4(192, 0, 2, 1), 100);
  const RowValues row = ipAddresses()[0];
  EXPECT_EQ(valueOf(row, 5), "ffff:ffff:ffff:ffff::");
  EXPECT_EQ(valueOf(row, 104), "ipv6");
  for (const uint32_t id : {6u, 9u, 11u, 105u, 106u}) EXPECT_FALSE(hasValue(row, id)) << id;
}

TEST_F(NetworkModernTest, sixtyAddressesAreSixtyRows) {
  addVirtual(2, "d0", kind("dummy"));
  for (int i = 1; i <= 60; ++i) addAddress(2, ipv4(10, 0, 0, static_cast<uint8_t>(i)), 24);
  EXPECT_EQ(ipAddresses().size(), 60u);
}

TEST_F(NetworkModernTest, rowsComeByInterfaceThenInTheKernelsOrder) {
  addVirtual(2, "d10", kind("dummy"));
  addVirtual(3, "d2", kind("dummy"));
  addAddress(2, ipv4(10, 0, 0, 9), 24);
  addAddress(3, ipv4(10, 0, 2, 2), 24);
  addAddress(3, ipv4(10, 0, 2, 1), 24);
  EXPECT_THAT(column(ipAddresses(), 2), ElementsAre("10.0.2.2", "10.0.2.1", "10.0.0.9"));
}

TEST_F(NetworkModernTest, addressesThatAreNotSettledAreLeftOut) {
  addVirtual(2, "d0", kind("dummy"));
  for (const uint32_t flag : {0x40u, 0x08u, 0x01u, 0x20u}) {
    addAddress(2, ipv6(("2001:db8::" + std::to_string(flag)).c_str()), 64,
               numberAttribute(IFA_FLAGS, flag));
  }
  addAddress(2, ipv6("fe80::1"), 64, "", RT_SCOPE_LINK);
  EXPECT_THAT(column(ipAddresses(), 2), ElementsAre("fe80::1"));
  EXPECT_THAT(column(ipAddresses(), 103), ElementsAre("link"));
}

TEST_F(NetworkModernTest, leaseIsToldByItsEndItsRouteOrItsFile) {
  ifa_cacheinfo lifetime{};
  lifetime.ifa_valid = 3600;
  for (uint32_t i = 2; i <= 5; ++i) addVirtual(static_cast<int>(i), "d" + std::to_string(i), "");
  addAddress(2, ipv4(10, 0, 0, 2), 24, attribute(IFA_CACHEINFO, test::bytesOf(lifetime)));
  addAddress(3, ipv4(10, 0, 0, 3), 24);
  addDefault(3, ipv4(10, 0, 0, 1), 0, kDhcpRoute);
  addAddress(4, ipv4(10, 0, 0, 4), 24);
  machine.directories["/run/systemd/netif/leases"] = {"4"};
  addAddress(5, ipv4(10, 0, 0, 5), 24);
  EXPECT_THAT(column(ipAddresses(), 9), ElementsAre("Y", "Y", "Y", "N"));
  EXPECT_THAT(column(ipAddresses(), 106), ElementsAre("dhcp", "dhcp", "dhcp", "static"));
}

TEST_F(NetworkModernTest, originOfIpv6AddressesIsWhatTheKernelSaysOrNothing) {
  addVirtual(2, "d0", "");
  addVirtual(3, "d1", "");
  addAddress(2, ipv6("2001:db8::1"), 64, numberAttribute(IFA_PROTO, uint8_t{2}));
  addAddress(2, ipv6("2001:db8::2"), 64);
  addAddress(3, ipv6("fe80::3"), 64, numberAttribute(IFA_PROTO, uint8_t{3}), RT_SCOPE_LINK);
  EXPECT_THAT(column(ipAddresses(), 106), ElementsAre("ra", "-", "kernel"));
  EXPECT_THAT(column(ipAddresses(), 9), ElementsAre("N", "-", "N"));
}

TEST_F(NetworkModernTest, routerOfATableCountsWhereEveryPacketLooksThere) {
  addVirtual(2, "d0", "");
  addAddress(2, ipv4(10, 0, 0, 2), 24);
  addDefault(2, ipv4(10, 0, 0, 1), 100);
  addDefault(2, ipv4(10, 0, 0, 254), 50, RTPROT_BOOT, 77);
  addRule(77, attribute(FRA_SRC, ipv4(10, 0, 0, 2)));
  EXPECT_THAT(column(ipAddresses(), 6), ElementsAre("10.0.0.1"));
  addRule(77);
  EXPECT_THAT(column(ipAddresses(), 6), ElementsAre("10.0.0.254"));
}

TEST_F(NetworkModernTest, memberOfARoutingDomainHasItsRouter) {
  addVirtual(9, "vrf-red",
             kind("vrf", attribute(IFLA_INFO_DATA, numberAttribute(IFLA_VRF_TABLE, 77u))));
  addVirtual(2, "d0", master(9));
  addAddress(2, ipv4(10, 0, 0, 2), 24);
  addDefault(2, ipv4(10, 0, 0, 1), 100);
  addDefault(2, ipv4(10, 0, 0, 254), 500, RTPROT_BOOT, 77);
  EXPECT_THAT(column(ipAddresses(), 6), ElementsAre("10.0.0.254"));
}

TEST_F(NetworkModernTest, machineWithoutAddressesHasNoRowsAndLacksNothing) {
  EXPECT_THAT(ipAddresses(), IsEmpty());
  EXPECT_EQ(table->outcome().status(), OutcomeStatus::kComplete);
}

TEST_F(NetworkModernTest, neitherGroupOpensAPathTwice) {
  addCard(2, "ens3", permanent('\x07'), "0000:02:00.0");
  addFunction("0000:02:00.0");
  addAddress(2, ipv4(192, 0, 2, 5), 24);
  scan = std::make_shared<ModernScan>(ScanSettings{});
  ModernTable adapterTable(*findGroup(MODERN_GROUPS_DEF, group::kNetworkAdapter));
  collectNetworkAdapters(*scan, adapterTable);
  ModernTable addressTable(*findGroup(MODERN_GROUPS_DEF, group::kIpAddress));
  collectIpAddresses(*scan, addressTable);
  ModernTable functionTable(*findGroup(MODERN_GROUPS_DEF, group::kPciDevice));
  collectPciDevices(*scan, functionTable);
  std::sort(machine.opened.begin(), machine.opened.end());
  EXPECT_EQ(std::adjacent_find(machine.opened.begin(), machine.opened.end()), machine.opened.end());
}

}  // namespace
}  // namespace quenlor
