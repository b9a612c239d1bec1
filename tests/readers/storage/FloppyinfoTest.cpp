#include "readers/storage/floppyinfo.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using ::testing::StrEq;

struct FloppyAnswers {
  std::optional<floppy_struct> geometry;
  std::optional<std::string> type;
};

floppy_struct geometryOf(unsigned tracks, unsigned heads, unsigned sectors,
                         unsigned char rate = 0) {
  floppy_struct geometry = {};
  geometry.size = tracks * heads * sectors;
  geometry.sect = sectors;
  geometry.head = heads;
  geometry.track = tracks;
  geometry.rate = rate;
  return geometry;
}

test::FakeDevice driveWith(const FloppyAnswers& answers) {
  test::FakeDevice device;
  device.ioctl = [answers](unsigned long request, void* argument) {
    if (request == FDGETPRM && answers.geometry) {
      std::memcpy(argument, &*answers.geometry, sizeof(floppy_struct));
      return 0;
    }
    if (request == FDGETDRVTYP && answers.type) {
      std::memcpy(argument, answers.type->data(), std::min<size_t>(answers.type->size(), 16));
      return 0;
    }
    errno = request == FDGETPRM ? ENODEV : ENXIO;
    return -1;
  };
  return device;
}

class FloppyinfoTest : public ::testing::Test {
 protected:
  floppyinfo probe(const FloppyAnswers& answers) {
    machine.devices["/dev/fd0"] = driveWith(answers);
    return floppyinfo("/dev/fd0");
  }

  FakeHost machine;
};

TEST_F(FloppyinfoTest, readsTheUsualDrive) {
  {
    const floppyinfo info = probe({geometryOf(80, 2, 18), "H1440"});
    EXPECT_EQ(info.errorcode(), 0);
    EXPECT_EQ(info.numcylinders(), 80U);
    EXPECT_EQ(info.numheads(), 2U);
    EXPECT_EQ(info.numsectors(), 18U);
    EXPECT_EQ(info.sector_size(), 512U);
    EXPECT_EQ(info.totalsize(), 1440U);
    EXPECT_THAT(info.model(), StrEq("H1440"));
    EXPECT_TRUE(info.mediapresent());
  }
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(FloppyinfoTest, rateByteGivesTheSectorSize) {
  const struct {
    unsigned char rate;
    unsigned long size;
  } cases[] = {{0x00, 512}, {0x08, 1024}, {0x10, 2048}, {0x28, 16384}, {0x30, 128},
               {0x38, 256}, {0x04, 512},  {0x3C, 512},  {0x43, 512}};
  for (const auto& [rate, size] : cases) {
    EXPECT_EQ(probe({geometryOf(1, 1, 1, rate), "H1440"}).sector_size(), size) << int{rate};
  }
}

TEST_F(FloppyinfoTest, sizeIsRoundedDown) {
  EXPECT_EQ(probe({geometryOf(1, 1, 3), "d360"}).totalsize(), 1U);
}

TEST_F(FloppyinfoTest, absurdGeometryDoesNotOverflow) {
  const floppyinfo info = probe({geometryOf(~0U, ~0U, ~0U), "d360"});
  EXPECT_EQ(info.totalsize(), ~0UL / 1024);
}

TEST_F(FloppyinfoTest, driveWithoutMediumIsKnownByItsType) {
  const floppyinfo info = probe({std::nullopt, "H1440"});
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.model(), StrEq("H1440"));
  EXPECT_EQ(info.totalsize(), 0U);
  EXPECT_FALSE(info.mediapresent());
}

TEST_F(FloppyinfoTest, geometryAloneIsEnough) {
  EXPECT_EQ(probe({geometryOf(80, 2, 18), std::nullopt}).errorcode(), 0);
  EXPECT_EQ(probe({geometryOf(80, 2, 18), "(null)"}).errorcode(), 0);
}

TEST_F(FloppyinfoTest, lastErrorStaysWhenBothFail) {
  EXPECT_EQ(probe({std::nullopt, std::nullopt}).errorcode(), ENXIO);
  EXPECT_EQ(probe({std::nullopt, "(null)"}).errorcode(), ENODEV);
}

TEST_F(FloppyinfoTest, typeNameWithoutEndIsBounded) {
  EXPECT_EQ(probe({std::nullopt, "ABCDEFGHIJKLMNOP"}).model(), std::string("ABCDEFGHIJKLMNOP"));
}

TEST_F(FloppyinfoTest, nodeThatCannotBeOpenedGivesCode20) {
  EXPECT_EQ(floppyinfo("/dev/fd1").errorcode(), floppyinfo::kCannotOpen);
}

// Opens everything as one descriptor and remembers how.
struct OneDescriptorHost : FakeHost {
  explicit OneDescriptorHost(int descriptor) : fd(descriptor) {}
  int open(const char*, int flags, mode_t) override {
    flagsSeen = flags;
    return fd;
  }
  int close(int) override { return 0; }
  int ioctl(int, unsigned long request, void* argument) override {
    return driveWith({geometryOf(80, 2, 18), "H1440"}).ioctl(request, argument);
  }
  int fd;
  int flagsSeen = 0;
};

TEST(FloppyinfoOpenTest, driveIsOpenedForReadingWithoutWaitingForItsMedium) {
  OneDescriptorHost machine(3);
  EXPECT_EQ(floppyinfo("/dev/fd0").errorcode(), 0);
  EXPECT_EQ(machine.flagsSeen & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
}

TEST(FloppyinfoOpenTest, descriptorBelowOneCountsAsNotOpened) {
  OneDescriptorHost machine(0);
  const floppyinfo info("/dev/fd0");
  EXPECT_EQ(info.errorcode(), floppyinfo::kCannotOpen);
  EXPECT_EQ(info.numcylinders(), 0U);
  EXPECT_THAT(info.model(), StrEq(""));
}

TEST_F(FloppyinfoTest, itaniumMachinesAreNotAsked) {
  for (const char* family : {"family     : Itanium 2\n", "family     : Itanium\n"}) {
    machine.opened.clear();
    machine.files["/proc/cpuinfo"] = std::string("processor  : 0\narch       : IA-64\n") + family;
    EXPECT_EQ(probe({geometryOf(80, 2, 18), "H1440"}).errorcode(), floppyinfo::kCannotOpen);
    EXPECT_THAT(machine.opened, ::testing::ElementsAre("/proc/cpuinfo"));
  }
}

TEST_F(FloppyinfoTest, otherProcessorsAreNoItanium) {
  EXPECT_FALSE(floppyinfo::itaniumIA64());
  machine.files["/proc/cpuinfo"] =
      "processor\t: 0\ncpu family\t: 6\nmodel name\t: Itanium killer\n";
  EXPECT_FALSE(floppyinfo::itaniumIA64());
  machine.files["/proc/cpuinfo"] = "arch : IA-64\nfamily : 31\n";
  EXPECT_FALSE(floppyinfo::itaniumIA64());
  EXPECT_EQ(machine.openDescriptors(), 0);
}

}  // namespace
}  // namespace quenlor
