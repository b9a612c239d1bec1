// The tables that the group records point to. Internal to the catalogue and its tests; everybody
// else reaches them through the group records.
#pragma once

#include "catalogue/Catalogue.h"

namespace quenlor {

// Attribute tables, in the order in which a catalogue listing shows the attributes.
extern const velAttribDef COMPONENTID_ATTRS_DEF[];
extern const velAttribDef PROCESSOR_ATTRS_DEF[];
extern const velAttribDef MEMORY_ATTRS_DEF[];
extern const velAttribDef MEMORY_MODULES_ATTRS_DEF[];
extern const velAttribDef OPER_SYS_ATTRS_DEF[];
extern const velAttribDef STORAGE_ATTRS_DEF[];
extern const velAttribDef IP_ADDR_ATTRS_DEF[];
extern const velAttribDef NET_ADPTR_ATTRS_DEF[];
extern const velAttribDef REGIONAL_ATTRS_DEF[];
extern const velAttribDef UNIX_PAR_ATTRS_DEF[];
extern const velAttribDef SCAN_INFO_ATTRS_DEF[];
extern const velAttribDef PART_ATTRS_DEF[];
extern const velAttribDef SMBIOS_ATTRS_DEF[];
extern const velAttribDef PCI_DEVICE_ATTRS_DEF[];
extern const velAttribDef LPAR_ATTRS_DEF[];
extern const velAttribDef PHYS_PROC_ATTRS_DEF[];
extern const velAttribDef CPU_METER_ATTRS_DEF[];
extern const velAttribDef CPU_UNIX_METER_ATTRS_DEF[];

// Enumeration tables; the last four are generated from the lists in data/.
extern const velEnumDef PROCESSOR_INTERFACE_ENUM_DEF[];
extern const velEnumDef STORAGE_SECURITY_ENABLED_ENUM_DEF[];
extern const velEnumDef HWSEC_POP_ENUM_DEF[];
extern const velEnumDef REGIONAL_TZ_PLUS_MINUS[];
extern const velEnumDef REGIONAL_TZ_DAYLIGHT[];
extern const velEnumDef PART_TYPE_ENUM_DEF[];
extern const velEnumDef PART_MEDIA_TYPE_ENUM_DEF[];
extern const velEnumDef ADAPTER_TYPE_ENUM_DEF[];
extern const velEnumDef VEL_ATTRIB_SMBIOS_ENCLOSURE_TYPE_ENUM_DEF[];
extern const velEnumDef OS_TYPE_ENUM_DEF[];
extern const velEnumDef STORAGE_TYPE_ENUM_DEF[];
extern const velEnumDef FILE_SYSTEM_TYPE_ENUM_DEF[];

}  // namespace quenlor
