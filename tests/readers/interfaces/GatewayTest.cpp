#include "readers/interfaces/Gateway.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <string>

#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::ipv4;

constexpr uint32_t kOtherTable = 100;
const std::string kNear = ipv4(192, 0, 2, 1);
const std::string kFar = ipv4(192, 0, 2, 254);

NetworkInterface interface(uint32_t index, const std::string& name) {
  NetworkInterface item;
  item.link.index = index;
  item.link.name = name;
  return item;
}

class GatewayTest : public ::testing::Test {
 protected:
  void addRoute(uint32_t out, uint32_t metric, const std::string& router,
                uint32_t table = RT_TABLE_MAIN, uint8_t family = AF_INET) {
    routes.routes.push_back({family, RTPROT_BOOT, table, metric, {{out, router}}});
  }

  std::optional<DefaultGateway> gateway(size_t position = 0, uint8_t family = AF_INET) const {
    return defaultGatewayOf(interfaces[position], family, routes, InterfaceIndex(interfaces));
  }

  std::vector<NetworkInterface> interfaces = {interface(2, "eth0"), interface(3, "eth1"),
                                              interface(9, "vrf-red")};
  DefaultRoutes routes;
};

TEST_F(GatewayTest, noRouteIsNoGateway) { EXPECT_FALSE(gateway().has_value()); }

TEST_F(GatewayTest, lowestMetricWinsWhateverTheOrder) {
  addRoute(2, 600, kFar);
  addRoute(2, 100, kNear);
  addRoute(2, 700, kFar);
  ASSERT_TRUE(gateway().has_value());
  EXPECT_EQ(gateway()->address, kNear);
  EXPECT_EQ(gateway()->metric, 100u);
}

TEST_F(GatewayTest, ofEqualMetricsTheLowestAddressWinsWhateverTheOrder) {
  addRoute(2, 100, kFar);
  addRoute(2, 100, kNear);
  EXPECT_EQ(gateway()->address, kNear);
}

TEST_F(GatewayTest, routeOutOfAnotherInterfaceDoesNotCount) {
  addRoute(3, 0, kNear);
  EXPECT_FALSE(gateway(0).has_value());
  EXPECT_TRUE(gateway(1).has_value());
}

TEST_F(GatewayTest, eachWayOfAMultipathRouteIsItsInterfaces) {
  routes.routes.push_back({AF_INET, RTPROT_BOOT, RT_TABLE_MAIN, 5, {{2, kNear}, {3, kFar}}});
  EXPECT_EQ(gateway(0)->address, kNear);
  EXPECT_EQ(gateway(1)->address, kFar);
}

TEST_F(GatewayTest, routeOfTheOtherFamilyDoesNotCount) {
  addRoute(2, 0, std::string(16, '\x20'), RT_TABLE_MAIN, AF_INET6);
  EXPECT_FALSE(gateway(0, AF_INET).has_value());
  EXPECT_TRUE(gateway(0, AF_INET6).has_value());
}

TEST_F(GatewayTest, otherTablesCountOnlyWhereARuleLooksThemUpForEveryPacket) {
  addRoute(2, 50, kFar, kOtherTable);
  addRoute(2, 100, kNear);
  EXPECT_EQ(gateway()->address, kNear);
  routes.rules.push_back({AF_INET6, kOtherTable});
  EXPECT_EQ(gateway()->address, kNear);
  routes.rules.push_back({AF_INET, kOtherTable});
  EXPECT_EQ(gateway()->address, kFar);
}

TEST_F(GatewayTest, memberOfARoutingDomainHasItsTableAlone) {
  interfaces[2].link.vrfTable = kOtherTable;
  interfaces[0].link.master = 9;
  addRoute(2, 100, kNear);
  EXPECT_FALSE(gateway(0).has_value());
  addRoute(2, 200, kFar, kOtherTable);
  EXPECT_EQ(gateway(0)->address, kFar);
}

TEST_F(GatewayTest, bridgeInARoutingDomainTakesItsMembersAlong) {
  interfaces[2].link.vrfTable = kOtherTable;
  interfaces[1].link.master = 9;
  interfaces[0].link.master = 3;
  addRoute(2, 200, kFar, kOtherTable);
  EXPECT_EQ(gateway(0)->address, kFar);
}

TEST_F(GatewayTest, mastersInARingEnd) {
  interfaces[0].link.master = 3;
  interfaces[1].link.master = 2;
  addRoute(2, 100, kNear);
  EXPECT_EQ(gateway(0)->address, kNear);
}

}  // namespace
}  // namespace quenlor
