#include "listing/ModernEntryBuilder.h"

#include <charconv>
#include <cstdio>

#include "base/Utf8.h"

namespace quenlor {
namespace {

constexpr const char* kIndex = "Index";
constexpr const char* kComplete = "complete";

std::string valueOf(const RowValues& row, const char* name) {
  const auto found = row.find(name);
  return found == row.end() ? std::string() : found->second;
}

std::vector<RowValues> rows(const std::vector<NVPair>& pairs) { return rowsOf(pairs, kIndex); }

bool isCard(const RowValues& adapter) {
  const std::string kind = valueOf(adapter, "Kind");
  return kind == "physical" || kind == "wireless";
}

bool isBuiltIn(const RowValues& drive) {
  const std::string medium = valueOf(drive, "Medium");
  return (medium == "ssd" || medium == "disk") && valueOf(drive, "Removable") != "Y";
}

uint64_t toBytes(const std::string& text) {
  uint64_t bytes = 0;
  std::from_chars(text.data(), text.data() + text.size(), bytes);
  return bytes;
}

// A person who reads the list sees what may be missing in it.
void nameIncompleteGroups(const std::vector<RowValues>& results) {
  for (const RowValues& result : results) {
    const std::string status = valueOf(result, "Status");
    if (status == kComplete) continue;
    const std::string reason = valueOf(result, "Reason");
    std::fprintf(stderr, "quenlor: %s: %s%s%s\n", cleanUtf8(valueOf(result, "Group")).c_str(),
                 status.c_str(), reason.empty() ? "" : ": ", cleanUtf8(reason).c_str());
  }
}

}  // namespace

std::vector<RowValues> rowsOf(const std::vector<NVPair>& pairs, const std::string& first) {
  std::vector<RowValues> rows;
  for (const auto& [name, value] : pairs) {
    if (name == first) rows.emplace_back();
    if (!rows.empty()) rows.back().emplace(name, value);
  }
  return rows;
}

std::optional<uint64_t> fixedDriveGigabytes(const std::vector<RowValues>& drives) {
  constexpr uint64_t kGigabyte = 1u << 30;
  std::optional<uint64_t> total;
  for (const RowValues& drive : drives) {
    if (isBuiltIn(drive)) total = total.value_or(0) + toBytes(valueOf(drive, "Size Bytes"));
  }
  return total ? std::optional(*total / kGigabyte) : std::nullopt;
}

int ModernEntryBuilder::BuildAllEntries(int) {
  clear();
  addValues("cpu_mhertz", retrieve("Processor", {"MaxClockSpeed"}), "MaxClockSpeed");
  addValues("scandate", retrieve("Scan Info", {"Scan Date"}), "Scan Date");
  addCards();
  const auto system =
      retrieve("Operating System", {"Major Version", "Minor Version", "OS Kernel Mode"});
  addSimple("osType").addEntryAttribute("LINUX");
  addOsVersion(system);
  addHwPlatform(system);
  addRam(retrieve("Memory", {"Total Physical"}));
  addDrives();
  nameIncompleteGroups(rowsOf(retrieve("Scan Result", {"Group", "Status", "Reason"}), "Group"));
  return count();
}

void ModernEntryBuilder::addCards() {
  const auto adapters =
      rows(retrieve("Network Adapter", {kIndex, "Permanent Address", "Current Address", "Kind"}));
  const auto names = retrieve("UNIX System Params", {"Computer Alias"});
  SimpleEntry& addresses = addSimple("guid");
  SimpleEntry& hosts = addSimple("hostname");
  for (const RowValues& adapter : adapters) {
    if (!isCard(adapter)) continue;
    const std::string permanent = valueOf(adapter, "Permanent Address");
    addresses.addEntryAttribute(permanent.empty() ? valueOf(adapter, "Current Address")
                                                  : permanent);
    hosts.addEntryAttribute(names.empty() ? std::string() : names.front().second);
  }
}

void ModernEntryBuilder::addDrives() {
  const auto drives = rows(retrieve("Storage", {kIndex, "Size Bytes", "Medium", "Removable"}));
  if (const auto gigabytes = fixedDriveGigabytes(drives)) {
    addSimple("hdd_gbytes").addEntryAttribute(std::to_string(*gigabytes));
  }
}

}  // namespace quenlor
