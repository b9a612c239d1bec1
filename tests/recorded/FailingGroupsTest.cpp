// Whole scans of a recorded machine on which one group cannot be collected: all the others are in
// the document as they always are, and Scan Result says what happened.
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <new>
#include <set>
#include <sstream>
#include <stdexcept>

#include "tests/recorded/RecordedScan.h"
#include "tests/support/RecordedHost.h"

namespace quenlor::test {
namespace {

const std::string kMachine = QUENLOR_SOURCE_DIR "/tests/recorded/laptop-docked";

enum class Fault { kHangs, kThrows, kRunsOutOfMemory, kIsRefused, kIsAbsent };

// The recorded machine, of which one directory cannot be listed.
class FaultyHost : public RecordedHost {
 public:
  FaultyHost(Fault fault, std::string directory)
      : RecordedHost(kMachine), m_fault(fault), m_directory(std::move(directory)) {}
  ~FaultyHost() override {
    std::unique_lock lock(m_mutex);
    m_isOver = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_hanging == 0; });
  }
  FaultyHost(const FaultyHost&) = delete;
  FaultyHost& operator=(const FaultyHost&) = delete;

  bool listEntries(const char* path, std::vector<DirectoryEntry>& entries) override {
    if (path != m_directory) return RecordedHost::listEntries(path, entries);
    switch (m_fault) {
      case Fault::kHangs:
        hang();
        [[fallthrough]];
      case Fault::kThrows:
        throw std::runtime_error("broken");
      case Fault::kRunsOutOfMemory:
        throw std::bad_alloc();
      case Fault::kIsRefused:
        errno = EACCES;
        return false;
      case Fault::kIsAbsent:
        break;
    }
    errno = ENOENT;
    return false;
  }

 private:
  void hang() {
    std::unique_lock lock(m_mutex);
    ++m_hanging;
    m_changed.wait(lock, [this] { return m_isOver; });
    --m_hanging;
    m_changed.notify_all();
  }

  const Fault m_fault;
  const std::string m_directory;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  int m_hanging = 0;
  bool m_isOver = false;
};

std::vector<DocumentRow> goldenRows() {
  std::ostringstream text;
  text << std::ifstream(kMachine + "/golden.xml", std::ios::binary).rdbuf();
  return rowsOfDocument(text.str());
}

// "USB Device" is the element USBDevice.
std::string elementOf(std::string group) {
  std::erase(group, ' ');
  return group;
}

// Without rows of these groups, and without what Scan Result says of them.
std::vector<DocumentRow> without(const std::set<std::string>& groups,
                                 std::vector<DocumentRow> rows) {
  std::erase_if(rows, [&](const DocumentRow& row) {
    if (row.group == "ScanResult") return groups.count(row.values.at("Group")) != 0;
    return std::any_of(groups.begin(), groups.end(),
                       [&](const std::string& group) { return elementOf(group) == row.group; });
  });
  return rows;
}

DocumentRow resultOf(const std::vector<DocumentRow>& rows, const std::string& group) {
  for (const DocumentRow& row : rows) {
    if (row.group == "ScanResult" && row.values.at("Group") == group) return row;
  }
  return {};
}

DocumentRow result(const std::string& group, const std::string& status, const std::string& reason) {
  return {"ScanResult",
          {{"Group", group},
           {"Rows", "0"},
           {"Milliseconds", "0"},
           {"Status", status},
           {"Reason", reason}}};
}

std::vector<DocumentRow> scan(const FaultyHost& machine, const std::string& configuration = {}) {
  const ScanOutput output = scanHost(Document::kXml, configuration);
  EXPECT_EQ(output.status, 0) << output.errors;
  EXPECT_EQ(schemaErrors({output.document}), "");
  EXPECT_EQ(machine.forbidden(), std::vector<std::string>{});
  return rowsOfDocument(output.document);
}

struct FaultRow {
  Fault fault;
  const char* status;
  const char* reason;
};

