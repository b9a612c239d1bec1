#include "readers/storage/RaidStatus.h"

#include <algorithm>
#include <string_view>

#include "host/Handles.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/StorageText.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/RaidStatus.cpp";
constexpr const char* kDac960StatusFile = "/proc/rd/c0/current_status";
constexpr const char* kCompaqFile = "/proc/driver/cciss/cciss0";
constexpr const char* kMountCommand = "/bin/mount";
constexpr const char* kCcissDriver = "cciss";
constexpr std::string_view kBlockCount = "nr_blocks";
constexpr size_t kLineSize = 256;

using Lines = std::vector<std::string>;

bool contains(const std::string& line, std::string_view text) {
  return line.find(text) != std::string::npos;
}

Lines readFile(const char* path) {
  const FileStream file = openFile(path);
  return readLines(file.get(), kLineSize);
}

// "Configuring Mylex AcceleRAID 352 PCI RAID Controller"
void parseController(const std::string& line, RAIDInfo& info) {
  const auto tokens = splitTokens(line, " \n");
  info.controller = tokenAt(tokens, 1);
  if (tokens.size() < 3) return;
  const auto offset = static_cast<size_t>(tokens[2].data() - line.data());
  info.model = trimmed(line.substr(offset));
}

// "/dev/rd/c0d0: RAID-5, Online, 71122560 blocks"
RAIDLogicalDrive parseLogicalDrive(const std::string& line) {
  const auto tokens = splitTokens(line, " ,\n");
  std::string_view name = tokenAt(tokens, 0);
  if (name.ends_with(':')) name.remove_suffix(1);
  return {std::string(name), leadingNumber(tokenAt(tokens, 3))};
}

// "cciss/c0d0: blksz=512 nr_blocks=71122560"; the block size may as well stand behind. 0 without a
// number.
uint64_t blockCount(const std::string& line) {
  std::string_view rest(line);
  rest.remove_prefix(rest.find(kBlockCount) + kBlockCount.size());
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
  return rest.starts_with('=') ? leadingNumber(rest.substr(1)) : 0;
}

}  // namespace

RAIDInfo parseDac960Status(const Lines& lines) {
  RAIDInfo info;
  for (const std::string& line : lines) {
    if (contains(line, "RAID Controller")) parseController(line, info);
    if (contains(line, "/dev/rd")) info.drives.push_back(parseLogicalDrive(line));
  }
  return info;
}

std::vector<unsigned long> parseCompaqVolumes(const Lines& lines) {
  std::vector<unsigned long> sizes;
  for (const std::string& line : lines) {
    if (contains(line, kBlockCount)) sizes.push_back(blockCount(line) >> 10);
  }
  return sizes;
}

std::vector<std::string> parseCcissMounts(const Lines& lines) {
  const TraceFunction at{kSourcePath, "parseCcissMounts()"};
  std::vector<std::string> disks;
  for (const std::string& line : lines) {
    if (!contains(line, kCcissDriver)) continue;
    const std::string disk = line.substr(0, line.find_first_of("p\n"));
    if (std::find(disks.begin(), disks.end(), disk) == disks.end()) {
      disks.push_back(disk);
    } else {
      getCcLogHw()->traceMAX(at(), "hardware %s %s", disk.c_str(), "is already added");
    }
  }
  return disks;
}

int getLogicalDAC960DriveNum() {
  return static_cast<int>(parseDac960Status(readFile(kDac960StatusFile)).drives.size());
}

int getFromCurrentStatus(RAIDInfo* info) {
  const FileStream file = openFile(kDac960StatusFile);
  if (!file) return 0;
  *info = parseDac960Status(readLines(file.get(), kLineSize));
  return 1;
}

int getCompaqSmartDiskNum() {
  return static_cast<int>(parseCompaqVolumes(readFile(kCompaqFile)).size());
}

unsigned long getCompaqSmartDiskSize(int disk) {
  const std::vector<unsigned long> sizes = parseCompaqVolumes(readFile(kCompaqFile));
  const auto index = static_cast<size_t>(disk);
  return disk >= 0 && index < sizes.size() ? sizes[index] : 0;
}

std::vector<std::string> getMountedCcissDisks() {
  const CommandStream mounts(kMountCommand);
  return parseCcissMounts(readLines(mounts.get(), kLineSize, kCcissDriver));
}

}  // namespace quenlor
