#include "host/SystemHost.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "host/Handles.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

class SystemHostTest : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return m_directory.path(name); }

  Host& real = systemHost();

 private:
  test::TemporaryDirectory m_directory;
};

bool closesOnExec(int fd) { return (::fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0; }

TEST_F(SystemHostTest, isTheHostInUseUnlessAnotherIsInstalled) {
  EXPECT_EQ(&host(), &real);
  {
    test::FakeHost machine;
    EXPECT_EQ(&host(), &machine);
    {
      test::FakeHost inner;
      EXPECT_EQ(&host(), &inner);
    }
    EXPECT_EQ(&host(), &machine);
  }
  EXPECT_EQ(&host(), &real);
}

TEST_F(SystemHostTest, filesAreWrittenReadAndRemoved) {
  const std::string file = path("file");
  {
    const Descriptor out(real.open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0640));
    ASSERT_TRUE(out);
    EXPECT_TRUE(closesOnExec(out.get()));
    EXPECT_EQ(real.write(out.get(), "text", 4), 4);
  }
  const Descriptor in(real.open(file.c_str(), O_RDONLY, 0));
  char buffer[8] = "";
  EXPECT_EQ(real.read(in.get(), buffer, sizeof buffer), 4);
  EXPECT_STREQ(buffer, "text");
  struct stat status {};
  EXPECT_EQ(real.fstat(in.get(), &status), 0);
  EXPECT_EQ(status.st_size, 4);
  EXPECT_EQ(real.stat(file.c_str(), &status), 0);
  EXPECT_EQ(real.unlink(file.c_str()), 0);
  EXPECT_EQ(real.stat(file.c_str(), &status), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(SystemHostTest, streamsCloseOnExec) {
  const FileStream stream = openFile("/proc/version");
  ASSERT_TRUE(stream);
  EXPECT_TRUE(closesOnExec(::fileno(stream.get())));
  EXPECT_FALSE(openFile(path("missing").c_str()));
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(SystemHostTest, filesAreMapped) {
  const std::string file = path("file");
  std::ofstream(file) << std::string(4096, 'a') << "behind";
  const Descriptor in(real.open(file.c_str(), O_RDONLY, 0));
  void* address = real.mmap(6, PROT_READ, MAP_SHARED, in.get(), 4096);
  ASSERT_NE(address, MAP_FAILED);
  EXPECT_EQ(std::memcmp(address, "behind", 6), 0);
  EXPECT_EQ(real.munmap(address, 6), 0);
}

TEST_F(SystemHostTest, directoriesAreListedWithTheirDots) {
  std::ofstream(path("b"));
  std::vector<std::string> names{"old"};
  EXPECT_TRUE(real.listDirectory(path("").c_str(), names));
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{".", "..", "b"}));
  EXPECT_FALSE(real.listDirectory(path("missing").c_str(), names));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(names.empty());
}

TEST_F(SystemHostTest, fileSystemsAreMeasured) {
  struct statvfs byPath {};
  struct statvfs byDescriptor {};
  EXPECT_EQ(real.statvfs("/", &byPath), 0);
  const Descriptor root(real.open("/", O_PATH, 0));
  EXPECT_EQ(real.fstatvfs(root.get(), &byDescriptor), 0);
  EXPECT_EQ(byPath.f_blocks, byDescriptor.f_blocks);
  EXPECT_EQ(real.statvfs(path("missing").c_str(), &byPath), -1);
}

TEST_F(SystemHostTest, ioctlReachesTheDriver) {
  const Descriptor null(real.open("/dev/null", O_RDONLY, 0));
  int unused = 0;
  EXPECT_EQ(real.ioctl(null.get(), 0x1261, &unused), -1);
  EXPECT_EQ(errno, ENOTTY);
}

TEST_F(SystemHostTest, commandsRun) {
  CommandStream command("echo hello; exit 7");
  ASSERT_TRUE(command);
  char line[16] = "";
  EXPECT_NE(std::fgets(line, sizeof line, command.get()), nullptr);
  EXPECT_STREQ(line, "hello\n");
  EXPECT_EQ(command.close(), 7 << 8);
  EXPECT_EQ(command.close(), -1);
}

TEST_F(SystemHostTest, socketsCloseOnExec) {
  const Descriptor socket(real.socket(AF_INET, SOCK_DGRAM, 0));
  ASSERT_TRUE(socket);
  EXPECT_TRUE(closesOnExec(socket.get()));
}

TEST_F(SystemHostTest, addressesGetTheNameThatTheResolverGives) {
  in_addr address{};
  ASSERT_EQ(::inet_pton(AF_INET, "127.0.0.1", &address), 1);
  const hostent* expected = ::gethostbyaddr(&address, sizeof address, AF_INET);
  std::string name;
  EXPECT_EQ(real.hostNameOfAddress(address, name), expected != nullptr);
  EXPECT_EQ(name, expected == nullptr ? "" : expected->h_name);
}

TEST_F(SystemHostTest, systemFactsAreThoseOfTheLibrary) {
  struct utsname names {};
  EXPECT_EQ(real.uname(&names), 0);
  EXPECT_STREQ(names.sysname, "Linux");
  struct sysinfo info {};
  EXPECT_EQ(real.sysinfo(&info), 0);
  EXPECT_GT(info.totalram, 0u);
  EXPECT_EQ(real.getpagesize(), ::getpagesize());
  EXPECT_EQ(real.getNprocs(), ::get_nprocs());
  EXPECT_EQ(real.getNprocsConf(), ::get_nprocs_conf());
  EXPECT_EQ(real.sysconf(_SC_PAGESIZE), ::getpagesize());
  EXPECT_NEAR(static_cast<double>(real.time()), static_cast<double>(::time(nullptr)), 2);
  struct timeval now {};
  EXPECT_EQ(real.gettimeofday(&now), 0);
  EXPECT_NEAR(static_cast<double>(now.tv_sec), static_cast<double>(::time(nullptr)), 2);
}

TEST_F(SystemHostTest, utmpRecordIsFoundByItsType) {
  const std::string file = path("utmp");
  struct utmp level {};
  level.ut_type = RUN_LVL;
  level.ut_tv.tv_sec = 1234;
  std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(&level), sizeof level);
  ::utmpname(file.c_str());
  struct utmp found {};
  EXPECT_TRUE(real.findUtmp(RUN_LVL, &found));
  EXPECT_EQ(found.ut_tv.tv_sec, 1234);
  EXPECT_TRUE(real.findUtmp(RUN_LVL, &found)) << "the search starts anew each time";
  EXPECT_FALSE(real.findUtmp(NEW_TIME, &found));
  ::utmpname(_PATH_UTMP);
}

