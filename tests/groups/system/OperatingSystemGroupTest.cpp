#include "groups/system/OperatingSystemGroup.h"

#include <gtest/gtest.h>

#include <clocale>

#include "readers/system/Release.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::FakeHost;
using test::RowValues;
using test::valueOf;

class OperatingSystemGroupTest : public ::testing::Test {
 protected:
  OperatingSystemGroupTest() { machine.setUname("node5", "2.4.21-4.ELsmp", "i686"); }
  ~OperatingSystemGroupTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  std::string nameWith(const std::string& path, const std::string& text) {
    machine.files[path] = text;
    return valueOf(collect<OperatingSystemGroup>()[0], 1);
  }

  FakeHost machine;
};

TEST_F(OperatingSystemGroupTest, reportsEveryAttributeInOrder) {
  machine.files["/etc/redhat-release"] =
      "Red Hat Enterprise Linux AS release 3 (Taroon Update 4)\n";
  machine.locales[LC_MESSAGES] = "en_US.UTF-8";
  const auto rows = collect<OperatingSystemGroup>();
  ASSERT_EQ(rows.size(), 1U);
  const std::string name = "Red Hat Enterprise Linux AS release 3 (Taroon Update 4) ";
  EXPECT_EQ(rows[0], (RowValues{{1, name},
                                {2, "37"},
                                {3, "2"},
                                {4, "4"},
                                {5, "21-4.ELsmp"},
                                {10, "i686"},
                                {11, ""},
                                {12, name},
                                {15, "en_US.UTF-8"}}));
}

TEST_F(OperatingSystemGroupTest, releaseWithOneFullStopHasAnEmptySubVersion) {
  machine.setUname("n", "2.6", "i686");
  const RowValues row = collect<OperatingSystemGroup>()[0];
  EXPECT_EQ(valueOf(row, 3), "2");
  EXPECT_EQ(valueOf(row, 4), "6");
  EXPECT_EQ(valueOf(row, 5), "");
}

TEST_F(OperatingSystemGroupTest, kernelReleaseIsSplitLikeTokens) {
  EXPECT_EQ(parseKernelRelease("6.18.44-fc-v657").subVersion, "44-fc-v657");
  EXPECT_EQ(parseKernelRelease("").majorVersion, 0U);
  EXPECT_EQ(parseKernelRelease("5").minorVersion, 0U);
  EXPECT_EQ(parseKernelRelease("x.7.").minorVersion, 7U);
  EXPECT_EQ(parseKernelRelease("x.7.").subVersion, "");
  EXPECT_EQ(parseKernelRelease("99999999999999999999.1.2").majorVersion, 0xFFFFFFFFU);
  EXPECT_EQ(parseKernelRelease("-3.1.2").majorVersion, 0U);
  EXPECT_EQ(parseKernelRelease("010.011.2").majorVersion, 10U);
  EXPECT_EQ(parseKernelRelease("010.011.2").minorVersion, 11U);
}

TEST_F(OperatingSystemGroupTest, failingUnameGivesZerosAndEmptyTexts) {
  machine.unameResult.reset();
  const RowValues row = collect<OperatingSystemGroup>()[0];
  EXPECT_EQ(valueOf(row, 3), "0");
  EXPECT_EQ(valueOf(row, 4), "0");
  EXPECT_EQ(valueOf(row, 5), "");
  EXPECT_EQ(valueOf(row, 10), "");
}

TEST_F(OperatingSystemGroupTest, archIsCutAtNineteenCharacters) {
  machine.setUname("n", "6.1.0", "a-very-long-machine-name");
  EXPECT_EQ(valueOf(collect<OperatingSystemGroup>()[0], 10), "a-very-long-machine");
}

TEST_F(OperatingSystemGroupTest, carriageReturnAndNewlineBecomeOneBlank) {
  EXPECT_EQ(nameWith("/etc/redhat-release", "SUSE\r\nVERSION = 9\r\n"), "SUSE VERSION = 9 ");
}

