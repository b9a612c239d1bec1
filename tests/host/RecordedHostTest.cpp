// The double of recorded machines: what it answers, and what it refuses and remembers.
#include "tests/support/RecordedHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/netlink.h>
#include <linux/sockios.h>
#include <net/if.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/Handles.h"
#include "host/WholeFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

using Paths = std::vector<std::string>;

std::string linkOf(const char* path) {
  std::string target;
  return host().readLink(path, target) ? target : "";
}

TEST(RecordedHost, filesOfRootAreAnsweredAndNothingElseIs) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory.path() / "root/etc");
  directory.write("root/etc/hostname", std::string("a\0b\n", 4));
  const RecordedHost machine(directory.path());
  EXPECT_EQ(readWholeFile("/etc/hostname").bytes, std::string("a\0b\n", 4));
  EXPECT_EQ(readWholeFile("/etc/passwd").status, FileStatus::kAbsent);
  EXPECT_EQ(readWholeFile("/etc").status, FileStatus::kNotRegular);
  EXPECT_EQ(readWholeFile("/etc/hostname/x").status, FileStatus::kAbsent);
  EXPECT_EQ(machine.openDescriptors(), 0);
  EXPECT_EQ(machine.forbidden(), Paths{});
}

TEST(RecordedHost, linksNeverLeadOutOfTheTree) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory.path() / "root");
  std::filesystem::create_symlink("/etc/passwd", directory.path() / "root/absolute");
  std::filesystem::create_symlink("../../../../../../etc/passwd", directory.path() / "root/up");
  std::filesystem::create_symlink("loop", directory.path() / "root/loop");
  const RecordedHost machine(directory.path());
  EXPECT_EQ(readWholeFile("/absolute").status, FileStatus::kAbsent);
  EXPECT_EQ(readWholeFile("/up").status, FileStatus::kAbsent);
  EXPECT_EQ(host().open("/loop", O_RDONLY, 0), -1);
  EXPECT_EQ(errno, ELOOP);
  EXPECT_EQ(linkOf("/loop"), "loop");
  EXPECT_EQ(linkOf("/up/x"), "");
}

TEST(RecordedHost, treeListHoldsValuesLinksAndEmptyDirectories) {
  const TemporaryDirectory directory;
  directory.write("tree.txt",
                  "# a comment\n"
                  "/sys/cpu/cpu{0-1,4}/topology/core_id = {}\n"
                  "/sys/class/net/eth0 -> ../../devices/eth0\n"
                  "/sys/devices/eth0/address = 00:11\\x0a\\\\\\c\n"
                  "/sys/empty/\n");
  const RecordedHost machine(directory.path());
  EXPECT_EQ(readWholeFile("/sys/cpu/cpu4/topology/core_id").bytes, "4\n");
  EXPECT_EQ(readWholeFile("/sys/cpu/cpu2/topology/core_id").status, FileStatus::kAbsent);
  EXPECT_EQ(readWholeFile("/sys/class/net/eth0/address").bytes, "00:11\n\\");
  std::vector<DirectoryEntry> entries;
  EXPECT_TRUE(host().listEntries("/sys/empty", entries));
  EXPECT_TRUE(entries.empty());
  EXPECT_TRUE(host().listEntries("/sys/class/net", entries));
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].type, EntryType::kLink);
  EXPECT_FALSE(host().listEntries("/sys/devices/eth0/address", entries));
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(RecordedHost, aMalformedRecordingIsNoMachine) {
  const TemporaryDirectory directory;
  directory.write("tree.txt", "/a b\n");
  EXPECT_THROW(RecordedHost{directory.path()}, std::runtime_error);
  directory.write("tree.txt", "");
  directory.write("cpuid.txt", "1 0 0 0 0 => 1 2 3 4\n");
  EXPECT_THROW(RecordedHost{directory.path()}, std::runtime_error);
  directory.write("cpuid.txt", "");
  directory.write("statvfs.json", "{\"/\": [1]}");
  EXPECT_THROW(RecordedHost{directory.path()}, std::runtime_error);
  EXPECT_THROW(RecordedHost{directory.path() / "none"}, std::runtime_error);
}

