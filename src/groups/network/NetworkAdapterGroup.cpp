#include "groups/network/NetworkAdapterGroup.h"

#include <sys/socket.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "identity/Identity.h"
#include "log/CcLogWrapper.h"
#include "readers/network/InterfaceQuery.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/NetworkAdapterGroup.cpp";
constexpr TraceFunction kAt{kSourcePath, "getTable()"};
constexpr const char* kGroupName = "NetworkAdapterGroup";
constexpr const char* kNoHardware = "00:00:00:00:00:00";  // the loopback's, for example
constexpr size_t kInterfaceBufferSize = 8192;

// Attribute ids.
constexpr uint32_t kIndex = 1;
constexpr uint32_t kId = 2;
constexpr uint32_t kPermanentAddress = 3;
constexpr uint32_t kCurrentAddress = 4;
constexpr uint32_t kType = 5;
constexpr uint32_t kModel = 6;

// The kind of an adapter by the front of its interface's name.
struct AdapterType {
  std::string_view prefix;
  uint32_t code;
  const char* trace;
};

// In the order of the test; the last one fits every name.
constexpr AdapterType ADAPTER_TYPES[] = {
    {"eth", 3, "type=ethernet"},
    {"tr", 4, "type=tokenring"},
    {"slip", 6, "type=SLIP"},
    {"escon", 7, "type=ESCON"},
    {"ctc", 8, "type=ctc (channel to channel)"},
    {"iucv", 9, "type=IUCV"},
    {"ppp", 10, "type=ppp"},
    {"", 2, "type=unknown"},
};

uint32_t adapterTypeOf(const std::string& name) {
  const AdapterType& type =
      *std::find_if(std::begin(ADAPTER_TYPES), std::end(ADAPTER_TYPES) - 1,
                    [&](const AdapterType& row) { return name.starts_with(row.prefix); });
  getCcLogHw()->traceMAX(kAt(), "hardware %s", type.trace);
  return type.code;
}

void addAdapter(VelTable& table, const std::string& name, const std::string& macAddress) {
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, table.getNumRows() + 1);
  addText(*row, kId, md5Text(macAddress + name));
  addText(*row, kPermanentAddress, macAddress);
  addText(*row, kCurrentAddress, macAddress);
  addUlong(*row, kType, adapterTypeOf(name));
  addText(*row, kModel, name);
  table.addRow(row.release());
}

void addAdapters(const InterfaceQuery& query, VelTable& table) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(kAt(), "hardware %s %zu", "ifc_len=", kInterfaceBufferSize);
  const auto list = query.list(kInterfaceBufferSize);
  if (!list) return;
  log->traceMAX(kAt(), "hardware %s %d", "ifc_len=", list->byteCount);
  log->traceMAX(kAt(), "hardware %s %zu", "count =", list->records.size());

  for (const InterfaceRecord& record : list->records) {
    log->traceMAX(kAt(), "hardware %s %s", "ifr_name=", record.name.c_str());
    const auto macAddress = query.hardwareAddress(record);
    if (!macAddress) {
      log->traceMIN(kAt(), "hardware %s", "MAC addr FAILED");
      continue;
    }
    log->traceMAX(kAt(), "hardware %s %s", "MAC addr=", macAddress->c_str());
    if (*macAddress != kNoHardware) addAdapter(table, record.name, *macAddress);
  }
}

}  // namespace

VelTable* NetworkAdapterGroup::getTable() {
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(kAt(), "hardware %s", kGroupName);
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  if (const InterfaceQuery query(SOCK_STREAM); query) addAdapters(query, *table);
  log->traceMidExit(kAt(), "hardware %s", kGroupName);
  return table.release();
}

}  // namespace quenlor
