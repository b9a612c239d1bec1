#include "readers/interfaces/AddressReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fib_rules.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <string>

#include "tests/support/FakeHost.h"
#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::attribute;
using test::dumpEnd;
using test::dumpMessage;
using test::ipv4;
using test::numberAttribute;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string address(uint32_t interface, const std::string& bytes) {
  ifaddrmsg header{};
  header.ifa_family = AF_INET;
  header.ifa_prefixlen = 24;
  header.ifa_index = interface;
  return dumpMessage(RTM_NEWADDR, header, attribute(IFA_LOCAL, bytes));
}

std::string defaultRoute(uint8_t family, uint32_t interface) {
  rtmsg header{};
  header.rtm_family = family;
  header.rtm_table = RT_TABLE_MAIN;
  header.rtm_type = RTN_UNICAST;
  return dumpMessage(RTM_NEWROUTE, header, numberAttribute(RTA_OIF, interface));
}

std::string rule(uint32_t table) {
  fib_rule_hdr header{};
  header.family = AF_INET;
  header.action = FR_ACT_TO_TBL;
  return dumpMessage(RTM_NEWRULE, header, numberAttribute(FRA_TABLE, table));
}

class AddressReaderTest : public ::testing::Test {
 protected:
  AddressReaderTest() {
    machine.netlink = [this](int protocol, const std::string& request, std::string& reply) {
      return kernel(protocol, request, reply);
    };
    answer(RTM_GETADDR, AF_UNSPEC, address(2, ipv4(192, 0, 2, 5)) + dumpEnd());
    answer(RTM_GETROUTE, AF_INET, defaultRoute(AF_INET, 2) + dumpEnd());
    answer(RTM_GETROUTE, AF_INET6, defaultRoute(AF_INET6, 3) + dumpEnd());
    answer(RTM_GETRULE, AF_UNSPEC, rule(100) + dumpEnd());
  }

  void answer(uint16_t type, uint8_t family, const std::string& reply) {
    kernel.answer(NETLINK_ROUTE, type, family, {reply});
  }

  test::FakeHost machine;
  test::FakeNetlink kernel;
};

TEST_F(AddressReaderTest, readsAllTables) {
  const NetworkAddresses found = readNetworkAddresses();
  ASSERT_EQ(found.addresses.size(), 1u);
  EXPECT_EQ(found.addresses[0].bytes, ipv4(192, 0, 2, 5));
  EXPECT_EQ(found.routes.routes.size(), 2u);
  ASSERT_EQ(found.routes.rules.size(), 1u);
  EXPECT_EQ(found.routes.rules[0].table, 100u);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(AddressReaderTest, kernelWithoutPolicyRoutingHasNoRulesAndLacksNothing) {
  answer(RTM_GETRULE, AF_UNSPEC, test::netlinkError(EOPNOTSUPP));
  const NetworkAddresses found = readNetworkAddresses();
  EXPECT_THAT(found.routes.rules, IsEmpty());
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(AddressReaderTest, eachListThatIsCutIsNamed) {
  answer(RTM_GETADDR, AF_UNSPEC, address(2, ipv4(192, 0, 2, 5)));
  answer(RTM_GETRULE, AF_UNSPEC, rule(100));
  const NetworkAddresses found = readNetworkAddresses();
  EXPECT_EQ(found.addresses.size(), 1u);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(found.outcome.reason(), "addresses: list cut; routing rules: list cut");
}

TEST_F(AddressReaderTest, addressThatAChangingListHasTwiceIsOne) {
  answer(RTM_GETADDR, AF_UNSPEC,
         address(2, ipv4(192, 0, 2, 5)) + address(3, ipv4(192, 0, 2, 5)) +
             address(2, ipv4(192, 0, 2, 5)) + dumpEnd());
  EXPECT_EQ(readNetworkAddresses().addresses.size(), 2u);
}

InterfaceAddress ipv6(uint8_t scope, uint32_t flags = 0) {
  InterfaceAddress item;
  item.family = AF_INET6;
  item.scope = scope;
  item.flags = flags;
  return item;
}

TEST(ReportedAddressesTest, addressOfTheLinkOnlyWhereThereIsNoOtherIpv6One) {
  const InterfaceAddress ofLink = ipv6(RT_SCOPE_LINK);
  const InterfaceAddress global = ipv6(RT_SCOPE_UNIVERSE);
  InterfaceAddress old;
  old.family = AF_INET;
  EXPECT_THAT(reportedAddresses({&ofLink}), ElementsAre(&ofLink));
  EXPECT_THAT(reportedAddresses({&ofLink, &global}), ElementsAre(&global));
  EXPECT_THAT(reportedAddresses({&old, &ofLink}), ElementsAre(&old, &ofLink));
}

TEST(ReportedAddressesTest, addressThatIsNotReportedHidesNone) {
  const InterfaceAddress ofLink = ipv6(RT_SCOPE_LINK);
  const InterfaceAddress temporary = ipv6(RT_SCOPE_UNIVERSE, IFA_F_TEMPORARY);
  EXPECT_THAT(reportedAddresses({&temporary, &ofLink}), ElementsAre(&ofLink));
}

TEST(ReportedAddressesTest, ipv4AddressOfTheLinkStays) {
  InterfaceAddress ofLink;
  ofLink.family = AF_INET;
  ofLink.scope = RT_SCOPE_LINK;
  const InterfaceAddress global = ipv6(RT_SCOPE_UNIVERSE);
  EXPECT_THAT(reportedAddresses({&ofLink, &global}), ElementsAre(&ofLink, &global));
}

}  // namespace
}  // namespace quenlor
