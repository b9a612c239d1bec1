#include "groups/firmware/MemoryModulesGroup.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string>

#include "catalogue/Catalogue.h"
#include "groups/firmware/MemoryWords.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "readers/firmware/smbios/SMMemory.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/SMBIOS/MemoryModulesGroup.cpp";
constexpr TraceFunction at{kSourcePath, "getTableLeg()"};

constexpr uint32_t kIndex = 1;
constexpr uint32_t kModuleSizeMB = 2;
constexpr uint32_t kMaxModuleSizeMB = 3;
constexpr uint32_t kSocketName = 4;
constexpr uint32_t kPackaging = 5;
constexpr uint32_t kMemoryType = 6;

// Names of the form factors and memory types that the inventory knows, both from value 3 on. Newer
// ones (DDR and later) are left empty: consumers know only these.
constexpr unsigned kFirstNamed = 3;
constexpr const char* FORM_FACTORS[] = {
    "SIMM", "SIP",  "Chip",         "DIP",  "ZIP",    "Proprietary Card",
    "DIMM", "TSOP", "Row of chips", "RIMM", "SODIMM", "SRIMM"};
constexpr const char* MEMORY_TYPES[] = {"DRAM",  "EDRAM", "VRAM",   "SRAM",   "RAM",
                                        "ROM",   "FLASH", "EEPROM", "FEPROM", "EPROM",
                                        "CDRAM", "3DRAM", "SDRAM",  "SGRAM",  "RDRAM"};

struct Module {
  uint32_t index;  // from 1
  uint32_t sizeMB;
  std::string socket;
  std::string packaging;
  std::string type;
};

std::string named(std::span<const char* const> names, unsigned value) {
  const bool isKnown = value >= kFirstNamed && value - kFirstNamed < names.size();
  return isKnown ? names[value - kFirstNamed] : "";
}

std::string socketOf(const SMBIOSTable17Data& device) {
  std::string socket = SMBIOSTable::validText(device.getDeviceLocator());
  const std::string bank = SMBIOSTable::validText(device.getBankLocator());
  if (!bank.empty() && !socket.empty()) socket += "/";
  return socket + bank;
}

// Either field traces itself as it is read: the name's comes first, whatever the compiler.
std::string typeOf(const SMBIOSTable17Data& device) {
  const std::string name = named(MEMORY_TYPES, device.getMemoryType());
  return withoutTrailingBlank(deviceDetailWords(device.getTypeDetail()) + name);
}

Module moduleOf(const SMBIOSTable17Data& device, uint32_t index) {
  return {index, device.getSizeKB() >> 10, socketOf(device),
          named(FORM_FACTORS, device.getFormFactor()), typeOf(device)};
}

Module moduleOf(const SMBIOSTable6Data& module, uint32_t index) {
  const unsigned type = module.getMemoryType();
  const int64_t sizeMB = std::max<int64_t>(module.getInstalledSizeMB(), 0);
  return {index, saturateToUlong(static_cast<uint64_t>(sizeMB)),
          SMBIOSTable::validText(module.getSocketDesignation()), modulePackaging(type),
          withoutTrailingBlank(moduleTypeWords(type))};
}

void addModule(VelTable& table, const Module& module, uint32_t maxModuleSizeMB) {
  getCcLogHw()->traceMAX(at(), "hardware %s %u %u %u %s %s %s", "Module #", module.index,
                         module.sizeMB, maxModuleSizeMB, module.socket.c_str(),
                         module.packaging.c_str(), module.type.c_str());
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, module.index);
  addUlong(*row, kModuleSizeMB, module.sizeMB);
  addUlong(*row, kMaxModuleSizeMB, maxModuleSizeMB);
  addText(*row, kSocketName, module.socket);
  addText(*row, kPackaging, module.packaging);
  addText(*row, kMemoryType, module.type);
  table.addRow(row.release());
}

}  // namespace

MemoryModulesGroup::MemoryModulesGroup() : VelGroup(group::kMemoryModules, 1) {}

VelTable* MemoryModulesGroup::getTable() {
  const TraceFunction function{kSourcePath, "getTable()"};
  getCcLogHw()->traceMidEntry(function(), "hardware %s", "MemoryModulesGroup Group");
  VelTable* table = getTableLeg();
  getCcLogHw()->traceMidExit(function(), "hardware %s", "MemoryModulesGroup Group");
  return table;
}

VelTable* MemoryModulesGroup::getTableLeg() {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s", "Memory Modules Group");
  const SMBIOSTable* smbios = globalSMBIOSTable;
  if (smbios == nullptr || !smbios->isAvailable()) return nullptr;
  const int devices = smbios->getTable17Total();
  const int modules = devices > 0 ? 0 : smbios->getTable6Total();
  // Before the modules are looked at: the trace tells the limits of machines without any, too.
  unsigned maxModuleSizeMB = 0;
  unsigned slots = 0;
  getMemorySpecs(&maxModuleSizeMB, &slots);
  if (devices == 0 && modules == 0) return nullptr;
  log->traceMAX(at(), "hardware %s %d",
                devices > 0 ? "SMBIOS Table 17 is available:(" : "SMBIOS Table 6 is available:(",
                devices + modules);
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  for (int i = 0; i < devices + modules; ++i) {
    const auto index = static_cast<uint32_t>(i + 1);
    const Module module = devices > 0 ? moduleOf(*smbios->getTable17(i), index)
                                      : moduleOf(*smbios->getTable6(i), index);
    addModule(*table, module, maxModuleSizeMB);
  }
  return table.release();
}

}  // namespace quenlor
