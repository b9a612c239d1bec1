// The run level that the machine boots to, as the init system's files name it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quenlor {

// Of a systemd unit: rescue and emergency 1, multi-user 3, graphical 5, reboot 6, poweroff and halt
// 0, runlevelN N; nothing for any other.
std::optional<uint32_t> runLevelOfTarget(std::string_view unit);

// Of a kernel command line: systemd.unit=, single, rescue, emergency, or a digit 1 to 5; the last
// one counts.
std::optional<uint32_t> runLevelOfCommandLine(std::string_view commandLine);

// Of an inittab(5): the level of its initdefault line.
std::optional<uint32_t> runLevelOfInittab(std::string_view text);

// /proc/cmdline, the default.target links, /etc/inittab.
std::optional<uint32_t> readBootRunLevel();

}  // namespace quenlor
