// Storage, Partition and Volume of recorded machines, compared with the text beside each recording.
// QUENLOR_UPDATE_GOLDEN=1 writes the texts anew; they are then to be reviewed like code.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "groups/modern/Collectors.h"
#include "tests/support/RecordedHost.h"
#include "tests/support/Rows.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kGolden = "drives.txt";

struct Group {
  uint32_t id;
  ModernCollector collect;
};
constexpr Group GROUPS[] = {{group::kStorage, collectStorage},
                            {group::kPartition, collectPartition},
                            {group::kVolume, collectVolume}};

fs::path recordings() { return fs::path(QUENLOR_SOURCE_DIR) / "tests/recorded"; }

void printRow(std::ostream& out, const velGroupDef& group, const test::RowValues& row) {
  out << group.name << "\n";
  for (const velAttribDef* attrib = group.attribs; attrib->id != kCatalogueEnd; ++attrib) {
    const std::string value = test::valueOf(row, attrib->id);
    if (value != "(absent)") out << "  " << attrib->name << ": " << value << "\n";
  }
}

// The three groups of one scan.
std::string collectAll() {
  std::ostringstream out;
  ModernScan scan{ScanSettings()};
  for (const Group& each : GROUPS) {
    const velGroupDef& group = *findGroup(MODERN_GROUPS_DEF, each.id);
    ModernTable table(group);
    each.collect(scan, table);
    const auto built = table.build();
    for (const test::RowValues& row : test::rowsOf(built.get())) printRow(out, group, row);
    out << group.name << " is " << outcomeWord(table.outcome().status());
    if (!table.outcome().reason().empty()) out << " (" << table.outcome().reason() << ")";
    out << "\n\n";
  }
  return out.str();
}

std::string contentOf(const fs::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

class RecordedDrivesTest : public ::testing::TestWithParam<std::string> {};

TEST_P(RecordedDrivesTest, machineHasTheRowsOfItsText) {
  const fs::path directory = recordings() / GetParam();
  test::RecordedHost machine(directory);
  const std::string rows = collectAll();
  EXPECT_EQ(machine.forbidden(), std::vector<std::string>{});
  EXPECT_EQ(machine.readTwice(), std::vector<std::string>{});
  EXPECT_EQ(machine.openDescriptors(), 0);
  if (std::getenv("QUENLOR_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(directory / kGolden, std::ios::binary) << rows;
  }
  EXPECT_EQ(rows, contentOf(directory / kGolden));
}

// Without root the kernel keeps some files to itself: fewer values, and never a crash.
TEST_P(RecordedDrivesTest, machineThatRefusesItsAttributesStillHasRows) {
  const test::TemporaryDirectory copy;
  fs::copy(recordings() / GetParam(), copy.path(), fs::copy_options::recursive);
  std::ofstream(copy.path("permissions"))
      << "user 1000\nrefuse EACCES /sys/devices/*/*/*/*/*/*/*/wwid\n"
         "unreadable EIO /sys/block/*/queue/rotational\nrefuse EACCES /run/udev/data\n";
  test::RecordedHost machine(copy.path());
  EXPECT_NE(collectAll().find("Storage is "), std::string::npos);
  EXPECT_EQ(machine.forbidden(), std::vector<std::string>{});
}

std::vector<std::string> machines() {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(recordings())) {
    const std::string name = entry.path().filename();
    if (name.starts_with("drives-")) names.push_back(name);
  }
  return names;
}

std::string testName(const ::testing::TestParamInfo<std::string>& machine) {
  std::string name = machine.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Machines, RecordedDrivesTest, ::testing::ValuesIn(machines()), testName);

// A shelf of namespaces and as many mounts, made here: too large to be kept.
void writeShelf(const test::TemporaryDirectory& directory, int count) {
  const std::string list = "{1-" + std::to_string(count) + "}";
  const std::string controller = "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/";
  std::ofstream tree(directory.path("tree.txt"));
  tree << "/sys/block/nvme0n" << list << " -> ../.." << controller << "nvme0n{}\n";
  for (const char* value :
       {"dev = 259:{}", "size = 8192", "ro = 0", "nsid = {}", "removable = 0"}) {
    tree << controller << "nvme0n" << list << "/" << value << "\n";
  }
  fs::create_directories(directory.path() / "root/proc/self");
  std::ofstream mounts(directory.path() / "root/proc/self/mountinfo");
  mounts << "20000 1 259:1 / / rw - ext4 /dev/nvme0n1 rw\n";
  for (int index = 2; index <= count; ++index) {
    mounts << index << " 20000 259:" << index << " / /srv/" << index << " rw - ext4 /dev/nvme0n"
           << index << " rw\n";
  }
}

TEST(RecordedDrives, threeHundredDrivesAreRowsInNaturalOrder) {
  const test::TemporaryDirectory directory;
  writeShelf(directory, 300);
  test::RecordedHost machine(directory.path());
  const std::string rows = collectAll();
  size_t position = 0;
  for (int index = 1; index <= 300; ++index) {
    const std::string row = "Index: " + std::to_string(index) + "\n";
    const std::string name = "Device Name: /dev/nvme0n" + std::to_string(index) + "\n";
    position = rows.find(row, position);
    ASSERT_NE(position, std::string::npos) << index;
    ASSERT_LT(rows.find(name, position), rows.find(row, position + 1)) << index;
  }
  EXPECT_EQ(machine.readTwice(), std::vector<std::string>{});
}

// Of all threads: readers have one of their own.
double processorSeconds() {
  timespec spent{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
  return static_cast<double>(spent.tv_sec) + static_cast<double>(spent.tv_nsec) / 1e9;
}

double secondsFor(int count) {
  const test::TemporaryDirectory directory;
  writeShelf(directory, count);
  test::RecordedHost machine(directory.path());
  const double start = processorSeconds();
  const std::string rows = collectAll();
  const double spent = processorSeconds() - start;
  EXPECT_NE(rows.find("FS Mount Point: /srv/" + std::to_string(count) + "\n"), std::string::npos);
  return spent;
}

TEST(RecordedDrives, timeGrowsWithTheNumberOfDrivesAndMounts) {
  secondsFor(10);
  const double few = secondsFor(300);
  const double many = secondsFor(3000);
  // Ten times the drives: a square law would take a hundred times as long.
  EXPECT_LT(many, 40 * few + 0.1) << few;
}

}  // namespace
}  // namespace quenlor
