// Whole scans of machines that are too large to be kept: they are written when their test begins.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/recorded/RecordedScan.h"
#include "tests/support/RecordedHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

constexpr size_t kGroups = 27;

const std::string kLimits =
    "hwscanner.group_limit_ms = " + std::to_string(10000 * QUENLOR_TEST_PATIENCE) +
    "\nhwscanner.scan_limit_ms = " + std::to_string(30000 * QUENLOR_TEST_PATIENCE) + "\n";

// Machines that are written into a directory of their own.
class LargeMachine : public testing::Test {
 protected:
  LargeMachine() {
    const std::string recordings = QUENLOR_SOURCE_DIR "/tests/recorded/";
    m_directory.write("like",
                      recordings + "offline-cores\n" + recordings + "shared/running-system\n");
    m_directory.write("permissions", "user 0\n");
  }

  void write(const std::string& name, const std::string& text) { m_directory.write(name, text); }

  // A scan that keeps what every scan has to keep; its rows.
  std::vector<DocumentRow> scan() {
    const RecordedHost machine(m_directory.path());
    const ScanOutput output = scanHost(Document::kXml, kLimits);
    EXPECT_EQ(output.status, 0) << output.errors;
    EXPECT_EQ(machine.forbidden(), std::vector<std::string>{});
    EXPECT_EQ(machine.readTwice(), std::vector<std::string>{});
    m_documents.push_back(output.document);
    return rowsOfDocument(output.document);
  }

  const std::vector<std::string>& documents() const { return m_documents; }

 private:
  TemporaryDirectory m_directory;
  std::vector<std::string> m_documents;
};

std::vector<DocumentRow> rowsOf(const std::vector<DocumentRow>& rows, const std::string& group) {
  std::vector<DocumentRow> found;
  std::copy_if(rows.begin(), rows.end(), std::back_inserter(found),
               [&](const DocumentRow& row) { return row.group == group; });
  return found;
}

std::set<std::string> valuesOf(const std::vector<DocumentRow>& rows, const std::string& name) {
  std::set<std::string> values;
  for (const DocumentRow& row : rows) {
    if (const auto found = row.values.find(name); found != row.values.end()) {
      values.insert(found->second);
    }
  }
  return values;
}

std::string statusOf(const std::vector<DocumentRow>& rows, const std::string& group) {
  for (const DocumentRow& row : rowsOf(rows, "ScanResult")) {
    if (row.values.at("Group") == group) return row.values.at("Status");
  }
  return "(absent)";
}

// --- 13,000 PCI devices: 51 buses full of functions ---

TEST_F(LargeMachine, thirteenThousandPciDevicesAreARowEach) {
  constexpr size_t kBuses = 51;
  std::string tree;
  for (size_t function = 0; function < kBuses * 256; ++function) {
    char address[16];
    std::snprintf(address, sizeof address, "0001:%02zx:%02zx.%zx", function >> 8,
                  function >> 3 & 31, function & 7);
    const std::string path = std::string("/sys/devices/pci0001:00/") + address;
    tree += std::string("/sys/bus/pci/devices/") + address + " -> ../../../devices/pci0001:00/" +
            address + "\n" + path + "/uevent = PCI_CLASS=20000\\nPCI_ID=1AF4:1041\n" + path +
            "/revision = 0x01\n";
  }
  write("tree.txt", tree);
  const auto rows = scan();
  const auto devices = rowsOf(rows, "PCIDevice");
  ASSERT_EQ(devices.size(), kBuses * 256);
  EXPECT_EQ(devices.front().values.at("Address"), "0001:00:00.0");
  EXPECT_EQ(devices.back().values.at("Address"), "0001:32:1f.7");
  EXPECT_EQ(valuesOf(devices, "Address").size(), devices.size());
  EXPECT_EQ(valuesOf(devices, "Class"), std::set<std::string>{"020000"});
  EXPECT_EQ(statusOf(rows, "PCI Device"), "complete");
  EXPECT_EQ(schemaErrors(documents()), "");
}

// --- 300 drives behind one adapter, every tenth of which fails in its own way ---

std::string driveName(size_t number) {
  std::string name;
  for (size_t rest = number + 1; rest != 0; rest = (rest - 1) / 26) {
    name.insert(name.begin(), static_cast<char>('a' + (rest - 1) % 26));
  }
  return "sd" + name;
}