TEST_F(SystemHostTest, timeZoneFollowsTheEnvironment) {
  ::setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
  TimeZone zone = real.timeZone();
  EXPECT_EQ(zone.secondsWest, 18000);
  EXPECT_TRUE(zone.daylight);
  EXPECT_EQ(zone.name, "EST");
  EXPECT_EQ(zone.daylightName, "EDT");
  ::setenv("TZ", "IST-5:30", 1);
  zone = real.timeZone();
  EXPECT_EQ(zone.secondsWest, -19800);
  EXPECT_FALSE(zone.daylight);
  ::unsetenv("TZ");
  ::tzset();
}

// A compiled zone file, UTC with one summer time in 1980: a block of 32-bit times (tzfile(5)), the
// same with 64-bit times, and the rule that has held since.
std::string zoneFileWithSummerTimeOf1980() {
  const auto header = [](char times, char types, char names) {
    return std::string("TZif2") + std::string(30, '\0') + times + std::string(3, '\0') + types +
           std::string(3, '\0') + names;
  };
  const std::string begin("\x13\x4D\x44\x10", 4);
  const std::string end("\x14\x33\xEC\x80", 4);
  const std::string zeros(4, '\0');
  const std::string rest(
      "\1\0"              // types of the two times
      "\0\0\0\0\0\4"      // standard time
      "\0\0\x0E\x10\1\0"  // summer time
      "GST\0GMT",
      21);
  return header(2, 2, 8) + begin + end + rest + '\0' + header(2, 2, 8) + zeros + begin + zeros +
         end + rest + '\0' + "\nGMT0\n";
}

