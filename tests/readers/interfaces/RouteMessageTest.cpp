#include "readers/interfaces/RouteMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fib_rules.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <string>

#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::attribute;
using test::ipv4;
using test::numberAttribute;

const std::string kRouter = ipv4(192, 0, 2, 1);

rtmsg routeHeader() {
  rtmsg message{};
  message.rtm_family = AF_INET;
  message.rtm_table = RT_TABLE_MAIN;
  message.rtm_protocol = 16;
  message.rtm_type = RTN_UNICAST;
  return message;
}

std::optional<DefaultRoute> parseRoute(const rtmsg& front, const std::string& attributes) {
  const std::string payload = test::bytesOf(front) + attributes;
  return parseDefaultRoute({RTM_NEWROUTE, NLM_F_MULTI, payload});
}

std::string out(uint32_t interface) { return numberAttribute(RTA_OIF, interface); }

// One way of a route with several.
std::string way(int interface, const std::string& attributes, uint8_t flags = 0) {
  rtnexthop header{};
  header.rtnh_len = static_cast<uint16_t>(sizeof header + attributes.size());
  header.rtnh_flags = flags;
  header.rtnh_ifindex = interface;
  return test::bytesOf(header) + attributes;
}

fib_rule_hdr ruleHeader() {
  fib_rule_hdr message{};
  message.family = AF_INET;
  message.table = RT_TABLE_MAIN;
  message.action = FR_ACT_TO_TBL;
  return message;
}

std::optional<TableRule> parseRule(const fib_rule_hdr& front, const std::string& attributes = "") {
  const std::string payload = test::bytesOf(front) + attributes;
  return parseTableRule({RTM_NEWRULE, NLM_F_MULTI, payload});
}

TEST(RouteMessageTest, defaultRouteHasItsRouterMetricTableAndMaker) {
  const auto route = parseRoute(routeHeader(), out(2) + attribute(RTA_GATEWAY, kRouter) +
                                                   numberAttribute(RTA_PRIORITY, uint32_t{100}) +
                                                   numberAttribute(RTA_TABLE, uint32_t{70000}));
  ASSERT_TRUE(route.has_value());
  EXPECT_EQ(route->family, AF_INET);
  EXPECT_EQ(route->protocol, 16);
  EXPECT_EQ(route->metric, 100u);
  EXPECT_EQ(route->table, 70000u);
  ASSERT_EQ(route->hops.size(), 1u);
  EXPECT_EQ(route->hops[0].interface, 2u);
  EXPECT_EQ(route->hops[0].gateway, kRouter);
}

TEST(RouteMessageTest, routeWithoutMetricHasTheLowest) {
  EXPECT_EQ(parseRoute(routeHeader(), out(2))->metric, 0u);
}

TEST(RouteMessageTest, tableOfTheHeaderHoldsWithoutAnAttribute) {
  EXPECT_EQ(parseRoute(routeHeader(), out(2))->table, uint32_t{RT_TABLE_MAIN});
}

TEST(RouteMessageTest, routeOntoTheLinkHasNoRouter) {
  EXPECT_EQ(parseRoute(routeHeader(), out(2))->hops[0].gateway, "");
}

TEST(RouteMessageTest, routeThroughARouterOfTheOtherFamily) {
  const std::string router(16, '\x20');
  const auto route = parseRoute(
      routeHeader(), out(2) + attribute(RTA_VIA, test::bytesOf(uint16_t{AF_INET6}) + router));
  EXPECT_EQ(route->hops[0].gateway, router);
  const auto cut = parseRoute(routeHeader(), out(2) + attribute(RTA_VIA, "\n"));
  EXPECT_EQ(cut->hops[0].gateway, "");
}

TEST(RouteMessageTest, waysOfAMultipathRouteAreAllTaken) {
  const std::string ways = way(2, attribute(RTA_GATEWAY, kRouter)) + way(3, "") +
                           way(5, attribute(RTA_GATEWAY, kRouter), RTNH_F_DEAD);
  const auto route = parseRoute(routeHeader(), attribute(RTA_MULTIPATH, ways));
  ASSERT_TRUE(route.has_value());
  ASSERT_EQ(route->hops.size(), 2u);
  EXPECT_EQ(route->hops[0].interface, 2u);
  EXPECT_EQ(route->hops[0].gateway, kRouter);
  EXPECT_EQ(route->hops[1].interface, 3u);
  EXPECT_EQ(route->hops[1].gateway, "");
}

TEST(RouteMessageTest, wayThatDoesNotFitEndsTheList) {
  std::string ways = way(2, "") + way(3, "");
  ways.resize(ways.size() - 1);
  EXPECT_EQ(parseRoute(routeHeader(), attribute(RTA_MULTIPATH, ways))->hops.size(), 1u);
  ways[0] = 0;  // length
  EXPECT_FALSE(parseRoute(routeHeader(), attribute(RTA_MULTIPATH, ways)).has_value());
}

