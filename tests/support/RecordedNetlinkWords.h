// The words of network.txt (tests/recorded/README.md) and the numbers that the kernel has for them.
#pragma once

#include <arpa/inet.h>
#include <linux/ethtool.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <net/if_arp.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

namespace quenlor::test {

using Numbers = std::map<std::string, uint32_t>;

inline const Numbers HARDWARE_TYPES{{"loopback", ARPHRD_LOOPBACK},
                                    {"ether", ARPHRD_ETHER},
                                    {"infiniband", ARPHRD_INFINIBAND},
                                    {"ppp", ARPHRD_PPP},
                                    {"none", 65534},
                                    {"ipip", ARPHRD_TUNNEL},
                                    {"sit", ARPHRD_SIT},
                                    {"ieee80211", ARPHRD_IEEE80211}};
inline const Numbers STATES{{"unknown", 0}, {"notpresent", 1}, {"down", 2}, {"lowerlayerdown", 3},
                            {"testing", 4}, {"dormant", 5},    {"up", 6}};
inline const Numbers SCOPES{{"global", RT_SCOPE_UNIVERSE},
                            {"site", RT_SCOPE_SITE},
                            {"link", RT_SCOPE_LINK},
                            {"host", RT_SCOPE_HOST}};
inline const Numbers ORIGINS{
    {"lo", IFAPROT_KERNEL_LO}, {"ra", IFAPROT_KERNEL_RA}, {"ll", IFAPROT_KERNEL_LL}};
inline const Numbers DUPLEXES{
    {"half", DUPLEX_HALF}, {"full", DUPLEX_FULL}, {"unknown", DUPLEX_UNKNOWN}};
inline const Numbers FAMILIES{{"ipv4", AF_INET}, {"ipv6", AF_INET6}};

inline uint32_t valueIn(const Numbers& numbers, const std::string& word) {
  const auto found = numbers.find(word);
  if (found == numbers.end()) throw std::runtime_error("network.txt, unknown word: " + word);
  return found->second;
}

// "00:1b:21:aa:bb:cc" as bytes; colons may be left out.
inline std::string hardwareAddress(const std::string& text) {
  std::string digits;
  std::string bytes;
  for (const char character : text) {
    if (character != ':') digits += character;
    if (digits.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    digits.clear();
  }
  return bytes;
}

struct Prefix {
  uint8_t family = AF_INET;
  uint8_t length = 0;
  std::string bytes;
};

inline Prefix prefixOf(const std::string& text) {
  const size_t slash = text.find('/');
  const std::string address = text.substr(0, slash);
  Prefix prefix;
  prefix.family = address.find(':') == std::string::npos ? AF_INET : AF_INET6;
  prefix.bytes.resize(prefix.family == AF_INET ? 4 : 16);
  if (::inet_pton(prefix.family, address.c_str(), prefix.bytes.data()) != 1) {
    throw std::runtime_error("network.txt, no address: " + text);
  }
  const auto whole = static_cast<uint8_t>(prefix.bytes.size() * 8);
  prefix.length =
      slash == std::string::npos ? whole : static_cast<uint8_t>(std::stoul(text.substr(slash + 1)));
  return prefix;
}

}  // namespace quenlor::test
