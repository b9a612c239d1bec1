// What the kernel says of network interfaces: the socket ioctls of netdevice(7).
#pragma once

#include <net/if.h>
#include <netinet/in.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/Handles.h"

namespace quenlor {

// One address of an interface. An interface with several is listed once for each, most often under
// the same name: only the address tells such records apart.
struct InterfaceRecord {
  std::string name;  // or that of an alias, such as "eth0:1"
  in_addr address;
};

// What SIOCGIFCONF names: all IPv4 addresses.
struct InterfaceList {
  int byteCount = 0;  // as the kernel returned it
  std::vector<InterfaceRecord> records;
};

class InterfaceQuery {
 public:
  // The type of the AF_INET socket that the kernel is asked through.
  explicit InterfaceQuery(int socketType);

  explicit operator bool() const { return static_cast<bool>(m_socket); }

  // Nothing when the kernel refuses. It does not tell when the buffer is too small: the list then
  // ends at the last record that fits as a whole.
  std::optional<InterfaceList> list(size_t bufferSize) const;

  std::optional<in_addr> address(const InterfaceRecord& record) const;
  std::optional<in_addr> netmask(const InterfaceRecord& record) const;
  // "00:A0:C9:12:34:56"
  std::optional<std::string> hardwareAddress(const InterfaceRecord& record) const;

 private:
  std::optional<ifreq> ask(unsigned long request, const InterfaceRecord& record) const;

  Descriptor m_socket;
};

// Dotted quad.
std::string addressText(const in_addr& address);

}  // namespace quenlor
