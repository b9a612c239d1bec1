#include "readers/interfaces/AddressMessage.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>

#include <string>

#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::attribute;
using test::ipv4;
using test::numberAttribute;

ifaddrmsg header(uint8_t family, uint8_t prefixLength) {
  ifaddrmsg message{};
  message.ifa_family = family;
  message.ifa_prefixlen = prefixLength;
  message.ifa_index = 4;
  message.ifa_flags = IFA_F_PERMANENT;
  return message;
}

std::string ipv6(const char* text) {
  std::string bytes(16, '\0');
  inet_pton(AF_INET6, text, bytes.data());
  return bytes;
}

std::optional<InterfaceAddress> parse(const ifaddrmsg& front, const std::string& attributes) {
  const std::string payload = test::bytesOf(front) + attributes;
  return parseAddress({RTM_NEWADDR, NLM_F_MULTI, payload});
}

std::optional<InterfaceAddress> parse4(const std::string& more = "") {
  return parse(header(AF_INET, 24), attribute(IFA_LOCAL, ipv4(192, 0, 2, 5)) + more);
}

InterfaceAddress withFlags(uint8_t family, uint32_t flags) {
  InterfaceAddress address;
  address.family = family;
  address.flags = flags;
  return address;
}

TEST(AddressMessageTest, takesAllThatIsReported) {
  ifaddrmsg front = header(AF_INET, 24);
  front.ifa_scope = RT_SCOPE_LINK;
  const auto address = parse(front, attribute(IFA_LOCAL, ipv4(192, 0, 2, 5)));
  ASSERT_TRUE(address.has_value());
  EXPECT_EQ(address->interface, 4u);
  EXPECT_EQ(address->family, AF_INET);
  EXPECT_EQ(address->prefixLength, 24);
  EXPECT_EQ(address->scope, RT_SCOPE_LINK);
  EXPECT_EQ(addressText(address->bytes), "192.0.2.5");
  EXPECT_TRUE(address->isForEver);
  EXPECT_EQ(address->origin, AddressOrigin::kUnknown);
}

TEST(AddressMessageTest, onPointToPointLinksTheOtherEndIsNotOurs) {
  const auto address = parse(header(AF_INET, 32), attribute(IFA_ADDRESS, ipv4(10, 0, 0, 1)) +
                                                      attribute(IFA_LOCAL, ipv4(10, 0, 0, 2)));
  EXPECT_EQ(addressText(address->bytes), "10.0.0.2");
}

TEST(AddressMessageTest, ipv6AddressIsItsOwnWithoutAPeer) {
  const auto address = parse(header(AF_INET6, 64), attribute(IFA_ADDRESS, ipv6("2001:db8::5")));
  EXPECT_EQ(addressText(address->bytes), "2001:db8::5");
}

TEST(AddressMessageTest, flagsOf32BitsReplaceThoseOfTheHeader) {
  EXPECT_EQ(parse4(numberAttribute(IFA_FLAGS, uint32_t{0x880}))->flags, 0x880u);
  EXPECT_EQ(parse4()->flags, uint32_t{IFA_F_PERMANENT});
}

TEST(AddressMessageTest, lifetimeIsFiniteUnlessAllBitsAreSet) {
  ifa_cacheinfo lifetime{};
  lifetime.ifa_valid = 3600;
  EXPECT_FALSE(parse4(attribute(IFA_CACHEINFO, test::bytesOf(lifetime)))->isForEver);
  lifetime.ifa_valid = 0xFFFFFFFF;
  EXPECT_TRUE(parse4(attribute(IFA_CACHEINFO, test::bytesOf(lifetime)))->isForEver);
  EXPECT_TRUE(parse4(attribute(IFA_CACHEINFO, "short"))->isForEver);
}

TEST(AddressMessageTest, originIsWhatTheKernelSays) {
  const auto origin = [](uint8_t protocol) {
    return parse4(numberAttribute(IFA_PROTO, protocol))->origin;
  };
  EXPECT_EQ(origin(1), AddressOrigin::kKernelLoopback);
  EXPECT_EQ(origin(2), AddressOrigin::kRouterAdvertised);
  EXPECT_EQ(origin(3), AddressOrigin::kKernelLinkLocal);
  EXPECT_EQ(origin(0), AddressOrigin::kUnknown);
  EXPECT_EQ(origin(200), AddressOrigin::kUnknown);
}

