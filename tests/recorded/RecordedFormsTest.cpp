// The readable forms of a recording, as the program's own readers understand what is made of them.
#include <gtest/gtest.h>

#include <stdexcept>

#include "host/WholeFile.h"
#include "readers/dmi/DmiReader.h"
#include "readers/interfaces/AddressReader.h"
#include "readers/interfaces/InterfaceReader.h"
#include "tests/support/RecordedHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

class RecordedForms : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& text) { m_directory.write(name, text); }
  const std::filesystem::path& path() const { return m_directory.path(); }

  // True when a recording with this file alone is refused.
  static bool isRefused(const std::string& name, const std::string& text) {
    const TemporaryDirectory directory;
    directory.write(name, text);
    try {
      const RecordedHost machine(directory.path());
    } catch (const std::exception&) {
      return true;
    }
    return false;
  }

 private:
  TemporaryDirectory m_directory;
};

TEST_F(RecordedForms, linksAndTheirSettings) {
  write("network.txt",
        "# a comment\n"
        "link 1 lo type loopback mtu 65536 state unknown\n"
        "link 2 eth0 address 525400123456 permanent 52:54:00:ab:cd:ef mtu 1500 state up master 9\n"
        "link {10-11} eth0.{} address 5254001234{} kind vlan parent 2 netns 4\n"
        "link 9 mgmt kind vrf table 1001 state lowerlayerdown\n"
        "settings 2 speed 25000 duplex full port 3\n"
        "firmware eth0 3.25 0x80000681\n");
  write("tree.txt",
        "/sys/devices/virtual/net/{10-11}/\n"
        "/sys/class/net/eth0 -> ../../devices/pci0000:00/0000:00:02.0/net/eth0\n"
        "in /sys/devices/pci0000:00/0000:00:02.0/net/eth0\n"
        "uevent = INTERFACE=eth0\\nIFINDEX=2\n");
  const RecordedHost machine(path());
  const NetworkInterfaces found = readNetworkInterfaces();
  ASSERT_EQ(found.interfaces.size(), 5u);
  const NetworkInterface& card = found.interfaces[0];
  EXPECT_EQ(card.link.name, "eth0");
  EXPECT_EQ(hardwareAddressText(card.link.address), "52:54:00:12:34:56");
  EXPECT_EQ(hardwareAddressText(card.link.permanentAddress), "52:54:00:AB:CD:EF");
  EXPECT_EQ(card.link.master, 9u);
  EXPECT_EQ(card.speed, 25000u);
  EXPECT_EQ(card.duplex, "full");
  EXPECT_EQ(card.connector, "Fibre");
  EXPECT_EQ(card.firmware, "3.25 0x80000681");
  const Link& vlan = found.interfaces[2].link;
  EXPECT_EQ(vlan.name, "eth0.11");
  EXPECT_EQ(vlan.kind, "vlan");
  EXPECT_FALSE(vlan.parent);  // of another name space
  EXPECT_EQ(hardwareAddressText(vlan.address), "52:54:00:12:34:11");
  EXPECT_EQ(found.interfaces[3].link.isLoopback(), true);
  EXPECT_EQ(found.interfaces[4].link.vrfTable, 1001u);
  EXPECT_EQ(found.interfaces[4].link.state, "lowerlayerdown");
}

