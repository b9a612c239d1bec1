// A machine whose kernel shows a firmware table of today.
#pragma once

#include <string>
#include <vector>

#include "tests/firmware/Structures.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {

// Behind a 64-bit entry point, in /sys/firmware/dmi/tables.
void installFirmware(FakeHost& machine, const std::vector<Structure>& structures,
                     Version version = {3, 6});

// What a user without rights sees of it: nothing of the table, and the texts that are for all.
void refuseFirmware(FakeHost& machine);

}  // namespace quenlor::test
