#include "readers/interfaces/LinkMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <string>

#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::attribute;
using test::numberAttribute;
using test::textAttribute;

constexpr const char kAddress[] = "\x02\x00\x00\xAA\xBB\xCC";

ifinfomsg header(int index = 2) {
  ifinfomsg message{};
  message.ifi_index = index;
  message.ifi_type = 1;
  message.ifi_flags = IFF_UP;
  return message;
}

std::optional<Link> parse(const std::string& attributes, const ifinfomsg& front = header()) {
  const std::string payload = test::bytesOf(front) + attributes;
  return parseLink({RTM_NEWLINK, NLM_F_MULTI, payload});
}

std::string name(const std::string& text) { return textAttribute(IFLA_IFNAME, text); }

std::string kind(const std::string& word, const std::string& data = "") {
  return attribute(IFLA_LINKINFO | NLA_F_NESTED, textAttribute(IFLA_INFO_KIND, word) + data);
}

TEST(LinkMessageTest, takesAllThatIsReported) {
  const auto link = parse(name("eth0") + attribute(IFLA_ADDRESS, kAddress) +
                          attribute(IFLA_PERM_ADDRESS, std::string("\x02\0\0\x11\x22\x33", 6)) +
                          numberAttribute(IFLA_MTU, uint32_t{9000}) +
                          numberAttribute(IFLA_OPERSTATE, uint8_t{6}) +
                          numberAttribute(IFLA_MASTER, uint32_t{7}) +
                          numberAttribute(IFLA_LINK, uint32_t{3}) + kind("vlan"));
  ASSERT_TRUE(link.has_value());
  EXPECT_EQ(link->index, 2u);
  EXPECT_EQ(link->name, "eth0");
  EXPECT_EQ(link->hardwareType, 1);
  EXPECT_EQ(link->permanentAddress, std::string("\x02\0\0\x11\x22\x33", 6));
  EXPECT_EQ(link->mtu, 9000u);
  EXPECT_EQ(link->state, "up");
  EXPECT_EQ(link->master, 7u);
  EXPECT_EQ(link->parent, 3u);
  EXPECT_EQ(link->kind, "vlan");
  EXPECT_FALSE(link->isLoopback());
}

TEST(LinkMessageTest, whatIsMissingIsUnknown) {
  const auto link = parse(name("eth0"));
  ASSERT_TRUE(link.has_value());
  EXPECT_EQ(link->address, "");
  EXPECT_EQ(link->permanentAddress, "");
  EXPECT_EQ(link->mtu, std::nullopt);
  EXPECT_EQ(link->state, "");
  EXPECT_EQ(link->kind, "");
  EXPECT_EQ(link->master, std::nullopt);
  EXPECT_EQ(link->parent, std::nullopt);
}

TEST(LinkMessageTest, nameMayHaveEveryByteThatTheKernelTakes) {
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/') continue;
    const std::string text = std::string("e") + static_cast<char>(byte) + "0";
    const auto link = parse(name(text));
    ASSERT_TRUE(link.has_value()) << byte;
    EXPECT_EQ(link->name, text) << byte;
  }
}

TEST(LinkMessageTest, nameThatIsNoFileNameIsNoInterface) {
  EXPECT_FALSE(parse(name("../../etc")).has_value());
  EXPECT_FALSE(parse(name("..")).has_value());
  EXPECT_FALSE(parse(name(".")).has_value());
  EXPECT_FALSE(parse(name("")).has_value());
  EXPECT_FALSE(parse("").has_value());
}

TEST(LinkMessageTest, infinibandAddressHasTwentyBytes) {
  const std::string address(20, '\x7F');
  EXPECT_EQ(parse(name("ib0") + attribute(IFLA_ADDRESS, address))->address, address);
}

TEST(LinkMessageTest, addressOfZerosOrBeyondTheKernelsLengthIsUnknown) {
  EXPECT_EQ(parse(name("lo") + attribute(IFLA_ADDRESS, std::string(6, '\0')))->address, "");
  EXPECT_EQ(parse(name("x") + attribute(IFLA_ADDRESS, std::string(32, 'a')))->address.size(), 32u);
  EXPECT_EQ(parse(name("x") + attribute(IFLA_ADDRESS, std::string(33, 'a')))->address, "");
}

TEST(LinkMessageTest, parentInAnotherNameSpaceIsUnknownWhereverItIsTold) {
  const std::string parent = numberAttribute(IFLA_LINK, uint32_t{3});
  const std::string elsewhere = numberAttribute(IFLA_LINK_NETNSID, int32_t{0});
  EXPECT_EQ(parse(name("veth0") + parent + elsewhere)->parent, std::nullopt);
  EXPECT_EQ(parse(name("veth0") + elsewhere + parent)->parent, std::nullopt);
}

TEST(LinkMessageTest, interfaceIsNotItsOwnParent) {
  EXPECT_EQ(parse(name("eth0") + numberAttribute(IFLA_LINK, uint32_t{2}))->parent, std::nullopt);
}

TEST(LinkMessageTest, indexZeroStandsForNone) {
  const auto link = parse(name("x") + numberAttribute(IFLA_LINK, uint32_t{0}) +
                          numberAttribute(IFLA_MASTER, uint32_t{0}));
  EXPECT_EQ(link->parent, std::nullopt);
  EXPECT_EQ(link->master, std::nullopt);
}

TEST(LinkMessageTest, tableOfARoutingDomainIsItsOwn) {
  const std::string data =
      attribute(IFLA_INFO_DATA, numberAttribute(IFLA_VRF_TABLE, uint32_t{1001}));
  EXPECT_EQ(parse(name("vrf-red") + kind("vrf", data))->vrfTable, 1001u);
  // In another kind's data the same number means something else.
  EXPECT_EQ(parse(name("vxlan0") + kind("vxlan", data))->vrfTable, std::nullopt);
}

TEST(LinkMessageTest, unknownStateIsNoWord) {
  EXPECT_EQ(parse(name("x") + numberAttribute(IFLA_OPERSTATE, uint8_t{7}))->state, "");
  EXPECT_EQ(parse(name("x") + numberAttribute(IFLA_OPERSTATE, uint8_t{0}))->state, "unknown");
}

TEST(LinkMessageTest, loopbackIsToldByItsFlag) {
  ifinfomsg front = header();
  front.ifi_flags = IFF_LOOPBACK | IFF_UP;
  EXPECT_TRUE(parse(name("any"), front)->isLoopback());
}

TEST(LinkMessageTest, messageOfAnotherTypeOrWithoutIndexIsNoLink) {
  const std::string payload = test::bytesOf(header()) + name("eth0");
  EXPECT_FALSE(parseLink({RTM_NEWADDR, 0, payload}).has_value());
  EXPECT_FALSE(parseLink({RTM_DELLINK, 0, payload}).has_value());
  EXPECT_FALSE(parse(name("eth0"), header(0)).has_value());
  EXPECT_FALSE(parse(name("eth0"), header(-4)).has_value());
}

TEST(LinkMessageTest, everyCutIsReadWithinItsBounds) {
  const std::string whole =
      test::bytesOf(header()) + name("eth0") + attribute(IFLA_ADDRESS, kAddress) +
      kind("vrf", attribute(IFLA_INFO_DATA, numberAttribute(IFLA_VRF_TABLE, uint32_t{5})));
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string cut(whole.data(), size);
    const auto link = parseLink({RTM_NEWLINK, 0, cut});
    if (link) {
      EXPECT_EQ(link->name, "eth0") << size;
    }
  }
}

}  // namespace
}  // namespace quenlor
