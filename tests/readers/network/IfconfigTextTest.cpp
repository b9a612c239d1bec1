// The grammars of ifconfig's listing.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/Handles.h"
#include "readers/network/IfInfoList.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

// Name, IPv4 and IPv6 address of each record; "-" for an address that is null.
using Records = std::vector<std::vector<std::string>>;

using Parser = int (*)(FILE* stream, IfInfoList& list);

Records parse(Parser parser, const std::string& text) {
  test::FakeHost machine;
  machine.files["listing"] = text;
  const FileStream stream = openFile("listing");
  IfInfoList list;
  EXPECT_EQ(parser(stream.get(), list), 0);
  Records records;
  for (int i = 0; i < list.count(); ++i) {
    const auto orDash = [](const char* address) { return address == nullptr ? "-" : address; };
    const IfInfo* info = list.get(i);
    records.push_back({info->name, orDash(info->ipv4Address), orDash(info->ipv6Address)});
  }
  return records;
}

Records parseLinux(const std::string& text) { return parse(parse_ifconfig_linux, text); }
Records parseUnix(const std::string& text) { return parse(parse_ifconfig_unix, text); }

constexpr const char* kNetTools1 =
    "eth0      Link encap:Ethernet  HWaddr 00:A0:C9:12:34:56  \n"
    "          inet addr:192.168.1.5  Bcast:192.168.1.255  Mask:255.255.255.0\n"
    "          inet6 addr: fe80::2a0:c9ff:fe12:3456/64 Scope:Link\n"
    "          UP BROADCAST RUNNING MULTICAST  MTU:1500  Metric:1\n"
    "          RX packets:104032 errors:0 dropped:0 overruns:0 frame:0\n"
    "          Interrupt:10 Base address:0xd000 \n"
    "\n"
    "eth0:1    Link encap:Ethernet  HWaddr 00:A0:C9:12:34:56  \n"
    "          inet addr:192.168.1.6  Bcast:192.168.1.255  Mask:255.255.255.0\n"
    "\n"
    "lo        Link encap:Local Loopback  \n"
    "          inet addr:127.0.0.1  Mask:255.0.0.0\n"
    "          inet6 addr: ::1/128 Scope:Host\n"
    "          UP LOOPBACK RUNNING  MTU:16436  Metric:1\n";

constexpr const char* kNetTools2 =
    "br-lan: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1500\n"
    "        inet 10.0.0.1  netmask 255.255.255.0  broadcast 10.0.0.255\n"
    "        inet6 fe80::2a0:c9ff:fe12:3456  prefixlen 64  scopeid 0x20<link>\n"
    "        ether 00:a0:c9:12:34:56  txqueuelen 1000  (Ethernet)\n"
    "\n"
    "lo: flags=73<UP,LOOPBACK,RUNNING>  mtu 65536\n"
    "        inet 127.0.0.1  netmask 255.0.0.0\n"
    "        inet6 ::1  prefixlen 128  scopeid 0x10<host>\n";

TEST(ParseIfconfigLinux, addressesOfAnAliasReplaceThoseOfItsInterface) {
  EXPECT_EQ(parseLinux(kNetTools1), (Records{{"eth0", "192.168.1.6", "fe80::2a0:c9ff:fe12:3456/64"},
                                             {"lo", "127.0.0.1", "::1/128"}}));
}

TEST(ParseIfconfigLinux, findsNothingInTheListingOfNewNetTools) {
  EXPECT_EQ(parseLinux(kNetTools2), Records{});
}