TEST(RecordedHost, whatAScanMustNotDoFailsAndIsRemembered) {
  const TemporaryDirectory directory;
  directory.write("tree.txt", "/dev/disk/by-id/x -> ../../sda\n/f = 1\n");
  directory.write("facts", "/dev/sda block=8:0\n");
  RecordedHost machine(directory.path());
  std::string name;
  PortRegisters registers;
  EXPECT_EQ(host().popen("lspci -v"), nullptr);
  EXPECT_EQ(host().open("/f", O_WRONLY, 0), -1);
  EXPECT_EQ(host().open("/new", O_CREAT, 0600), -1);
  EXPECT_EQ(host().fopen("/f", "r+"), nullptr);
  EXPECT_EQ(host().open("/dev/disk/by-id/x", O_RDONLY, 0), -1);
  EXPECT_EQ(host().open("/dev/none", O_RDONLY, 0), -1);
  EXPECT_EQ(host().dlopen("libx.so", 0), nullptr);
  EXPECT_FALSE(host().hostNameOfAddress({}, name));
  host().portInput(&registers);
  EXPECT_EQ(host().unlink("/f"), -1);
  EXPECT_EQ(machine.forbidden(),
            (Paths{"start lspci -v", "write /f", "write /new", "write /f", "node /dev/sda",
                   "node /dev/none", "load libx.so", "resolve 0.0.0.0", "port", "write /f"}));
  EXPECT_TRUE(machine.opens().empty());
}

TEST(RecordedHost, recordedProgramsAreAnsweredAndOthersRefused) {
  const TemporaryDirectory directory;
  directory.write("programs.txt",
                  "# path and arguments, exit code, line\n"
                  "/bin/agent|--cmd|ask a => 3 one two\n"
                  "/bin/agent|--cmd|ask b => 0\n");
  RecordedHost machine(directory.path());
  CommandStream told("/bin/agent", {"agent", "--cmd", "ask a"});
  ASSERT_TRUE(told);
  EXPECT_EQ(std::fgetc(told.get()), 'o');
  EXPECT_EQ(told.close(), 3 << 8);
  CommandStream silent("/bin/agent", {"agent", "--cmd", "ask b"});
  EXPECT_EQ(std::fgetc(silent.get()), EOF);
  EXPECT_EQ(silent.close(), 0);
  EXPECT_FALSE(CommandStream("/bin/agent", {"agent", "--cmd", "ask"}));
  EXPECT_EQ(machine.started(), (Paths{"/bin/agent|--cmd|ask a", "/bin/agent|--cmd|ask b"}));
  EXPECT_EQ(machine.forbidden(), Paths{"start /bin/agent|--cmd|ask"});
  directory.write("programs.txt", "/bin/agent 0\n");
  EXPECT_THROW(RecordedHost{directory.path()}, std::runtime_error);
}

TEST(RecordedHost, opensAndListingsAreCountedByWhereTheyLead) {
  const TemporaryDirectory directory;
  directory.write("tree.txt", "/a/f = 1\n/b -> a\n");
  const RecordedHost machine(directory.path());
  std::vector<std::string> names;
  readWholeFile("/a/f");
  EXPECT_EQ(machine.readTwice(), Paths{});
  readWholeFile("/b/./f");
  host().listDirectory("/a", names);
  readWholeFile("/none");
  EXPECT_EQ(names, (Paths{".", "..", "f"}));
  EXPECT_EQ(machine.opens(), (std::map<std::string, int>{{"/a/f", 2}, {"/none", 1}}));
  EXPECT_EQ(machine.listings(), (std::map<std::string, int>{{"/a", 1}}));
  EXPECT_EQ(machine.readTwice(), Paths{"/a/f"});
}

TEST(RecordedHost, permissionsNameTheUserAndWhatItIsRefused) {
  const TemporaryDirectory directory;
  directory.write("tree.txt",
                  "/a/serial = 1\n/a/speed = 2\n/a/name = 3\n/a/secret/\n/a/l -> name\n");
  directory.write(
      "permissions",
      "user 1000\nrefuse EACCES /a/se*\nunreadable EINVAL /a/speed\nrefuse EPERM /a/l\n");
  const RecordedHost machine(directory.path());
  std::vector<DirectoryEntry> entries;
  EXPECT_EQ(host().geteuid(), 1000u);
  EXPECT_EQ(readWholeFile("/a/serial").status, FileStatus::kRefused);
  EXPECT_EQ(readWholeFile("/a/speed").status, FileStatus::kFailed);
  EXPECT_EQ(readWholeFile("/a/name").bytes, "3\n");
  EXPECT_FALSE(host().listEntries("/a/secret", entries));
  EXPECT_EQ(linkOf("/a/l"), "");
  EXPECT_EQ(errno, EPERM);
}

