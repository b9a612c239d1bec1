#include "groups/network/NetworkAdapterGroup.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/groups/network/FakeInterfaces.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::ethernets;
using test::loopback;
using test::RowValues;
using test::valueOf;

constexpr uint32_t kIndex = 1;
constexpr uint32_t kType = 5;
constexpr uint32_t kModel = 6;

class NetworkAdapterGroupTest : public ::testing::Test {
 protected:
  ~NetworkAdapterGroupTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  test::SocketRecorder machine;
  test::FakeInterfaces network{machine};
};

TEST_F(NetworkAdapterGroupTest, isGroup7Version1) {
  NetworkAdapterGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getGroupId(), 7U);
  EXPECT_EQ(table->getGroupVersion(), 1U);
}

TEST_F(NetworkAdapterGroupTest, reportsAdapterWithDigestOfHardwareAddressAndName) {
  network.interfaces = {loopback(), {"eth0", "10.0.0.1", "255.0.0.0", "00:a0:c9:12:34:56"}};
  const auto rows = collect<NetworkAdapterGroup>();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0],
            (RowValues{{1, "1"},
                       {2, "6d0ad9c4e71710bb1075884771102063"},  // of "00:A0:C9:12:34:56eth0"
                       {3, "00:A0:C9:12:34:56"},
                       {4, "00:A0:C9:12:34:56"},
                       {5, "3"},
                       {6, "eth0"}}));
}

TEST_F(NetworkAdapterGroupTest, asksThroughAStreamSocketWithAn8192ByteBuffer) {
  network.interfaces = ethernets(1);
  collect<NetworkAdapterGroup>();
  EXPECT_EQ(machine.sockets, (std::vector<std::pair<int, int>>{{AF_INET, SOCK_STREAM}}));
  EXPECT_EQ(network.listBufferSizes, std::vector<size_t>{8192});
}

TEST_F(NetworkAdapterGroupTest, loopbackAloneGivesNoRow) {
  network.interfaces = {loopback()};
  EXPECT_TRUE(collect<NetworkAdapterGroup>().empty());
}

TEST_F(NetworkAdapterGroupTest, interfaceWithoutHardwareAddressIsLeftOut) {
  network.interfaces = ethernets(3);
  network.interfaces[1].mac.reset();
  const test::CapturedTraces traces;
  const auto rows = collect<NetworkAdapterGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(valueOf(rows[1], kIndex), "2");
  EXPECT_EQ(valueOf(rows[1], kModel), "eth2");
  EXPECT_THAT(
      traces.texts(),
      testing::Contains("MIN linux/NetworkAdapterGroup.cpp getTable() hardware MAC addr FAILED"));
}

TEST_F(NetworkAdapterGroupTest, interfacesAreCountedByTheRecordSizeOfThisMachine) {
  for (const int count : {4, 5, 50, 204}) {
    network.interfaces = ethernets(count);
    EXPECT_EQ(collect<NetworkAdapterGroup>().size(), static_cast<size_t>(count));
  }
}

TEST_F(NetworkAdapterGroupTest, listThatDoesNotFitEndsAtTheLastWholeRecord) {
  network.interfaces = ethernets(250);
  EXPECT_EQ(collect<NetworkAdapterGroup>().size(), 8192 / sizeof(ifreq));
  network.interfaces = ethernets(3);
  network.lengthReturned = 2 * static_cast<int>(sizeof(ifreq)) + 39;
  EXPECT_EQ(collect<NetworkAdapterGroup>().size(), 2U);
}

TEST_F(NetworkAdapterGroupTest, noSocketOrNoListIsAnEmptyTable) {
  network.interfaces = ethernets(1);
  network.listFails = true;
  EXPECT_TRUE(collect<NetworkAdapterGroup>().empty());
  machine.socketsFail = true;
  EXPECT_TRUE(collect<NetworkAdapterGroup>().empty());
}

TEST_F(NetworkAdapterGroupTest, aliasesAreAdaptersOfTheirOwn) {
  network.interfaces = {{"eth0", "10.0.0.1", "255.0.0.0", "02:00:00:00:00:01"},
                        {"eth0:1", "10.0.0.2", "255.0.0.0", "02:00:00:00:00:01"}};
  const auto rows = collect<NetworkAdapterGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(valueOf(rows[1], kModel), "eth0:1");
  EXPECT_NE(valueOf(rows[0], 2), valueOf(rows[1], 2));
}

TEST_F(NetworkAdapterGroupTest, typeFollowsFromTheFrontOfTheName) {
  const std::vector<std::pair<std::string, std::string>> types = {
      {"eth0", "3"},  {"eth", "3"},   {"tr0", "4"},    {"trunk0", "4"},
      {"slip0", "6"}, {"sl0", "2"},   {"escon0", "7"}, {"ctc0", "8"},
      {"iucv0", "9"}, {"ppp0", "10"}, {"wlan0", "2"},  {"enp0s3", "2"},
      {"xeth0", "2"}, {"ETH0", "2"},  {"pp", "2"},     {"iuc0", "2"},
  };
  for (const auto& [name, type] : types) {
    network.interfaces = {{name, "10.0.0.1", "255.0.0.0", "02:00:00:00:00:01"}};
    EXPECT_EQ(valueOf(collect<NetworkAdapterGroup>().at(0), kType), type) << name;
  }
}

TEST_F(NetworkAdapterGroupTest, tracesWhatItAsksAndFinds) {
  for (const char* name : {"eth0", "tr0", "slip0", "escon0", "ctc0", "iucv0", "ppp0", "x0"}) {
    network.interfaces.push_back({name, "10.0.0.1", "255.0.0.0", "02:00:00:00:00:01"});
  }
  const test::CapturedTraces traces;
  collect<NetworkAdapterGroup>();
  const char* expected[] = {
      "hardware NetworkAdapterGroup",
      "hardware ifc_len= 8192",
      "hardware ifc_len= 320",
      "hardware count = 8",
      "hardware ifr_name= eth0",
      "hardware MAC addr= 02:00:00:00:00:01",
      "hardware type=ethernet",
      "hardware type=tokenring",
      "hardware type=SLIP",
      "hardware type=ESCON",
      "hardware type=ctc (channel to channel)",
      "hardware type=IUCV",
      "hardware type=ppp",
      "hardware type=unknown",
  };
  long last = -1;
  for (const char* text : expected) {
    const long position = traces.position(text);
    EXPECT_GT(position, last) << text;
    last = position;
  }
  EXPECT_EQ(traces.count("hardware NetworkAdapterGroup"), 2);
}

TEST_F(NetworkAdapterGroupTest, entryAndExitStandAroundDetails) {
  network.interfaces = ethernets(2);
  const test::CapturedTraces traces;
  collect<NetworkAdapterGroup>();
  std::vector<std::string> records = traces.texts();
  ASSERT_GE(records.size(), 3U);
  EXPECT_EQ(records.front(),
            "MID entry linux/NetworkAdapterGroup.cpp getTable() hardware NetworkAdapterGroup");
  EXPECT_EQ(records.back(),
            "MID exit linux/NetworkAdapterGroup.cpp getTable() hardware NetworkAdapterGroup");
  records.pop_back();
  records.erase(records.begin());
  EXPECT_THAT(
      records,
      testing::Each(testing::StartsWith("MAX linux/NetworkAdapterGroup.cpp getTable() hardware ")));
}

}  // namespace
}  // namespace quenlor
