#include "groups/network/IpAddressGroup.h"

#include <sys/socket.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"
#include "readers/network/DefaultGateway.h"
#include "readers/network/HostNames.h"
#include "readers/network/IfInfoList.h"
#include "readers/network/InterfaceQuery.h"
#include "readers/network/ResolvConf.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/IpAddressGroup.cpp";
constexpr TraceFunction kAt{kSourcePath, "getTable()"};
constexpr const char* kGroupName = "IpAddressGroup";
constexpr const char* kHostNameCommand = "hostname";
constexpr const char* kLoopback = "127.0.0.1";
constexpr size_t kInterfaceBufferSize = 2000;
constexpr size_t kHostNameLineSize = 255;
constexpr size_t kGatewaySize = 255;

// Attribute ids.
constexpr uint32_t kIndex = 1;
constexpr uint32_t kAddress = 2;
constexpr uint32_t kHostname = 3;
constexpr uint32_t kDomain = 4;
constexpr uint32_t kSubnet = 5;
constexpr uint32_t kGateway = 6;
constexpr uint32_t kPrimaryDns = 7;
constexpr uint32_t kSecondaryDns = 8;
constexpr uint32_t kPermanentMacAddress = 10;
constexpr uint32_t kIpv6Address = 11;

// One interface or alias, and what is known of it before anything is traced or reported.
struct Interface {
  InterfaceRecord record;
  std::optional<in_addr> address;
  std::optional<std::string> reverseName;

  std::string addressText() const { return address ? quenlor::addressText(*address) : ""; }
  bool hasHostName() const { return address && addressText() != kLoopback; }
};

struct IpAddress {
  std::string address;
  std::string hostName;
  std::string mask;
  std::string macAddress;
  ResolvConf resolver;  // its domain is that of the reverse-resolved name, if that has one
};

// Looks up the names of all addresses at once; the loopback needs none.
void findReverseNames(std::vector<Interface>& interfaces) {
  std::vector<in_addr> addresses;
  for (const Interface& interface : interfaces) {
    if (interface.hasHostName()) addresses.push_back(*interface.address);
  }
  auto names = hostNamesOf(addresses);
  auto name = names.begin();
  for (Interface& interface : interfaces) {
    if (interface.hasHostName()) interface.reverseName = std::move(*name++);
  }
}

std::vector<Interface> findInterfaces(const InterfaceQuery& query) {
  const auto list = query.list(kInterfaceBufferSize);
  if (!list) return {};
  getCcLogHw()->traceMAX(kAt(), "hardware %s %d", "ifc_len=", list->byteCount);
  getCcLogHw()->traceMAX(kAt(), "hardware %s %zu", "count =", list->records.size());
  std::vector<Interface> interfaces;
  for (const InterfaceRecord& record : list->records) {
    interfaces.push_back({record, query.address(record), std::nullopt});
  }
  findReverseNames(interfaces);
  return interfaces;
}

// First word of the "hostname" command; empty when it prints none.
std::string readOwnHostName() {
  const CommandStream command(kHostNameCommand);
  LineReader reader(command.get(), kHostNameLineSize);
  if (!reader.next()) return {};
  char* rest = nullptr;
  const char* token = strtok_r(reader.line(), " \t\n", &rest);
  return token == nullptr ? "" : token;
}

// The machine's own name, for addresses that have none. Asked at most once in a collection.
class OwnHostName {
 public:
  const std::string& get() {
    if (!m_name) m_name = readOwnHostName();
    if (!m_name->empty()) getCcLogHw()->traceMAX(kAt(), "hardware token1=%s", m_name->c_str());
    return *m_name;
  }

 private:
  std::optional<std::string> m_name;
};

void splitReverseName(const std::string& name, IpAddress& result) {
  const size_t dot = name.find('.');
  result.hostName = name.substr(0, dot);
  if (dot == std::string::npos) return;
  result.resolver.domain = name.substr(dot + 1);
  getCcLogHw()->traceMAX(kAt(), "hardware %s%s%s%s", "hostname=>", result.hostName.c_str(),
                         "< domain=>", result.resolver.domain.c_str());
}

IpAddress readAddress(const InterfaceQuery& query, const Interface& interface, OwnHostName& own) {
  CcLogWrapper* log = getCcLogHw();
  IpAddress result;
  log->traceMAX(kAt(), "hardware %s %s", "ifr_name=", interface.record.name.c_str());
  result.address = interface.addressText();
  if (interface.address) log->traceMAX(kAt(), "hardware %s %s", "ip addr=", result.address.c_str());

  if (auto mac = query.hardwareAddress(interface.record)) {
    result.macAddress = std::move(*mac);
    log->traceMAX(kAt(), "hardware %s %s", "MAC addr=", result.macAddress.c_str());
  } else {
    log->traceMIN(kAt(), "hardware %s", "MAC addr Failed");
  }

  if (interface.reverseName) {
    splitReverseName(*interface.reverseName, result);
  } else if (interface.hasHostName()) {
    result.hostName = own.get();
  }
  if (interface.hasHostName()) {
    log->traceMAX(kAt(), "hardware hostname=<%s>", result.hostName.c_str());
  }

  if (const auto mask = query.netmask(interface.record)) {
    result.mask = addressText(*mask);
    log->traceMAX(kAt(), "hardware %s %s", "subnet=", result.mask.c_str());
  }
  readResolvConf(result.resolver);
  return result;
}

bool isReported(const IpAddress& address) {
  return !address.address.empty() && address.address != kLoopback && !address.mask.empty();
}

const char* ipv6AddressOf(const IpAddress& address, IfInfoList& list) {
  const IfInfo* info = findIPv4(list, address.address.c_str());
  return info == nullptr || info->ipv6Address == nullptr ? "" : info->ipv6Address;
}

void addTextUnlessEmpty(VelTableRow& row, uint32_t id, const std::string& text) {
  if (!text.empty()) addText(row, id, text);
}

void addAddress(VelTable& table, const IpAddress& address, IfInfoList& list) {
  char gateway[kGatewaySize] = "";
  getDefaultGateway(gateway, sizeof gateway);

  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, table.getNumRows() + 1);
  addText(*row, kAddress, address.address);
  addText(*row, kHostname, address.hostName);
  addText(*row, kDomain, address.resolver.domain);
  addText(*row, kSubnet, address.mask);
  if (gateway[0] != '\0') {
    getCcLogHw()->traceMAX(kAt(), "hardware %s %s", "default gateway=", gateway);
    addText(*row, kGateway, gateway);
  }
  addTextUnlessEmpty(*row, kPrimaryDns, address.resolver.primaryDns);
  addTextUnlessEmpty(*row, kSecondaryDns, address.resolver.secondaryDns);
  addText(*row, kPermanentMacAddress, address.macAddress);
  addText(*row, kIpv6Address, ipv6AddressOf(address, list));
  table.addRow(row.release());
}

}  // namespace

VelTable* IpAddressGroup::getTable() {
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(kAt(), "hardware %s", kGroupName);
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  IfInfoList list;
  populateIfInfoList(list);
  if (const InterfaceQuery query(SOCK_DGRAM); query) {
    OwnHostName ownHostName;
    for (const Interface& interface : findInterfaces(query)) {
      const IpAddress address = readAddress(query, interface, ownHostName);
      if (isReported(address)) addAddress(*table, address, list);
    }
  }
  log->traceMidExit(kAt(), "hardware %s", kGroupName);
  return table.release();
}

}  // namespace quenlor