TEST(RouteMessageTest, deadRouteIsNone) {
  rtmsg front = routeHeader();
  front.rtm_flags = RTNH_F_DEAD;
  EXPECT_FALSE(parseRoute(front, out(2)).has_value());
}

TEST(RouteMessageTest, routeToSomewhereIsNoDefaultRoute) {
  rtmsg front = routeHeader();
  front.rtm_dst_len = 1;
  EXPECT_FALSE(parseRoute(front, out(2)).has_value());
  front = routeHeader();
  front.rtm_src_len = 64;
  EXPECT_FALSE(parseRoute(front, out(2)).has_value());
}

TEST(RouteMessageTest, refusedLearnedAndForeignRoutesAreNone) {
  rtmsg front = routeHeader();
  front.rtm_type = RTN_UNREACHABLE;
  EXPECT_FALSE(parseRoute(front, out(2)).has_value());
  front = routeHeader();
  front.rtm_flags = RTM_F_CLONED;
  EXPECT_FALSE(parseRoute(front, out(2)).has_value());
  front = routeHeader();
  front.rtm_family = 128;  // multicast routes of IPv4
  EXPECT_FALSE(parseRoute(front, out(2)).has_value());
  EXPECT_FALSE(parseRoute(routeHeader(), attribute(RTA_GATEWAY, kRouter)).has_value());
}

TEST(RouteMessageTest, everyCutIsReadWithinItsBounds) {
  const std::string whole =
      test::bytesOf(routeHeader()) + attribute(RTA_GATEWAY, kRouter) + out(2) +
      attribute(RTA_MULTIPATH, way(2, attribute(RTA_GATEWAY, kRouter)) + way(3, ""));
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string cut(whole.data(), size);
    const auto route = parseDefaultRoute({RTM_NEWROUTE, 0, cut});
    if (route) {
      EXPECT_FALSE(route->hops.empty()) << size;
    }
  }
}

TEST(RuleMessageTest, ruleForEveryPacketNamesItsTable) {
  const auto rule = parseRule(ruleHeader());
  ASSERT_TRUE(rule.has_value());
  EXPECT_EQ(rule->family, AF_INET);
  EXPECT_EQ(rule->table, uint32_t{RT_TABLE_MAIN});
  EXPECT_EQ(parseRule(ruleHeader(), numberAttribute(FRA_TABLE, uint32_t{1000}))->table, 1000u);
}

TEST(RuleMessageTest, whatTheKernelAlwaysAddsSelectsNothing) {
  EXPECT_TRUE(parseRule(ruleHeader(), numberAttribute(FRA_SUPPRESS_PREFIXLEN, 0xFFFFFFFFu) +
                                          numberAttribute(FRA_PRIORITY, uint32_t{100}) +
                                          numberAttribute(FRA_PROTOCOL, uint8_t{3}))
                  .has_value());
}

TEST(RuleMessageTest, anySelectorNarrowsARuleAlsoOfKernelsToCome) {
  for (const uint16_t type :
       {FRA_DST, FRA_SRC, FRA_IIFNAME, FRA_OIFNAME, FRA_FWMARK, FRA_FWMASK, FRA_TUN_ID, FRA_L3MDEV,
        FRA_UID_RANGE, FRA_IP_PROTO, FRA_SPORT_RANGE, FRA_DPORT_RANGE, FRA_GOTO}) {
    EXPECT_FALSE(parseRule(ruleHeader(), attribute(type, "12345678")).has_value()) << type;
  }
  EXPECT_FALSE(parseRule(ruleHeader(), attribute(300, "1234")).has_value());
}

TEST(RuleMessageTest, headerNarrowsToo) {
  fib_rule_hdr front = ruleHeader();
  front.src_len = 8;
  EXPECT_FALSE(parseRule(front).has_value());
  front = ruleHeader();
  front.dst_len = 8;
  EXPECT_FALSE(parseRule(front).has_value());
  front = ruleHeader();
  front.tos = 16;
  EXPECT_FALSE(parseRule(front).has_value());
  front = ruleHeader();
  front.flags = FIB_RULE_INVERT;
  EXPECT_FALSE(parseRule(front).has_value());
}

TEST(RuleMessageTest, ruleThatPassesOverDefaultRoutesIsNone) {
  EXPECT_FALSE(
      parseRule(ruleHeader(), numberAttribute(FRA_SUPPRESS_PREFIXLEN, uint32_t{0})).has_value());
}

TEST(RuleMessageTest, ruleThatLooksNothingUpIsNone) {
  fib_rule_hdr front = ruleHeader();
  front.action = FR_ACT_BLACKHOLE;
  EXPECT_FALSE(parseRule(front).has_value());
  front = ruleHeader();
  front.family = 128;
  EXPECT_FALSE(parseRule(front).has_value());
  EXPECT_FALSE(parseTableRule({RTM_NEWRULE, 0, "short"}).has_value());
}

}  // namespace
}  // namespace quenlor
