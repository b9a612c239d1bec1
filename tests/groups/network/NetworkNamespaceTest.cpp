// The address and adapter groups on the real kernel, in a network namespace of their own, compared
// with what "ip" says. Needs the right to make one; skipped elsewhere.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "groups/network/IpAddressGroup.h"
#include "groups/network/NetworkAdapterGroup.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::RowValues;
using test::valueOf;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// Address, mask and hardware address.
using Address = std::tuple<std::string, std::string, std::string>;
// Name (with alias) and hardware address.
using Adapter = std::pair<std::string, std::string>;

std::string outputOf(const std::string& command) {
  FILE* stream = ::popen(command.c_str(), "r");
  std::string output;
  char buffer[4096];
  for (size_t size = 0; (size = std::fread(buffer, 1, sizeof buffer, stream)) > 0;) {
    output.append(buffer, size);
  }
  ::pclose(stream);
  return output;
}

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::string wordBehind(const std::vector<std::string>& words, const std::string& label) {
  const auto found = std::find(words.begin(), words.end(), label);
  return found == words.end() || found + 1 == words.end() ? "" : *(found + 1);
}

std::string maskOf(int prefixLength) {
  const uint32_t mask = prefixLength == 0 ? 0 : ~uint32_t{0} << (32 - prefixLength);
  char text[16];
  std::snprintf(text, sizeof text, "%u.%u.%u.%u", mask >> 24, mask >> 16 & 255, mask >> 8 & 255,
                mask & 255);
  return text;
}

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// One IPv4 address as "ip" knows it.
struct KernelAddress {
  std::string label;  // the interface's name, or that of an alias
  std::string address;
  std::string mask;
  std::string mac;
};

// All IPv4 addresses in the kernel's order.
std::vector<KernelAddress> kernelAddresses() {
  std::istringstream lines(outputOf("ip -o -4 addr show"));
  std::vector<KernelAddress> addresses;
  for (std::string line; std::getline(lines, line);) {
    // "2: eth0    inet 198.18.1.2/24 scope global secondary eth0:1\       valid_lft ..."
    const auto words = wordsOf(line.substr(0, line.find('\\')));
    const std::string network = wordBehind(words, "inet");
    const size_t slash = network.find('/');
    const auto link = wordsOf(outputOf("ip -o link show dev " + words.at(1)));
    const bool isLoopback = words.at(1) == "lo";
    addresses.push_back({words.back(), network.substr(0, slash),
                         maskOf(std::atoi(network.c_str() + slash + 1)),
                         upperCase(wordBehind(link, isLoopback ? "link/loopback" : "link/ether"))});
  }
  return addresses;
}

std::vector<Address> expectedAddresses() {
  std::vector<Address> expected;
  for (const KernelAddress& each : kernelAddresses()) {
    if (each.address != "127.0.0.1") expected.emplace_back(each.address, each.mask, each.mac);
  }
  return expected;
}

std::vector<Adapter> expectedAdapters() {
  std::vector<Adapter> expected;
  for (const KernelAddress& each : kernelAddresses()) {
    if (each.mac != "00:00:00:00:00:00") expected.emplace_back(each.label, each.mac);
  }
  return expected;
}

std::vector<Address> reportedAddresses() {
  std::vector<Address> reported;
  for (const RowValues& row : collect<IpAddressGroup>()) {
    EXPECT_EQ(valueOf(row, 1), std::to_string(reported.size() + 1));
    reported.emplace_back(valueOf(row, 2), valueOf(row, 5), valueOf(row, 10));
  }
  return reported;
}

std::vector<Adapter> reportedAdapters() {
  std::vector<Adapter> reported;
  for (const RowValues& row : collect<NetworkAdapterGroup>()) {
    EXPECT_EQ(valueOf(row, 1), std::to_string(reported.size() + 1));
    reported.emplace_back(valueOf(row, 6), valueOf(row, 3));
  }
  return reported;
}

// Sockets alone: a sanitizer talks with the program that finds its names through pipes.
auto openSockets() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::count_if(begin(descriptors), end(descriptors), [](const auto& entry) {
    std::error_code error;
    return std::filesystem::read_symlink(entry.path(), error).string().starts_with("socket:");
  });
}

// Leaves the machine's own network for a namespace with nothing but the loopback.
class NetworkNamespaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_own = ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    m_isInside = ::unshare(CLONE_NEWNET) == 0;
    if (!m_isInside) GTEST_SKIP() << "no network namespace of our own: " << std::strerror(errno);
    if (std::system("ip link set lo up 2>/dev/null") != 0) GTEST_SKIP() << "no ip command";
  }

  void TearDown() override {
    if (m_isInside) {
      EXPECT_EQ(::setns(m_own, CLONE_NEWNET), 0);
    }
    ::close(m_own);
  }

  // An interface that is up; false when the kernel cannot make one.
  static bool makeInterface(const std::string& name) {
    const std::string link = "ip link add " + name + " type ";
    const std::string made = "(" + link + "dummy || " + link + "veth) 2>/dev/null";
    return std::system((made + " && ip link set " + name + " up").c_str()) == 0;
  }

  static void addAddress(const std::string& name, const std::string& network,
                         const std::string& label = "") {
    const std::string alias = label.empty() ? "" : " label " + label;
    EXPECT_EQ(std::system(("ip addr add " + network + " dev " + name + alias).c_str()), 0);
  }

 private:
  int m_own = -1;
  bool m_isInside = false;
};

