// The files of one PCI function in sysfs.
#pragma once

#include <optional>
#include <string>

#include "readers/pci/PciFunctions.h"

namespace quenlor {

// What the function's uevent file tells; nothing when it lacks vendor, device or class.
std::optional<PciFunction> parsePciEvent(const std::string& text);

// "0x8086", "8086": an id or class with its prefix or without; nothing for anything else.
std::optional<uint32_t> parsePciNumber(const std::string& text);

// "12", "-1": a node's number; nothing when it is below 0 or anything else.
std::optional<uint32_t> parseNodeNumber(const std::string& text);

// The function at the address, without names and slot; nothing when it is gone.
std::optional<PciFunction> readPciFunction(const PciAddress& address, const std::string& entry);

}  // namespace quenlor
