// Vital product data pages of SCSI devices as the kernel has cached them in vpd_pg80, vpd_pg83,
// vpd_pg89 and vpd_pgb1 (SPC-4 section 7.8, SAT-3 section 10.3.5, SBC-3 section 6.5.3). Bytes of a
// device: nothing in them is trusted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quenlor {

// Whether a drive has turning disks, as far as it says so itself.
enum class Rotation : uint8_t { kNotTold, kSolidState, kSpinning };

// What ATA IDENTIFY DEVICE data (ACS-3 section 7.12.7) tells. Texts without blanks at both ends,
// empty where the drive has none.
struct AtaIdentity {
  std::string serial;
  std::string firmware;
  std::string model;
  std::string worldWideName;  // "naa." and 16 hex digits; empty without one
  Rotation rotation = Rotation::kNotTold;
  bool isSerialAta = false;
  bool hasSecurity = false;        // the security feature set is there
  bool isSecurityEnabled = false;  // and a password is set
};

// Page 80: the unit serial number; empty without one.
std::string parseUnitSerial(std::string_view page);

// Page 83: the best identifier of the logical unit, as worldWideName() writes it; empty without
// one.
std::string parseIdentification(std::string_view page);

// Page 89: the identity of the ATA drive behind the translation; nothing from a short page.
std::optional<AtaIdentity> parseAtaInformation(std::string_view page);

// Page B1: the medium rotation rate.
Rotation parseRotation(std::string_view page);

// A name of the kernel ("naa.5000C500…", "eui.…", "uuid.…", "t10.ATA     …") or of udev
// ("0x5000c500…") in one form: prefix, then hex digits in lower case or the text without blanks at
// its ends. Empty for names of other kinds and for numbers that are all zero.
std::string worldWideName(std::string_view text);

}  // namespace quenlor
