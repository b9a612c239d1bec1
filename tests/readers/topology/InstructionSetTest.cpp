#include "readers/topology/InstructionSet.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor::test {
namespace {

const std::string kFirst = "fpu cx8 cmov mmx fxsr sse sse2 syscall lm";
const std::string kSecond = kFirst + " pni ssse3 cx16 sse4_1 sse4_2 popcnt lahf_lm";
const std::string kThird = kSecond + " fma movbe xsave avx f16c abm bmi1 avx2 bmi2";
const std::string kFourth = kThird + " avx512f avx512dq avx512cd avx512bw avx512vl";

TEST(InstructionSet, theLevelIsTheHighestThatIsWhole) {
  EXPECT_STREQ(instructionSetOf(kFirst), "x86-64-v1");
  EXPECT_STREQ(instructionSetOf(kSecond), "x86-64-v2");
  EXPECT_STREQ(instructionSetOf(kThird), "x86-64-v3");
  EXPECT_STREQ(instructionSetOf(kFourth), "x86-64-v4");
}

TEST(InstructionSet, aMissingFlagEndsTheLevelsBelowIt) {
  EXPECT_STREQ(instructionSetOf(kFirst + " avx512f avx512dq avx512cd avx512bw avx512vl avx2"),
               "x86-64-v1");
  EXPECT_STREQ(instructionSetOf(kFourth.substr(0, kFourth.size() - 9)), "x86-64-v3");
}

TEST(InstructionSet, wordsCountNotTheirParts) {
  std::string flags = kSecond;
  flags.replace(flags.find(" popcnt"), 7, " avx512_vpopcntdq");
  EXPECT_STREQ(instructionSetOf(flags), "x86-64-v1");
}

TEST(InstructionSet, a32BitProcessorHasNone) {
  EXPECT_STREQ(instructionSetOf("fpu cx8 cmov mmx fxsr sse sse2 syscall"), "");
  EXPECT_STREQ(instructionSetOf(""), "");
}

TEST(VirtualizationExtension, isWhatTheKernelEnabled) {
  EXPECT_STREQ(virtualizationExtensionOf("fpu vmx lm"), "vmx");
  EXPECT_STREQ(virtualizationExtensionOf("fpu svm"), "svm");
  EXPECT_STREQ(virtualizationExtensionOf("fpu svm_lock vmx_x"), "");
}

}  // namespace
}  // namespace quenlor::test