// For the groups that are well, a sanitizer's slow program included.
const std::string kShortLimit =
    "hwscanner.group_limit_ms = " + std::to_string(300 * QUENLOR_TEST_PATIENCE) + "\n";

constexpr FaultRow FAULTS[] = {
    {Fault::kHangs, "timed out", "group: timed out"},
    {Fault::kThrows, "failed", "group: broken"},
    {Fault::kRunsOutOfMemory, "failed", "group: out of memory"},
    {Fault::kIsRefused, "refused", "batteries: refused"},
    {Fault::kIsAbsent, "no source", "batteries: not shown by this kernel"},
};

TEST(FailingGroups, theOthersAreAsAlways) {
  const auto others = without({"Battery"}, goldenRows());
  ASSERT_GT(others.size(), 50u);
  for (const FaultRow& row : FAULTS) {
    SCOPED_TRACE(row.reason);
    const FaultyHost machine(row.fault, "/sys/class/power_supply");
    const auto rows = scan(machine, kShortLimit);
    EXPECT_EQ(without({"Battery"}, rows), others);
    EXPECT_EQ(resultOf(rows, "Battery"), result("Battery", row.status, row.reason));
  }
}

TEST(FailingGroups, everyGroupThatNeedsAFailingReaderSaysSo) {
  const std::set<std::string> groups{"Storage", "Partition", "Volume"};
  const auto others = without(groups, goldenRows());
  for (const auto& [fault, status, reason] :
       {FaultRow{Fault::kHangs, "timed out", "block devices: timed out"},
        FaultRow{Fault::kThrows, "failed", "block devices: broken"},
        FaultRow{Fault::kRunsOutOfMemory, "failed", "block devices: out of memory"}}) {
    SCOPED_TRACE(reason);
    const FaultyHost machine(fault, "/sys/block");
    const auto rows = scan(machine, kShortLimit);
    EXPECT_EQ(without(groups, rows), others);
    EXPECT_EQ(resultOf(rows, "Storage"), result("Storage", status, reason));
    EXPECT_EQ(resultOf(rows, "Volume"), result("Volume", status, reason));
    // Mounts are told without the devices below them.
    EXPECT_EQ(resultOf(rows, "Partition").values.at("Status"), status);
    EXPECT_EQ(resultOf(rows, "Partition").values.at("Reason"), reason);
    EXPECT_EQ(resultOf(rows, "Partition").values.at("Rows"), "4");
  }
}

TEST(FailingGroups, whatTheScansLimitCutsOffHasTimedOutAndTheRestHolds) {
  const FaultyHost machine(Fault::kHangs, "/sys/class/drm");
  const auto rows = scan(machine, "hwscanner.group_limit_ms = 60000\nhwscanner.scan_limit_ms = " +
                                      std::to_string(3000 * QUENLOR_TEST_PATIENCE) + "\n");
  const std::set<std::string> cut{"Display", "Battery", "Cache", "Slot", "Power Supply"};
  EXPECT_EQ(without(cut, rows), without(cut, goldenRows()));
  for (const std::string& group : cut) {
    EXPECT_EQ(resultOf(rows, group), result(group, "timed out", "group: timed out"));
  }
}

TEST(FailingGroups, mifAndListAreWholeToo) {
  for (const Document kind : {Document::kMif, Document::kList}) {
    const FaultyHost machine(Fault::kThrows, "/sys/class/power_supply");
    const ScanOutput output = scanHost(kind);
    EXPECT_EQ(output.status, 0) << output.errors;
    if (kind == Document::kMif) {
      EXPECT_NE(output.document.find("{\"Battery\",0,0,\"failed\",\"group: broken\"}"),
                std::string::npos);
      EXPECT_TRUE(output.document.ends_with("End Component\n"));
    } else {
      EXPECT_NE(output.document.find("hdd_gbytes:\t933"), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace quenlor::test
