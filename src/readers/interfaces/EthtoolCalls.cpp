#include "readers/interfaces/EthtoolCalls.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr size_t kLongestAddress = 32;  // MAX_ADDR_LEN of the kernel

// What drivers without firmware write into the field for its version.
constexpr std::string_view NO_FIRMWARE[] = {"N/A",  "n/a",     "NA",     "none",
                                            "None", "unknown", "Unknown"};

// ETHTOOL_GPERMADDR with the room that its address may need.
struct PermanentAddressRequest {
  uint32_t command = ETHTOOL_GPERMADDR;
  uint32_t size = kLongestAddress;
  char bytes[kLongestAddress] = {};
};

template <size_t size>
std::string_view textOf(const char (&field)[size]) {
  return {field, strnlen(field, size)};
}

}  // namespace

EthtoolCalls::EthtoolCalls() : m_socket(host().socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}

bool EthtoolCalls::call(const std::string& interface, void* request) const {
  ifreq frame{};
  if (!m_socket || interface.size() >= sizeof frame.ifr_name) return false;
  std::copy(interface.begin(), interface.end(), frame.ifr_name);
  frame.ifr_data = static_cast<char*>(request);
  return host().ioctl(m_socket.get(), SIOCETHTOOL, &frame) == 0;
}

std::string EthtoolCalls::firmware(const std::string& interface) const {
  ethtool_drvinfo request{};
  request.cmd = ETHTOOL_GDRVINFO;
  if (!call(interface, &request)) return {};
  const std::string_view version = trimmed(textOf(request.fw_version));
  const bool isNone =
      std::find(std::begin(NO_FIRMWARE), std::end(NO_FIRMWARE), version) != std::end(NO_FIRMWARE);
  return isNone ? std::string() : std::string(version);
}

std::string EthtoolCalls::permanentAddress(const std::string& interface) const {
  PermanentAddressRequest request;
  if (!call(interface, &request) || request.size > kLongestAddress) return {};
  const std::string address(request.bytes, request.size);
  return address.find_first_not_of('\0') == std::string::npos ? std::string() : address;
}

std::string EthtoolCalls::connector(const std::string& interface) const {
  ethtool_cmd request{};
  request.cmd = ETHTOOL_GSET;
  return call(interface, &request) ? connectorWord(request.port) : std::string();
}

}  // namespace quenlor
