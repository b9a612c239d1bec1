// The enumeration tables that attributes name.
#pragma once

#include "catalogue/Catalogue.h"

namespace quenlor {

// The last five are generated from the lists in data/.
extern const velEnumDef PROCESSOR_INTERFACE_ENUM_DEF[];
extern const velEnumDef STORAGE_SECURITY_ENABLED_ENUM_DEF[];
extern const velEnumDef HWSEC_POP_ENUM_DEF[];
extern const velEnumDef REGIONAL_TZ_PLUS_MINUS[];
extern const velEnumDef REGIONAL_TZ_DAYLIGHT[];
extern const velEnumDef PART_TYPE_ENUM_DEF[];
extern const velEnumDef PART_MEDIA_TYPE_ENUM_DEF[];
extern const velEnumDef ADAPTER_TYPE_ENUM_DEF[];
extern const velEnumDef VEL_ATTRIB_SMBIOS_ENCLOSURE_TYPE_ENUM_DEF[];
// The same and those that came later: what documents of modern sources say.
extern const velEnumDef MODERN_ENCLOSURE_TYPE_ENUM_DEF[];
extern const velEnumDef OS_TYPE_ENUM_DEF[];
extern const velEnumDef STORAGE_TYPE_ENUM_DEF[];
extern const velEnumDef FILE_SYSTEM_TYPE_ENUM_DEF[];

}  // namespace quenlor