TEST(RecordedHost, factsAreWhatStatAndStatxTell) {
  const TemporaryDirectory directory;
  directory.write("tree.txt", "/etc/machine-id = 12\n");
  directory.write("facts",
                  "/ btime=1600000000 dev=8:1\n"
                  "/etc/machine-id mtime=1600000005 mode=444 ino=77\n"
                  "/dev/mem char=1:1\n");
  const RecordedHost machine(directory.path());
  struct stat status {};
  struct statx facts {};
  ASSERT_EQ(host().stat("/dev/mem", &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode));
  ASSERT_EQ(host().stat("/etc/machine-id", &status), 0);
  EXPECT_EQ(status.st_mode, S_IFREG | 0444u);
  EXPECT_EQ(status.st_mtime, 1600000005);
  EXPECT_EQ(status.st_ino, 77u);
  ASSERT_EQ(host().statx("/", 0, STATX_ALL, &facts), 0);
  EXPECT_EQ(facts.stx_btime.tv_sec, 1600000000);
  EXPECT_NE(facts.stx_mask & STATX_BTIME, 0u);
  EXPECT_EQ(facts.stx_dev_major, 8u);
  ASSERT_EQ(host().statx("/etc", 0, STATX_ALL, &facts), 0);
  EXPECT_EQ(facts.stx_mask & STATX_BTIME, 0u);
}

TEST(RecordedHost, cpuidIsThatOfTheProcessorTheThreadRunsOn) {
  const TemporaryDirectory directory;
  directory.write("cpuid.txt",
                  "processor 0-2\n"
                  "1 0 0 0 0 => d 756e6547 6c65746e 49656e69\n"
                  "5 4 0 1 0 => 1 2 3 4\n"
                  "processor 2\n"
                  "1 1 0 0 0 => 906ea 0 0 0\n");
  directory.write("permissions", "processors 0,2\n");
  const RecordedHost machine(directory.path());
  CpuidRegisters registers;
  EXPECT_TRUE(host().cpuid(0, 7, &registers));
  EXPECT_EQ(registers.ecx, 0x6c65746eu);
  EXPECT_TRUE(host().cpuid(4, 1, &registers));
  EXPECT_EQ(registers.edx, 4u);
  EXPECT_TRUE(host().cpuid(4, 0, &registers));
  EXPECT_EQ(registers.edx, 0u);
  EXPECT_FALSE(host().cpuid(0xE, 0, &registers));
  EXPECT_FALSE(host().cpuid(0x40000000, 0, &registers));
  EXPECT_TRUE(host().runOnCpu(2, [&] { host().cpuid(1, 0, &registers); }));
  EXPECT_EQ(registers.eax, 0x906eau);
  host().cpuid(1, 0, &registers);
  EXPECT_EQ(registers.eax, 0u);
  EXPECT_FALSE(host().runOnCpu(1, [] { FAIL(); }));
  EXPECT_EQ(host().allowedCpus(), (std::vector<uint32_t>{0, 2}));
}

std::string netlinkMessage(uint16_t type, uint32_t sequence, const std::string& payload) {
  nlmsghdr header{};
  header.nlmsg_len = static_cast<uint32_t>(NLMSG_HDRLEN + payload.size());
  header.nlmsg_type = type;
  header.nlmsg_seq = sequence;
  return std::string(reinterpret_cast<const char*>(&header), sizeof header) + payload;
}

TEST(RecordedHost, netlinkAnswersAreKeyedByProtocolTypeAndFamily) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory.path() / "netlink");
  directory.write("netlink/0-18-2.bin", netlinkMessage(16, 99, "abcd"));
  directory.write("netlink/0-18-2.1.bin", netlinkMessage(16, 99, "1st "));
  directory.write("netlink/0-18-10.bin", "cut");
  RecordedHost machine(directory.path());
  std::string reply;
  const std::string request = netlinkMessage(18, 5, std::string("\x02\0\0\0", 4));
  EXPECT_EQ(host().netlinkRequest(0, request, reply), 0);
  EXPECT_EQ(reply, netlinkMessage(16, 5, "1st "));
  EXPECT_EQ(host().netlinkRequest(0, request, reply), 0);
  EXPECT_EQ(reply, netlinkMessage(16, 5, "abcd"));
  EXPECT_EQ(host().netlinkRequest(0, netlinkMessage(18, 5, "\x0a"), reply), 0);
  EXPECT_EQ(reply, "cut");
  EXPECT_EQ(host().netlinkRequest(16, request, reply), EOPNOTSUPP);
  EXPECT_EQ(host().netlinkRequest(0, "short", reply), EINVAL);
}

