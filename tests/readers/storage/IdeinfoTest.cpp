#include "readers/storage/ideinfo.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/hdreg.h>

#include <cerrno>
#include <cstring>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StrEq;

constexpr const char* kDisk = "/proc/ide/ide0/hda";

// What the fake drive answers to its ioctls; unset: they fail with the given errno.
struct IdeAnswers {
  std::string serialNumber = {};
  int securityWord = -1;
  bool hasGeometry = false;
  int error = EIO;
};

test::FakeDevice driveWith(const IdeAnswers& answers) {
  test::FakeDevice device;
  device.ioctl = [answers](unsigned long request, void* argument) {
    auto* bytes = static_cast<unsigned char*>(argument);
    if (request == HDIO_GETGEO && answers.hasGeometry) {
      auto* geometry = static_cast<hd_geometry*>(argument);
      geometry->heads = 16;
      geometry->sectors = 63;
      geometry->cylinders = 38792;
      return 0;
    }
    if (request == HDIO_GET_IDENTITY && !answers.serialNumber.empty()) {
      std::memset(bytes, 0xFF, 512);
      std::memcpy(bytes + 20, answers.serialNumber.data(), answers.serialNumber.size());
      return 0;
    }
    if (request == HDIO_DRIVE_CMD && answers.securityWord >= 0) {
      EXPECT_EQ(bytes[0], 0xEC);
      EXPECT_EQ(bytes[1], 1);
      EXPECT_EQ(bytes[2], 0);
      EXPECT_EQ(bytes[3], 1);
      std::memset(bytes, 0, 4 + 512);
      bytes[260] = static_cast<unsigned char>(answers.securityWord);
      bytes[261] = static_cast<unsigned char>(answers.securityWord >> 8);
      return 0;
    }
    errno = answers.error;
    return -1;
  };
  return device;
}

// Remembers how each node was opened.
struct RecordingHost : FakeHost {
  int open(const char* path, int flags, mode_t mode) override {
    flagsOf[path] = flags;
    return FakeHost::open(path, flags, mode);
  }
  std::map<std::string, int> flagsOf;
};

class IdeinfoTest : public ::testing::Test {
 protected:
  IdeinfoTest() {
    setFile("media", "disk\n");
    setFile("model", "MAXTOR 6L020J1\n");
    setFile("capacity", "39102336\n");
    setFile("geometry", "physical     38792/16/63\nlogical      2434/255/63\n");
    machine.devices["/dev/hda"] =
        driveWith({.serialNumber = "        661234567890", .securityWord = 0x0001});
  }

  void setFile(const std::string& name, const std::string& text) {
    machine.files[std::string(kDisk) + "/" + name] = text;
  }

  RecordingHost machine;
};

TEST_F(IdeinfoTest, readsADisk) {
  const ideinfo info(kDisk);
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.type(), StrEq("disk\n"));
  EXPECT_THAT(info.manufacturer(), StrEq("MAXTOR"));
  EXPECT_THAT(info.model(), StrEq("6L020J1"));
  EXPECT_THAT(info.serialnumber(), StrEq("        661234567890"));
  EXPECT_EQ(info.totalsize(), 19551168U);
  EXPECT_EQ(info.sector_size(), 512U);
  EXPECT_EQ(info.security_enabled(), 0);
  EXPECT_FALSE(info.removable());
  EXPECT_TRUE(info.mediapresent());
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(IdeinfoTest, secondNumberOfGeometryIsSectors_idDigestsDependOnIt) {
  const ideinfo info(kDisk);
  EXPECT_EQ(info.numcylinders(), 2434U);
  EXPECT_EQ(info.numsectors(), 255U);
  EXPECT_EQ(info.numheads(), 63U);
}

TEST_F(IdeinfoTest, geometryOfTheIoctlIsNotCrossed) {
  setFile("geometry", "physical     38792/16/63\n");
  machine.devices["/dev/hda"] = driveWith({.hasGeometry = true});
  const ideinfo info(kDisk);
  EXPECT_EQ(info.numcylinders(), 38792U);
  EXPECT_EQ(info.numsectors(), 63U);
  EXPECT_EQ(info.numheads(), 16U);
}

