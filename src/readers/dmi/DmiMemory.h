// The SMBIOS table in physical memory, for kernels before 4.2 and those built without its files.
#pragma once

#include <optional>
#include <string_view>

#include "readers/dmi/DmiTable.h"

namespace quenlor {

// Reads /dev/mem: only as root, only a character device, and never in a guest with encrypted
// memory, where touching the firmware's area ends the guest. Not to be called where the kernel is
// locked down. Nothing when that is so, or when no table is found.
std::optional<DmiTable> readDmiFromMemory();

// True when the processor says that it is a guest with encrypted memory: AMD SEV (CPUID 8000001F),
// Intel TDX (CPUID 21).
bool isEncryptedGuest();

// Address of the entry point by the lines of /sys/firmware/efi/systab: "SMBIOS3=0x..." rather than
// "SMBIOS=0x...".
std::optional<uint64_t> parseEfiSystab(std::string_view systab);

}  // namespace quenlor
