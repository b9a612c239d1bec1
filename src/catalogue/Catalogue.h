// The catalogue of groups, attributes, keys and enumerations: what every number in a table means.
#pragma once

#include <cstdint>

#include "base/String.h"

namespace quenlor {

// Ends every list of the catalogue.
inline constexpr uint32_t kCatalogueEnd = 0xFFFFFFFF;

// Value type codes of a typed attribute.
enum VelType : uint32_t {
  VEL_UCHAR = 1,
  VEL_USHORT = 2,
  VEL_ULONG = 3,
  VEL_UQUAD = 4,
  VEL_FLOAT = 5,
  VEL_DOUBLE = 6,
  VEL_STRING = 7,
  VEL_OCTETSTRING = 8,
  VEL_DATETIME = 9,
  VEL_ULONGLONG = 10,
  VEL_LONGLONG = 11,
};

// One enumerated value and its text; a table ends with value kCatalogueEnd.
struct velEnumDef {
  uint32_t value;
  const char* text;
};

// One attribute of a group; a table ends with id kCatalogueEnd.
struct velAttribDef {
  uint32_t id;
  const char* name;
  uint32_t type;                // VelType
  uint32_t length;              // characters for VEL_STRING, else 0
  const velEnumDef* enumTable;  // null: not enumerated
};

// One group; a catalogue ends with id kCatalogueEnd and a null name.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): the order in which a record is read
struct velGroupDef {
  uint32_t id;
  const char* name;
  const velAttribDef* attribs;
  const uint32_t* keys;  // ids of the key attributes; null: a single-instance group
  uint32_t keyCount;
  uint32_t enabled;
  uint32_t debugMask;
};

// All groups, in the order of a full scan.
extern const velGroupDef GROUPS_DEF[];

// The same groups with the attributes that modern sources add (ids from 101), then the groups that
// only modern documents have (ids from 1001), in the order of a full scan.
extern const velGroupDef MODERN_GROUPS_DEF[];

// Group ids.
namespace group {
inline constexpr uint32_t kComponentId = 1;
inline constexpr uint32_t kProcessor = 2;
inline constexpr uint32_t kMemory = 3;
inline constexpr uint32_t kOperatingSystem = 4;
inline constexpr uint32_t kStorage = 5;
inline constexpr uint32_t kIpAddress = 6;
inline constexpr uint32_t kNetworkAdapter = 7;
inline constexpr uint32_t kRegional = 15;
inline constexpr uint32_t kUnixSystemParams = 19;
inline constexpr uint32_t kScanInfo = 20;
inline constexpr uint32_t kSmbios = 24;
inline constexpr uint32_t kPartition = 27;
inline constexpr uint32_t kPciDevice = 29;
inline constexpr uint32_t kMemoryModules = 31;
inline constexpr uint32_t kLpar = 34;
inline constexpr uint32_t kPhysicalProcessor = 44;
inline constexpr uint32_t kHostComponentId = 45;
inline constexpr uint32_t kCpuMeter = 46;
inline constexpr uint32_t kUnixCpuMeter = 47;
inline constexpr uint32_t kMachine = 1001;
inline constexpr uint32_t kVolume = 1002;
inline constexpr uint32_t kUsbDevice = 1003;
inline constexpr uint32_t kDisplay = 1004;
inline constexpr uint32_t kBattery = 1005;
inline constexpr uint32_t kCache = 1006;
inline constexpr uint32_t kSlot = 1007;
inline constexpr uint32_t kPowerSupply = 1008;
inline constexpr uint32_t kScanResult = 1099;
}  // namespace group

// Linear scans in table order; the first match wins. All returned pointers point into the
// catalogue.
String getGroupNameFromId(uint32_t id);                    // "Unknown" when there is none
uint32_t getGroupIdFromName(const String& name);           // exact name; 0 when there is none
const velGroupDef* getGroupDefinitionFromId(uint32_t id);  // null when there is none
// The same in a given catalogue.
const velGroupDef* findGroup(const velGroupDef* catalogue, uint32_t id);
const velGroupDef* findGroup(const velGroupDef* catalogue, const char* name);
uint32_t getDebugMaskFromName(const char* name);  // 0 when there is none or name is null
const char* getAttribNameFromId(const velGroupDef* group, uint32_t attribId);  // null: none
const velAttribDef* getAttribDefinitionFromId(const velGroupDef* group,
                                              uint32_t attribId);  // null: none
// Text of a value in the enumeration table of the group's first attribute, provided that the group
// has the attribute: meant so, callers of old rely on it. Null when anything is missing.
const char* getEnumAsciiValue(const velGroupDef* group, uint32_t attribId, uint32_t value);

}  // namespace quenlor
