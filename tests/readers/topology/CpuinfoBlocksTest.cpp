#include "readers/topology/CpuinfoBlocks.h"

#include <gtest/gtest.h>

namespace quenlor::test {
namespace {

std::string block(unsigned processor, unsigned package, const std::string& flags) {
  return "processor\t: " + std::to_string(processor) +
         "\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 143\n"
         "model name\t: Intel(R) Xeon(R) Processor\nstepping\t: 8\nmicrocode\t: 0x2b000590\n"
         "cpu MHz\t\t: 2000.000\nphysical id\t: " +
         std::to_string(package) + "\nsiblings\t: 2\ncore id\t\t: " + std::to_string(processor) +
         "\ncpu cores\t: 2\nflags\t\t: " + flags + "\npower management:\n\n";
}

std::vector<CpuinfoBlock> parsed(const std::string& text, size_t pieceSize = 4096) {
  CpuinfoParser parser;
  for (size_t at = 0; at < text.size(); at += pieceSize) parser.take(text.substr(at, pieceSize));
  parser.finish();
  return parser.blocks();
}

TEST(CpuinfoParser, aBlockHoldsWhatTheKernelPrints) {
  const auto blocks = parsed(block(3, 1, "fpu ht lm"));
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].processor, 3u);
  EXPECT_EQ(blocks[0].physicalId, 1u);
  EXPECT_EQ(blocks[0].siblings, 2u);
  EXPECT_EQ(blocks[0].cores, 2u);
  EXPECT_EQ(blocks[0].family, 6u);
  EXPECT_EQ(blocks[0].model, 143u);
  EXPECT_EQ(blocks[0].stepping, 8u);
  EXPECT_EQ(blocks[0].vendor, "GenuineIntel");
  EXPECT_EQ(blocks[0].modelName, "Intel(R) Xeon(R) Processor");
  EXPECT_EQ(blocks[0].microcode, "0x2b000590");
  EXPECT_EQ(blocks[0].flags, "fpu ht lm");
}

TEST(CpuinfoParser, piecesOfAnySizeGiveTheSame) {
  const std::string text = block(0, 0, "fpu") + block(1, 1, "fpu vme");
  for (const size_t size : {1u, 2u, 7u, 100u}) {
    const auto blocks = parsed(text, size);
    ASSERT_EQ(blocks.size(), 2u) << size;
    EXPECT_EQ(blocks[1].flags, "fpu vme") << size;
  }
}

TEST(CpuinfoParser, flagsAreKeptOncePerPackage) {
  const auto blocks = parsed(block(0, 0, "a") + block(1, 0, "b") + block(2, 1, "c"));
  ASSERT_EQ(blocks.size(), 3u);
  EXPECT_EQ(blocks[0].flags, "a");
  EXPECT_EQ(blocks[1].flags, "");
  EXPECT_EQ(blocks[2].flags, "c");
}

TEST(CpuinfoParser, aLongFlagsLineIsKeptWhole) {
  std::string flags;
  for (int flag = 0; flag < 300; ++flag) flags += "flag" + std::to_string(flag) + " ";
  flags += "lm";
  EXPECT_EQ(parsed(block(0, 0, flags), 256)[0].flags, flags);
}

TEST(CpuinfoParser, rubbishGivesAbsentValues) {
  EXPECT_TRUE(parsed("").empty());
  EXPECT_TRUE(parsed("model : 3\nno colon\n:\n").empty());
  const auto blocks = parsed("processor : x\nphysical id : -1\nsiblings : 99999999999\nflags :");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_FALSE(blocks[0].processor);
  EXPECT_FALSE(blocks[0].physicalId);
  EXPECT_FALSE(blocks[0].siblings);
  EXPECT_EQ(blocks[0].flags, "");
}

TEST(CpuinfoParser, packagesAreKnownOnceTheirFlagsAreRead) {
  CpuinfoParser parser;
  parser.take("processor : 0\nphysical id : 0\n");
  EXPECT_EQ(parser.knownPackages(), 0u);
  parser.take("flags : fpu\n");
  EXPECT_EQ(parser.knownPackages(), 1u);
}

TEST(CpuinfoBlock, aPackageIsFoundByItsIdElseByAProcessor) {
  const auto blocks = parsed(block(0, 0, "a") + block(4, 1, "b"));
  EXPECT_EQ(blockOfPackage(blocks, 1, {4, 5})->flags, "b");
  // A container's share is numbered anew: only the package's id holds.
  EXPECT_EQ(blockOfPackage(blocks, 1, {64, 65})->flags, "b");
  EXPECT_EQ(blockOfPackage(blocks, 2, {4}), nullptr);
  const auto without = parsed("processor : 0\nflags : a\n\nprocessor : 1\nflags : b\n");
  EXPECT_EQ(blockOfPackage(without, 1, {1})->flags, "b");
  EXPECT_EQ(blockOfPackage(without, {}, {7}), nullptr);
}

}  // namespace
}  // namespace quenlor::test
