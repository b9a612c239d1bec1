#include "readers/processor/ProcCpuinfo.h"

#include <gtest/gtest.h>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

std::string parsed(const char* line, std::string before = "before") {
  parseLine(line, before);
  return before;
}

ProcCpuinfo readOf(const std::string& content) {
  FakeHost host;
  host.files["/proc/cpuinfo"] = content;
  ProcCpuinfo info = readProcCpuinfo();
  EXPECT_EQ(host.openDescriptors(), 0);
  return info;
}

TEST(ParseLine, takesEverythingTwoCharactersBehindTheFirstColon) {
  EXPECT_EQ(parsed("model name\t: Intel: Xeon"), "Intel: Xeon");
  EXPECT_EQ(parsed("x:yz"), "z");
  EXPECT_EQ(parsed("x:  y "), " y ");
}

TEST(ParseLine, endOfTheLineGivesAnEmptyText) {
  EXPECT_EQ(parsed("power management: "), "");
  EXPECT_EQ(parsed("power management:"), "");
  EXPECT_EQ(parsed(":"), "");
  EXPECT_EQ(parsed(":x"), "");
}

TEST(ParseLine, withoutAColonTheOutputStays) {
  EXPECT_EQ(parsed("no colon"), "before");
  EXPECT_EQ(parsed(""), "before");
}

TEST(ProcCpuinfo, missingFileLeavesEverythingAtItsInitialValue) {
  FakeHost host;
  const ProcCpuinfo info = readProcCpuinfo();
  EXPECT_EQ(info.processorLines, 0);
  EXPECT_EQ(info.siblings, 1);
  EXPECT_EQ(info.vendor, "");
  EXPECT_EQ(info.modelName, "");
  EXPECT_EQ(info.mhz, "");
  EXPECT_EQ(info.chipFamily, 0);
  EXPECT_EQ(info.chipModel, 0);
  EXPECT_EQ(info.chipStepping, 0);
  EXPECT_FALSE(info.flags);
}

TEST(ProcCpuinfo, firstValueOfEachLineCounts) {
  const ProcCpuinfo info = readOf(
      "processor\t: 0\nvendor_id\t: GenuineIntel\ncpu family\t: 15\nmodel\t\t: 2\n"
      "model name\t: Intel(R) Xeon(TM) CPU 2.80GHz\nstepping\t: 9\ncpu MHz\t\t: 2793.191\n"
      "siblings\t: 2\nflags\t\t: fpu vme ht\n\n"
      "processor\t: 1\nvendor_id\t: Other\ncpu family\t: 6\nmodel\t\t: 3\n"
      "model name\t: Other\nstepping\t: 1\ncpu MHz\t\t: 1.0\nsiblings\t: 4\nflags\t\t: mmx\n");
  EXPECT_EQ(info.processorLines, 2);
  EXPECT_EQ(info.vendor, "GenuineIntel");
  EXPECT_EQ(info.chipFamily, 15);
  EXPECT_EQ(info.chipModel, 2);
  EXPECT_EQ(info.modelName, "Intel(R) Xeon(TM) CPU 2.80GHz");
  EXPECT_EQ(info.chipStepping, 9);
  EXPECT_EQ(info.mhz, "2793.191");
  EXPECT_EQ(info.siblings, 2);
  EXPECT_EQ(info.flags, "fpu vme ht");
}

TEST(ProcCpuinfo, valuesThatAreStillInitialAreTakenFromLaterLines) {
  const ProcCpuinfo info = readOf(
      "siblings\t: 1\nstepping\t: 0\ncpu family\t: 0\nsiblings\t: 2\nstepping\t: 7\n"
      "cpu family\t: 6\n");
  EXPECT_EQ(info.siblings, 2);
  EXPECT_EQ(info.chipStepping, 7);
  EXPECT_EQ(info.chipFamily, 6);
}

// Only a count of 1 is open to correction, not every one that says no hyper-threading.
TEST(ProcCpuinfo, siblingsOfZeroStay) {
  EXPECT_EQ(readOf("siblings\t: 0\nsiblings\t: 4\n").siblings, 0);
  EXPECT_EQ(readOf("siblings\t: none\nsiblings\t: 4\n").siblings, 0);
}