int askEthtool(const char* interface, void* data) {
  const Descriptor connection(host().socket(AF_INET, SOCK_DGRAM, 0));
  ifreq request{};
  std::snprintf(request.ifr_name, sizeof request.ifr_name, "%s", interface);
  request.ifr_data = static_cast<char*>(data);
  return host().ioctl(connection.get(), SIOCETHTOOL, &request);
}

TEST(RecordedHost, ethtoolAnswersAsTheKernelDoes) {
  const TemporaryDirectory directory;
  // Link settings: speed 1000 at byte 4, one word of link modes told at byte 15.
  directory.write("ethtool.json",
                  "{\"eth0\": {\"0x4c\": \"4c000000 e8030000 00000000 00000001\","
                  " \"32\": \"20000000 06000000 00:11:22:33:44:55\"}}");
  const RecordedHost machine(directory.path());
  ethtool_link_settings settings{};
  settings.cmd = ETHTOOL_GLINKSETTINGS;
  EXPECT_EQ(askEthtool("eth1", &settings), -1);
  EXPECT_EQ(errno, ENODEV);
  EXPECT_EQ(askEthtool("eth0", &settings), 0);
  EXPECT_EQ(settings.speed, 0u);
  settings.link_mode_masks_nwords = static_cast<int8_t>(-settings.link_mode_masks_nwords);
  EXPECT_EQ(askEthtool("eth0", &settings), 0);
  EXPECT_EQ(settings.speed, 1000u);
  ethtool_drvinfo driver{};
  driver.cmd = ETHTOOL_GDRVINFO;
  EXPECT_EQ(askEthtool("eth0", &driver), -1);
  EXPECT_EQ(errno, EOPNOTSUPP);
  std::vector<uint32_t> permanent{ETHTOOL_GPERMADDR, 4, 0, 0xAAAAAAAA};
  EXPECT_EQ(askEthtool("eth0", permanent.data()), 0);
  EXPECT_EQ(permanent[2], 0x33221100u);
  EXPECT_EQ(permanent[3], 0xAAAAAAAAu);  // never more than the asker has room for
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST(RecordedHost, theZoneIsThatOfItsEnvironmentAndTheProcessKeepsItsOwn) {
  const TemporaryDirectory directory;
  const char* former = std::getenv("TZ");
  const std::string zone = former == nullptr ? "" : former;
  EXPECT_EQ(RecordedHost(directory.path()).timeZone().name, "UTC");
  directory.write("environment", "TZ=CET-1CEST,M3.5.0,M10.5.0/3\n");
  RecordedHost machine(directory.path());
  EXPECT_EQ(machine.timeZone().secondsWest, -3600);
  EXPECT_TRUE(machine.timeZone().daylight);
  EXPECT_EQ(machine.timeZone().daylightName, "CEST");
  const char* present = std::getenv("TZ");
  EXPECT_EQ(zone, present == nullptr ? "" : present);
}

TEST(RecordedHost, systemFactsComeFromTheirFiles) {
  const TemporaryDirectory directory;
  directory.write("uname", "Linux\nnode\n6.1.0-18-amd64\n#1 SMP\nx86_64\n");
  directory.write("clock", "realtime 1700000000.5\nboottime 12.25\n");
  directory.write("environment", "KUBERNETES_SERVICE_HOST=10.0.0.1\n");
  directory.write("statvfs.json",
                  "{\"/\": {\"bsize\": 4096, \"blocks\": 10}, \"/x\": {\"error\": \"EIO\"}}");
  const RecordedHost machine(directory.path());
  struct utsname names {};
  struct timespec boot {};
  struct statvfs space {};
  EXPECT_EQ(host().uname(&names), 0);
  EXPECT_STREQ(names.release, "6.1.0-18-amd64");
  EXPECT_STREQ(names.machine, "x86_64");
  EXPECT_EQ(host().clockGettime(CLOCK_BOOTTIME, &boot), 0);
  EXPECT_EQ(boot.tv_sec, 12);
  EXPECT_EQ(boot.tv_nsec, 250000000);
  EXPECT_EQ(host().time(), 1700000000);
  EXPECT_STREQ(host().getenv("KUBERNETES_SERVICE_HOST"), "10.0.0.1");
  EXPECT_EQ(host().getenv("HOME"), nullptr);
  EXPECT_EQ(host().statvfs("/", &space), 0);
  EXPECT_EQ(space.f_blocks, 10u);
  EXPECT_EQ(host().statvfs("/x", &space), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(host().statvfs("/y", &space), -1);
}

}  // namespace
}  // namespace quenlor::test
