#include "readers/network/HostNames.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/Event.h"
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

// Name servers that answer nobody until the test ends.
class DeadNameService : public test::FakeHost {
 public:
  DeadNameService() { resolverPatience = std::chrono::milliseconds(200); }
  ~DeadNameService() override {
    m_state->release.signal();
    while (m_state->left < m_state->entered) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  bool hostNameOfAddress(const in_addr& asked, std::string& name) override {
    if (FakeHost::hostNameOfAddress(asked, name)) return true;
    const auto state = m_state;
    ++state->entered;
    state->release.wait(60000);
    ++state->left;
    return false;
  }

 private:
  struct State {
    Event release;
    std::atomic<int> entered{0};
    std::atomic<int> left{0};
  };
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

TEST(HostNames, fiftyAddressesAndDeadNameServerCostOneRoundOfTheResolver_oneLineSaysSo) {
  DeadNameService machine;
  machine.hostNames = {{"10.0.0.7", "seven"}};
  ::testing::internal::CaptureStderr();
  const auto before = std::chrono::steady_clock::now();
  const auto names = hostNamesOf(addresses(50));
  const auto waited = std::chrono::steady_clock::now() - before;
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: the name service did not answer within 1200 ms, addresses have this "
            "machine's own name\n");
  EXPECT_GE(waited, std::chrono::milliseconds(1200));
  EXPECT_LT(waited, std::chrono::seconds(4));
  ASSERT_EQ(names.size(), 50U);
  EXPECT_EQ(names[6], "seven");
  EXPECT_EQ(names[7], std::nullopt);
}

TEST(HostNames, manyMoreAddressesAndDeadNameServerCostNoMore) {
  DeadNameService machine;
  const auto before = std::chrono::steady_clock::now();
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(hostNamesOf(addresses(500)).size(), 500U);
  ::testing::internal::GetCapturedStderr();
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(4));
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
