// The short enumerations. The long ones are generated from the lists in data/.
//
// XML documents hold these texts as they stand, so none may hold '<' or '&'.
#include "catalogue/Tables.h"

namespace quenlor {
namespace {

constexpr velEnumDef kEndOfValues = {kCatalogueEnd, nullptr};

}  // namespace

// One row per line:
// clang-format off
constexpr velEnumDef PROCESSOR_INTERFACE_ENUM_DEF[] = {
    {0, ""},
    {1, "Other"},
    {2, "Unknown"},
    {3, "Daughterboard"},
    {4, "ZIF Socket"},
    {5, "Replaceable Piggyback"},
    {6, "None"},
    {7, "LIF Socket"},
    {8, "Slot 1"},
    {9, "Slot 2"},
    {10, "370-pin socket"},
    {11, "Slot A"},
    {12, "Slot M"},
    {13, "Socket 423"},
    {14, "Socket A (Socket 462)"},
    {15, "Socket 478"},
    {16, "Socket 754"},
    {17, "Socket 940"},
    kEndOfValues,
};

constexpr velEnumDef STORAGE_SECURITY_ENABLED_ENUM_DEF[] = {
    {0, "Yes"},
    {1, "No"},
    {2, "Unsupported"},
    {3, "Unknown"},
    kEndOfValues,
};

constexpr velEnumDef HWSEC_POP_ENUM_DEF[] = {
    {0, "Disabled"},
    {1, "Enabled"},
    {2, "Unsupported"},
    {3, "Unknown"},
    kEndOfValues,
};

constexpr velEnumDef REGIONAL_TZ_PLUS_MINUS[] = {
    {1, "+"},
    {2, "-"},
    kEndOfValues,
};

constexpr velEnumDef REGIONAL_TZ_DAYLIGHT[] = {
    {1, "T"},
    {2, "F"},
    kEndOfValues,
};

constexpr velEnumDef PART_TYPE_ENUM_DEF[] = {
    {0, "Unknown"},
    {1, "Logical Drive"},
    {2, "Remote Drive"},
    {3, "Logical Volume"},
    kEndOfValues,
};

constexpr velEnumDef PART_MEDIA_TYPE_ENUM_DEF[] = {
    {0, "Unknown"},
    {1, "No Root Directory"},
    {2, "Removable Disk"},
    {3, "Local Disk"},
    {4, "Remote Drive"},
    {5, "CD-ROM"},
    {6, "RAM Disk"},
    kEndOfValues,
};

constexpr velEnumDef ADAPTER_TYPE_ENUM_DEF[] = {
    {1, "Unknown"},
    {2, "Other"},
    {3, "Ethernet Adapter"},
    {4, "Token Ring Adapter"},
    {5, "Fibre Channel Adapter"},
    {6, "Serial Line IP"},
    {7, "Enterprise Systems Connection"},
    {8, "Channel to channel interface"},
    {9, "IUCV"},
    {10, "PPP Adapter"},
    {11, "CSMA CD Adapter"},
    {12, "Token Passing Bus Adapter"},
    {13, "Metro Net Adapter"},
    {14, "ISO HDLC Adapter"},
    {15, "Character Syncronous Adapter"},  // spelt so in the schema
    {16, "Channel to channel adapter (vendor)"},
    {17, "FDDI Adapter"},
    {19, "Loopback Adapter"},
    kEndOfValues,
};

// clang-format on

}  // namespace quenlor
