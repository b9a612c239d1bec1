#include "readers/system/Distribution.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <vector>

#include "readers/system/ShellAssignments.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

// One file of tests/readers/system/os-release.txt: "=== name|id|version|codename", then its text.
struct Sample {
  std::string expected;
  std::string text;
};

std::vector<Sample> samples() {
  std::ifstream file(QUENLOR_SOURCE_DIR "/tests/readers/system/os-release.txt", std::ios::binary);
  std::vector<Sample> all;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("=== ", 0) == 0) {
      all.push_back({line.substr(4), ""});
    } else if (!all.empty()) {
      all.back().text += line + "\n";
    }
  }
  return all;
}

std::string joined(const Distribution& d) {
  return d.name + "|" + d.id + "|" + d.version + "|" + d.codename;
}

TEST(DistributionTest, everyDistributionIsReadWithEveryQuoting) {
  const auto all = samples();
  EXPECT_GE(all.size(), 65u);
  for (const Sample& sample : all) {
    EXPECT_EQ(joined(parseOsRelease(sample.text)), sample.expected);
  }
}

TEST(DistributionTest, aFileWithoutPrettyNameGivesItsNameAndWithoutBothLinux) {
  EXPECT_EQ(parseOsRelease("NAME=Foo\n").name, "Foo");
  EXPECT_EQ(parseOsRelease("ID=foo\n").name, "Linux");
}

TEST(DistributionTest, theFirstFileThatIsThereDecides) {
  test::FakeHost machine;
  machine.files["/etc/os-release"] = "PRETTY_NAME=First\n";
  machine.files["/usr/lib/os-release"] = "PRETTY_NAME=Second\n";
  machine.files["/etc/redhat-release"] = "Third\n";
  Outcome outcome;
  EXPECT_EQ(readDistribution(outcome).name, "First");
  machine.files.erase("/etc/os-release");
  EXPECT_EQ(readDistribution(outcome).name, "Second");
  machine.files.erase("/usr/lib/os-release");
  EXPECT_EQ(readDistribution(outcome).name, "Third");
  machine.files.erase("/etc/redhat-release");
  EXPECT_EQ(readDistribution(outcome).name, "");
  EXPECT_EQ(outcome.status(), OutcomeStatus::kComplete);
}

TEST(DistributionTest, aFileThatIsRefusedIsTold) {
  test::FakeHost machine;
  machine.files["/etc/os-release"] = "ID=x\n";
  machine.openErrors["/etc/os-release"] = EACCES;
  Outcome outcome;
  readDistribution(outcome);
  EXPECT_EQ(outcome.status(), OutcomeStatus::kPartial);
}

TEST(DistributionTest, releaseFilesOfOldGiveTheirFirstLine) {
  EXPECT_EQ(parseReleaseFile("\n  CentOS release 5.11 (Final)\nmore\n"),
            "CentOS release 5.11 (Final)");
  EXPECT_EQ(parseReleaseFile(""), "");
  EXPECT_EQ(parseReleaseFile("a\tb"), "a b");
}

TEST(ShellAssignmentsTest, theLastAssignmentOfANameWins) {
  EXPECT_EQ(parseAssignments("A=1\nA=2\n")["A"], "2");
}

TEST(ShellAssignmentsTest, quotesEndTheirValueAndAMissingOneEndsWithTheLine) {
  EXPECT_EQ(parseAssignments("A=\"x\"y\n")["A"], "x");
  EXPECT_EQ(parseAssignments("A=\"x\nB=2\n")["A"], "x");
  EXPECT_EQ(parseAssignments("A='x\n")["A"], "x");
  EXPECT_EQ(parseAssignments("A=\"x\\")["A"], "x\\");
  EXPECT_EQ(parseAssignments("A=")["A"], "");
  EXPECT_EQ(parseAssignments("A=x # comment\n")["A"], "x");
}

TEST(ShellAssignmentsTest, nothingIsExpanded) {
  EXPECT_EQ(parseAssignments("A=$HOME\nB=\"\\$HOME \\`x\\` \\\" \\\\ \\n\"\nC='\\$x'\n"),
            (std::map<std::string, std::string>{
                {"A", "$HOME"}, {"B", "$HOME `x` \" \\ \\n"}, {"C", "\\$x"}}));
}

TEST(ShellAssignmentsTest, linesThatAssignNothingArePassedOver) {
  EXPECT_TRUE(parseAssignments("# A=1\n\n=x\nA B=1\nA-B=1\nfoo\n").empty());
  EXPECT_EQ(parseAssignments("export LANG=de_DE.UTF-8\n")["LANG"], "de_DE.UTF-8");
}

}  // namespace
}  // namespace quenlor
