// The two listings of PCI devices: /proc/pci of kernels 2.0 to 2.6, and "lspci -m".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quenlor {

// One device as it is reported.
struct PciRow {
  std::string name;
  std::string revision;  // "0x" and digits, or empty
};

// Reads /proc/pci line by line. A device is a "Bus" line and a description line; old kernels add a
// line with the raw ids of a device that they do not know.
class ProcPciParser {
 public:
  // Takes one line, its newline cut off. The row that it completes, if any.
  std::optional<PciRow> addLine(const char* line);

 private:
  enum class State { kBusLine, kDescription, kRawIds };

  void takeBusLine(const char* line);
  std::optional<PciRow> takeDescription(std::string line);
  std::optional<PciRow> takeName(std::string name);
  std::optional<PciRow> takeRawIds(int vendor, int device);
  bool isDuplicate(const std::string& name) const;
  PciRow remember(std::string name);

  State m_state = State::kBusLine;
  uint32_t m_bus = 0;
  uint32_t m_device = 0;
  std::string m_revision;
  std::string m_classText;  // of the device whose ids are awaited
  // Of the last row; the listing may hold a device twice.
  uint32_t m_previousBus = 0;
  uint32_t m_previousDevice = 0;
  std::string m_previousName;
};

// The row of one line of "lspci -m"; nothing when it lacks vendor or device.
std::optional<PciRow> parseLspciLine(const std::string& line);

}  // namespace quenlor
