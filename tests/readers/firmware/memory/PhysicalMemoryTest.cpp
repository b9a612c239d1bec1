#include "readers/firmware/memory/PhysicalMemory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

std::string countingBytes(size_t size) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 251);
  return bytes;
}

unsigned char byteAt(const void* mapped, size_t offset) {
  return static_cast<const unsigned char*>(mapped)[offset];
}

class PhysicalMemoryTest : public testing::Test {
 protected:
  void* map(const char* path, uint64_t offset, size_t length, int alignment = kPageAligned,
            int mode = kReadOnly) {
    return slm_file_mmap(path, offset, length, alignment, mode, &m_handle);
  }

  test::FakeHost m_machine;
  slm_handle m_handle = nullptr;
};

TEST_F(PhysicalMemoryTest, alignedAddressStaysInBothDirections) {
  EXPECT_EQ(slm_page_align(0x2000, kAlignDown), 0x2000u);
  EXPECT_EQ(slm_page_align(0x2000, 0), 0x2000u);
  EXPECT_EQ(slm_page_align(0, kAlignDown), 0u);
}

TEST_F(PhysicalMemoryTest, otherAddressesGoToTheirPagesStartOrToTheNextPage) {
  EXPECT_EQ(slm_page_align(0x2001, kAlignDown), 0x2000u);
  EXPECT_EQ(slm_page_align(0x2001, 0), 0x3000u);
  EXPECT_EQ(slm_page_align(0x2FFF, 2), 0x3000u);
  EXPECT_EQ(slm_page_off(0x2FFF), 0xFFFu);
}

TEST_F(PhysicalMemoryTest, pageSizeIsTheMachines) {
  m_machine.pageSize = 16384;
  EXPECT_EQ(slm_get_page_size(), 16384u);
  EXPECT_EQ(slm_page_align(0x5001, kAlignDown), 0x4000u);
}

TEST_F(PhysicalMemoryTest, alignedMappingStartsAtThePage) {
  m_machine.files["/data"] = countingBytes(3 * 4096);
  const void* mapped = map("/data", 4096 + 10, 100);
  ASSERT_NE(mapped, kMapFailed);
  EXPECT_EQ(byteAt(mapped, 10), (4096 + 10) % 251);
  EXPECT_EQ(slm_file_munmap(&m_handle), 0);
  EXPECT_EQ(m_handle, nullptr);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
}

TEST_F(PhysicalMemoryTest, unalignedMappingOfAnOddOffsetFails) {
  m_machine.files["/data"] = countingBytes(3 * 4096);
  EXPECT_EQ(map("/data", 4096 + 10, 100, 0), kMapFailed);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
}

TEST_F(PhysicalMemoryTest, missingFileIsNotMapped) {
  m_machine.directories["/"] = {};
  EXPECT_EQ(map("/missing/file", 0, 100), kMapFailed);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
}

TEST_F(PhysicalMemoryTest, rangePastARegularFilesEndFails) {
  m_machine.files["/data"] = countingBytes(5000);
  EXPECT_EQ(map("/data", 4096, 905), kMapFailed);
  EXPECT_EQ(map("/data", 8192, 1), kMapFailed);
  EXPECT_EQ(map("/data", ~uint64_t{0} - 4095, 8192), kMapFailed);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
  ASSERT_NE(map("/data", 4096, 904), kMapFailed);
  EXPECT_EQ(slm_file_munmap(&m_handle), 0);
}

TEST_F(PhysicalMemoryTest, unmappingNothingFails) { EXPECT_EQ(slm_file_munmap(&m_handle), -1); }

TEST_F(PhysicalMemoryTest, failedUnmappingStillClosesTheFile) {
  m_machine.files["/data"] = countingBytes(4096);
  void* mapped = map("/data", 0, 100);
  ASSERT_EQ(m_machine.munmap(mapped, 100), 0);  // so that there is nothing to unmap any more
  EXPECT_EQ(slm_file_munmap(&m_handle), -1);
  EXPECT_EQ(m_handle, nullptr);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
}

TEST_F(PhysicalMemoryTest, missingPhysicalMemoryIsNotEvenOpened) {
  EXPECT_EQ(slm_phys_mmap(0xF0000, 0xFFFFE, kPageAligned, &m_handle), kMapFailed);
  EXPECT_TRUE(m_machine.opened.empty());
  EXPECT_EQ(m_machine.files.count("/dev/mem"), 0u);
}

TEST_F(PhysicalMemoryTest, deviceIsMappedWithoutARangeCheck) {
  m_machine.devices["/dev/mem"].map = [](size_t length, off_t offset) {
    return std::string(length, offset == 0xF0000 ? 'x' : '-');
  };
  const void* mapped = slm_phys_mmap(0xF0000, 0xFFFFE, kPageAligned, &m_handle);
  ASSERT_NE(mapped, kMapFailed);
  EXPECT_EQ(byteAt(mapped, 0), 'x');
  EXPECT_EQ(slm_phys_munmap(&m_handle), 0);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
}

TEST_F(PhysicalMemoryTest, deniedPhysicalMemoryFails) {
  m_machine.devices["/dev/mem"].deniedAccessModes = {O_RDONLY, O_RDWR};
  EXPECT_EQ(slm_phys_mmap(0xF0000, 0xFFFFE, kPageAligned, &m_handle), kMapFailed);
}

// On the real file system: read-write mode creates the file and writes through.
TEST(PhysicalMemoryOnDisk, writableMappingReachesTheFile) {
  const std::string path = testing::TempDir() + "quenlor-mapping-" + std::to_string(getpid());
  std::filesystem::remove(path);
  slm_handle handle = nullptr;
  EXPECT_EQ(slm_file_mmap(path.c_str(), 0, 4096, 0, 1, &handle), kMapFailed);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0137, 0u);  // nothing beyond 0640
  std::filesystem::resize_file(path, 4096);
  void* mapped = slm_file_mmap(path.c_str(), 0, 4096, 0, 1, &handle);
  ASSERT_NE(mapped, kMapFailed);
  std::memcpy(mapped, "written", 7);
  EXPECT_EQ(slm_file_munmap(&handle), 0);
  mapped = slm_file_mmap(path.c_str(), 2, 5, kPageAligned, kReadOnly, &handle);
  ASSERT_NE(mapped, kMapFailed);
  EXPECT_EQ(std::memcmp(mapped, "written", 7), 0);
  EXPECT_EQ(slm_file_munmap(&handle), 0);
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace quenlor
