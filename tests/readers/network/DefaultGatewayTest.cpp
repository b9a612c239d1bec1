#include "readers/network/DefaultGateway.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

constexpr const char* kEth0 = "/etc/sysconfig/network-scripts/ifcfg-eth0";
constexpr const char* kRouteConf = "/etc/route.conf";
constexpr const char* kRoutes = "/etc/sysconfig/network/routes";
constexpr const char* kNetwork = "/etc/sysconfig/network";

// The address of a line, or "none".
std::string gatewayOf(const std::string& line, const char* key) {
  char out[255] = "untouched";
  const int found = getGateway(out, line.c_str(), key);
  if (found == 0) return std::string(out) == "untouched" ? "none" : "changed";
  EXPECT_EQ(found, 1);
  return out;
}

class DefaultGatewayTest : public ::testing::Test {
 protected:
  ~DefaultGatewayTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  std::string gateway() {
    char out[255] = "";
    getDefaultGateway(out, sizeof out);
    return out;
  }

  test::FakeHost machine;
};

TEST(GetGateway, readsTheAddressBehindTheKey) {
  EXPECT_EQ(gatewayOf("GATEWAY=192.168.1.1\n", "GATEWAY"), "192.168.1.1");
  EXPECT_EQ(gatewayOf("default 10.0.0.1 - -\n", "default"), "10.0.0.1");
  EXPECT_EQ(gatewayOf("GATEWAY=\"192.168.1.1\"\n", "GATEWAY"), "192.168.1.1");
}

TEST(GetGateway, lineWithoutKeyOrDigitHasNone) {
  EXPECT_EQ(gatewayOf("", "GATEWAY"), "none");
  EXPECT_EQ(gatewayOf("NETMASK=255.255.255.0\n", "GATEWAY"), "none");
  EXPECT_EQ(gatewayOf("10.0.0.1 GATEWAY=\n", "GATEWAY"), "none");
  EXPECT_EQ(gatewayOf("default gw.example.com\n", "default"), "none");
}

TEST(GetGateway, commentBeforeTheKeyHidesTheLine) {
  EXPECT_EQ(gatewayOf("#GATEWAY=10.1.1.1\n", "GATEWAY"), "none");
  EXPECT_EQ(gatewayOf("  # GATEWAY=10.1.1.1\n", "GATEWAY"), "none");
  EXPECT_EQ(gatewayOf("GATEWAY=10.1.1.1 # main\n", "GATEWAY"), "10.1.1.1");
  EXPECT_EQ(gatewayOf("GATEWAY=#10.1.1.1\n", "GATEWAY"), "10.1.1.1");
  EXPECT_EQ(gatewayOf("#GATEWAY=10.1.1.1\n", "#GATEWAY"), "none");
}

TEST(GetGateway, keyMayStandAnywhereInTheLine) {
  EXPECT_EQ(gatewayOf("mydefaults 10.0.0.1\n", "default"), "10.0.0.1");
  EXPECT_EQ(gatewayOf("GATEWAYDEV=eth0\n", "GATEWAY"), "0");
  EXPECT_EQ(gatewayOf("GATEWAYDEV=eth0\n", "GATEWAY="), "none");
}

TEST(GetGateway, commaAndApostropheBelongToTheAddress) {
  EXPECT_EQ(gatewayOf("GATEWAY='10.0.0.1'\n", "GATEWAY"), "10.0.0.1'");
  EXPECT_EQ(gatewayOf("GATEWAY=10.0.0.1,10.0.0.2;3\n", "GATEWAY"), "10.0.0.1,10.0.0.2");
  EXPECT_EQ(gatewayOf("GATEWAY=1-2\n", "GATEWAY"), "1");
}

TEST(GetGateway, writesAtMost255Bytes) {
  EXPECT_EQ(gatewayOf("GATEWAY=" + std::string(1000, '1'), "GATEWAY"), std::string(254, '1'));
}

TEST_F(DefaultGatewayTest, withoutFilesThereIsNone) {
  EXPECT_EQ(gateway(), "");
  EXPECT_EQ(machine.opened, (std::vector<std::string>{kEth0, kRouteConf, kRoutes, kNetwork}));
}

