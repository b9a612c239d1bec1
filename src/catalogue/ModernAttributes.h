// The attributes that documents of modern sources have beside the classic ones, and those of the
// groups that only they have. What the classic attributes cannot express (a 64-bit size, a name
// that no enumeration has) stands here beside them. Ids, names and order are what receivers know.
#pragma once

#include "catalogue/AttributeRows.h"

namespace quenlor::modern {

// One row per line:
// clang-format off
inline constexpr velAttribDef SMBIOS_ATTRS_DEF[] = {
    text(101, "System UUID Text", 36),
    text(102, "System SKU", 255),
    text(103, "System Family", 255),
    text(104, "Board Asset Tag", 255),
    text(105, "BIOS Revision", 7),
    text(106, "Embedded Controller Revision", 7),
    text(107, "SMBIOS Version", 7),
    number(108, "BIOS Size KB"),
    text(109, "Enclosure SKU", 255),
    text(110, "Board Location", 255),
    number(111, "Enclosure Height U"),
    kEndOfAttributes,
};

inline constexpr velAttribDef MEMORY_ATTRS_DEF[] = {
    longNumber(101, "Available"),
    number(102, "Installed MB"),
    text(103, "Error Correction", 16),
    longNumber(104, "Total Physical Bytes"),
    longNumber(105, "Swap Total KB"),
    kEndOfAttributes,
};

inline constexpr velAttribDef MEMORY_MODULES_ATTRS_DEF[] = {
    text(101, "Manufacturer", 255),
    text(102, "Serial Number", 255),
    text(103, "Part Number", 255),
    text(104, "Asset Tag", 255),
    text(105, "Generation", 16),
    text(106, "Technology", 24),
    number(107, "Speed MTs"),
    number(108, "Configured Speed MTs"),
    number(109, "Data Width"),
    number(110, "Total Width"),
    number(111, "Rank"),
    number(112, "Configured Voltage mV"),
    text(113, "Locator", 255),
    text(114, "Bank Locator", 255),
    number(115, "Array"),
    kEndOfAttributes,
};

inline constexpr velAttribDef PHYS_PROC_ATTRS_DEF[] = {
    number(101, "Cores"),
    number(102, "Threads"),
    number(103, "Performance Cores"),
    number(104, "Efficiency Cores"),
    number(105, "Base MHz"),
    number(106, "Max MHz"),
    text(107, "Microcode", 10),
    number(108, "L1 Data Cache KB"),
    number(109, "L1 Instruction Cache KB"),
    text(110, "Socket", 255),
    number(111, "NUMA Nodes"),
    text(112, "Serial Number", 64),
    number(113, "Online Threads"),
    text(114, "Instruction Set", 9),
    text(115, "Socket Type", 32),
    text(116, "Virtualization Extension", 3),
    kEndOfAttributes,
};

inline constexpr velAttribDef OPER_SYS_ATTRS_DEF[] = {
    text(101, "Distribution", 64),
    text(102, "Distribution Version", 64),
    text(103, "Distribution Codename", 64),
    text(104, "Kernel Release", 128),
    text(105, "Kernel Build", 255),
    text(106, "Security Modules", 255),
    text(107, "Lockdown", 15),
    text(108, "Init System", 32),
    text(109, "SELinux Mode", 10),
    yesNo(110, "FIPS"),
    kEndOfAttributes,
};

inline constexpr velAttribDef UNIX_PAR_ATTRS_DEF[] = {
    text(101, "Domain", 255),
    text(102, "Machine ID Digest", 32),
    text(103, "Boot ID", 36),
    kEndOfAttributes,
};

inline constexpr velAttribDef REGIONAL_ATTRS_DEF[] = {
    text(101, "Zone", 64),
    text(102, "System Locale", 64),
    kEndOfAttributes,
};

inline constexpr velAttribDef SCAN_INFO_ATTRS_DEF[] = {
    text(101, "Scan Time", 20),
    text(102, "Sources", 7),
    text(103, "User", 10),
    kEndOfAttributes,
};

inline constexpr velAttribDef STORAGE_ATTRS_DEF[] = {
    text(101, "Device Name", 255),
    text(102, "Bus", 16),
    longNumber(103, "Size Bytes"),
    text(104, "Medium", 7),
    text(105, "Firmware", 255),
    text(106, "World Wide Name", 255),
    number(107, "Logical Sector Bytes"),
    number(108, "Physical Sector Bytes"),
    yesNo(109, "Removable"),
    yesNo(110, "Read Only"),
    text(111, "Location", 255),
    text(112, "Driver", 64),
    number(113, "Multipath Paths"),
    text(114, "Namespace Of", 32),
    text(115, "State", 16),
    kEndOfAttributes,
};

inline constexpr velAttribDef PART_ATTRS_DEF[] = {
    text(101, "File System", 32),
    text(102, "Label", 255),
    text(103, "UUID", 64),
    text(104, "Mount Options", 255),
    text(105, "Disk", 255),
    number(106, "Partition Number"),
    longNumber(107, "Start Sector"),
    text(108, "Partition UUID", 36),
    text(109, "Partition Label", 255),
    longNumber(110, "Size Bytes"),
    longNumber(111, "Inodes Total"),
    longNumber(112, "Inodes Free"),
    yesNo(113, "Read Only"),
    number(114, "Further Mounts"),
    yesNo(115, "Encrypted"),
    kEndOfAttributes,
};

inline constexpr velAttribDef IP_ADDR_ATTRS_DEF[] = {
    text(101, "Interface", 16),
    number(102, "Prefix Length"),
    text(103, "Scope", 8),
    text(104, "Family", 4),
    number(105, "Gateway Metric"),
    text(106, "Origin", 8),
    kEndOfAttributes,
};

inline constexpr velAttribDef NET_ADPTR_ATTRS_DEF[] = {
    text(101, "Interface", 16),
    text(102, "Kind", 16),
    text(103, "Driver", 64),
    text(104, "Firmware", 64),
    number(105, "Speed Mbs"),
    text(106, "Duplex", 4),
    number(107, "MTU"),
    text(108, "State", 16),
    text(109, "Location", 255),
    text(110, "Master", 16),
    text(111, "Vendor Id", 4),
    text(112, "Device Id", 4),
    kEndOfAttributes,
};

inline constexpr velAttribDef PCI_DEVICE_ATTRS_DEF[] = {
    text(101, "Address", 16),
    text(102, "Class", 6),
    text(103, "Class Name", 128),
    text(104, "Vendor Id", 4),
    text(105, "Device Id", 4),
    text(106, "Subsystem Vendor Id", 4),
    text(107, "Subsystem Id", 4),
    text(108, "Driver", 64),
    text(109, "Slot", 255),
    number(110, "NUMA Node"),
    number(111, "IOMMU Group"),
    kEndOfAttributes,
};

inline constexpr velAttribDef LPAR_ATTRS_DEF[] = {
    real(103, "CPU Limit In Cores"),
    number(104, "Memory Limit MB"),
    kEndOfAttributes,
};

inline constexpr velAttribDef CPU_METER_ATTRS_DEF[] = {
    longNumber(101, "StealTime"),
    number(102, "Processors"),
    kEndOfAttributes,
};

inline constexpr velAttribDef MACHINE_ATTRS_DEF[] = {
    text(1, "UUID", 36),
    text(2, "Serial Number", 255),
    text(3, "Chassis", 11),
    text(4, "Boot Mode", 4),
    yesNo(5, "Secure Boot"),
    text(6, "TPM Version", 3),
    text(7, "TPM Maker", 4),
    text(8, "Virtualization", 15),
    text(9, "Hypervisor", 16),
    text(10, "Container", 16),
    text(11, "Evidence", 255),
    text(12, "Cloud", 16),
    text(13, "Instance ID", 64),
    yesNo(14, "IOMMU"),
    text(15, "Confidential", 8),
    text(16, "BMC", 8),
    text(17, "BMC Firmware", 16),
    kEndOfAttributes,
};

inline constexpr velAttribDef VOLUME_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Name", 255),
    text(3, "Device Name", 255),
    text(4, "Kind", 10),
    text(5, "Level", 16),
    text(6, "State", 32),
    longNumber(7, "Size Bytes"),
    text(8, "UUID", 64),
    text(9, "Volume Group", 128),
    text(10, "Members", 255),
    number(11, "Degraded"),
    text(12, "Mount Point", 255),
    kEndOfAttributes,
};

