// The attributes of every group. Names, misspelt ones included, are the schema that the receivers
// of inventories know, and the order of the rows is the order of a listing, not of the ids.
#pragma once

#include "catalogue/AttributeRows.h"
#include "catalogue/Enumerations.h"

namespace quenlor {

// One row per line:
// clang-format off
inline constexpr velAttribDef COMPONENTID_ATTRS_DEF[] = {
    text(1, "Manufacturer", 64),
    text(2, "Product", 128),
    text(3, "Version", 64),
    text(4, "Serial Number", 64),
    text(5, "Installation", 64),
    text(6, "Verify", 64),
    text(7, "Type", 32),
    text(8, "Model Class", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef PROCESSOR_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "ID", 32),
    text(3, "Family", 32),
    number(4, "MaxClockSpeed"),
    number(5, "CurrentClockSpeed"),
    number(6, "ExternalClockSpeed"),
    text(7, "Manufacturer", 128),
    text(8, "Serial Number", 64),
    // Listed as a text, collected as a number: the table gives the number its text in XML.
    text(9, "Interface", 32, PROCESSOR_INTERFACE_ENUM_DEF),
    number(10, "Chip Family"),
    number(11, "Chip Model"),
    number(12, "Chip Stepping"),
    number(13, "Chip Features"),
    yesNo(14, "Floating Point Unit Present"),
    yesNo(15, "Virtual Mode Extensions"),
    yesNo(16, "Debug Extension Present"),
    yesNo(17, "Page Size Extensions"),
    yesNo(18, "Time Stamp Counter"),
    yesNo(19, "Model Specific Registers"),
    yesNo(20, "Physical Address Extensions"),
    yesNo(21, "Machine Check Exceptions"),
    yesNo(22, "CMPXCHG8B Instruction Support"),
    yesNo(23, "On chip APIC"),
    yesNo(24, "Fast System Call"),
    yesNo(25, "Memory Type Range Registers"),
    yesNo(26, "Page Global Enable"),
    yesNo(27, "Machine Check Architecture"),
    yesNo(28, "Conditional Move Instruction"),
    yesNo(29, "Page Attribute Table"),
    yesNo(30, "36-bit Page Size Extension"),
    yesNo(31, "Process Serial Number Enabled"),
    yesNo(32, "MMX(tm) Techonlogy"),  // spelt so in the schema
    yesNo(33, "Fast Floating Point Save/Restore"),
    yesNo(34, "Streaming SIMD Extensions"),
    yesNo(35, "AMD 3DNow!(tm) Technology"),
    number(36, "Board"),
    number(37, "CPU Number"),
    number(38, "Module"),
    text(39, "Ecache MB", 16),
    text(40, "CPU Impl", 16),
    text(41, "CPU Mask", 16),
    yesNo(42, "CPU Enabled"),
    number(43, "Physical Package Count"),
    number(44, "CorePerPackage Count"),
    number(45, "LogicalProcPerCore Count"),
    kEndOfAttributes,
};

inline constexpr velAttribDef MEMORY_ATTRS_DEF[] = {
    number(1, "Total Physical"),
    number(2, "Free Physical"),
    number(3, "Total Virtual"),
    number(4, "Free Virtual"),
    number(5, "Total Page"),
    number(6, "Free Page"),
    number(7, "Page Size"),
    number(8, "Max Memory MB"),
    number(9, "Num Slots Supported"),
    kEndOfAttributes,
};

inline constexpr velAttribDef MEMORY_MODULES_ATTRS_DEF[] = {
    number(1, "Index"),
    number(2, "Module Size MB"),
    number(3, "Max Module Size MB"),
    text(4, "Socket Name", 24),
    text(5, "Packaging", 16),
    text(6, "Memory Type", 48),
    kEndOfAttributes,
};

inline constexpr velAttribDef OPER_SYS_ATTRS_DEF[] = {
    text(1, "Name", 128),
    number(2, "Type", OS_TYPE_ENUM_DEF),
    number(3, "Major Version"),
    number(4, "Minor Version"),
    text(5, "Sub Version", 32),
    dateTime(6, "Install Date"),
    text(7, "Registered Organization", 255),
    text(8, "Registered Owner", 255),
    text(9, "Product ID", 64),
    text(10, "OS Arch", 24),
    text(11, "OS Kernel Mode", 24),
    text(12, "Description String", 255),
    text(13, "OS Language Version", 64),
    text(14, "OS Locale ID", 64),
    text(15, "OS Messages Locale", 64),
    dateTime(16, "Last Boot Up Time"),
    text(17, "Current User Locale ID", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef STORAGE_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "ID", 32),
    number(3, "Type", STORAGE_TYPE_ENUM_DEF),
    text(4, "Model", 255),
    text(5, "Manufacturer", 128),
    text(6, "Serial Number", 64),
    number(7, "Cylinders"),
    number(8, "Sectors"),
    number(9, "Heads"),
    number(10, "Total Size"),
    number(11, "Security Enabled", STORAGE_SECURITY_ENABLED_ENUM_DEF),
    kEndOfAttributes,
};

inline constexpr velAttribDef IP_ADDR_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Address", 40),
    yesNo(9, "DHCP Enabled"),
    text(3, "Hostname", 64),
    text(4, "Domain", 64),
    text(5, "Subnet", 40),
    text(6, "Gateway", 40),
    text(7, "Primary DNS", 40),
    text(8, "Secondary DNS", 40),
    text(10, "Permanent Mac Address", 64),
    text(11, "IPV6Address", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef NET_ADPTR_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "ID", 32),
    text(3, "Permanent Address", 64),
    text(4, "Current Address", 64),
    number(5, "Type", ADAPTER_TYPE_ENUM_DEF),
    text(6, "Model", 255),
    text(7, "Manufacturer", 128),
    dateTime(8, "Install Date"),
    text(9, "Connector Type", 128),
    kEndOfAttributes,
};

