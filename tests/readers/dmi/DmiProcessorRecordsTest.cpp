#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

struct Processor {
  uint8_t family = 0xB3, status = 0x41, upgrade = 0x3F;
  uint16_t clock = 100, maxSpeed = 4000, currentSpeed = 2100;
  uint8_t cores = 8, enabled = 8, threads = 16;
  uint16_t family2 = 0xB3, cores2 = 8, enabled2 = 8, threads2 = 16, threadsEnabled = 16;

  Structure encoded(size_t length) const {
    Structure full(4);
    full.byte(1).byte(3).byte(family).byte(2).dword(0x606A6).dword(0xBFEBFBFF).byte(3).byte(0x90);
    full.word(clock).word(maxSpeed).word(currentSpeed).byte(status).byte(upgrade);
    full.word(0x10).word(0x11).word(0x12).byte(4).byte(5).byte(6);
    full.byte(cores).byte(enabled).byte(threads).word(0xFC);
    full.word(family2).word(cores2).word(enabled2).word(threads2).word(threadsEnabled).byte(7);
    return Structure(4)
        .raw(full.encode(0).substr(4, length - 4))
        .strings({"CPU 1", "Maker", "Brand", "Serial", "Tag", "Part", "LGA9999"});
  }
};

DmiProcessor decodedProcessor(const Processor& processor, size_t length = 0x33) {
  return test::decoded({processor.encoded(length)}).processors.at(0);
}

TEST(DmiProcessorRecordsTest, allFieldsOf38) {
  const DmiProcessor found = decodedProcessor({});
  EXPECT_EQ(found.socket, "CPU 1");
  EXPECT_EQ(found.manufacturer, "Maker");
  EXPECT_EQ(found.version, "Brand");
  EXPECT_EQ(found.serial, "Serial");
  EXPECT_EQ(found.assetTag, "Tag");
  EXPECT_EQ(found.partNumber, "Part");
  EXPECT_EQ(found.socketType, "LGA9999");
  EXPECT_EQ(found.kind, 3);
  EXPECT_EQ(found.family, 0xB3);
  EXPECT_EQ(found.idEax, 0x606A6u);
  EXPECT_EQ(found.idEdx, 0xBFEBFBFFu);
  EXPECT_EQ(found.externalClockMhz, 100);
  EXPECT_EQ(found.maxMhz, 4000);
  EXPECT_EQ(found.currentMhz, 2100);
  EXPECT_TRUE(found.isPopulated);
  EXPECT_EQ(found.status, 0x41);
  EXPECT_EQ(found.upgrade, 0x3F);
  EXPECT_EQ(found.cores, 8);
  EXPECT_EQ(found.enabledCores, 8);
  EXPECT_EQ(found.threads, 16);
  EXPECT_EQ(found.enabledThreads, 16);
  EXPECT_EQ(found.characteristics, 0xFC);
  EXPECT_EQ(found.cacheHandles, (std::array<uint16_t, 3>{0x10, 0x11, 0x12}));
}

TEST(DmiProcessorRecordsTest, processorOf20EndsWithItsSocketCode) {
  const DmiProcessor found = decodedProcessor({}, 0x1A);
  EXPECT_EQ(found.upgrade, 0x3F);
  EXPECT_EQ(found.cacheHandles[0], kNoDmiHandle);
  EXPECT_FALSE(found.serial);
  EXPECT_FALSE(found.cores);
  EXPECT_FALSE(found.enabledThreads);
  EXPECT_FALSE(found.socketType);
}

TEST(DmiProcessorRecordsTest, populatedBitDecides) {
  EXPECT_FALSE(decodedProcessor({.status = 0x01}).isPopulated);
  EXPECT_TRUE(decodedProcessor({.status = 0x40}).isPopulated);
}

TEST(DmiProcessorRecordsTest, speedsOfZeroAreUnknown) {
  const DmiProcessor found = decodedProcessor({.clock = 0, .maxSpeed = 0, .currentSpeed = 0});
  EXPECT_FALSE(found.externalClockMhz);
  EXPECT_FALSE(found.maxMhz);
  EXPECT_FALSE(found.currentMhz);
}

TEST(DmiProcessorRecordsTest, familyOfFEStandsInTheWord) {
  EXPECT_EQ(decodedProcessor({.family = 0xFE, .family2 = 0x101}).family, 0x101);
  EXPECT_FALSE(decodedProcessor({.family = 0xFE, .family2 = 0x101}, 0x28).family);
  EXPECT_FALSE(decodedProcessor({.family = 0xFF}).family);
  EXPECT_FALSE(decodedProcessor({.family = 0}).family);
  EXPECT_EQ(decodedProcessor({.family = 0x6B, .family2 = 0x101}).family, 0x6B);
}

