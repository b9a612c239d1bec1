// Network interfaces of a fake machine, asked through socket ioctls.
#pragma once

#include <arpa/inet.h>
#include <net/if.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

struct FakeInterface {
  std::string name;
  std::optional<std::string> address;  // nothing: the ioctl fails
  std::optional<std::string> mask;
  std::optional<std::string> mac;  // "00:A0:C9:12:34:56"
};

inline FakeInterface loopback() { return {"lo", "127.0.0.1", "255.0.0.0", "00:00:00:00:00:00"}; }

// "eth0" with address 10.0.0.1, "eth1" with 10.0.0.2 and so on.
inline std::vector<FakeInterface> ethernets(int count) {
  std::vector<FakeInterface> interfaces;
  for (int i = 0; i < count; ++i) {
    char mac[18];
    std::snprintf(mac, sizeof mac, "02:00:00:00:00:%02X", static_cast<unsigned>(i) & 0xFFU);
    interfaces.push_back(
        {"eth" + std::to_string(i), "10.0.0." + std::to_string(i + 1), "255.255.255.0", mac});
  }
  return interfaces;
}

// Remembers domain and type of the sockets asked for.
class SocketRecorder : public FakeHost {
 public:
  int socket(int domain, int type, int protocol) override {
    sockets.emplace_back(domain, type);
    return FakeHost::socket(domain, type, protocol);
  }
  std::vector<std::pair<int, int>> sockets;
};

// Answers as the kernel does: records of sizeof(ifreq), as many whole ones as fit.
class FakeInterfaces {
 public:
  explicit FakeInterfaces(FakeHost& machine) {
    machine.socketDevice.ioctl = [this](unsigned long request, void* argument) {
      return answer(request, argument);
    };
  }

  std::vector<FakeInterface> interfaces;
  bool listFails = false;
  std::optional<int> lengthReturned;    // instead of what was filled
  std::vector<size_t> listBufferSizes;  // as asked for

 private:
  static int fail(int error) {
    errno = error;
    return -1;
  }

  int answer(unsigned long request, void* argument) {
    if (request == SIOCGIFCONF) return answerList(static_cast<ifconf*>(argument));
    auto* exchange = static_cast<ifreq*>(argument);
    const FakeInterface* found = find(*exchange);
    if (found == nullptr) return fail(ENODEV);
    switch (request) {
      case SIOCGIFADDR:
        return putAddress(found->address, exchange->ifr_addr);
      case SIOCGIFNETMASK:
        return putAddress(found->mask, exchange->ifr_netmask);
      case SIOCGIFHWADDR:
        return putMac(found->mac, exchange->ifr_hwaddr);
      default:
        return fail(EINVAL);
    }
  }

  // The first of that name and address or, when there is none, the first of that name.
  const FakeInterface* find(const ifreq& exchange) const {
    const std::string name(exchange.ifr_name, ::strnlen(exchange.ifr_name, IFNAMSIZ));
    sockaddr_in asked{};
    std::memcpy(&asked, &exchange.ifr_addr, sizeof asked);
    char address[INET_ADDRSTRLEN] = "";
    ::inet_ntop(AF_INET, &asked.sin_addr, address, sizeof address);
    const FakeInterface* first = nullptr;
    for (const FakeInterface& each : interfaces) {
      if (each.name != name) continue;
      if (asked.sin_family == AF_INET && each.address == address) return &each;
      if (first == nullptr) first = &each;
    }
    return first;
  }

  int answerList(ifconf* list) {
    listBufferSizes.push_back(static_cast<size_t>(list->ifc_len));
    if (listFails) return fail(EINVAL);
    const auto room = static_cast<size_t>(list->ifc_len) / sizeof(ifreq);
    const size_t count = std::min(room, interfaces.size());
    for (size_t i = 0; i < count; ++i) {
      ifreq record{};
      std::strncpy(record.ifr_name, interfaces[i].name.c_str(), IFNAMSIZ);
      putAddress(interfaces[i].address, record.ifr_addr);
      std::memcpy(list->ifc_buf + i * sizeof record, &record, sizeof record);
    }
    list->ifc_len = lengthReturned.value_or(static_cast<int>(count * sizeof(ifreq)));
    return 0;
  }

  static int putAddress(const std::optional<std::string>& text, sockaddr& out) {
    if (!text) return fail(EADDRNOTAVAIL);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    ::inet_pton(AF_INET, text->c_str(), &address.sin_addr);
    std::memcpy(&out, &address, sizeof address);
    return 0;
  }

  static int putMac(const std::optional<std::string>& text, sockaddr& out) {
    if (!text) return fail(EADDRNOTAVAIL);
    unsigned bytes[6] = {};
    std::sscanf(text->c_str(), "%x:%x:%x:%x:%x:%x", &bytes[0], &bytes[1], &bytes[2], &bytes[3],
                &bytes[4], &bytes[5]);
    std::transform(std::begin(bytes), std::end(bytes), out.sa_data,
                   [](unsigned byte) { return static_cast<char>(byte); });
    return 0;
  }
};

}  // namespace quenlor::test
