// The files of one USB device in sysfs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "readers/usb/UsbDevices.h"

namespace quenlor {

// "046d": an id or a class of exactly so many hexadecimal digits.
std::optional<uint32_t> parseUsbNumber(std::string_view text, size_t digits);

// "1.5", "480": Mbit/s of the file into kbit/s; nothing for anything else and for zero.
std::optional<uint32_t> parseUsbSpeed(std::string_view text);

// The word of a class code (usb.org, "Defined Class Codes"); empty for codes without one.
std::string usbClassWord(uint32_t code);

// "0000:00:14.0-2.4" of the path of a device's directory: the controller's PCI address, or else
// the name of its directory, and the ports.
std::string usbLocation(std::string_view path);

// The device of an entry, without names of the list; nothing when it is gone. `interfaces` are the
// entries of its interfaces ("1-2:1.0").
std::optional<UsbDevice> readUsbDevice(const std::string& entry,
                                       const std::vector<std::string>& interfaces);

}  // namespace quenlor
