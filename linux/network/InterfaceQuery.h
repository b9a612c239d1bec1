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

// The interfaces that SIOCGIFCONF names: those with an IPv4 address, aliases such as "eth0:1" as
// entries of their own.
struct InterfaceNames {
  int byteCount = 0;  // as the kernel returned it
  std::vector<std::string> names;
};

class InterfaceQuery {
 public:
  // The type of the AF_INET socket that the kernel is asked through.
  explicit InterfaceQuery(int socketType);

  explicit operator bool() const { return static_cast<bool>(m_socket); }

  // Nothing when the kernel refuses. It does not tell when the buffer is too small: the list then
  // ends at the last record that fits as a whole.
  std::optional<InterfaceNames> list(size_t bufferSize) const;

  std::optional<in_addr> address(const std::string& name) const;
  std::optional<in_addr> netmask(const std::string& name) const;
  // "00:A0:C9:12:34:56"
  std::optional<std::string> hardwareAddress(const std::string& name) const;

 private:
  std::optional<ifreq> ask(unsigned long request, const std::string& name) const;

  Descriptor m_socket;
};

// Dotted quad.
std::string addressText(const in_addr& address);

}  // namespace quenlor
