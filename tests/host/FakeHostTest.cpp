// The double must behave like the kernel, or the tests that stand on it prove nothing.
#include "tests/support/FakeHost.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "host/Handles.h"

namespace quenlor::test {
namespace {

TEST(FakeHost, whatIsNotSetIsMissing) {
  FakeHost machine;
  struct stat status {};
  std::vector<std::string> names;
  EXPECT_EQ(host().open("/f", O_RDONLY, 0), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(host().fopen("/f", "r"), nullptr);
  EXPECT_EQ(host().stat("/f", &status), -1);
  EXPECT_FALSE(host().listDirectory("/d", names));
  CommandStream command("c");
  EXPECT_TRUE(command);
  EXPECT_EQ(std::fgetc(command.get()), EOF);
  EXPECT_EQ(command.close(), 127 << 8);
  EXPECT_EQ(machine.opened, (std::vector<std::string>{"/f", "/f"}));
  EXPECT_EQ(machine.started, std::vector<std::string>{"c"});
}

TEST(FakeHost, nothingStaysOpenAfterClosing) {
  FakeHost machine;
  machine.files["/f"] = "text";
  machine.commands["c"] = {"out", 256};
  {
    const Descriptor fd(host().open("/f", O_RDONLY, 0));
    const FileStream stream = openFile("/f");
    CommandStream command("c");
    EXPECT_EQ(machine.openDescriptors(), 2);
    EXPECT_EQ(machine.openStreams(), 1);
    EXPECT_EQ(machine.openCommands(), 1);
  }
  EXPECT_EQ(machine.openDescriptors(), 0);
  EXPECT_EQ(machine.openStreams(), 0);
  EXPECT_EQ(machine.openCommands(), 0);
  EXPECT_EQ(host().close(1000), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(FakeHost, writtenStreamsBecomeFiles) {
  FakeHost machine;
  machine.files["/f"] = "old";
  std::fputs("new", openFile("/f", "w").get());
  EXPECT_EQ(machine.files["/f"], "new");
  std::fputs("er", openFile("/f", "a").get());
  EXPECT_EQ(machine.files["/f"], "newer");
}

TEST(FakeHost, exclusiveCreationRespectsWhatIsThere) {
  FakeHost machine;
  machine.files["/f"] = "";
  EXPECT_EQ(host().open("/f", O_WRONLY | O_CREAT | O_EXCL, 0600), -1);
  EXPECT_EQ(errno, EEXIST);
}

TEST(FakeHost, mappingHoldsTheContentAndZeros) {
  FakeHost machine;
  machine.files["/dev/mem"] = std::string(4096, '\0') + "firmware";
  const Descriptor memory(host().open("/dev/mem", O_RDONLY, 0));
  auto* bytes = static_cast<char*>(host().mmap(100, PROT_READ, MAP_SHARED, memory.get(), 4096));
  ASSERT_NE(bytes, MAP_FAILED);
  EXPECT_EQ(std::memcmp(bytes, "firmware\0\0", 10), 0);
  EXPECT_EQ(machine.openMappings(), 1);
  EXPECT_EQ(host().munmap(bytes, 5000), -1);
  EXPECT_EQ(host().munmap(bytes, 100), 0);
  EXPECT_EQ(machine.openMappings(), 0);
  EXPECT_EQ(host().mmap(100, PROT_READ, MAP_SHARED, memory.get(), 100), MAP_FAILED);
  EXPECT_EQ(host().mmap(100, PROT_READ, MAP_SHARED, memory.get(), 1 << 20), MAP_FAILED);
}

TEST(FakeHost, devicesAnswerThroughTheirCallbacks) {
  FakeHost machine;
  FakeDevice& device = machine.devices["/dev/sg0"];
  device.ioctl = [](unsigned long request, void* argument) {
    *static_cast<int*>(argument) = static_cast<int>(request) + 1;
    return 0;
  };
  device.deniedAccessModes = {O_RDWR};
  EXPECT_EQ(host().open("/dev/sg0", O_RDWR, 0), -1);
  EXPECT_EQ(errno, EACCES);
  const Descriptor fd(host().open("/dev/sg0", O_RDONLY | O_NONBLOCK, 0));
  int value = 0;
  EXPECT_EQ(host().ioctl(fd.get(), 41, &value), 0);
  EXPECT_EQ(value, 42);
  char byte = 0;
  EXPECT_EQ(host().read(fd.get(), &byte, 1), -1);
  EXPECT_EQ(errno, EINVAL);
  struct stat status {};
  EXPECT_EQ(host().stat("/dev/sg0", &status), 0);
  EXPECT_TRUE(S_ISBLK(status.st_mode));
}

TEST(FakeHost, pathOnlyDescriptorsNeitherReadNorControl) {
  FakeHost machine;
  machine.fileSystems["/mnt"].f_blocks = 7;
  const Descriptor fd(host().open("/mnt", O_PATH, 0));
  ASSERT_TRUE(fd);
  char byte = 0;
  EXPECT_EQ(host().read(fd.get(), &byte, 1), -1);
  EXPECT_EQ(errno, EBADF);
  struct statvfs size {};
  EXPECT_EQ(host().fstatvfs(fd.get(), &size), 0);
  EXPECT_EQ(size.f_blocks, 7u);
}

TEST(FakeHost, localeOfUnsetCategoryIsC) {
  FakeHost machine;
  machine.locales[1] = "de_DE";
  machine.locales[2] = std::nullopt;
  EXPECT_STREQ(host().setlocale(0, nullptr), "C");
  EXPECT_STREQ(host().setlocale(1, nullptr), "de_DE");
  EXPECT_EQ(host().setlocale(2, nullptr), nullptr);
}

TEST(FakeHost, addressesHaveTheNamesGiven) {
  FakeHost machine;
  machine.hostNames["10.0.0.1"] = "box.example";
  in_addr address{};
  std::string name;
  EXPECT_FALSE(host().hostNameOfAddress(address, name));
  ::inet_pton(AF_INET, "10.0.0.1", &address);
  EXPECT_TRUE(host().hostNameOfAddress(address, name));
  EXPECT_EQ(name, "box.example");
}

TEST(FakeHost, sleepsReturnAtOnceAndAreCounted) {
  FakeHost machine;
  host().sleepMicroseconds(5000000);
  EXPECT_EQ(machine.sleptMicroseconds, 5000000u);
}

}  // namespace
}  // namespace quenlor::test