TEST_F(OperatingSystemGroupTest, blanksAreKeptWhileRunsOfControlsFold) {
  EXPECT_EQ(foldControlCharacters("a  b\t\n\x01 c"), "a  b  c");
  EXPECT_EQ(foldControlCharacters("a\x1B\x7F\vb"), "a b");
  EXPECT_EQ(foldControlCharacters(std::string("ab\0cd", 5)), "ab");
}

TEST_F(OperatingSystemGroupTest, firstExistingReleaseFileWins) {
  EXPECT_EQ(nameWith("/etc/UnitedLinux-release", "UnitedLinux 1.0\n"), "UnitedLinux 1.0 ");
  EXPECT_EQ(nameWith("/etc/SuSE-release", "SuSE\n"), "SuSE ");
  EXPECT_EQ(nameWith("/etc/turbolinux-release", "Turbolinux\n"), "Turbolinux ");
  EXPECT_EQ(nameWith("/etc/redhat-release", "Red Hat\n"), "Red Hat ");
}

TEST_F(OperatingSystemGroupTest, releaseTextEndsAfter254Bytes) {
  EXPECT_EQ(nameWith("/etc/redhat-release", std::string(1000, 'x')), std::string(254, 'x'));
}

TEST_F(OperatingSystemGroupTest, emptyReleaseFileMeansLinuxAndEndsTheSearch) {
  machine.files["/etc/.installed"] = "";
  EXPECT_EQ(nameWith("/etc/redhat-release", ""), "Linux");
}

TEST_F(OperatingSystemGroupTest, installedMarkerMeansCaldera) {
  machine.files["/etc/.installed"] = "";
  const RowValues row = collect<OperatingSystemGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "Caldera Linux");
  EXPECT_EQ(valueOf(row, 12), "Caldera Linux");
}

TEST_F(OperatingSystemGroupTest, issueLineWithCalderaMeansCaldera) {
  EXPECT_EQ(nameWith("/etc/.issue", "Welcome\nto Caldera OpenLinux\n"), "Caldera Linux");
  EXPECT_EQ(nameWith("/etc/.issue", "Welcome\n"), "Linux");
}

TEST_F(OperatingSystemGroupTest, withoutAnyFileNameAndDescriptionAreLinux) {
  const RowValues row = collect<OperatingSystemGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "Linux");
  EXPECT_EQ(valueOf(row, 12), "Linux");
}

TEST_F(OperatingSystemGroupTest, issueIsReadOnlyWithoutReleaseFileAndMarker) {
  machine.files["/etc/.issue"] = "Caldera\n";
  EXPECT_EQ(nameWith("/etc/SuSE-release", "SuSE\n"), "SuSE ");
}

TEST_F(OperatingSystemGroupTest, lineOfIssueIsSearchedInPiecesOf255Characters) {
  EXPECT_EQ(nameWith("/etc/.issue", std::string(250, 'x') + "Caldera\n"), "Linux");
  EXPECT_EQ(nameWith("/etc/.issue", std::string(255, 'x') + "Caldera\n"), "Caldera Linux");
}

TEST_F(OperatingSystemGroupTest, withoutAnyLocaleTheMessagesLocaleIsEmpty) {
  machine.locales[LC_MESSAGES] = std::nullopt;
  EXPECT_EQ(valueOf(collect<OperatingSystemGroup>()[0], 15), "");
}

TEST(OperatingSystemGroupLocaleTest, unknownLocaleFallsBackToTheCurrentOne) {
  class MachineWithUnknownLocale : public FakeHost {
   public:
    const char* setlocale(int category, const char* locale) override {
      return category == LC_MESSAGES && locale == nullptr ? "current" : nullptr;
    }
  };
  const MachineWithUnknownLocale machine;
  EXPECT_EQ(valueOf(collect<OperatingSystemGroup>()[0], 15), "current");
}

}  // namespace
}  // namespace quenlor
