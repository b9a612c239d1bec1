// Named firmware images: one per kind of machine that tests need.
#pragma once

#include <string>
#include <vector>

#include "tests/firmware/Firmware.h"

namespace quenlor::test {

// All names, in the order of the source.
std::vector<std::string> firmwareNames();
// The firmware of a name; nothing for a name that is not in the list.
std::optional<Firmware> firmwareNamed(const std::string& name);

}  // namespace quenlor::test
