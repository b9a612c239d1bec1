#include "readers/storage/FdiskOutput.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "readers/storage/RaidStatus.h"
#include "readers/storage/StorageText.h"
#include "tests/readers/storage/ScriptedSgDevice.h"

namespace quenlor {
namespace {

using test::FakeHost;

// util-linux up to 2.11
constexpr const char* kFormA =
    "\n"
    "Disk /dev/hda: 255 heads, 63 sectors, 2434 cylinders\n"
    "Units = cylinders of 16065 * 512 bytes\n"
    "\n"
    "   Device Boot    Start       End    Blocks   Id  System\n"
    "/dev/hda1   *         1        13    104391   83  Linux\n"
    "/dev/hda2            14      2368  18916537+  83  Linux\n"
    "/dev/hda3          2369      2434    530145   82  Linux swap\n"
    "\n"
    "Disk /dev/cciss/c0d0: 255 heads, 63 sectors, 4427 cylinders\n"
    "Units = cylinders of 16065 * 512 bytes\n"
    "\n"
    "           Device Boot    Start       End    Blocks   Id  System\n"
    "/dev/cciss/c0d0p1   *         1        13    104391   83  Linux\n"
    "/dev/cciss/c0d0p2            14      4427  35455455   8e  Linux LVM\n";

// 2.12 to 2.2x
constexpr const char* kFormB =
    "\n"
    "Disk /dev/cciss/c0d0: 36.4 GB, 36414750720 bytes\n"
    "255 heads, 63 sectors/track, 4427 cylinders\n"
    "Units = cylinders of 16065 * 512 = 8225280 bytes\n"
    "\n"
    "           Device Boot      Start         End      Blocks   Id  System\n"
    "/dev/cciss/c0d0p1   *           1          13      104391   83  Linux\n";

// 2.26 and later
constexpr const char* kFormC =
    "Disk /dev/sda: 20 GiB, 21474836480 bytes, 41943040 sectors\n"
    "Disk model: Virtual disk    \n"
    "Units: sectors of 1 * 512 = 512 bytes\n"
    "Sector size (logical/physical): 512 bytes / 512 bytes\n"
    "Disklabel type: dos\n"
    "\n"
    "Device     Boot    Start      End  Sectors  Size Id Type\n"
    "/dev/sda1  *        2048 39942143 39940096   19G 83 Linux\n"
    "\n"
    "\n"
    "Disk /dev/sdaa: 1 TiB, 1099511627776 bytes, 2147483648 sectors\n";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (const std::string_view line : splitTokens(text, "\n"))
    lines.push_back(std::string(line) + "\n");
  return lines;
}

void expectDisk(const std::optional<FdiskDisk>& disk, unsigned long cylinders, unsigned long heads,
                unsigned long sectors, unsigned long kilobytes) {
  ASSERT_TRUE(disk.has_value());
  EXPECT_EQ(disk->cylinders, cylinders);
  EXPECT_EQ(disk->heads, heads);
  EXPECT_EQ(disk->sectors, sectors);
  EXPECT_EQ(disk->totalKilobytes, kilobytes);
}

TEST(FdiskOutputTest, geometryOnTheDiskLine_sizeIsCylindersTimesTheUnit) {
  expectDisk(parseFdiskListing(linesOf(kFormA), "/dev/hda"), 2434, 255, 63, 19551105);
  expectDisk(parseFdiskListing(linesOf(kFormA), "/dev/cciss/c0d0"), 4427, 255, 63, 35559877);
}

TEST(FdiskOutputTest, bytesOnTheDiskLine_geometryOnTheNext) {
  expectDisk(parseFdiskListing(linesOf(kFormB), "/dev/cciss/c0d0"), 4427, 255, 63, 35561280);
}

TEST(FdiskOutputTest, bytesOnTheDiskLine_noGeometry) {
  expectDisk(parseFdiskListing(linesOf(kFormC), "/dev/sda"), 0, 0, 0, 20971520);
  expectDisk(parseFdiskListing(linesOf(kFormC), "/dev/sdaa"), 0, 0, 0, 1073741824);
}

TEST(FdiskOutputTest, sizeInMegabytesAndTheNoteOnSectorsMakeNoDifference) {
  expectDisk(parseFdiskListing(
                 linesOf("Disk /dev/hdb: 4294 MB, 4294967296 bytes\n"
                         "16 heads, 63 sectors/track, 8322 cylinders, total 8388608 sectors\n"),
                 "/dev/hdb"),
             8322, 16, 63, 4194304);
}

TEST(FdiskOutputTest, nameMayCarryItsColonAlready) {
  expectDisk(parseFdiskListing(linesOf(kFormA), "/dev/hda:"), 2434, 255, 63, 19551105);
}

TEST(FdiskOutputTest, nameThatIsOnlyPartOfAnotherIsNotFound) {
  EXPECT_FALSE(parseFdiskListing(linesOf(kFormA), "/dev/hd").has_value());
  EXPECT_FALSE(parseFdiskListing(linesOf(kFormA), "/dev/hda1").has_value());
  EXPECT_FALSE(parseFdiskListing(linesOf(kFormA), "/dev/cciss/c0d2 on /data ty").has_value());
  EXPECT_FALSE(parseFdiskListing(linesOf(kFormA), "").has_value());
  EXPECT_FALSE(parseFdiskListing({}, "/dev/hda").has_value());
}

TEST(FdiskOutputTest, missingTokensGiveZeros) {
  expectDisk(parseFdiskListing({"Disk /dev/hda: 255 heads,\n"}, "/dev/hda"), 0, 255, 0, 0);
  expectDisk(
      parseFdiskListing({"Disk /dev/hda: 255 heads, 63 sectors, 10 cylinders\n"}, "/dev/hda"), 10,
      255, 63, 80325);
  expectDisk(parseFdiskListing(
                 {"Disk /dev/hda: 255 heads, 63 sectors, 10 cylinders\n", "Units = cylinders of\n"},
                 "/dev/hda"),
             10, 255, 63, 80325);
  expectDisk(parseFdiskListing({"Disk /dev/hda: 255 heads, 63 sectors, 10 cylinders\n",
                                "Units = sectors of 1 * 512 bytes\n"},
                               "/dev/hda"),
             10, 255, 63, 80325);
  expectDisk(parseFdiskListing({"Disk /dev/hda:"}, "/dev/hda"), 0, 0, 0, 0);
  expectDisk(parseFdiskListing({"Disk /dev/hda: bytes"}, "/dev/hda"), 0, 0, 0, 0);
  expectDisk(parseFdiskListing({"Disk /dev/hda: 1 GB, 1024 bytes\n", "255 heads,"}, "/dev/hda"), 0,
             255, 0, 1);
}

TEST(FdiskOutputTest, hugeNumbersSaturate) {
  const std::string huge(30, '9');
  const unsigned long largest = ~0UL;
  expectDisk(parseFdiskListing({"Disk /dev/hda: " + huge + " heads, " + huge + " sectors, " + huge +
                                " cylinders\n"},
                               "/dev/hda"),
             largest, largest, largest, largest / 1024);
}

class GetFromFdiskTest : public ::testing::Test {
 protected:
  GetFromFdiskTest() { machine.commands["/sbin/fdisk -l"] = {kFormA}; }