inline constexpr velAttribDef USB_DEVICE_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Location", 32),
    text(3, "Name", 255),
    text(4, "Manufacturer", 255),
    text(5, "Serial Number", 255),
    text(6, "Vendor Id", 4),
    text(7, "Product Id", 4),
    text(8, "Class", 32),
    number(9, "Speed Kbs"),
    text(10, "Driver", 255),
    text(11, "Version", 5),
    text(12, "Removable", 9),
    kEndOfAttributes,
};

inline constexpr velAttribDef DISPLAY_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Connector", 32),
    text(3, "Adapter", 16),
    text(4, "Manufacturer", 3),
    text(5, "Model", 255),
    text(6, "Serial Number", 255),
    number(7, "Year"),
    number(8, "Week"),
    number(9, "Width mm"),
    number(10, "Height mm"),
    text(11, "Preferred Mode", 11),
    kEndOfAttributes,
};

inline constexpr velAttribDef BATTERY_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Name", 64),
    text(3, "Manufacturer", 255),
    text(4, "Model", 255),
    text(5, "Serial Number", 255),
    text(6, "Technology", 16),
    number(7, "Design Capacity mWh"),
    number(8, "Full Capacity mWh"),
    number(9, "Cycles"),
    text(10, "State", 16),
    number(11, "Health Percent"),
    kEndOfAttributes,
};

inline constexpr velAttribDef CACHE_ATTRS_DEF[] = {
    number(1, "Index"),
    number(2, "Level"),
    text(3, "Kind", 11),
    number(4, "Size KB"),
    number(5, "Count"),
    number(6, "Ways"),
    number(7, "Line Bytes"),
    number(8, "Shared By"),
    kEndOfAttributes,
};

inline constexpr velAttribDef SLOT_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Designation", 255),
    text(3, "Type", 48),
    text(4, "Width", 8),
    text(5, "Usage", 12),
    text(6, "Length", 8),
    text(7, "Address", 16),
    kEndOfAttributes,
};

inline constexpr velAttribDef POWER_SUPPLY_ATTRS_DEF[] = {
    number(1, "Index"),
    text(2, "Location", 255),
    text(3, "Name", 255),
    text(4, "Manufacturer", 255),
    text(5, "Part Number", 255),
    text(6, "Serial Number", 255),
    number(7, "Max Watts"),
    text(8, "Status", 12),
    kEndOfAttributes,
};

inline constexpr velAttribDef SCAN_RESULT_ATTRS_DEF[] = {
    text(1, "Group", 32),
    number(2, "Rows"),
    number(3, "Milliseconds"),
    text(4, "Status", 9),
    text(5, "Reason", 255),
    kEndOfAttributes,
};

// clang-format on

}  // namespace quenlor::modern