TEST(AddressMessageTest, bytesThatDoNotFitTheFamilyAreNoAddress) {
  EXPECT_FALSE(parse(header(AF_INET, 24), attribute(IFA_LOCAL, ipv6("::1"))).has_value());
  EXPECT_FALSE(parse(header(AF_INET6, 64), attribute(IFA_ADDRESS, ipv4(1, 2, 3, 4))).has_value());
  EXPECT_FALSE(parse(header(AF_INET, 24), "").has_value());
}

TEST(AddressMessageTest, prefixBeyondTheFamilyIsNoAddress) {
  EXPECT_TRUE(parse(header(AF_INET, 32), attribute(IFA_LOCAL, ipv4(1, 2, 3, 4))).has_value());
  EXPECT_FALSE(parse(header(AF_INET, 33), attribute(IFA_LOCAL, ipv4(1, 2, 3, 4))).has_value());
  EXPECT_FALSE(parse(header(AF_INET6, 129), attribute(IFA_ADDRESS, ipv6("::1"))).has_value());
}

TEST(AddressMessageTest, otherFamiliesAndMessagesAreNoAddress) {
  EXPECT_FALSE(parse(header(28, 8), attribute(IFA_LOCAL, ipv4(1, 2, 3, 4))).has_value());
  const std::string payload =
      test::bytesOf(header(AF_INET, 24)) + attribute(IFA_LOCAL, ipv4(1, 2, 3, 4));
  EXPECT_FALSE(parseAddress({RTM_NEWLINK, 0, payload}).has_value());
}

TEST(AddressMessageTest, everyCutIsReadWithinItsBounds) {
  const std::string whole = test::bytesOf(header(AF_INET6, 64)) +
                            attribute(IFA_ADDRESS, ipv6("2001:db8::5")) +
                            attribute(IFA_CACHEINFO, test::bytesOf(ifa_cacheinfo{}));
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string cut(whole.data(), size);
    const auto address = parseAddress({RTM_NEWADDR, 0, cut});
    if (address) {
      EXPECT_EQ(addressText(address->bytes), "2001:db8::5") << size;
    }
  }
}

TEST(SettledAddressTest, testedFailedAndAbandonedOnesAreNot) {
  for (const uint8_t family : {uint8_t{AF_INET}, uint8_t{AF_INET6}}) {
    EXPECT_TRUE(withFlags(family, 0).isSettled());
    EXPECT_TRUE(withFlags(family, IFA_F_PERMANENT | IFA_F_NOPREFIXROUTE).isSettled());
    EXPECT_FALSE(withFlags(family, IFA_F_TENTATIVE).isSettled());
    EXPECT_FALSE(withFlags(family, IFA_F_DADFAILED).isSettled());
    EXPECT_FALSE(withFlags(family, IFA_F_DEPRECATED).isSettled());
  }
}

TEST(SettledAddressTest, bitOfTemporaryIpv6AddressesMeansFurtherIpv4Ones) {
  EXPECT_FALSE(withFlags(AF_INET6, IFA_F_TEMPORARY).isSettled());
  EXPECT_TRUE(withFlags(AF_INET, IFA_F_SECONDARY).isSettled());
}

TEST(MaskTextTest, hasTheFormOfAnAddress) {
  EXPECT_EQ(maskText(AF_INET, 0), "0.0.0.0");
  EXPECT_EQ(maskText(AF_INET, 20), "255.255.240.0");
  EXPECT_EQ(maskText(AF_INET, 32), "255.255.255.255");
  EXPECT_EQ(maskText(AF_INET, 40), "255.255.255.255");
  EXPECT_EQ(maskText(AF_INET6, 0), "::");
  EXPECT_EQ(maskText(AF_INET6, 64), "ffff:ffff:ffff:ffff::");
  EXPECT_EQ(maskText(AF_INET6, 128), "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff");
  EXPECT_EQ(maskText(7, 8), "");
}

TEST(AddressTextTest, otherLengthsAreNoAddress) {
  EXPECT_EQ(addressText(""), "");
  EXPECT_EQ(addressText("abc"), "");
  EXPECT_EQ(addressText(std::string(20, 'a')), "");
}

}  // namespace
}  // namespace quenlor