  FakeHost machine;
  unsigned long cylinders = 1, heads = 2, sectors = 3, kilobytes = 4;
};

TEST_F(GetFromFdiskTest, fillsCylindersHeadsSectorsAndKilobytes) {
  EXPECT_EQ(getFromFdisk("/dev/hda", &cylinders, &heads, &sectors, &kilobytes), 1);
  EXPECT_EQ(cylinders, 2434U);
  EXPECT_EQ(heads, 255U);
  EXPECT_EQ(sectors, 63U);
  EXPECT_EQ(kilobytes, 19551105U);
  EXPECT_EQ(machine.openCommands(), 0);
}

TEST_F(GetFromFdiskTest, unknownDiskLeavesTheOutputs) {
  EXPECT_EQ(getFromFdisk("/dev/hdb", &cylinders, &heads, &sectors, &kilobytes), 0);
  EXPECT_EQ(cylinders, 1U);
  EXPECT_EQ(kilobytes, 4U);
}

TEST_F(GetFromFdiskTest, missingFdiskFindsNothing) {
  machine.commands.clear();
  EXPECT_EQ(getFromFdisk("/dev/hda", &cylinders, &heads, &sectors, &kilobytes), 0);
  machine.unstartableCommands = {"/sbin/fdisk -l"};
  EXPECT_EQ(getFromFdiskMount("/dev/hda", &cylinders, &heads, &sectors, &kilobytes), 0);
}

TEST_F(GetFromFdiskTest, nameThatReachesBeyond255CharactersOfItsLineIsNotFound) {
  const std::string name = "/dev/hda:";
  const std::string fill(255 - name.size(), 'x');
  machine.commands["/sbin/fdisk -l"] = {fill + name + "\n"};
  EXPECT_EQ(getFromFdisk("/dev/hda", &cylinders, &heads, &sectors, &kilobytes), 1);
  machine.commands["/sbin/fdisk -l"] = {fill + "x" + name + "\n"};
  EXPECT_EQ(getFromFdisk("/dev/hda", &cylinders, &heads, &sectors, &kilobytes), 0);
}

TEST_F(GetFromFdiskTest, namesOfOtherSources) {
  EXPECT_EQ(getFromFdisk2("cciss/c0d0", &cylinders, &heads, &sectors, &kilobytes), 1);
  EXPECT_EQ(cylinders, 4427U);
  EXPECT_EQ(getFromFdiskMount("/dev/cciss/c0d0", &cylinders, &heads, &sectors, &kilobytes), 1);
  EXPECT_EQ(kilobytes, 35559877U);
}

TEST_F(GetFromFdiskTest, genericNodeStandsForItsDisk) {
  test::ScriptedSgDevice device;
  machine.directories["/dev"] = {"sda", "sg0"};
  machine.devices["/dev/sg0"] = device.genericNode();
  machine.devices["/dev/sda"] = device.otherNode();
  machine.commands["/sbin/fdisk -l"] = {kFormC};
  EXPECT_EQ(getFromFdisk("/dev/sg0", &cylinders, &heads, &sectors, &kilobytes), 1);
  EXPECT_EQ(kilobytes, 20971520U);
  EXPECT_EQ(getFromFdisk("/dev/sg1", &cylinders, &heads, &sectors, &kilobytes), 0);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

// Every command prints millions of empty lines.
class TalkativeHost : public FakeHost {
 public:
  static constexpr size_t kLines = 4'000'000;

  FILE* popen(const char*) override {
    m_left = kLines;
    m_atStart = residentBytes();
    cookie_io_functions_t functions{};
    functions.read = [](void* host, char* buffer, size_t size) {
      return static_cast<TalkativeHost*>(host)->print(buffer, size);
    };
    return ::fopencookie(this, "r", functions);
  }
  int pclose(FILE* stream) override { return std::fclose(stream); }

  long grownBytes = 0;  // of this process, from a command's start to its last line

 private:
  static long residentBytes() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * ::getpagesize();
  }

  ssize_t print(char* buffer, size_t size) {
    const size_t count = std::min(size, m_left);
    std::memset(buffer, '\n', count);
    m_left -= count;
    if (m_left == 0) grownBytes = std::max(grownBytes, residentBytes() - m_atStart);
    return static_cast<ssize_t>(count);
  }

  size_t m_left = 0;
  long m_atStart = 0;
};

TEST(FdiskOutputTest, listingsWithoutEndTakeNoMemory) {
  TalkativeHost machine;
  unsigned long cylinders = 0, heads = 0, sectors = 0, kilobytes = 0;
  EXPECT_EQ(getFromFdisk("/dev/hda", &cylinders, &heads, &sectors, &kilobytes), 0);
  EXPECT_TRUE(getMountedCcissDisks().empty());
  EXPECT_LT(machine.grownBytes, 10'000'000);
}

}  // namespace
}  // namespace quenlor
