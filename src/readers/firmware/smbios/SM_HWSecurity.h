// Hardware-security status from the shared SMBIOS table.
#pragma once

namespace quenlor {

// Power-on password status, and bits 2 and up of the settings byte of the hardware security record
// (DMTF SMBIOS, type 24). 0; without a record 1 and both outputs 3, "unknown".
int SM_HWSecurity(unsigned short* first, unsigned short* second);

}  // namespace quenlor
