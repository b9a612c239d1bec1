// Attributes of the group HostComponentID, which both its sources fill.
#pragma once

#include <cstdint>

namespace quenlor::host_component {

// The maker whose product texts hold the machine type.
inline constexpr const char* kTypedMaker = "ZUM";

// Attribute ids.
inline constexpr uint32_t kManufacturer = 1;
inline constexpr uint32_t kProduct = 2;
inline constexpr uint32_t kVersion = 3;
inline constexpr uint32_t kSerialNumber = 4;
inline constexpr uint32_t kType = 7;

}  // namespace quenlor::host_component
