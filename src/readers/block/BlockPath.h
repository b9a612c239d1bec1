// Where a block device hangs, judged by the path of its directory below /sys/devices alone: each
// bus on the way from the root is a component of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

// Host, channel, target and logical unit, "2:0:1:0". The host's number is that of the order in
// which the kernel found it, and no property of the machine.
struct ScsiPlace {
  uint32_t host = 0;
  uint32_t channel = 0;
  uint32_t target = 0;
  uint64_t unit = 0;

  std::string withoutHost() const;  // "0:1:0"
};

std::optional<ScsiPlace> parseScsiAddress(std::string_view text);

// The absolute path that a link's text means in its directory, by the text alone: what the kernel's
// links name has no link on its way.
std::string resolveLink(std::string_view directory, std::string_view target);

class BlockPath {
 public:
  explicit BlockPath(std::string path);

  const std::string& text() const { return m_path; }
  bool isVirtual() const { return m_path.starts_with("/sys/devices/virtual/"); }
  // The path without its last component and without the "block" that stands above most disks.
  std::string deviceDirectory() const;

  std::string pciAddress() const;  // of the last PCI device on the way; else empty
  std::string usbPort() const;     // "1.2", without the bus; empty outside USB
  std::optional<ScsiPlace> scsiAddress() const;
  std::string scsiDirectory() const;     // path up to the component of the SCSI address
  std::string ataPort() const;           // "ata3"; empty outside libata
  std::string ataPortDirectory() const;  // path up to that component
  std::string component(std::string_view prefix) const;  // first one: prefix, then digits; or empty
  bool hasPrefix(std::string_view prefix) const;         // a component begins with it

  // What stays the same when the machine starts again, whatever numbers it gives: the path without
  // the kernel's own counters and without the disk's name.
  std::string stablePart() const;

 private:
  std::string pathThrough(std::string_view component) const;

  std::string m_path;
  std::vector<std::string> m_components;
};

}  // namespace quenlor
