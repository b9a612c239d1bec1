#include "groups/devices/PCIDeviceGroup.h"

#include <memory>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"
#include "readers/pci/PciListing.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/PCIDeviceGroup.cpp";
constexpr const char* kGroupName = "PCIDeviceGroup";
constexpr const char* kProcPci = "/proc/pci";
constexpr const char* kLspci = "/sbin/lspci -m 2>/dev/null";
constexpr size_t kLineSize = 256;

constexpr uint32_t kIndex = 1;
constexpr uint32_t kName = 2;
constexpr uint32_t kRevision = 3;

void addDevice(VelTable& table, const PciRow& device) {
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, table.getNumRows() + 1);
  addText(*row, kName, device.name);
  addText(*row, kRevision, device.revision);
  table.addRow(row.release());
}

void readProcPci(FILE* file, VelTable& table) {
  ProcPciParser parser;
  LineReader reader(file, kLineSize);
  while (reader.next()) {
    reader.cutTrailingControl();
    if (const auto device = parser.addLine(reader.line())) addDevice(table, *device);
  }
}

void readLspci(CommandStream& command, VelTable& table) {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  LineReader reader(command.get(), kLineSize);
  while (reader.next()) {
    log->traceMAX(at(), "hardware %s: parse line %u ...", kGroupName, table.getNumRows() + 1);
    if (const auto device = parseLspciLine(reader.line())) addDevice(table, *device);
  }
  const int status = command.close();
  if ((status & 0x7F) != 0) {
    log->traceMIN(at(), "hardware %s: '%s' exit abnormally. return code = %d", kGroupName, kLspci,
                  status >> 8 & 0xFF);
  }
}

// False when neither source can be opened.
bool readDevices(VelTable& table) {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s: use '%s' to get PCI device informations ...", kGroupName,
                kProcPci);
  if (const FileStream file = openFile(kProcPci)) {
    readProcPci(file.get(), table);
    return true;
  }
  log->traceMAX(at(), "hardware %s: unable to use '%s' try to use '%s' ...", kGroupName, kProcPci,
                kLspci);
  CommandStream command(kLspci);
  if (!command) {
    log->traceMIN(at(), "hardware %s", "could not obtain pci devices informations.");
    return false;
  }
  readLspci(command, table);
  return true;
}

}  // namespace

VelTable* PCIDeviceGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", kGroupName);
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  if (!readDevices(*table)) table.reset();
  log->traceMidExit(at(), "hardware %s", kGroupName);
  return table.release();
}

}  // namespace quenlor