std::string driveLines(size_t number) {
  const std::string unit = "0:0:" + std::to_string(number) + ":0";
  const std::string path =
      "/sys/devices/pci0000:00/0000:03:00.0/host0/target0:0:" + std::to_string(number) + "/" + unit;
  const std::string disk = path + "/block/" + driveName(number);
  const bool isOffline = number % 10 == 3;
  const bool lost = number % 10 == 7;  // answers no more: neither a size nor an identity
  std::string lines = "/sys/bus/scsi/devices/" + unit + " -> ../../.." + path.substr(4) + "\n" +
                      "/sys/block/" + driveName(number) + " -> .." + disk.substr(4) + "\nin " +
                      path +
                      "\ntype = 0\nvendor = SEAGATE \nmodel = ST18000NM004J   \nrev = E004\n" +
                      "state = " + (isOffline ? "offline" : "running") + "\n";
  if (!lost) lines += "wwid = naa.5000c500d" + std::to_string(1000000 + number) + "\n";
  lines += "in " + disk + "\ndev = " + std::to_string(8 + number / 16) + ":" +
           std::to_string(number % 16 * 16) + "\nsize = " + (lost ? "0" : "35156656128") +
           "\nro = 0\nremovable = 0\nqueue/rotational = 1\nqueue/logical_block_size = 512\n" +
           "queue/physical_block_size = 4096\n";
  return lines;
}

TEST_F(LargeMachine, threeHundredDrivesAreARowEachInTheirNaturalOrder) {
  constexpr size_t kDrives = 300;
  std::string tree =
      "/sys/class/scsi_host/host0/proc_name = mpt3sas\n/sys/class/sas_host/host0/\n"
      "/proc/self/mountinfo = 20 1 8:0 / / rw - xfs /dev/sda rw\n";
  for (size_t number = 0; number < kDrives; ++number) tree += driveLines(number);
  write("tree.txt", tree);
  const auto rows = scan();
  const auto drives = rowsOf(rows, "Storage");
  ASSERT_EQ(drives.size(), kDrives);
  for (size_t number = 0; number < kDrives; ++number) {
    SCOPED_TRACE(number);
    const auto& values = drives[number].values;
    EXPECT_EQ(values.at("DeviceName"), "/dev/" + driveName(number));
    EXPECT_EQ(values.at("State"), number % 10 == 3 ? "offline" : "running");
    EXPECT_EQ(values.count("SizeBytes"), number % 10 == 7 ? 0u : 1u);
    EXPECT_EQ(values.at("Location"), "0000:03:00.0/0:" + std::to_string(number) + ":0");
  }
  EXPECT_EQ(valuesOf(drives, "ID").size(), kDrives);
  EXPECT_EQ(schemaErrors(documents()), "");
}

// --- firmware tables: every type at every length, with fields of all kinds of bytes ---

std::string structureLines(unsigned type, unsigned length, const char* byte) {
  std::string lines = "structure " + std::to_string(type) + "\n";
  if (length > 4) {
    lines += "04 byte";
    for (unsigned at = 4; at < length; ++at) lines += std::string(" ") + byte;
    lines += "\n";
  }
  return lines + "string first text\nstring second text\n";
}

// All types of the standard, and some of makers.
std::string tableLines(unsigned length, const char* byte) {
  std::string lines = "version 3.7\n";
  for (unsigned type = 0; type <= 50; ++type) lines += structureLines(type, length, byte);
  for (const unsigned type : {126u, 128u, 221u, 255u}) lines += structureLines(type, length, byte);
  return lines + "structure 127\n";
}

TEST_F(LargeMachine, structuresOfEveryTypeAndLengthGiveAWholeDocument) {
  for (const char* byte : {"01", "ff"}) {
    for (unsigned length = 4; length <= 0x60; ++length) {
      SCOPED_TRACE(byte + std::string(" at length ") + std::to_string(length));
      write("firmware.txt", tableLines(length, byte));
      const auto rows = scan();
      const auto results = rowsOf(rows, "ScanResult");
      EXPECT_EQ(results.size(), kGroups);
      const auto statuses = valuesOf(results, "Status");
      EXPECT_EQ(statuses.count("failed") + statuses.count("timed out"), 0u);
    }
  }
  EXPECT_EQ(schemaErrors(documents()), "");
}

}  // namespace
}  // namespace quenlor::test