TEST_F(NetworkNamespaceTest, loopbackAloneGivesNoRows) {
  EXPECT_THAT(kernelAddresses(), SizeIs(1));
  EXPECT_THAT(reportedAddresses(), IsEmpty());
  EXPECT_THAT(reportedAdapters(), IsEmpty());
}

TEST_F(NetworkNamespaceTest, oneInterfaceGivesOneRow) {
  if (!makeInterface("eth0")) GTEST_SKIP() << "no virtual interfaces";
  addAddress("eth0", "198.18.0.1/24");
  EXPECT_THAT(reportedAddresses(), SizeIs(1));
  EXPECT_THAT(reportedAddresses(), ElementsAreArray(expectedAddresses()));
  EXPECT_THAT(reportedAdapters(), ElementsAreArray(expectedAdapters()));
}

TEST_F(NetworkNamespaceTest, fiveInterfacesGiveFiveRows) {
  for (int i = 0; i < 5; ++i) {
    const std::string name = "eth" + std::to_string(i);
    if (!makeInterface(name)) GTEST_SKIP() << "no virtual interfaces";
    addAddress(name, "198.18." + std::to_string(i) + ".1/" + std::to_string(24 + i));
  }
  EXPECT_THAT(reportedAddresses(), SizeIs(5));
  EXPECT_THAT(reportedAddresses(), ElementsAreArray(expectedAddresses()));
  EXPECT_THAT(reportedAdapters(), ElementsAreArray(expectedAdapters()));
}

TEST_F(NetworkNamespaceTest, fiftyInterfacesFillTheAddressListWhoseFirstRecordIsTheLoopback) {
  for (int i = 0; i < 50; ++i) {
    const std::string name = "eth" + std::to_string(i);
    if (!makeInterface(name)) GTEST_SKIP() << "no virtual interfaces";
    addAddress(name, "198.18." + std::to_string(i) + ".1/24");
  }
  const auto before = openSockets();
  auto expected = expectedAddresses();
  ASSERT_THAT(expected, SizeIs(50));
  expected.resize(49);  // 2000 bytes hold 50 records, one of which is the loopback's
  EXPECT_THAT(reportedAddresses(), ElementsAreArray(expected));
  EXPECT_THAT(reportedAdapters(), ElementsAreArray(expectedAdapters()));
  EXPECT_EQ(openSockets(), before);
}

TEST_F(NetworkNamespaceTest, addressesOfOneInterfaceUnderOneNameAreRowsOfTheirOwn) {
  if (!makeInterface("eth0")) GTEST_SKIP() << "no virtual interfaces";
  for (const char* network : {"198.18.0.1/24", "198.18.0.2/24", "198.18.1.1/30"}) {
    addAddress("eth0", network);
  }
  EXPECT_THAT(reportedAddresses(), SizeIs(3));
  EXPECT_THAT(reportedAddresses(), ElementsAreArray(expectedAddresses()));
  EXPECT_THAT(reportedAdapters(), ElementsAreArray(expectedAdapters()));
}

TEST_F(NetworkNamespaceTest, aliasesNamesOfEveryKindAndInterfacesWithoutAddress) {
  const std::vector<std::pair<std::string, std::string>> types = {
      {"eth0", "3"}, {"tr0", "4"}, {"trunk0", "4"}, {"slip0", "6"}, {"ppp0", "10"}, {"wan0", "2"}};
  int number = 0;
  for (const auto& [name, type] : types) {
    if (!makeInterface(name)) GTEST_SKIP() << "no virtual interfaces";
    addAddress(name, "198.18." + std::to_string(++number) + ".1/24");
  }
  addAddress("eth0", "198.18.1.2/24", "eth0:1");
  ASSERT_TRUE(makeInterface("eth9"));

  EXPECT_THAT(reportedAddresses(), SizeIs(7));
  EXPECT_THAT(reportedAddresses(), ElementsAreArray(expectedAddresses()));
  EXPECT_THAT(reportedAdapters(), ElementsAreArray(expectedAdapters()));
  std::vector<std::pair<std::string, std::string>> reported;
  for (const RowValues& row : collect<NetworkAdapterGroup>()) {
    if (valueOf(row, 6) != "eth0:1") reported.emplace_back(valueOf(row, 6), valueOf(row, 5));
  }
  EXPECT_THAT(reported, ElementsAreArray(types));
}

}  // namespace
}  // namespace quenlor
