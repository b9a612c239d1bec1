// The machine's SMBIOS table from where the kernel offers it.
#pragma once

#include "readers/dmi/DmiTable.h"

namespace quenlor {

// Best first:
// - /sys/firmware/dmi/tables, which only root may read;
// - physical memory, on kernels that offer no table: see readDmiFromMemory();
// - the texts in /sys/class/dmi/id, some of which everybody may read.
// A machine without any of them has no firmware table: no source, which is no error. The outcome
// says what was refused. To be called once per scan.
// `isLockedDown`: the kernel keeps root from its memory.
DmiTable readDmi(bool isLockedDown = false);

// The texts of types 0 to 3 as the kernel keeps them; no source when it keeps none.
DmiTable readDmiTexts();

}  // namespace quenlor
