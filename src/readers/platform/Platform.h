// How the machine was started and what guards it: firmware kind, Secure Boot, TPM, IOMMU, BMC. From
// /sys alone; no node of a TPM or a BMC is opened, and of the firmware's variables only two, by
// name: firmware has been bricked by readers of all of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Outcome.h"

namespace quenlor {

enum class BootMode : unsigned char { kBios, kUefi };

struct Platform {
  std::optional<BootMode> bootMode;       // absent where /sys/firmware cannot be seen
  std::optional<bool> secureBoot;         // absent where the firmware's variables cannot be read
  std::optional<std::string> tpmVersion;  // "1.2" or "2.0"
  std::optional<std::string> tpmMaker;    // four characters at most; told by 1.2 only
  std::optional<bool> hasIommu;           // false: no group has a device
  std::optional<std::string> bmcFirmware;
  std::optional<std::string> hypervisorUuid;  // /sys/hypervisor/uuid, lower case
  Outcome outcome;
};

Platform readPlatform();

// Value of an EFI variable of one byte, as efivarfs shows it: four bytes of attributes, then the
// value. Nothing for any other size.
std::optional<bool> parseEfiFlag(std::string_view bytes);

// Secure Boot is enforced when it is on and the platform is not in set-up mode (UEFI 2.10, 32.3).
std::optional<bool> isSecureBoot(std::optional<bool> secureBoot, std::optional<bool> setupMode);

// The maker of a TPM 1.2 from its "caps" file: the line "Manufacturer: 0x49465800" is "IFX".
std::optional<std::string> parseTpmCapsMaker(std::string_view caps);

}  // namespace quenlor
