#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "host/SystemHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

class SystemHostKernelTest : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return m_directory.path(name); }

  Host& real = systemHost();

 private:
  test::TemporaryDirectory m_directory;
};

template <class Payload>
std::string netlinkMessage(uint16_t type, uint16_t flags, const Payload& payload) {
  nlmsghdr header{};
  header.nlmsg_len = NLMSG_LENGTH(sizeof payload);
  header.nlmsg_type = type;
  header.nlmsg_flags = flags;
  std::string message(NLMSG_ALIGN(header.nlmsg_len), '\0');
  std::memcpy(message.data(), &header, sizeof header);
  std::memcpy(message.data() + NLMSG_HDRLEN, &payload, sizeof payload);
  return message;
}

uint16_t lastTypeOf(const std::string& reply) {
  uint16_t type = 0;
  for (size_t at = 0; at + sizeof(nlmsghdr) <= reply.size();) {
    nlmsghdr header{};
    std::memcpy(&header, reply.data() + at, sizeof header);
    type = header.nlmsg_type;
    at += NLMSG_ALIGN(header.nlmsg_len);
  }
  return type;
}

TEST_F(SystemHostKernelTest, entriesComeWithTheirTypesAndWithoutDots) {
  std::ofstream(path("file")) << "x";
  ASSERT_EQ(::mkdir(path("directory").c_str(), 0700), 0);
  ASSERT_EQ(::symlink("file", path("link").c_str()), 0);
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  std::vector<DirectoryEntry> entries;
  ASSERT_TRUE(real.listEntries(path("").c_str(), entries));
  std::sort(entries.begin(), entries.end(),
            [](const auto& a, const auto& b) { return a.name < b.name; });
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries[0].name, "directory");
  EXPECT_EQ(entries[0].type, EntryType::kDirectory);
  EXPECT_EQ(entries[1].type, EntryType::kOther);
  EXPECT_EQ(entries[2].type, EntryType::kRegular);
  EXPECT_EQ(entries[3].type, EntryType::kLink);
}

TEST_F(SystemHostKernelTest, aDirectoryThatIsNoneHasNoEntries) {
  std::vector<DirectoryEntry> entries{{"left over", EntryType::kUnknown}};
  EXPECT_FALSE(real.listEntries(path("none").c_str(), entries));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(entries.empty());
}

TEST_F(SystemHostKernelTest, linksAreReadAsTheyStand) {
  ASSERT_EQ(::symlink("../../devices/pci0000:00", path("link").c_str()), 0);
  std::string target;
  EXPECT_TRUE(real.readLink(path("link").c_str(), target));
  EXPECT_EQ(target, "../../devices/pci0000:00");
  EXPECT_FALSE(real.readLink(path("").c_str(), target));
}

TEST_F(SystemHostKernelTest, statxTellsTheModificationTime) {
  std::ofstream(path("file")) << "x";
  struct stat classic {};
  ASSERT_EQ(::stat(path("file").c_str(), &classic), 0);
  struct statx facts {};
  ASSERT_EQ(real.statx(path("file").c_str(), 0, STATX_MTIME | STATX_BTIME, &facts), 0);
  EXPECT_EQ(facts.stx_mtime.tv_sec, classic.st_mtime);
}

TEST_F(SystemHostKernelTest, aDumpIsCollectedUpToItsEnd) {
  std::string reply;
  ASSERT_EQ(real.netlinkRequest(
                NETLINK_ROUTE, netlinkMessage(RTM_GETLINK, NLM_F_REQUEST | NLM_F_DUMP, ifinfomsg{}),
                reply),
            0);
  EXPECT_GT(reply.size(), 2 * sizeof(nlmsghdr));  // every network namespace has a loopback
  EXPECT_EQ(lastTypeOf(reply), NLMSG_DONE);
}

TEST_F(SystemHostKernelTest, aRefusedRequestEndsWithTheKernelsError) {
  ifinfomsg nobody{};
  nobody.ifi_index = 0x7fffffff;
  std::string reply;
  ASSERT_EQ(
      real.netlinkRequest(NETLINK_ROUTE, netlinkMessage(RTM_GETLINK, NLM_F_REQUEST, nobody), reply),
      0);
  EXPECT_EQ(lastTypeOf(reply), NLMSG_ERROR);
}

TEST_F(SystemHostKernelTest, anUnknownProtocolIsAnError) {
  std::string reply = "left over";
  EXPECT_NE(real.netlinkRequest(31, "x", reply), 0);
  EXPECT_EQ(reply, "");
}

TEST_F(SystemHostKernelTest, workRunsOnTheChosenCpuAndTheMaskIsPutBack) {
  const std::vector<uint32_t> before = real.allowedCpus();
  ASSERT_FALSE(before.empty());
  int seen = -1;
  EXPECT_TRUE(real.runOnCpu(before.back(), [&] { seen = ::sched_getcpu(); }));
  EXPECT_EQ(seen, static_cast<int>(before.back()));
  EXPECT_EQ(real.allowedCpus(), before);
}

TEST_F(SystemHostKernelTest, theMaskIsPutBackAfterAnException) {
  const std::vector<uint32_t> before = real.allowedCpus();
  EXPECT_THROW(real.runOnCpu(before.front(), [] { throw 1; }), int);
  EXPECT_EQ(real.allowedCpus(), before);
}

TEST_F(SystemHostKernelTest, aCpuThatTheMachineLacksRunsNothing) {
  bool called = false;
  EXPECT_FALSE(real.runOnCpu(60000, [&] { called = true; }));
  EXPECT_FALSE(real.runOnCpu(4000000000u, [&] { called = true; }));
  EXPECT_FALSE(called);
}

TEST_F(SystemHostKernelTest, clocksAreTheKernels) {
  struct timespec now {};
  ASSERT_EQ(real.clockGettime(CLOCK_BOOTTIME, &now), 0);
  EXPECT_GT(now.tv_sec, 0);
  EXPECT_EQ(real.geteuid(), ::geteuid());
}

TEST_F(SystemHostKernelTest, hypervisorLeavesAnswerInAGuestAndNowhereElse) {
  CpuidRegisters basic;
  CpuidRegisters hypervisor;
  ASSERT_TRUE(real.cpuid(1, 0, &basic));
  const bool isGuest = (basic.ecx >> 31) != 0;
  EXPECT_EQ(real.cpuid(0x40000000, 0, &hypervisor), isGuest);
  CpuidRegisters beyond;
  if (isGuest && hypervisor.eax >= 0x40000000 && hypervisor.eax < 0x400000FF) {
    EXPECT_FALSE(real.cpuid(hypervisor.eax + 1, 0, &beyond));
    EXPECT_TRUE(real.cpuid(hypervisor.eax, 0, &beyond));
  }
}

}  // namespace
}  // namespace quenlor
