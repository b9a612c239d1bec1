#include "groups/firmware/ComponentIDGroup.h"

#include <memory>

#include "catalogue/Catalogue.h"
#include "host/Host.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/machine/smbiosinfo.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/SMBIOS/ComponentIDGroup.cpp";
constexpr TraceFunction at{kSourcePath, "getTable()"};

constexpr uint32_t kManufacturer = 1;
constexpr uint32_t kProduct = 2;
constexpr uint32_t kVersion = 3;
constexpr uint32_t kSerialNumber = 4;
constexpr uint32_t kType = 7;

void traceSystem() {
  struct utsname system {};
  if (host().uname(&system) != 0) return;
  getCcLogHw()->traceMAX(at(), "hardware %s %s", "system=", system.sysname);
}

void traceIdentity(const smbiosinfo& machine) {
  CcLogWrapper* log = getCcLogHw();
  const auto trace = [log](const char* label, const String& value) {
    log->traceMAX(at(), "hardware %s%s", label, value.c_str());
  };
  trace("Type retrieved for linux intel=", machine.type());
  trace("SerialNumber retrieved for linux intel=", machine.serialNumber());
  trace("Manufacturer retrieved for linux intel=", machine.manufacturer());
  trace("Version retrieved for linux intel=", machine.version());
  trace("Product retrieved for linux intel=", machine.product());
}

}  // namespace

ComponentIDGroup::ComponentIDGroup() : VelGroup(group::kComponentId, 1) {}

VelTable* ComponentIDGroup::getTable() {
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "ComponentIDGroup");
  traceSystem();
  const smbiosinfo machine;
  traceIdentity(machine);
  auto row = std::make_unique<VelTableRow>();
  addText(*row, kManufacturer, machine.manufacturer().c_str());
  addText(*row, kProduct, machine.product().c_str());
  addText(*row, kSerialNumber, machine.serialNumber().c_str());
  addText(*row, kVersion, machine.version().c_str());
  addText(*row, kType, machine.type().c_str());
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  getCcLogHw()->traceMidExit(at(), "hardware %s", "ComponentIDGroup");
  return table.release();
}

unsigned long ComponentIDGroup::totalPhysMemKB() {
  struct sysinfo memory {};
  return host().sysinfo(&memory) == 0 ? memory.totalram >> 10 : 0;
}

}  // namespace quenlor
