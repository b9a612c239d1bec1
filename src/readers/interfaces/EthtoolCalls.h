// What drivers tell by the ethtool calls (SIOCETHTOOL), which kernels before 5.6 have alone, and
// of which netlink has no counterpart for the firmware. Source: linux/ethtool.h.
#pragma once

#include <string>

#include "host/Handles.h"
#include "readers/interfaces/EthtoolMessages.h"

namespace quenlor {

// A socket for the calls. Only to be asked for interfaces that the kernel has just listed: for a
// name that it does not know, it tries to load a module.
class EthtoolCalls {
 public:
  EthtoolCalls();

  // Version of the card's firmware as the driver words it; empty when not told.
  std::string firmware(const std::string& interface) const;
  // Burnt-in address, raw bytes; empty when the driver does not know it.
  std::string permanentAddress(const std::string& interface) const;
  // Connector only, of ETHTOOL_GSET; empty when not told.
  std::string connector(const std::string& interface) const;

 private:
  bool call(const std::string& interface, void* request) const;

  Descriptor m_socket;
};

}  // namespace quenlor
