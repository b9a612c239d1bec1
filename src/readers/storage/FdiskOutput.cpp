#include "readers/storage/FdiskOutput.h"

#include <algorithm>
#include <cstring>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/ScsiNodes.h"
#include "readers/storage/StorageText.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/FdiskOutput.cpp";
constexpr const char* kFdiskCommand = "/sbin/fdisk -l";
constexpr size_t kLineSize = 256;
constexpr const char* kBlankAndNewline = " \n";

using Lines = std::vector<std::string>;
using Tokens = std::vector<std::string_view>;

// Form A: size of one unit of the "Units = cylinders of 16065 * 512 bytes" line; 0 without one.
uint64_t bytesPerCylinder(Lines::const_iterator line, Lines::const_iterator end) {
  if (line == end) return 0;
  const Tokens tokens = splitTokens(*line, kBlankAndNewline);
  if (tokenAt(tokens, 0) != "Units" || tokenAt(tokens, 2) != "cylinders") return 0;
  return saturatingProduct({leadingNumber(tokenAt(tokens, 4)), leadingNumber(tokenAt(tokens, 6))});
}

FdiskDisk parseGeometryOnDiskLine(const Tokens& tokens, Lines::const_iterator next,
                                  Lines::const_iterator end) {
  FdiskDisk disk;
  disk.heads = leadingNumber(tokenAt(tokens, 2));
  disk.sectors = leadingNumber(tokenAt(tokens, 4));
  disk.cylinders = leadingNumber(tokenAt(tokens, 6));
  uint64_t unit = bytesPerCylinder(next, end);
  if (unit == 0) unit = saturatingProduct({disk.heads, disk.sectors, 512});
  disk.totalKilobytes = saturatingProduct({disk.cylinders, unit}) / 1024;
  return disk;
}

uint64_t numberBeforeBytes(const Tokens& tokens) {
  for (size_t i = 1; i < tokens.size(); ++i) {
    if (tokens[i] == "bytes" || tokens[i] == "bytes,") return leadingNumber(tokens[i - 1]);
  }
  return 0;
}

FdiskDisk parseSizeOnDiskLine(const Tokens& tokens, Lines::const_iterator next,
                              Lines::const_iterator end) {
  FdiskDisk disk;
  disk.totalKilobytes = numberBeforeBytes(tokens) / 1024;
  if (next == end) return disk;
  const Tokens geometry = splitTokens(*next, kBlankAndNewline);
  if (tokenAt(geometry, 1) != "heads,") return disk;
  disk.heads = leadingNumber(tokenAt(geometry, 0));
  disk.sectors = leadingNumber(tokenAt(geometry, 2));
  disk.cylinders = leadingNumber(tokenAt(geometry, 4));
  return disk;
}

void traceDisk(const TraceFunction& at, const FdiskDisk& disk) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s %lu", "tmpheads=", disk.heads);
  log->traceMAX(at(), "hardware %s %lu", "tmpsectors=", disk.sectors);
  log->traceMAX(at(), "hardware %s %lu", "tmpcylinders=", disk.cylinders);
  log->traceMAX(at(), "hardware %s %lu", "totalsize=", disk.totalKilobytes);
}

std::string nameInListing(const std::string& device) {
  return device.ends_with(':') ? device : device + ':';
}

// The disk's line and the one behind it, all that is ever looked at: partition tables that lead
// back to themselves make some versions print until they are killed. Up to there the listing is
// read to its end: fdisk would otherwise be killed while it still writes.
Lines readLinesOfDisk(FILE* listing, const std::string& device) {
  const std::string wanted = nameInListing(device);
  Lines lines;
  LineReader reader(listing, kLineSize);
  while (reader.next()) {
    const bool isWanted =
        lines.empty() ? std::strstr(reader.line(), wanted.c_str()) != nullptr : lines.size() == 1;
    if (isWanted) lines.emplace_back(reader.line());
  }
  return lines;
}

std::optional<FdiskDisk> askFdisk(const TraceFunction& at, const std::string& device) {
  getCcLogHw()->traceMAX(at(), "hardware %s", "running /sbin/fdisk -l");
  const CommandStream listing(kFdiskCommand);
  std::optional<FdiskDisk> disk = parseFdiskListing(readLinesOfDisk(listing.get(), device), device);
  if (disk) traceDisk(at, *disk);
  return disk;
}

int fill(const std::optional<FdiskDisk>& disk, unsigned long* cylinders, unsigned long* heads,
         unsigned long* sectors, unsigned long* totalKilobytes) {
  if (!disk) return 0;
  *cylinders = disk->cylinders;
  *heads = disk->heads;
  *sectors = disk->sectors;
  *totalKilobytes = disk->totalKilobytes;
  return 1;
}

}  // namespace

std::optional<FdiskDisk> parseFdiskListing(const Lines& lines, const std::string& device) {
  if (device.empty()) return std::nullopt;
  const std::string wanted = nameInListing(device);
  const auto line = std::find_if(lines.begin(), lines.end(), [&](const std::string& text) {
    return text.find(wanted) != std::string::npos;
  });
  if (line == lines.end()) return std::nullopt;
  const Tokens tokens = splitTokens(*line, kBlankAndNewline);
  return tokenAt(tokens, 3) == "heads," ? parseGeometryOnDiskLine(tokens, line + 1, lines.end())
                                        : parseSizeOnDiskLine(tokens, line + 1, lines.end());
}

int getFromFdisk(const char* device, unsigned long* cylinders, unsigned long* heads,
                 unsigned long* sectors, unsigned long* totalKilobytes) {
  const TraceFunction at{kSourcePath, "getFromFdisk()"};
  std::string disk = device;
  if (disk.find("/dev/sg") != std::string::npos) disk = diskOfGenericNode(device);
  if (disk.empty()) return 0;
  return fill(askFdisk(at, disk), cylinders, heads, sectors, totalKilobytes);
}

int getFromFdisk2(const char* device, unsigned long* cylinders, unsigned long* heads,
                  unsigned long* sectors, unsigned long* totalKilobytes) {
  const TraceFunction at{kSourcePath, "getFromFdisk2()"};
  const std::string disk = std::string("/dev/") + device;
  return fill(askFdisk(at, disk), cylinders, heads, sectors, totalKilobytes);
}

int getFromFdiskMount(const char* device, unsigned long* cylinders, unsigned long* heads,
                      unsigned long* sectors, unsigned long* totalKilobytes) {
  const TraceFunction at{kSourcePath, "getFromFdiskMount()"};
  return fill(askFdisk(at, device), cylinders, heads, sectors, totalKilobytes);
}

}  // namespace quenlor
