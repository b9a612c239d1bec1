#include "groups/capacity/HostComponentIDGroup.h"

#include "groups/capacity/HostComponentIdAttributes.h"
#include "identity/Identity.h"
#include "log/CcLogWrapper.h"
#include "readers/virtualization/check_vm.h"
#include "readers/virtualization/retriever.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/HostComponentIDGroup.cpp";

using namespace host_component;

void traceHost(const HostInfo& host, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware HOST Manufact=%s", host.manufacturer.c_str());
  log->traceMAX(at(), "hardware HOST Product=%s", host.product.c_str());
  log->traceMAX(at(), "hardware HOST Version=%s", host.version.c_str());
  log->traceMAX(at(), "hardware HOST Type=%s", host.type.c_str());
  log->traceMAX(at(), "hardware HOST SerialNum=%s", host.serialNumber.c_str());
}

String typeOf(const HostInfo& host, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware Type = %s", host.type.c_str());
  if (host.manufacturer != kTypedMaker) return host.type;
  char type[5] = "";
  getTypeFromProd(host.product.c_str(), type);
  log->traceMAX(at(), "hardware ZUM Type = %s", type);
  return type;
}

}  // namespace

VelTable* HostComponentIDGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "HostComponentIDGroup");
  if (check_virtual() == 0) {
    log->traceMidExit(at(), "hardware %s", "HostComponentIDGroup");
    return nullptr;
  }
  HostInfo host;
  getHostInfo(host);
  traceHost(host, at);

  auto row = std::make_unique<VelTableRow>();
  addText(*row, kManufacturer, host.manufacturer.c_str());
  addText(*row, kProduct, host.product.c_str());
  addText(*row, kVersion, host.version.c_str());
  addText(*row, kSerialNumber, host.serialNumber.c_str());
  addText(*row, kType, typeOf(host, at).c_str());
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "HostComponentIDGroup");
  return table.release();
}

}  // namespace quenlor
