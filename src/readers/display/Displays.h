// The displays on connected outputs: /sys/class/drm, as the kernel saw them when they were plugged
// in.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Outcome.h"
#include "readers/devicepath/DevicePath.h"
#include "readers/display/Edid.h"

namespace quenlor {

struct Display {
  std::string connector;                     // "HDMI-A-1", without the number of the card
  std::optional<PciAddress> adapter;         // the graphics device
  Edid edid;                                 // all empty where the display says nothing
  std::optional<DisplayMode> preferredMode;  // the display's, else the first that the kernel lists
};

// "HDMI-A-1" of "card0-HDMI-A-1"; empty for what is no connector.
std::string connectorOf(std::string_view entry);
// The first line of a list of modes, "1920x1080", also of an interlaced one.
std::optional<DisplayMode> parseFirstMode(std::string_view modes);

struct Displays {
  std::vector<Display> displays;  // by adapter, then by connector in natural order
  Outcome outcome;
};

// Reads everything anew. Never fails: what could not be read is in the outcome.
Displays readDisplays();

}  // namespace quenlor