TEST_F(SystemHostTest, timeZoneIsTheSameAfterATimeWasConverted) {
  const std::string file = path("zone");
  std::ofstream(file, std::ios::binary) << zoneFileWithSummerTimeOf1980();
  ::setenv("TZ", file.c_str(), 1);
  const TimeZone before = real.timeZone();
  EXPECT_EQ(before.secondsWest, 0);
  EXPECT_TRUE(before.daylight);
  EXPECT_EQ(before.name, "GMT");
  EXPECT_EQ(before.daylightName, "GST");

  const time_t today = 1750000000;
  struct tm local {};
  ::localtime_r(&today, &local);  // after which tzname has forgotten the summer time
  const TimeZone after = real.timeZone();
  EXPECT_TRUE(after.daylight);
  EXPECT_EQ(after.daylightName, "GST");
  ::unsetenv("TZ");
  ::tzset();
}

TEST_F(SystemHostTest, localeAndEnvironmentAreThoseOfTheProcess) {
  EXPECT_STREQ(real.setlocale(LC_ALL, nullptr), "C");
  ::setenv("QUENLOR_TEST_VARIABLE", "value", 1);
  EXPECT_STREQ(real.getenv("QUENLOR_TEST_VARIABLE"), "value");
  ::unsetenv("QUENLOR_TEST_VARIABLE");
  EXPECT_EQ(real.getenv("QUENLOR_TEST_VARIABLE"), nullptr);
}

#if defined(__x86_64__)

TEST_F(SystemHostTest, processorAnswersLeavesUpToItsLargest) {
  CpuidRegisters registers;
  ASSERT_TRUE(real.cpuid(0, 0, &registers));
  EXPECT_NE(registers.ebx, 0u);
  EXPECT_FALSE(real.cpuid(registers.eax + 1, 0, &registers));
  EXPECT_EQ(registers.ebx, 0u);
}

sigjmp_buf g_afterFault;

TEST_F(SystemHostTest, portInputFaultsInUserMode) {
  struct sigaction action {};
  struct sigaction old {};
  action.sa_handler = [](int) { siglongjmp(g_afterFault, 1); };
  ASSERT_EQ(::sigaction(SIGSEGV, &action, &old), 0);
  volatile bool faulted = false;
  if (sigsetjmp(g_afterFault, 1) == 0) {
    PortRegisters registers;
    registers.edx = 0x70;
    real.portInput(&registers);
  } else {
    faulted = true;
  }
  ::sigaction(SIGSEGV, &old, nullptr);
  EXPECT_TRUE(faulted);
}

#endif

TEST_F(SystemHostTest, librariesAreLoaded) {
  EXPECT_EQ(real.dlopen("libNoSuchLibrary.so", 1), nullptr);
  EXPECT_NE(std::string(real.dlerror()).find("libNoSuchLibrary.so"), std::string::npos);
  void* library = real.dlopen("libm.so.6", 1);
  ASSERT_NE(library, nullptr);
  EXPECT_NE(real.dlsym(library, "cos"), nullptr);
  EXPECT_EQ(real.dlclose(library), 0);
}

TEST_F(SystemHostTest, sleepTakesItsTime) {
  const auto before = std::chrono::steady_clock::now();
  real.sleepMicroseconds(2000);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::microseconds(2000));
}

}  // namespace
}  // namespace quenlor
