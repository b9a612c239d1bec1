// The two grammars of ifconfig's listing. A block begins with a line that has its interface's name
// in front; the lines behind it are indented.
#include <cctype>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/LineReader.h"
#include "readers/network/IfInfoList.h"

namespace quenlor {
namespace {

constexpr size_t kLineSize = 512;
constexpr std::string_view kInet = "inet";
constexpr std::string_view kAddr = "addr:";

bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool isAlnum(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }

// One address of a line.
struct Address {
  bool isIPv6;
  std::string text;
};

using AddressParser = std::optional<Address> (*)(std::string_view line);

// The name ends at the first other character: "eth0:1" is another address of eth0.
std::string interfaceName(std::string_view line) {
  size_t length = 0;
  while (length < line.size() && isAlnum(line[length])) ++length;
  return std::string(line.substr(0, length));
}

// The word at the front of the text, blanks before it skipped.
std::string firstWord(std::string_view text) {
  size_t start = 0;
  while (start < text.size() && isSpace(text[start])) ++start;
  size_t end = start;
  while (end < text.size() && !isSpace(text[end])) ++end;
  return std::string(text.substr(start, end - start));
}

// The text behind the first "inet" of an indented line; nothing unless the word begins there.
std::optional<std::string_view> behindInet(std::string_view line) {
  const size_t inet = line.find(kInet);
  if (inet == std::string_view::npos || inet == 0 || !isSpace(line[inet - 1])) return std::nullopt;
  return line.substr(inet + kInet.size());
}

// The address family by the character behind "inet"; nothing for words such as "inetd".
std::optional<bool> isIPv6(std::string_view behindInet) {
  if (behindInet.empty()) return std::nullopt;
  if (behindInet.front() == '6') return true;
  return isSpace(behindInet.front()) ? std::optional(false) : std::nullopt;
}

// "inet addr:192.168.1.5  Bcast:..." or "inet6 addr: fe80::1/64 Scope:Link"
std::optional<Address> linuxAddress(std::string_view line) {
  const auto rest = behindInet(line);
  if (!rest) return std::nullopt;
  const size_t addr = line.find(kAddr);
  const auto inet = static_cast<size_t>(rest->data() - line.data()) - kInet.size();
  const auto ipv6 = isIPv6(*rest);
  if (addr == std::string_view::npos || addr < inet || !ipv6) return std::nullopt;
  return Address{*ipv6, firstWord(line.substr(addr + kAddr.size()))};
}

// "inet 192.168.1.5 netmask ..." or "inet6 fe80::1  prefixlen 64"
std::optional<Address> unixAddress(std::string_view line) {
  const auto rest = behindInet(line);
  if (!rest) return std::nullopt;
  const auto ipv6 = isIPv6(*rest);
  if (!ipv6) return std::nullopt;
  return Address{*ipv6, firstWord(rest->substr(*ipv6 ? 1 : 0))};
}

// What is known of the block being read. Without a name it belongs to no interface.
struct PendingInterface {
  std::string name;
  std::optional<std::string> ipv4Address;
  std::optional<std::string> ipv6Address;

  void addTo(IfInfoList& list) {
    const auto text = [](std::optional<std::string>& field) {
      return field ? field->data() : nullptr;
    };
    if (!name.empty()) list.add({name.data(), text(ipv4Address), text(ipv6Address)});
  }
};

int parseListing(FILE* stream, IfInfoList& list, AddressParser addressOf) {
  if (stream == nullptr) return -1;
  PendingInterface pending;
  LineReader reader(stream, kLineSize);
  while (reader.next()) {
    const std::string_view line = reader.line();
    if (line.empty() || !isSpace(line.front())) {
      pending.addTo(list);
      pending = {interfaceName(line), std::nullopt, std::nullopt};
    } else if (auto address = addressOf(line)) {
      (address->isIPv6 ? pending.ipv6Address : pending.ipv4Address) = std::move(address->text);
    }
  }
  pending.addTo(list);
  return 0;
}

}  // namespace

int parse_ifconfig_linux(FILE* stream, IfInfoList& list) {
  return parseListing(stream, list, linuxAddress);
}

int parse_ifconfig_unix(FILE* stream, IfInfoList& list) {
  return parseListing(stream, list, unixAddress);
}

}  // namespace quenlor