TEST_F(RecordedForms, addressesRoutesAndRules) {
  write("network.txt",
        "address 2 192.0.2.17/25 lifetime 3600 flags 0\n"
        "address 2 198.51.100.1/32 peer 198.51.100.2/32\n"
        "address 2 fe80::1/64 scope link origin ll\n"
        "route ipv4 via 192.0.2.1 dev 2 metric 100 protocol 16\n"
        "route ipv4 to 10.0.0.0/8 via 192.0.2.2 dev 2\n"
        "route ipv4 table 300 hop 192.0.2.3 2 hop - 3\n"
        "rule ipv4 table 300 priority 5\n"
        "rule ipv4 from 10.0.0.0/8 table 400 priority 6\n");
  const RecordedHost machine(path());
  const NetworkAddresses found = readNetworkAddresses();
  ASSERT_EQ(found.addresses.size(), 3u);
  EXPECT_EQ(addressText(found.addresses[0].bytes), "192.0.2.17");
  EXPECT_EQ(found.addresses[0].prefixLength, 25);
  EXPECT_FALSE(found.addresses[0].isForEver);
  EXPECT_EQ(addressText(found.addresses[1].bytes), "198.51.100.1");
  EXPECT_TRUE(found.addresses[1].isForEver);
  EXPECT_EQ(found.addresses[2].origin, AddressOrigin::kKernelLinkLocal);
  ASSERT_EQ(found.routes.routes.size(), 2u);  // to everywhere
  EXPECT_EQ(found.routes.routes[0].metric, 100u);
  EXPECT_EQ(found.routes.routes[0].protocol, 16);
  ASSERT_EQ(found.routes.routes[1].hops.size(), 2u);
  EXPECT_EQ(found.routes.routes[1].table, 300u);
  EXPECT_EQ(addressText(found.routes.routes[1].hops[0].gateway), "192.0.2.3");
  EXPECT_EQ(found.routes.routes[1].hops[1].interface, 3u);
  ASSERT_EQ(found.routes.rules.size(), 1u);  // for every packet
  EXPECT_EQ(found.routes.rules[0].table, 300u);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(RecordedForms, firmwareStructures) {
  const std::string structures =
      "structure 1\n04 text Acme\n05 text\n06 text 1.0\n07 text S-1\n"
      "repeat 0-2\nstructure 9 handle 09{x}\n04 text Slot {}\n05 byte a5 08 04 ; x1\n"
      "08 byte 03\n09 word 000{}\n0b byte 00 00\nend\nstructure 127\n";
  for (const char* version : {"version 3.1\n", "version32 2.3\n"}) {
    SCOPED_TRACE(version);
    write("firmware.txt", version + structures);
    const RecordedHost machine(path());
    const DmiTable table = readDmi();
    EXPECT_EQ(table.source, DmiSource::kTable);
    EXPECT_EQ(table.version->minor, version[7] == '3' ? 3 : 1);
    EXPECT_EQ(table.system->manufacturer, "Acme");
    EXPECT_FALSE(table.system->product);
    EXPECT_EQ(table.system->serial, "S-1");
    ASSERT_EQ(table.slots.size(), 3u);
    EXPECT_EQ(table.slots[2].designation, "Slot 2");
    EXPECT_EQ(table.slots[2].id, 2);
    EXPECT_EQ(table.outcome.status(), OutcomeStatus::kComplete);
  }
}

TEST_F(RecordedForms, aMachineIsLikeOthersBeforeItIsItself) {
  std::filesystem::create_directories(path() / "first");
  std::filesystem::create_directories(path() / "second");
  std::filesystem::create_directories(path() / "machine");
  write("first/tree.txt", "/a = first\n/b = first\n/c = first\n");
  write("first/uname", "Linux\nfirst\n");
  write("second/tree.txt", "/b = second\n/c = second\n");
  write("machine/like", "first\nsecond\n");
  write("machine/tree.txt", "in /\nc = itself\n");
  const RecordedHost machine(path() / "machine");
  EXPECT_EQ(readAttribute("/a"), "first");
  EXPECT_EQ(readAttribute("/b"), "second");
  EXPECT_EQ(readAttribute("/c"), "itself");
  struct utsname names {};
  host().uname(&names);
  EXPECT_STREQ(names.nodename, "first");
}

TEST_F(RecordedForms, linesOfNoKnownFormAreErrors) {
  EXPECT_FALSE(isRefused("network.txt", "link 1 lo\n"));
  for (const char* line : {"card 1 lo", "link 1", "link 1 lo colour red", "link 1 lo state wet",
                           "address 1 192.0.2.300/24", "route ipv5 dev 1", "route ipv4 metric"}) {
    EXPECT_TRUE(isRefused("network.txt", std::string(line) + "\n")) << line;
  }
  EXPECT_FALSE(isRefused("firmware.txt", "version 3.0\nstructure 1\n04 byte 00\n"));
  for (const char* text : {"version three", "04 byte 00", "structure 1\n05 byte 00",
                           "structure 1\n04 byte 0g", "structure 1\n04 nibble 0",
                           "structure 1\n04 word", "structure 300", "repeat 0-1\nstructure 1"}) {
    EXPECT_TRUE(isRefused("firmware.txt", std::string(text) + "\n")) << text;
  }
  EXPECT_TRUE(isRefused("like", "no-such-machine\n"));
}

}  // namespace
}  // namespace quenlor::test
