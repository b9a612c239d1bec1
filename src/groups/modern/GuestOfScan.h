// Where this scan's system runs, as several groups report it.
#pragma once

#include <optional>

#include "groups/modern/ModernScan.h"
#include "groups/modern/ModernTable.h"

namespace quenlor {

// Judged from the shared facts, with the firmware's texts as far as they can be had. Nothing, with
// a note in `outcome`, when the facts could not be read.
std::optional<Guest> guestOfScan(ModernScan& scan, Outcome& outcome);

// The texts of the firmware's table that tell of hypervisors and clouds.
MachineTexts machineTexts(const DmiTable& dmi);

// Attributes 8 to 13 and 15 of the group Machine.
void addGuest(ModernRow& row, const Guest& guest);

}  // namespace quenlor