TEST(DmiProcessorRecordsTest, countOfFFStandsInTheWord) {
  const Processor many{.cores = 0xFF,
                       .enabled = 0xFF,
                       .threads = 0xFF,
                       .cores2 = 256,
                       .enabled2 = 300,
                       .threads2 = 600};
  EXPECT_EQ(decodedProcessor(many).cores, 256);
  EXPECT_EQ(decodedProcessor(many).enabledCores, 300);
  EXPECT_EQ(decodedProcessor(many).threads, 600);
  EXPECT_FALSE(decodedProcessor({.cores = 0xFF, .cores2 = 0}).cores);
  EXPECT_FALSE(decodedProcessor({.cores = 0xFF, .cores2 = 0xFFFF}).cores);
  EXPECT_EQ(decodedProcessor({.cores = 64, .cores2 = 256}).cores, 64);
}

TEST(DmiProcessorRecordsTest, countOfFFWithoutTheWordIsOne) {
  EXPECT_EQ(decodedProcessor({.cores = 0xFF, .cores2 = 256}, 0x2A).cores, 255);
  EXPECT_EQ(decodedProcessor({.cores = 0xFF, .cores2 = 256}, 0x2B).cores, 255);
}

TEST(DmiProcessorRecordsTest, countsOfZeroAreUnknown) {
  const DmiProcessor found =
      decodedProcessor({.cores = 0, .enabled = 0, .threads = 0, .threadsEnabled = 0});
  EXPECT_FALSE(found.cores);
  EXPECT_FALSE(found.enabledCores);
  EXPECT_FALSE(found.threads);
  EXPECT_FALSE(found.enabledThreads);
  EXPECT_FALSE(decodedProcessor({.threadsEnabled = 0xFFFF}).enabledThreads);
}

Structure cache(uint16_t configuration, uint16_t maximum, uint16_t installed) {
  Structure out(7);
  return out.text("L2")
      .word(configuration)
      .word(maximum)
      .word(installed)
      .word(2)
      .word(2)
      .byte(3)
      .byte(5)
      .byte(5)
      .byte(8);
}

DmiCache decodedCache(const Structure& structure) {
  return test::decoded({structure}).caches.at(0);
}

TEST(DmiProcessorRecordsTest, cache) {
  const DmiCache found = decodedCache(cache(0x0181, 2048, 1024));
  EXPECT_EQ(found.designation, "L2");
  EXPECT_EQ(found.level, 2);
  EXPECT_EQ(found.isEnabled, true);
  EXPECT_EQ(found.maxKiB, 2048u);
  EXPECT_EQ(found.installedKiB, 1024u);
  EXPECT_EQ(found.speedNs, 3);
  EXPECT_EQ(found.errorCorrection, 5);
  EXPECT_EQ(found.kind, 5);
  EXPECT_EQ(found.associativity, 8);
}

TEST(DmiProcessorRecordsTest, cacheSizesInUnitsOf64KiB) {
  const DmiCache found = decodedCache(cache(0x0182, 0x8000 | 512, 0x8000 | 0x7FFF));
  EXPECT_EQ(found.maxKiB, 512u * 64);
  EXPECT_EQ(found.installedKiB, 0x7FFFu * 64);
}

TEST(DmiProcessorRecordsTest, cacheSizesAboveAWordStandInTheirOwnFields) {
  const Structure large = cache(0x0182, 0xFFFF, 0xFFFF).dword(0x80000000 | 40000).dword(3000000);
  EXPECT_EQ(decodedCache(large).maxKiB, 40000u * 64);
  EXPECT_EQ(decodedCache(large).installedKiB, 3000000u);
  EXPECT_EQ(decodedCache(cache(0, 0xFFFF, 1)).maxKiB, 0x7FFFu * 64);
  const Structure unasked = cache(0, 512, 256).dword(9).dword(9);
  EXPECT_EQ(decodedCache(unasked).maxKiB, 512u);
}

TEST(DmiProcessorRecordsTest, cacheOfNoSizeIsUnknown) {
  EXPECT_FALSE(decodedCache(cache(0x0181, 0, 0)).installedKiB);
  EXPECT_EQ(decodedCache(cache(0x0101, 1, 1)).isEnabled, false);
}

}  // namespace
}  // namespace quenlor
