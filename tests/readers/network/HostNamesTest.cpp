#include "readers/network/HostNames.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/NoThreads.h"

namespace quenlor {
namespace {

in_addr address(uint32_t number) { return {htonl(0x0A000000 + number)}; }

std::vector<in_addr> addresses(uint32_t count) {
  std::vector<in_addr> result;
  for (uint32_t i = 1; i <= count; ++i) result.push_back(address(i));
  return result;
}

// Name service that answers nobody before so many have asked: they must ask at the same time.
class SlowNameService : public test::FakeHost {
 public:
  explicit SlowNameService(int expected) : m_expected(expected) {}

  bool hostNameOfAddress(const in_addr& asked, std::string& name) override {
    std::unique_lock lock(m_mutex);
    ++m_asking;
    m_changed.notify_all();
    if (!m_changed.wait_for(lock, std::chrono::seconds(30),
                            [this] { return m_asking >= m_expected; })) {
      return false;
    }
    name = "host" + std::to_string(ntohl(asked.s_addr) & 0xFFFF);
    return true;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  const int m_expected;
  int m_asking = 0;
};

TEST(HostNames, noAddressesNoNames) {
  const test::FakeHost machine;
  EXPECT_TRUE(hostNamesOf({}).empty());
}

TEST(HostNames, namesStandInTheOrderOfTheAddresses) {
  test::FakeHost machine;
  machine.hostNames = {{"10.0.0.1", "one"}, {"10.0.0.3", "three.example.com"}};
  const auto names = hostNamesOf(addresses(3));
  ASSERT_EQ(names.size(), 3U);
  EXPECT_EQ(names[0], "one");
  EXPECT_EQ(names[1], std::nullopt);
  EXPECT_EQ(names[2], "three.example.com");
}

TEST(HostNames, fiftyAddressesAreLookedUpAtOnce) {
  const SlowNameService machine(50);
  const auto names = hostNamesOf(addresses(50));
  ASSERT_EQ(names.size(), 50U);
  for (uint32_t i = 0; i < 50; ++i) EXPECT_EQ(names[i], "host" + std::to_string(i + 1));
}

TEST(HostNames, manyMoreAddressesAreLookedUpInTurns) {
  const SlowNameService machine(1);
  const auto names = hostNamesOf(addresses(1000));
  ASSERT_EQ(names.size(), 1000U);
  EXPECT_EQ(names[999], "host1000");
}

TEST(HostNames, withoutThreadsAllAddressesAreLookedUpAllTheSame) {
  const test::NoThreads refused;
  const SlowNameService machine(1);
  const auto names = hostNamesOf(addresses(70));
  ASSERT_EQ(names.size(), 70U);
  for (uint32_t i = 0; i < 70; ++i) EXPECT_EQ(names[i], "host" + std::to_string(i + 1));
}

}  // namespace
}  // namespace quenlor
