// Netlink answers of a recorded machine from lines that a person reads: network.txt
// (tests/recorded/README.md).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace quenlor::test {

class RecordedNetlink {
 public:
  RecordedNetlink() = default;
  // Throws std::runtime_error for a line of no known form. Of an empty text nothing is answered.
  explicit RecordedNetlink(const std::string& text);

  // The datagram for a request by its protocol, its type, and the first byte behind its header;
  // nothing when the kernel does not know such a request.
  std::optional<std::string> answer(int protocol, uint16_t type, uint8_t first) const;

  // ethtool_drvinfo of interfaces whose firmware is told, in hexadecimal.
  const std::map<std::string, std::string>& driverInfos() const { return m_driverInfos; }

 private:
  class Words;

  static std::string nextHop(Words& words);
  static std::string families();
  void takeLine(const std::string& line);
  void takeLink(Words& words);
  void takeAddress(Words& words);
  void takeRoute(Words& words);
  void takeRule(Words& words);
  void takeSettings(Words& words);
  void takeFirmware(Words& words);

  bool m_isTold = false;
  std::string m_links, m_addresses, m_routes4, m_routes6, m_rules, m_connectors, m_speeds;
  std::map<std::string, std::string> m_driverInfos;
};

}  // namespace quenlor::test
