#include "readers/cpuid/VtCommand.h"

#include <gtest/gtest.h>

#include "tests/readers/cpuid/CpuMachine.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

TEST(VtCommand, unknownAndNullCommandsGiveNull) {
  FakeHost host;
  CpuMachine().installOn(host);
  EXPECT_EQ(vtExecCommand(nullptr), nullptr);
  EXPECT_EQ(vtExecCommand(""), nullptr);
  EXPECT_EQ(vtExecCommand("CPUID"), nullptr);
  EXPECT_EQ(vtExecCommand("cpuid "), nullptr);
  EXPECT_NE(VtResult(vtExecCommand("cpuid")), nullptr);
}

TEST(VtCommand, cpuidGivesNullWhenNobodyTellsAnything) {
  FakeHost host;
  EXPECT_EQ(vtExecCommand("cpuid"), nullptr);
}

TEST(VtCommand, statusIsTheFirstField) {
  VtExecInfo result;
  result.status = 7;
  EXPECT_EQ(*reinterpret_cast<const int*>(&result), 7);
}

TEST(VtGetValue, nullResultGivesTheDefault) {
  EXPECT_STREQ(vtGetValue(nullptr, "Processor", "Family", "x"), "x");
  EXPECT_EQ(vtGetValue(nullptr, nullptr, "PhysicalPackageCount", -1), -1);
}

TEST(VtGetValue, nullSectionIsTheTopLevel) {
  VtExecInfo result;
  result.values[{"", "Count"}] = "2";
  result.values[{"Processor", "Count"}] = "3";
  EXPECT_EQ(vtGetValue(&result, nullptr, "Count", -1), 2);
  EXPECT_EQ(vtGetValue(&result, "Processor", "Count", -1), 3);
  EXPECT_EQ(vtGetValue(&result, "Processor.CPUID", "Count", -1), -1);
  EXPECT_STREQ(vtGetValue(&result, nullptr, "Count", "x"), "2");
}

TEST(VtGetValue, absentOrNullKeyGivesTheDefault) {
  VtExecInfo result;
  EXPECT_EQ(vtGetValue(&result, nullptr, nullptr, 5), 5);
  EXPECT_EQ(vtGetValue(&result, nullptr, "Count", 5), 5);
  EXPECT_EQ(vtGetValue(&result, nullptr, "Count", static_cast<const char*>(nullptr)), nullptr);
}

TEST(VtGetValue, textThatIsNoIntegerGivesTheDefault) {
  VtExecInfo result;
  for (const char* text : {"", "x", "12x", " 12", "1.5", "99999999999"}) {
    result.values[{"", "Count"}] = text;
    EXPECT_EQ(vtGetValue(&result, nullptr, "Count", -3), -3) << text;
  }
  result.values[{"", "Count"}] = "-12";
  EXPECT_EQ(vtGetValue(&result, nullptr, "Count", -3), -12);
}

TEST(VtFreeExecInfo, nullIsAllowed) { vtFreeExecInfo(nullptr); }

}  // namespace
}  // namespace quenlor::test