inline constexpr velAttribDef REGIONAL_ATTRS_DEF[] = {
    text(1, "Local", 32),
    number(2, "Time Zone Seconds"),
    number(3, "Time Zone Plus Minus", REGIONAL_TZ_PLUS_MINUS),
    number(4, "Daylight", REGIONAL_TZ_DAYLIGHT),
    text(5, "Time Zone Name", 64),
    text(6, "Time Zone Daylight Name", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef UNIX_PAR_ATTRS_DEF[] = {
    dateTime(1, "Boot Time"),
    number(2, "Run Level"),
    text(3, "Hostname", 255),
    text(4, "Computer Alias", 32),
    kEndOfAttributes,
};

inline constexpr velAttribDef SCAN_INFO_ATTRS_DEF[] = {
    text(1, "Manufacturer", 64),
    number(2, "Major Version"),
    number(3, "Minor Version"),
    number(7, "Maintenance Version"),
    dateTime(4, "Scan Date"),
    text(5, "Build", 64),
    number(6, "Uptime"),
    kEndOfAttributes,
};

inline constexpr velAttribDef PART_ATTRS_DEF[] = {
    number(1, "Index"),
    number(2, "Type", PART_TYPE_ENUM_DEF),
    number(3, "Media Type", PART_MEDIA_TYPE_ENUM_DEF),
    text(4, "Device Name", 64),
    number(5, "Physical Size"),
    number(6, "FS Type", FILE_SYSTEM_TYPE_ENUM_DEF),
    text(7, "FS Access Point", 255),
    text(8, "FS Mount Point", 255),
    number(9, "FS Total Size"),
    number(10, "FS Free Size"),
    kEndOfAttributes,
};

inline constexpr velAttribDef SMBIOS_ATTRS_DEF[] = {
    text(1, "BIOS Vendor", 64),
    text(2, "BIOS Version", 64),
    text(3, "BIOS Date", 16),
    text(4, "BIOS Size", 8),
    text(5, "System Manufacturer", 64),
    text(6, "System Product Name", 64),
    text(7, "System Version", 64),
    text(8, "System Serial Number", 64),
    text(9, "System UUID", 36),
    text(10, "Board Manufacturer", 64),
    text(11, "Board Product", 64),
    text(12, "Board Version", 64),
    text(13, "Board Serial Number", 64),
    text(14, "Enclosure Manufacturer", 64),
    number(15, "Enclosure Type", VEL_ATTRIB_SMBIOS_ENCLOSURE_TYPE_ENUM_DEF),
    text(16, "Enclosure Version", 64),
    text(17, "Enclosure Serial Number", 64),
    text(18, "Enclosure Asset Tag", 64),
    text(19, "ID", 32),
    number(20, "PowerOn Password", HWSEC_POP_ENUM_DEF),
    text(21, "BIOS ID Bytes", 16),
    text(22, "BIOS ID", 128),
    text(23, "BIOS Manufacturer", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef PCI_DEVICE_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Name", 180),
    text(3, "Revision", 4),
    kEndOfAttributes,
};

inline constexpr velAttribDef LPAR_ATTRS_DEF[] = {
    text(2, "Lpar ID", 32),
    text(3, "SharedPool ID", 16),
    real(4, "Node Capacity"),
    real(8, "Node Capacity In Cores"),
    real(5, "Lpar Capacity"),
    real(9, "Lpar Capacity In Cores"),
    real(6, "SharedPool Capacity"),
    real(10, "SharedPool Capacity In Cores"),
    text(7, "Serial Number", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef PHYS_PROC_ATTRS_DEF[] = {
    text(1, "Id", 64),
    text(4, "Manufacturer", 64),
    text(5, "Family", 64),
    text(6, "Type", 64),
    number(2, "Core Per Package Count"),
    number(3, "Logical Proc Per Core"),
    number(7, "CpuFreq"),
    number(8, "L2 Cache Size"),
    number(9, "L3 Cache Size"),
    text(10, "Brandname", 128),
    text(11, "Signature", 128),
    yesNo(12, "Is64BitSupported"),
    kEndOfAttributes,
};

inline constexpr velAttribDef CPU_METER_ATTRS_DEF[] = {
    longNumber(1, "IdleTime"),
    longNumber(2, "UserTime"),
    longNumber(3, "WaitTime"),
    longNumber(4, "SysTime"),
    longNumber(5, "SystemUpTime"),
    kEndOfAttributes,
};

inline constexpr velAttribDef CPU_UNIX_METER_ATTRS_DEF[] = {
    real(1, "LoadAvg1"),
    real(2, "LoadAvg5"),
    real(3, "LoadAvg15"),
    kEndOfAttributes,
};

// clang-format on

}  // namespace quenlor