TEST(ParseIfconfigLinux, readsPointToPointInterfaces) {
  EXPECT_EQ(parseLinux("ppp0      Link encap:Point-to-Point Protocol\n"
                       "          inet addr:10.0.0.1  P-t-P:10.0.0.2  Mask:255.255.255.255\n"),
            (Records{{"ppp0", "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigLinux, blockWithoutAddressAddsNothing) {
  EXPECT_EQ(parseLinux("eth0      Link encap:Ethernet\n          UP BROADCAST\n"
                       "eth1      Link encap:Ethernet\n          inet addr:10.0.0.2\n"),
            (Records{{"eth1", "10.0.0.2", "-"}}));
}

TEST(ParseIfconfigLinux, blocksOfOneNameAreMerged) {
  EXPECT_EQ(parseLinux("eth0\n inet addr:10.0.0.1\neth1\n inet addr:10.0.0.2\n"
                       "eth0\n inet6 addr: fe80::1/64\n"),
            (Records{{"eth0", "10.0.0.1", "fe80::1/64"}, {"eth1", "10.0.0.2", "-"}}));
}

TEST(ParseIfconfigLinux, laterAddressOfABlockReplacesTheEarlierOne) {
  EXPECT_EQ(parseLinux("eth0\n inet addr:10.0.0.1\n inet addr:10.0.0.2\n"
                       " inet6 addr: fec0::1/64\n inet6 addr: fe80::1/64\n"),
            (Records{{"eth0", "10.0.0.2", "fe80::1/64"}}));
}

TEST(ParseIfconfigLinux, nameEndsAtTheFirstOtherCharacter) {
  EXPECT_EQ(parseLinux("br-lan\n inet addr:10.0.0.1\n"), (Records{{"br", "10.0.0.1", "-"}}));
  EXPECT_EQ(parseLinux("vlan0.5\n inet addr:10.0.0.1\n"), (Records{{"vlan0", "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigLinux, otherWordsThatBeginWithInetAreIgnored) {
  EXPECT_EQ(parseLinux("eth0\n inetx addr:10.0.0.1\n inet4 addr:10.0.0.1\n inet:addr:10.0.0.1\n"),
            Records{});
}

TEST(ParseIfconfigLinux, inetMustBeginAWordBeforeTheAddress) {
  EXPECT_EQ(parseLinux("eth0\n xinet addr:10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n addr:10.0.0.1 inet \n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n inet 10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n addr:10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n UP inet addr:10.0.0.1\n"), (Records{{"eth0", "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigLinux, onlyTheFirstInetAndTheFirstAddrOfALineCount) {
  EXPECT_EQ(parseLinux("eth0\n xinet inet addr:10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n inet addr:10.0.0.1 addr:10.0.0.2\n"),
            (Records{{"eth0", "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigLinux, whiteSpaceAfterTheLabelIsSkipped) {
  EXPECT_EQ(parseLinux("eth0\n\tinet\taddr: \t 10.0.0.1\tx\n"),
            (Records{{"eth0", "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigLinux, emptyAddressIsStillAnAddress) {
  EXPECT_EQ(parseLinux("eth0\n inet addr:\n"), (Records{{"eth0", "", "-"}}));
}

TEST(ParseIfconfigLinux, addressesBeforeTheFirstNameBelongToNobody) {
  EXPECT_EQ(parseLinux(" inet addr:10.0.0.1\neth0\n inet addr:10.0.0.2\n"),
            (Records{{"eth0", "10.0.0.2", "-"}}));
}

TEST(ParseIfconfigLinux, blockWithoutNameAddsNothing) {
  EXPECT_EQ(parseLinux("-x\n inet addr:10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux(std::string("\0eth0\n inet addr:10.0.0.1\n", 26)), Records{});
}

TEST(ParseIfconfigLinux, lastLineMayLackItsNewline) {
  EXPECT_EQ(parseLinux("eth0\n inet addr:10.0.0.1"), (Records{{"eth0", "10.0.0.1", "-"}}));
  EXPECT_EQ(parseLinux("eth0\n inet"), Records{});
  EXPECT_EQ(parseLinux("eth0\n inet addr:"), (Records{{"eth0", "", "-"}}));
}

TEST(ParseIfconfigLinux, nothingInNothingOut) {
  EXPECT_EQ(parseLinux(""), Records{});
  EXPECT_EQ(parseLinux("\n\n \n"), Records{});
}

TEST(ParseIfconfigLinux, nullStreamIsAnError) {
  IfInfoList list;
  EXPECT_EQ(parse_ifconfig_linux(nullptr, list), -1);
  EXPECT_EQ(parse_ifconfig_unix(nullptr, list), -1);
  EXPECT_EQ(list.count(), 0);
}

TEST(ParseIfconfigLinux, textBehindANulByteIsNotSeen) {
  EXPECT_EQ(parseLinux(std::string("eth0\n inet\0addr:10.0.0.1\n", 25)), Records{});
  EXPECT_EQ(parseLinux(std::string("eth0\n inet addr:10.0\0.0.1\n", 26)),
            (Records{{"eth0", "10.0", "-"}}));
}

TEST(ParseIfconfigLinux, namesOf200CharactersAreKept) {
  const std::string name(200, 'n');
  EXPECT_EQ(parseLinux(name + "\n inet addr:10.0.0.1\n"), (Records{{name, "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigLinux, overlongLinesArriveInPiecesOf511Characters) {
  // The address lies in the second piece, which no blank begins: it is taken for a block's name.
  EXPECT_EQ(parseLinux("eth0\n" + std::string(511, ' ') + "inet addr:10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n" + std::string(510, ' ') + " inet addr:10.0.0.1\n"), Records{});
  EXPECT_EQ(parseLinux("eth0\n" + std::string(511, ' ') + " inet addr:10.0.0.1\n"),
            (Records{{"eth0", "10.0.0.1", "-"}}));
  EXPECT_EQ(parseLinux("eth0 " + std::string(10000, 'x') + "\n inet addr:10.0.0.1\n").size(), 1U);
}

TEST(ParseIfconfigLinux, megabyteOfInterfacesIsReadToItsEnd) {
  std::string text;
  Records expected;
  while (text.size() < 1'000'000) {
    const std::string name = "eth" + std::to_string(expected.size());
    text += name + "      Link encap:Ethernet\n          inet addr:10.0.0.1\n";
    expected.push_back({name, "10.0.0.1", "-"});
  }
  EXPECT_EQ(parseLinux(text), expected);
}

TEST(ParseIfconfigUnix, readsTheListingOfNewNetTools) {
  EXPECT_EQ(parseUnix(kNetTools2),
            (Records{{"br", "10.0.0.1", "fe80::2a0:c9ff:fe12:3456"}, {"lo", "127.0.0.1", "::1"}}));
}

TEST(ParseIfconfigUnix, nameEndsAtTheColon) {
  EXPECT_EQ(parseUnix("en0: flags=4e080863<UP>\n\tinet 10.0.0.1 netmask 0xffffff00\n"),
            (Records{{"en0", "10.0.0.1", "-"}}));
}

TEST(ParseIfconfigUnix, takesTheLabelOfTheOtherFormForTheAddress) {
  EXPECT_EQ(parseUnix("eth0\n inet addr:10.0.0.1\n"), (Records{{"eth0", "addr:10.0.0.1", "-"}}));
}

TEST(ParseIfconfigUnix, otherWordsThatBeginWithInetAreIgnored) {
  EXPECT_EQ(parseUnix("en0:\n inetd 10.0.0.1\n xinet 10.0.0.1\n inet/10.0.0.1\n"), Records{});
}

TEST(ParseIfconfigUnix, addressMayFollowAtOnceOrBeMissing) {
  EXPECT_EQ(parseUnix("en0:\n inet6fe80::1\n"), (Records{{"en0", "-", "fe80::1"}}));
  EXPECT_EQ(parseUnix("en0:\n inet \n"), (Records{{"en0", "", "-"}}));
  EXPECT_EQ(parseUnix("en0:\n inet"), Records{});
  EXPECT_EQ(parseUnix("en0:\n inet6"), (Records{{"en0", "-", ""}}));
}

TEST(ParseIfconfigUnix, rubbishIsHarmless) {
  std::string rubbish;
  for (int i = 0; i < 100'000; ++i) rubbish += static_cast<char>(i * 7919 >> 3);
  parseUnix(rubbish);
  parseLinux(rubbish);
  parseUnix(std::string(10000, '\0'));
  parseLinux(std::string(10000, '\0'));
}

}  // namespace
}  // namespace quenlor