TEST_F(IdeinfoTest, incompleteLogicalLineFallsBackToTheIoctl) {
  machine.devices["/dev/hda"] = driveWith({.hasGeometry = true});
  for (const char* line :
       {"logical 1023/255\n", "logical 1023//63\n", "logical\n", "logical /255/63"}) {
    setFile("geometry", line);
    EXPECT_EQ(ideinfo(kDisk).numcylinders(), 38792U) << line;
  }
}

TEST_F(IdeinfoTest, firstLogicalLineCounts) {
  setFile("geometry", "logical 2434/255\nlogical 1023/255/63\n");
  machine.devices["/dev/hda"] = driveWith({.hasGeometry = true});
  EXPECT_EQ(ideinfo(kDisk).numcylinders(), 38792U);
  setFile("geometry", "logical 2434/255/63\nlogical 1023/16/32\n");
  EXPECT_EQ(ideinfo(kDisk).numcylinders(), 2434U);
}

TEST_F(IdeinfoTest, missingGeometryFileFallsBackToTheIoctl) {
  machine.files.erase(std::string(kDisk) + "/geometry");
  machine.devices["/dev/hda"] = driveWith({.hasGeometry = true});
  EXPECT_EQ(ideinfo(kDisk).numcylinders(), 38792U);
}

