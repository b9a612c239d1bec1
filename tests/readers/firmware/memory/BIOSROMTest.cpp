#include "readers/firmware/memory/BIOSROM.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

constexpr int kIgnoredSize = -7;

class BIOSROMTest : public testing::Test {
 protected:
  // The bytes read, or "failed".
  std::string read(uint64_t address, size_t count) {
    std::string bytes(count, '?');
    const int result = BIOSROM::getPhysMem(bytes.data(), kIgnoredSize, address, count);
    if (result != 0) {
      EXPECT_EQ(result, 37);
      return "failed";
    }
    return bytes;
  }
  ~BIOSROMTest() override { EXPECT_EQ(m_machine.openDescriptors(), 0); }

  test::FakeHost m_machine;
};

TEST_F(BIOSROMTest, copiesFromTheMiddleOfAPage) {
  m_machine.files["/dev/mem"] = std::string(5000, '-') + "firmware" + std::string(100, '-');
  EXPECT_EQ(read(5000, 8), "firmware");
}

TEST_F(BIOSROMTest, copiesAcrossPages) {
  m_machine.files["/dev/mem"] = std::string(4094, '-') + "firmware";
  EXPECT_EQ(read(4094, 8), "firmware");
}

TEST_F(BIOSROMTest, missingMemoryFailsAndIsNotCreated) {
  EXPECT_EQ(read(0, 8), "failed");
  EXPECT_EQ(m_machine.files.count("/dev/mem"), 0u);
}

TEST_F(BIOSROMTest, rangePastTheFilesEndFails) {
  m_machine.files["/dev/mem"] = std::string(5000, '-');
  EXPECT_EQ(read(4999, 2), "failed");
  EXPECT_EQ(read(0xFFFFFFFF, 0xFFFF), "failed");
  EXPECT_EQ(read(4999, 1), "-");
}

TEST_F(BIOSROMTest, memoryThatCannotBeMappedIsRead) {
  m_machine.files["/dev/mem"] = std::string(100, '-') + "firmware";
  m_machine.pageSize = 1;  // so that the address is not aligned, and mmap refuses it
  EXPECT_EQ(read(100, 8), "firmware");
  EXPECT_EQ(m_machine.opened, (std::vector<std::string>{"/dev/mem", "/dev/mem"}));
}

TEST_F(BIOSROMTest, deviceThatRefusesBothFails) {
  auto& memory = m_machine.devices["/dev/mem"];
  memory.map = [](size_t, off_t) { return std::optional<std::string>(); };
  memory.read = [](void*, size_t) {
    errno = EPERM;
    return ssize_t{-1};
  };
  EXPECT_EQ(read(0x7FFF0000, 16), "failed");
}

TEST_F(BIOSROMTest, noBytesAreAlwaysThere) {
  m_machine.files["/dev/mem"] = std::string(5000, '-');
  EXPECT_EQ(read(4096, 0), "");  // no mapping of length 0 exists; the stream has them
  EXPECT_EQ(read(4097, 0), "");
}

// What all records of these calls have ahead of their text.
std::vector<std::string> recordsOf(const std::vector<std::pair<const char*, const char*>>& traced) {
  std::vector<std::string> records;
  for (const auto& [kind, text] : traced) {
    records.push_back(std::string(kind) + " com/BIOSROM.cpp getPhysMem() hardware " + text);
  }
  return records;
}

TEST_F(BIOSROMTest, tracesItsSteps) {
  m_machine.files["/dev/mem"] = std::string(5000, '-');
  const test::CapturedTraces traces;
  read(0, 4);
  EXPECT_EQ(traces.texts(), recordsOf({{"MID entry", "getPhysMem"},
                                       {"MAX", "Copy the required chunk"},
                                       {"MAX", "munmap()"},
                                       {"MAX", "Close /dev/mem"},
                                       {"MID exit", "return 0"}}));
}

TEST_F(BIOSROMTest, tracesMissingMemoryAsAFailure) {
  const test::CapturedTraces traces;
  read(0, 4);
  EXPECT_EQ(traces.texts(), recordsOf({{"MID entry", "getPhysMem"},
                                       {"MIN", "failed to open memory"},
                                       {"MID exit", "return 37"}}));
}

TEST_F(BIOSROMTest, tracesAFailedMappingAsAFailure) {
  m_machine.devices["/dev/mem"].map = [](size_t, off_t) { return std::optional<std::string>(); };
  const test::CapturedTraces traces;
  read(0, 4);
  EXPECT_EQ(traces.texts(), recordsOf({{"MID entry", "getPhysMem"},
                                       {"MIN", "Unable to mmap memory"},
                                       {"MID exit", "return 37"}}));
}

}  // namespace
}  // namespace quenlor