TEST(ProcCpuinfo, laterModelNameLineSetsTheModelToZeroWhileItIsZero) {
  const ProcCpuinfo info =
      readOf("model\t\t: 0\nmodel name\t: First\nmodel name\t: 7 lives\nmodel\t\t: 5\n");
  EXPECT_EQ(info.modelName, "First");
  EXPECT_EQ(info.chipModel, 7);  // the second "model name" line is a "model" line by then
}

TEST(ProcCpuinfo, processorIsOnlyCountedAtTheBeginningOfALine) {
  EXPECT_EQ(readOf("processor\nprocessors\n processor\nmodel name: processor\n").processorLines, 2);
}

TEST(ProcCpuinfo, flagsTextIsWhatTheFirst255CharactersHold) {
  const std::string flags = std::string(230, 'a') + " ht 3dnow 3dnowext mmx sse";
  const std::string line = "flags\t\t: " + flags;
  const ProcCpuinfo info = readOf(line + "\nprocessor\t: 0\n");
  ASSERT_TRUE(info.flags);
  EXPECT_EQ(*info.flags, line.substr(9, 255 - 9));
  EXPECT_EQ(info.processorLines, 1);
}

TEST(ProcCpuinfo, tailOfALongFlagsLineIsALineOfItsOwn) {
  const std::string line =
      "flags\t\t: " + std::string(246, 'a') + "3dnow model name: x siblings: 9";
  const ProcCpuinfo info = readOf(line + "\n");
  ASSERT_TRUE(info.flags);
  EXPECT_EQ(info.flags->find("3dnow"), std::string::npos);
  EXPECT_EQ(info.siblings,
            0);  // "siblings" comes first in the order of the tests; " x ..." is no number
  EXPECT_EQ(info.modelName, "");
}

TEST(ProcCpuinfo, onlyALastControlCharacterIsCut) {
  EXPECT_EQ(readOf("vendor_id\t: Genuine\tIntel\r\n").vendor, "Genuine\tIntel\r");
  EXPECT_EQ(readOf("vendor_id\t: GenuineIntel").vendor, "GenuineIntel");
  EXPECT_EQ(readOf("vendor_id\t: GenuineIntel \n").vendor, "GenuineIntel ");
}

TEST(ProcCpuinfo, numberLineWithoutAColonTakesTheLastNumberRead) {
  const ProcCpuinfo info = readOf("cpu family\t: 6\nstepping\n");
  EXPECT_EQ(info.chipStepping, 6);
}

TEST(ProcCpuinfo, textLineWithoutAColonStaysOpenForALaterOne) {
  EXPECT_EQ(readOf("cpu family\t: 6\nvendor_id\nvendor_id\t: GenuineIntel\n").vendor,
            "GenuineIntel");
}

TEST(ProcCpuinfo, hugeAndBrokenNumbersStayInBounds) {
  const ProcCpuinfo info = readOf(
      "cpu family\t: 99999999999999999999\nmodel\t\t: -99999999999999999999\n"
      "stepping\t: five\nsiblings\t: -2\n");
  EXPECT_EQ(info.chipFamily, INT_MAX);
  EXPECT_EQ(info.chipModel, INT_MIN);
  EXPECT_EQ(info.chipStepping, 0);
  EXPECT_EQ(info.siblings, -2);
}

TEST(ProcCpuinfo, binaryContentDoesNoHarm) {
  std::string content;
  for (int i = 0; i < 4096; ++i) content += static_cast<char>(i * 7);
  const ProcCpuinfo info = readOf(content);
  EXPECT_EQ(info.processorLines, 0);
}

TEST(HyperThreadedPackages, linesAreDividedBySiblings) {
  CapturedTraces trace;
  ProcCpuinfo info;
  info.processorLines = 5;
  info.siblings = 2;
  EXPECT_EQ(hyperThreadedPackages(info, {"x.cpp", "x()"}), 2);
  EXPECT_TRUE(trace.contains("hardware Hyperthreading detected: Physical CPU count= 2"));
}

TEST(HyperThreadedPackages, fewerLinesThanSiblingsGiveNothing) {
  CapturedTraces trace;
  ProcCpuinfo info;
  info.processorLines = 2;
  info.siblings = 4;
  EXPECT_EQ(hyperThreadedPackages(info, {"x.cpp", "x()"}), std::nullopt);
  EXPECT_TRUE(
      trace.contains("hardware Hyperthreading detected but the number of CPUs is less than the "
                     "number of logical CPUs"));
  EXPECT_TRUE(trace.contains("hardware left the number of CPUs unchanged"));
}

}  // namespace
}  // namespace quenlor::test
