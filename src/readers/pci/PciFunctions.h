// The functions of the PCI buses with their names: /sys/bus/pci, the system's list of PCI ids, the
// built-in tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/devicepath/DevicePath.h"

namespace quenlor {

// One function. Names are bytes of the list; empty: neither the list nor the tables know it.
struct PciFunction {
  PciAddress address;
  uint16_t vendor = 0;
  uint16_t device = 0;
  uint16_t subsystemVendor = 0;  // 0: none, as with bridges
  uint16_t subsystemDevice = 0;
  uint32_t classCode = 0;  // class, subclass and interface: 24 bits
  std::optional<uint8_t> revision;
  std::string driver;                // empty: none bound
  std::string slot;                  // the firmware's word for the slot; empty: in none
  std::optional<uint32_t> numaNode;  // nothing: the machine has but one, or does not tell
  std::optional<uint32_t> iommuGroup;
  std::string vendorName;
  std::string deviceName;
  std::string className;  // of the subclass, else of the class

  // "Intel Corporation 82574L Gigabit Network Connection"; numbers in place of unknown names.
  std::string name() const;
};

struct PciFunctions {
  std::vector<PciFunction> functions;  // by address
  Outcome outcome;

  // Null when there is none. Valid until the list changes.
  const PciFunction* find(const PciAddress& address) const;
};

// Reads everything anew. Never fails: what could not be read is in the outcome.
PciFunctions readPciFunctions();

}  // namespace quenlor
