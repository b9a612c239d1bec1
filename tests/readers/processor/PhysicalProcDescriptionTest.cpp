#include "readers/processor/PhysicalProcDescription.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "tests/support/CapturedTraces.h"

namespace quenlor::test {
namespace {

std::vector<std::string> tokensOf(std::string text) {
  std::vector<std::string> tokens;
  for (char* token = gettoken(text.data(), ':'); token != nullptr; token = gettoken(nullptr, ':')) {
    tokens.emplace_back(token);
  }
  return tokens;
}

TEST(Gettoken, separatorsAreNotMerged) {
  EXPECT_EQ(tokensOf("a:b:c"), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(tokensOf("a::c:"), (std::vector<std::string>{"a", "", "c", ""}));
  EXPECT_EQ(tokensOf(":"), (std::vector<std::string>{"", ""}));
  EXPECT_EQ(tokensOf(""), std::vector<std::string>{""});
}

TEST(Gettoken, restClearsTheCursor) {
  std::string text = "rest";
  EXPECT_STREQ(gettoken(text.data(), ':'), "rest");
  EXPECT_EQ(gettoken(nullptr, ':'), nullptr);
  EXPECT_EQ(gettoken(nullptr, ':'), nullptr);
}

TEST(Gettoken, newTextReplacesAnUnfinishedOne) {
  std::string first = "a:b";
  std::string second = "c:d";
  EXPECT_STREQ(gettoken(first.data(), ':'), "a");
  EXPECT_STREQ(gettoken(second.data(), ':'), "c");
  EXPECT_STREQ(gettoken(nullptr, ':'), "d");
}

TEST(PhysicalProcDescription, allEightFields) {
  CapturedTraces trace;
  const auto found = parsePhysicalProc("2:GenuineIntel:Xeon:MP:4:2:2933:64");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->packages, 2);
  EXPECT_EQ(found->manufacturer, "GenuineIntel");
  EXPECT_EQ(found->family, "Xeon");
  EXPECT_EQ(found->type, "MP");
  EXPECT_EQ(found->coresPerPackage, 4);
  EXPECT_EQ(found->threadsPerCore, 2);
  EXPECT_EQ(found->clockMhz, 2933);
  EXPECT_EQ(found->is64Bit, true);
  for (const char* text :
       {"packageCount=2", "Manufacturer='GenuineIntel'", "Family='Xeon'", "Type='MP'",
        "corePerPackageCount=4", "threadPerCoreCount=2", "cpuClockMHz=2933"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware PHYSICAL_PROCESSOR.") + text)) << text;
  }
  EXPECT_TRUE(trace.contains("hardware PHYSICAL_PROCESSOR.bits=64"));
}

TEST(PhysicalProcDescription, bitsFieldIsOptionalAndOnlyItsFirstTwoCharactersCount) {
  EXPECT_EQ(parsePhysicalProc("2:M:F:T:4:2:2933")->is64Bit, std::nullopt);
  EXPECT_EQ(parsePhysicalProc("2:M:F:T:4:2:2933:")->is64Bit, false);
  EXPECT_EQ(parsePhysicalProc("2:M:F:T:4:2:2933:32")->is64Bit, false);
  EXPECT_EQ(parsePhysicalProc("2:M:F:T:4:2:2933:64bit")->is64Bit, true);
  EXPECT_EQ(parsePhysicalProc("2:M:F:T:4:2:2933: 64")->is64Bit, false);
  EXPECT_EQ(parsePhysicalProc("2:M:F:T:4:2:2933:6:4")->is64Bit, false);
}

TEST(PhysicalProcDescription, shorterTextsAreNone) {
  std::string text;
  for (const char* field : {"2", ":M", ":F", ":T", ":4", ":2"}) {
    EXPECT_FALSE(parsePhysicalProc(text)) << text;
    text += field;
  }
  EXPECT_FALSE(parsePhysicalProc(text)) << text;
  EXPECT_TRUE(parsePhysicalProc(text + ":"));
}

TEST(PhysicalProcDescription, packagesManufacturerAndFamilyMustBeUsable) {
  EXPECT_FALSE(parsePhysicalProc("0:M:F:T:4:2:2933:64"));
  EXPECT_FALSE(parsePhysicalProc("-1:M:F:T:4:2:2933:64"));
  EXPECT_FALSE(parsePhysicalProc("x:M:F:T:4:2:2933:64"));
  EXPECT_FALSE(parsePhysicalProc("2::F:T:4:2:2933:64"));
  EXPECT_FALSE(parsePhysicalProc("2:M::T:4:2:2933:64"));
  EXPECT_TRUE(parsePhysicalProc("2:M:F::::"));
}

TEST(PhysicalProcDescription, numbersOfSingleFields) {
  EXPECT_EQ(physicalProcNumber("2:M:F:T:4:2:2933", 0), 2);
  EXPECT_EQ(physicalProcNumber("2:M:F:T:4:2:2933", 4), 4);
  EXPECT_EQ(physicalProcNumber("2:M:F:T:", 4), 0);
  EXPECT_EQ(physicalProcNumber("2:M:F:T", 4), std::nullopt);
  EXPECT_EQ(physicalProcNumber("", 0), 0);
  EXPECT_EQ(physicalProcNumber("99999999999:M", 0), INT_MAX);
}

}  // namespace
}  // namespace quenlor::test
