#include "readers/network/InterfaceQuery.h"

#include <arpa/inet.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace quenlor {
namespace {

in_addr inetAddress(const sockaddr& generic) {
  sockaddr_in address;
  std::memcpy(&address, &generic, sizeof address);
  return address.sin_addr;
}

InterfaceRecord recordAt(const char* bytes) {
  ifreq record;
  std::memcpy(&record, bytes, sizeof record);
  return {std::string(record.ifr_name, ::strnlen(record.ifr_name, IFNAMSIZ)),
          inetAddress(record.ifr_addr)};
}

}  // namespace

InterfaceQuery::InterfaceQuery(int socketType) : m_socket(host().socket(AF_INET, socketType, 0)) {}

std::optional<InterfaceList> InterfaceQuery::list(size_t bufferSize) const {
  std::vector<char> buffer(bufferSize, '\0');
  ifconf request{};
  request.ifc_len = static_cast<int>(buffer.size());
  request.ifc_buf = buffer.data();
  if (host().ioctl(m_socket.get(), SIOCGIFCONF, &request) < 0) return std::nullopt;

  InterfaceList result{request.ifc_len, {}};
  const size_t used = std::min(static_cast<size_t>(std::max(request.ifc_len, 0)), bufferSize);
  for (size_t offset = 0; offset + sizeof(ifreq) <= used; offset += sizeof(ifreq)) {
    result.records.push_back(recordAt(buffer.data() + offset));
  }
  return result;
}

std::optional<in_addr> InterfaceQuery::address(const InterfaceRecord& record) const {
  const auto answer = ask(SIOCGIFADDR, record);
  return answer ? std::optional(inetAddress(answer->ifr_addr)) : std::nullopt;
}

std::optional<in_addr> InterfaceQuery::netmask(const InterfaceRecord& record) const {
  const auto answer = ask(SIOCGIFNETMASK, record);
  return answer ? std::optional(inetAddress(answer->ifr_netmask)) : std::nullopt;
}

std::optional<std::string> InterfaceQuery::hardwareAddress(const InterfaceRecord& record) const {
  const auto answer = ask(SIOCGIFHWADDR, record);
  if (!answer) return std::nullopt;
  unsigned char bytes[6];
  std::memcpy(bytes, answer->ifr_hwaddr.sa_data, sizeof bytes);
  char text[18];
  std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", bytes[0], bytes[1], bytes[2],
                bytes[3], bytes[4], bytes[5]);
  return text;
}

// Each answer overwrites its request, so every question gets a request of its own. With a name
// alone, the kernel would always answer for the first address of that name.
std::optional<ifreq> InterfaceQuery::ask(unsigned long request,
                                         const InterfaceRecord& record) const {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr = record.address;
  ifreq exchange{};
  std::memcpy(exchange.ifr_name, record.name.data(),
              std::min<size_t>(record.name.size(), IFNAMSIZ));
  std::memcpy(&exchange.ifr_addr, &address, sizeof address);
  if (host().ioctl(m_socket.get(), request, &exchange) < 0) return std::nullopt;
  return exchange;
}

std::string addressText(const in_addr& address) {
  char text[INET_ADDRSTRLEN] = "";
  ::inet_ntop(AF_INET, &address, text, sizeof text);
  return text;
}

}  // namespace quenlor