TEST_F(DefaultGatewayTest, firstFileWithAnAddressEndsTheSearch) {
  machine.files[kNetwork] = "NETWORKING=yes\nHOSTNAME=node5.example.com\nGATEWAY=10.0.0.4\n";
  EXPECT_EQ(gateway(), "10.0.0.4");
  machine.files[kRoutes] = "192.168.7.0 10.0.0.2 255.255.255.0 eth0\ndefault 10.0.0.3 - -\n";
  EXPECT_EQ(gateway(), "10.0.0.3");
  machine.files[kRouteConf] =
      "# Destination     Dummy/Gateway     Netmask            Device\n"
      "192.168.1.0       0.0.0.0           255.255.255.0      eth0\n"
      "default           10.0.0.2\n";
  EXPECT_EQ(gateway(), "10.0.0.2");
  machine.files[kEth0] = "DEVICE=eth0\nNETMASK=255.255.255.0\nGATEWAY=10.0.0.1\nONBOOT=yes\n";
  machine.opened.clear();
  EXPECT_EQ(gateway(), "10.0.0.1");
  EXPECT_EQ(machine.opened, std::vector<std::string>{kEth0});
}

TEST_F(DefaultGatewayTest, filesThatYieldNothingAreClosed) {
  for (const char* path : {kEth0, kRouteConf, kRoutes, kNetwork}) machine.files[path] = "nothing\n";
  EXPECT_EQ(gateway(), "");
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(DefaultGatewayTest, inTheOtherFilesTheKeyMayBePartOfALongerWord) {
  machine.files[kRoutes] = "mydefaults 10.0.0.3\n";
  EXPECT_EQ(gateway(), "10.0.0.3");
  machine.files[kRouteConf] = "defaulted 10.0.0.2\n";
  EXPECT_EQ(gateway(), "10.0.0.2");
  machine.files[kEth0] = "GATEWAYDEV=eth0\nGATEWAY=10.0.0.1\n";
  EXPECT_EQ(gateway(), "0");
}

TEST_F(DefaultGatewayTest, networkFileNeedsTheKeyWithItsEqualsSign) {
  machine.files[kNetwork] = "GATEWAYDEV=eth0\n";
  EXPECT_EQ(gateway(), "");
}

TEST_F(DefaultGatewayTest, lineBehindThe299thIsNotRead) {
  std::string lines;
  for (int i = 0; i < 298; ++i) lines += "nothing\n";
  machine.files[kNetwork] = lines + "GATEWAY=10.0.0.1\n";
  EXPECT_EQ(gateway(), "10.0.0.1");
  machine.files[kNetwork] = lines + "nothing\nGATEWAY=10.0.0.1\n";
  EXPECT_EQ(gateway(), "");
}

TEST_F(DefaultGatewayTest, overlongLineCountsAsOneLinePerPiece) {
  machine.files[kNetwork] = std::string(254 * 299, 'x') + "\nGATEWAY=10.0.0.1\n";
  EXPECT_EQ(gateway(), "");
  machine.files[kNetwork] = std::string(254 * 297, 'x') + "\nGATEWAY=10.0.0.1\n";
  EXPECT_EQ(gateway(), "10.0.0.1");
}

TEST_F(DefaultGatewayTest, filesOfZerosAreLeftAfter299Pieces) {
  machine.files[kEth0] = std::string(100'000'000, '\0');
  machine.files[kNetwork] = "GATEWAY=10.0.0.1";
  EXPECT_EQ(gateway(), "10.0.0.1");
}

TEST_F(DefaultGatewayTest, tracesWhereItLooks) {
  const test::CapturedTraces traces;
  gateway();
  EXPECT_EQ(traces.count("hardware looking for default gateway...defgate=  len= 255"), 1);
  EXPECT_LT(traces.position("hardware suse"), traces.position("hardware suse8"));
  EXPECT_LT(traces.position("hardware suse8"), traces.position("hardware redhat"));
}

}  // namespace
}  // namespace quenlor
