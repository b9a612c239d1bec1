#include "readers/firmware/smbios/SMMemory.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "readers/firmware/smbios/SM_HWSecurity.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"

namespace quenlor {
namespace {

using test::FirmwareTable;
using test::SharedTable;

FirmwareTable table() { return FirmwareTable({2, 4}); }

struct MemorySpecs {
  int result;
  unsigned maxModuleSizeMB;
  unsigned slots;
  friend bool operator==(const MemorySpecs&, const MemorySpecs&) = default;
};

void PrintTo(const MemorySpecs& specs, std::ostream* out) {
  *out << specs.result << ": " << specs.maxModuleSizeMB << " MB, " << specs.slots << " slots";
}

MemorySpecs memorySpecs() {
  MemorySpecs specs{-1, 77, 77};
  specs.result = getMemorySpecs(&specs.maxModuleSizeMB, &specs.slots);
  return specs;
}

MemorySpecs memorySpecsOf(const FirmwareTable& structures) {
  const SharedTable shared(structures);
  return memorySpecs();
}

struct ProcessorFacts {
  unsigned short currentSpeed = 77;
  unsigned short externalClock = 77;
  unsigned short upgrade = 77;
  unsigned int edx = 77;
  int result = -1;
};

ProcessorFacts processorFacts() {
  ProcessorFacts facts;
  facts.result =
      SM_Processor(&facts.currentSpeed, &facts.externalClock, &facts.upgrade, &facts.edx);
  return facts;
}

void expectEmptyFacts() {
  const ProcessorFacts facts = processorFacts();
  EXPECT_EQ(facts.result, 0);
  EXPECT_EQ(facts.currentSpeed, 0);
  EXPECT_EQ(facts.externalClock, 0);
  EXPECT_EQ(facts.upgrade, 0);
  EXPECT_EQ(facts.edx, 77u);
  EXPECT_EQ(SM_ProcessorFamily(), 0u);
  EXPECT_EQ(SM_ProcessorCount(), 0u);
  EXPECT_EQ(SM_PopulatedProcessorCount(), 0u);
  EXPECT_EQ(memorySpecs(), (MemorySpecs{0, 0, 0}));
  EXPECT_EQ(SM_getBiggestMemoryModule_17(), 0u);
  EXPECT_EQ(SM_getBiggestMemoryModule_6(), 0u);
  unsigned short first = 0;
  unsigned short second = 0;
  EXPECT_EQ(SM_HWSecurity(&first, &second), 1);
  EXPECT_EQ(first, 3);
  EXPECT_EQ(second, 3);
}

TEST(SMMemory, withoutSharedTableEverythingIsEmpty) {
  ASSERT_EQ(globalSMBIOSTable, nullptr);
  expectEmptyFacts();
}

TEST(SMMemory, withUnavailableTableEverythingIsEmpty) {
  test::FakeHost machine;
  SMBIOSTable::initializeGlobalTable(1);
  expectEmptyFacts();
  SMBIOSTable::terminateGlobalTable();
}

TEST(SMMemory, withoutTheStructuresEverythingIsEmpty) {
  const SharedTable shared(table().add(test::System{.product = "P"}));
  ASSERT_TRUE(globalSMBIOSTable->isAvailable());
  expectEmptyFacts();
}

// A table out of a dump file has its records, but is not the machine's.
TEST(SMMemory, withTheTableOfADumpFileEverythingIsEmpty) {
  SharedTable shared(*test::firmwareNamed("old-server-2.3"));
  globalSMBIOSTable->writeBytesToFile("/tmp/dump");
  SMBIOSTable dumped("/tmp/dump");
  dumped.parseData();
  ASSERT_GT(dumped.getTable4Total(), 0);
  ASSERT_NE(dumped.getTable5(), nullptr);
  ASSERT_NE(dumped.getTable24(), nullptr);
  SMBIOSTable* machines = std::exchange(globalSMBIOSTable, &dumped);
  expectEmptyFacts();
  globalSMBIOSTable = machines;
}

// --- processors ---

TEST(SMProcessor, firstRecordCounts) {
  const SharedTable shared(table()
                               .add(test::Processor{.family = 0xB3,
                                                    .edx = 0xBFEBFBFF,
                                                    .externalClock = 2000,
                                                    .currentSpeed = 2500,
                                                    .upgrade = 17})
                               .add(test::Processor{.currentSpeed = 1})
                               .add(test::Processor{.status = 0}));
  const ProcessorFacts facts = processorFacts();
  EXPECT_EQ(facts.result, 1);
  EXPECT_EQ(facts.currentSpeed, 2500);
  EXPECT_EQ(facts.externalClock, 2000);
  EXPECT_EQ(facts.upgrade, 17);
  EXPECT_EQ(facts.edx, 0xBFEBFBFF);
  EXPECT_EQ(SM_ProcessorFamily(), 0xB3u);
  EXPECT_EQ(SM_ProcessorCount(), 3u);
  EXPECT_EQ(SM_PopulatedProcessorCount(), 2u);
}

TEST(SMProcessor, implausibleClockAndUpgradeAreZero) {
  const SharedTable shared(table().add(test::Processor{.externalClock = 2001, .upgrade = 18}));
  EXPECT_EQ(processorFacts().externalClock, 0);
  EXPECT_EQ(processorFacts().upgrade, 0);
}

TEST(SMProcessor, edxIsOptional) {
  const SharedTable shared(table().add(test::Processor{.currentSpeed = 100}));
  unsigned short speed = 0;
  unsigned short clock = 0;
  unsigned short upgrade = 0;
  EXPECT_EQ(SM_Processor(&speed, &clock, &upgrade, nullptr), 1);
  EXPECT_EQ(speed, 100);
}

// --- memory controller ---

TEST(MemorySpecs, controllerGivesSlotsAndLimit) {
  EXPECT_EQ(memorySpecsOf(table().add(test::MemoryController{9, 4})), (MemorySpecs{1, 512, 4}));
}

TEST(MemorySpecs, controllerWithoutLimitGivesNone) {
  EXPECT_EQ(memorySpecsOf(table().add(test::MemoryController{0, 4})), (MemorySpecs{1, 0, 4}));
}

TEST(MemorySpecs, limitWithoutSlotsIsAnAnswer) {
  EXPECT_EQ(memorySpecsOf(table().add(test::MemoryController{5, 0})), (MemorySpecs{1, 32, 0}));
}

TEST(MemorySpecs, controllerWithoutLimitIsLiftedByTheBiggestModule) {
  EXPECT_EQ(memorySpecsOf(table()
                              .add(test::MemoryController{0, 2})
                              .add(test::MemoryModule{"J1", 0, 8})
                              .add(test::MemoryModule{"J2", 0, 7})
                              .add(test::MemoryModule{"J3", 0, 0x7F})),
            (MemorySpecs{1, 256, 2}));
}

TEST(MemorySpecs, controllersLimitStaysAboveSmallerModules) {
  EXPECT_EQ(
      memorySpecsOf(table().add(test::MemoryController{9, 2}).add(test::MemoryModule{"J1", 0, 8})),
      (MemorySpecs{1, 512, 2}));
}

TEST(MemorySpecs, exponentsBeyondThirtyOneAreNoLimit) {
  EXPECT_EQ(memorySpecsOf(table().add(test::MemoryController{31, 1})),
            (MemorySpecs{1, 0x80000000u, 1}));
  for (const uint8_t exponent : std::initializer_list<uint8_t>{32, 33, 64, 255}) {
    EXPECT_EQ(memorySpecsOf(table().add(test::MemoryController{exponent, 1})),
              (MemorySpecs{1, 0, 1}));
  }
}

// --- memory array ---

FirmwareTable arrayWith(uint32_t maximumKB, uint16_t slots, const std::vector<uint16_t>& sizesMB) {
  FirmwareTable structures = table().add(test::MemoryArray{maximumKB, slots});
  for (const uint16_t size : sizesMB) structures.add(test::MemoryDevice{.size = size});
  return structures;
}

TEST(MemorySpecs, evenShareOfAPowerOfTwoIsTheLimitWhenNoModuleIsLarger) {
  EXPECT_EQ(memorySpecsOf(arrayWith(4194304, 4, {512, 512})), (MemorySpecs{1, 1024, 4}));
  EXPECT_EQ(memorySpecsOf(arrayWith(4194304, 4, {1024})), (MemorySpecs{1, 1024, 4}));
}

TEST(MemorySpecs, wholeArrayIsTheLimitWhenAModuleExceedsTheShare) {
  EXPECT_EQ(memorySpecsOf(arrayWith(4194304, 4, {512, 2048})), (MemorySpecs{1, 4096, 4}));
}

TEST(MemorySpecs, arraySizeThatIsNoPowerOfTwoIsAlwaysShared) {
  EXPECT_EQ(memorySpecsOf(arrayWith(3145728, 2, {2048})), (MemorySpecs{1, 1536, 2}));
}

TEST(MemorySpecs, powerOfTwoWithUnevenShareIsTheLimitItself) {
  EXPECT_EQ(memorySpecsOf(arrayWith(4194304, 3, {512})), (MemorySpecs{1, 4096, 3}));
}

TEST(MemorySpecs, arrayWithoutSlotsHasNoLimit) {
  EXPECT_EQ(memorySpecsOf(arrayWith(4194304, 0, {512})), (MemorySpecs{0, 0, 0}));
}

TEST(MemorySpecs, moreSlotsThanMegabytesGiveNoShare) {
  EXPECT_EQ(memorySpecsOf(arrayWith(2 << 10, 4, {})), (MemorySpecs{1, 2, 4}));  // power of two
  EXPECT_EQ(memorySpecsOf(arrayWith(3 << 10, 4, {})), (MemorySpecs{1, 0, 4}));
}

TEST(MemorySpecs, controllersSlotsGoBeforeTheArrays) {
  EXPECT_EQ(
      memorySpecsOf(table().add(test::MemoryController{5, 2}).add(test::MemoryArray{4194304, 8})),
      (MemorySpecs{1, 2048, 2}));
  EXPECT_EQ(
      memorySpecsOf(table().add(test::MemoryController{5, 0}).add(test::MemoryArray{4194304, 8})),
      (MemorySpecs{1, 512, 8}));
}

TEST(MemorySpecs, largerControllerLimitStays) {
  EXPECT_EQ(
      memorySpecsOf(table().add(test::MemoryController{12, 4}).add(test::MemoryArray{4194304, 4})),
      (MemorySpecs{1, 4096, 4}));
}

TEST(BiggestModule, unknownSizesCountAsNothing) {
  const SharedTable shared(arrayWith(0, 0, {0xFFFF, 0, 0x8400, 512}));
  EXPECT_EQ(SM_getBiggestMemoryModule_17(), 512u * 1024);
}

TEST(BiggestModule, onlyUnknownDevicesGiveZero) {
  const SharedTable shared(arrayWith(0, 0, {0xFFFF, 0}));
  EXPECT_EQ(SM_getBiggestMemoryModule_17(), 0u);
}

TEST(BiggestModule, emptyModuleSocketsCountAsNothing) {
  const SharedTable shared(
      table().add(test::MemoryModule{"J1", 0, 0x7F}).add(test::MemoryModule{"J2", 0, 0x86}));
  EXPECT_EQ(SM_getBiggestMemoryModule_6(), 64u);
}

TEST(IsPowerOf2, exactlyOneBit) {
  EXPECT_FALSE(isPowerOf2(0));
  EXPECT_TRUE(isPowerOf2(1));
  EXPECT_TRUE(isPowerOf2(0x80000000));
  EXPECT_FALSE(isPowerOf2(3));
  EXPECT_FALSE(isPowerOf2(0xFFFFFFFF));
}

// --- hardware security ---

std::pair<unsigned, unsigned> securityOf(uint8_t settings) {
  const SharedTable shared(table().add(test::HardwareSecurity{settings}));
  unsigned short first = 77;
  unsigned short second = 77;
  EXPECT_EQ(SM_HWSecurity(&first, &second), 0);
  return {first, second};
}

// Neither mask nor cut: the group that reports the status maps what is above 3.
TEST(HardwareSecurity, shiftsKeepSignAndNeighbouringBits) {
  EXPECT_EQ(securityOf(0xC3), (std::pair<unsigned, unsigned>{0x3FF, 0x3FF0}));
  EXPECT_EQ(securityOf(0x80), (std::pair<unsigned, unsigned>{0x3FE, 0x3FE0}));
  EXPECT_EQ(securityOf(0x7F), (std::pair<unsigned, unsigned>{1, 0x1F}));
  EXPECT_EQ(securityOf(0x40), (std::pair<unsigned, unsigned>{1, 0x10}));
  EXPECT_EQ(securityOf(0x00), (std::pair<unsigned, unsigned>{0, 0}));
}

// --- traces ---

TEST(MemorySpecs, tracesItsSteps) {
  const test::CapturedTraces traces;
  memorySpecsOf(table()
                    .add(test::MemoryController{5, 4})
                    .add(test::MemoryModule{"J1", 0, 5})
                    .add(test::MemoryArray{4194304, 4})
                    .add(test::MemoryDevice{.size = 512}));
  for (const char* expected :
       {"hardware SMBIOS Table 5 is available", "hardware SMBIOS Table 16 is available",
        "hardware SMBIOS Table 17 is available", "hardware SMBIOS Table 6 is available",
        "Table 5: Max Module Size: 32 Slots: 4 Table 6 MaxModuleSize (calc) found: 32",
        "raw maxModuleSizeMB = 4096 MB, divided by slots: 1024", "biggestModule found (SMB): 512",
        "Table 16: Max Module Size: 1024 Slots: 4"}) {
    EXPECT_TRUE(traces.contains(expected)) << expected;
  }
}

}  // namespace
}  // namespace quenlor