TEST_F(IdeinfoTest, failedIoctlsAreRecordedAndLeaveEmptyValues) {
  machine.files.erase(std::string(kDisk) + "/geometry");
  machine.devices["/dev/hda"] = driveWith({.error = ENODEV});
  const ideinfo info(kDisk);
  EXPECT_EQ(info.errorcode(), ENODEV);
  EXPECT_EQ(info.numcylinders(), 0U);
  EXPECT_THAT(info.serialnumber(), StrEq(""));
  EXPECT_EQ(info.security_enabled(), -1);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(IdeinfoTest, eachIoctlThatFailsIsRecorded) {
  machine.devices["/dev/hda"] = driveWith({.securityWord = 1, .error = EPERM});
  EXPECT_EQ(ideinfo(kDisk).errorcode(), EPERM) << "no serial number";
  machine.devices["/dev/hda"] = driveWith({.serialNumber = "X", .error = EPERM});
  EXPECT_EQ(ideinfo(kDisk).errorcode(), EPERM) << "no security word";
  setFile("geometry", "");
  machine.devices["/dev/hda"] =
      driveWith({.serialNumber = "X", .securityWord = 1, .error = EINVAL});
  EXPECT_EQ(ideinfo(kDisk).errorcode(), EINVAL) << "no geometry";
}

TEST_F(IdeinfoTest, driveIsOpenedForReadingWithoutWaitingForItsMedium) {
  const ideinfo info(kDisk);
  EXPECT_EQ(machine.flagsOf.at("/dev/hda") & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
  setFile("geometry", "");
  machine.flagsOf.clear();
  machine.devices["/dev/hda"].ioctl = [](unsigned long, void*) { return 0; };
  const ideinfo asked(kDisk);
  EXPECT_EQ(machine.flagsOf.at("/dev/hda") & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
}

TEST_F(IdeinfoTest, nodeThatCannotBeOpenedLeavesSecurityUnknown) {
  machine.devices.clear();
  const ideinfo info(kDisk);
  EXPECT_EQ(info.errorcode(), ENOENT);
  EXPECT_EQ(info.security_enabled(), -1);
  EXPECT_EQ(info.numcylinders(), 2434U);
}

TEST_F(IdeinfoTest, directoryThatNamesNoDriveGivesMinusOne) {
  machine.files["/media"] = "disk\n";
  EXPECT_EQ(ideinfo("hda").errorcode(), ENOENT);  // of the model file, which is read last
  machine.files["hda/model"] = "X\n";
  EXPECT_EQ(ideinfo("hda").errorcode(), -1);
}

TEST_F(IdeinfoTest, capacityOf2147483647MeansNoSize) {
  setFile("capacity", "2147483647\n");
  EXPECT_EQ(ideinfo(kDisk).totalsize(), 0U);
}

TEST_F(IdeinfoTest, capacityIsHalvedAndRoundedDown) {
  setFile("capacity", "2147483649");
  EXPECT_EQ(ideinfo(kDisk).totalsize(), 1073741824U);
  setFile("capacity", "garbage");
  EXPECT_EQ(ideinfo(kDisk).totalsize(), 0U);
  setFile("capacity", "");
  EXPECT_EQ(ideinfo(kDisk).totalsize(), 0U);
  setFile("capacity", std::string(500, '9'));
  EXPECT_EQ(ideinfo(kDisk).totalsize(), ~0UL / 2);
}

TEST_F(IdeinfoTest, cdRomHasModelAndManufacturerOnly) {
  setFile("media", "cdrom\n");
  setFile("model", "TOSHIBA DVD-ROM SD-M1612\n");
  const ideinfo info(kDisk);
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.manufacturer(), StrEq("TOSHIBA"));
  EXPECT_THAT(info.model(), StrEq("DVD-ROM SD-M1612"));
  EXPECT_EQ(info.numcylinders(), 0U);
  EXPECT_EQ(info.totalsize(), 0U);
  EXPECT_THAT(info.serialnumber(), StrEq(""));
  EXPECT_EQ(info.security_enabled(), 0);
  EXPECT_TRUE(info.removable());
  EXPECT_EQ(std::count(machine.opened.begin(), machine.opened.end(), "/dev/hda"), 0);
}

TEST_F(IdeinfoTest, driveIsCdRomWhereverTheWordStandsInItsMediaText) {
  setFile("media", "atapi-cdrom drive\n");
  EXPECT_EQ(ideinfo(kDisk).numcylinders(), 0U);
  setFile("media", "disk\ncdrom\n");  // the first line counts
  EXPECT_EQ(ideinfo(kDisk).numcylinders(), 2434U);
}

TEST_F(IdeinfoTest, overlongMediaTextIsCutAt255Characters) {
  setFile("media", std::string(1000, 'd'));
  EXPECT_EQ(ideinfo(kDisk).type(), std::string(255, 'd'));
}

TEST_F(IdeinfoTest, securityWordDecides) {
  const struct {
    int word;
    int security;
  } cases[] = {{0x0000, -1}, {0x0001, 0}, {0x0003, 1}, {0x0002, -1}, {0x0100, -1}, {0x0021, 0}};
  for (const auto& [word, security] : cases) {
    machine.devices["/dev/hda"] = driveWith({.serialNumber = "X", .securityWord = word});
    EXPECT_EQ(ideinfo(kDisk).security_enabled(), security) << word;
  }
}

TEST_F(IdeinfoTest, serialNumberFieldHasTwentyCharacters) {
  machine.devices["/dev/hda"] = driveWith({.serialNumber = std::string(30, 'S')});
  EXPECT_EQ(ideinfo(kDisk).serialnumber(), std::string(20, 'S'));
}

TEST_F(IdeinfoTest, modelWithoutBlankHasNoManufacturer) {
  setFile("model", "ST320414A\n");
  const ideinfo info(kDisk);
  EXPECT_THAT(info.manufacturer(), StrEq(""));
  EXPECT_THAT(info.model(), StrEq("ST320414A"));
}

TEST_F(IdeinfoTest, modelIsSplitAtItsFirstBlank) {
  setFile("model", "IBM  IC35 L040");  // no newline
  const ideinfo info(kDisk);
  EXPECT_THAT(info.manufacturer(), StrEq("IBM"));
  EXPECT_THAT(info.model(), StrEq(" IC35 L040"));
}

TEST_F(IdeinfoTest, overlongModelIsCutAt254Characters) {
  setFile("model", std::string(1000, 'M'));
  EXPECT_EQ(ideinfo(kDisk).model(), std::string(254, 'M'));
}

TEST_F(IdeinfoTest, missingFilesAreRecordedAndLeaveEmptyTexts) {
  machine.files.clear();
  const ideinfo info(kDisk);
  EXPECT_EQ(info.errorcode(), ENOENT);
  EXPECT_THAT(info.type(), StrEq(""));
  EXPECT_THAT(info.model(), StrEq(""));
}

TEST_F(IdeinfoTest, nextDriveIsTheNextLetter) {
  EXPECT_EQ(ideinfo(kDisk).nextIDEdisk(), "hdb");
  EXPECT_EQ(ideinfo("/proc/ide/ide9/hdz").nextIDEdisk(), "");
  EXPECT_EQ(ideinfo("").nextIDEdisk(), "");
}

TEST_F(IdeinfoTest, logicalGeometryTakesTheDigitsBetweenTheSlashes) {
  const auto geometry = parseLogicalGeometry("logical      1023/255/63/9\n");
  ASSERT_TRUE(geometry.has_value());
  EXPECT_EQ(geometry->first, 1023U);
  EXPECT_EQ(geometry->second, 255U);
  EXPECT_EQ(geometry->third, 63U);
  EXPECT_FALSE(parseLogicalGeometry("////").has_value());
  EXPECT_FALSE(parseLogicalGeometry("").has_value());
}

class IdeFileListTest : public ::testing::Test {
 protected:
  IdeFileListTest() {
    machine.directories["/proc/ide"] = {"drivers", "ide0", "hda", "piix", "ide1"};
    machine.directories["/proc/ide/ide0"] = {"channel", "hda", "model", "hdb"};
    machine.directories["/proc/ide/ide0/hda"];
    machine.directories["/proc/ide/ide0/hdb"];
    machine.files["/proc/ide/ide0/channel"] = "0\n";
    machine.files["/proc/ide/ide0/model"] = "pci\n";
    machine.directories["/proc/ide/ide1"] = {"hdc"};
    machine.directories["/proc/ide/ide1/hdc"];
  }

  FakeHost machine;
};

TEST_F(IdeFileListTest, listsTheDirectoriesOfEveryControllerInTheKernelsOrder) {
  EXPECT_THAT(ideDriveDirectories(),
              ElementsAre("/proc/ide/ide0/hda", "/proc/ide/ide0/hdb", "/proc/ide/ide1/hdc"));
}

TEST_F(IdeFileListTest, controllerIsEveryEntryWithIdeInItsName) {
  machine.directories["/proc/ide"] = {"pci-ide7", "id0"};
  machine.directories["/proc/ide/pci-ide7"] = {"hdq"};
  machine.directories["/proc/ide/pci-ide7/hdq"];
  machine.directories["/proc/ide/id0"] = {"hdr"};
  machine.directories["/proc/ide/id0/hdr"];
  EXPECT_THAT(ideDriveDirectories(), ElementsAre("/proc/ide/pci-ide7/hdq"));
}

// Directory order is the kernel's; "." need not come first.
class UnsortedHost : public FakeHost {
 public:
  bool listDirectory(const char* path, std::vector<std::string>& names) override {
    const bool listed = FakeHost::listDirectory(path, names);
    std::reverse(names.begin(), names.end());
    return listed;
  }
};

TEST(IdeFileListOrderTest, dotEntriesAreSkippedByName) {
  UnsortedHost machine;
  machine.directories["/proc/ide"] = {"ide0"};
  machine.directories["/proc/ide/ide0"] = {"hda"};
  for (const char* path : {"/proc/ide/ide0/hda", "/proc/ide/ide0/.", "/proc/ide/ide0/.."}) {
    machine.directories[path];
  }
  EXPECT_THAT(ideDriveDirectories(), ElementsAre("/proc/ide/ide0/hda"));
}

TEST_F(IdeFileListTest, fixedListIsFilledAsFarAsItGoes) {
  char three[3][255] = {};
  EXPECT_EQ(determineIDEfilelist(three), 3);
  EXPECT_STREQ(three[2], "/proc/ide/ide1/hdc");
  char two[2][255] = {};
  EXPECT_EQ(determineIDEfilelist(two), 2);
  EXPECT_STREQ(two[1], "/proc/ide/ide0/hdb");
  EXPECT_EQ(determineIDEfilelist(two, 0), 0);
}

TEST_F(IdeFileListTest, pathTooLongForASlotIsLeftOut) {
  const std::string longName(300, 'h');
  machine.directories["/proc/ide/ide0"] = {longName, "hdb"};
  machine.directories["/proc/ide/ide0/" + longName];
  char list[4][255] = {};
  EXPECT_EQ(determineIDEfilelist(list), 2);
  EXPECT_STREQ(list[0], "/proc/ide/ide0/hdb");
}

TEST(IdeFileListAbsentTest, machineWithoutIdeDriverHasNoDrives) {
  FakeHost machine;
  EXPECT_THAT(ideDriveDirectories(), IsEmpty());
}

}  // namespace
}  // namespace quenlor
