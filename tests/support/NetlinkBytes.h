// Answers of the kernel by netlink, made of their parts.
#pragma once

#include <linux/netlink.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace quenlor::test {

inline std::string padded(std::string bytes) {
  bytes.resize((bytes.size() + 3) & ~size_t{3});
  return bytes;
}

template <class Value>
std::string bytesOf(const Value& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

inline std::string attribute(uint16_t type, const std::string& value) {
  const nlattr header{static_cast<uint16_t>(sizeof(nlattr) + value.size()), type};
  return padded(bytesOf(header) + value);
}

template <class Number>
std::string numberAttribute(uint16_t type, Number number) {
  return attribute(type, bytesOf(number));
}

// With the terminator that the kernel writes.
inline std::string textAttribute(uint16_t type, const std::string& text) {
  return attribute(type, text + '\0');
}

inline std::string netlinkMessage(uint16_t type, uint16_t flags, const std::string& payload) {
  nlmsghdr header{};
  header.nlmsg_len = static_cast<uint32_t>(sizeof header + payload.size());
  header.nlmsg_type = type;
  header.nlmsg_flags = flags;
  return padded(bytesOf(header) + payload);
}

// One message of a dump.
template <class Header>
std::string dumpMessage(uint16_t type, const Header& header, const std::string& attributes) {
  return netlinkMessage(type, NLM_F_MULTI, padded(bytesOf(header)) + attributes);
}

inline std::string dumpEnd(int error = 0, uint16_t flags = 0) {
  return netlinkMessage(NLMSG_DONE, static_cast<uint16_t>(NLM_F_MULTI | flags), bytesOf(-error));
}

inline std::string netlinkError(int error) {
  return netlinkMessage(NLMSG_ERROR, 0, bytesOf(-error) + bytesOf(nlmsghdr{}));
}

inline std::string ipv4(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
  return {static_cast<char>(a), static_cast<char>(b), static_cast<char>(c), static_cast<char>(d)};
}

// A kernel that answers a request by its protocol, its type, and the first byte behind the header,
// which is the family or the command. To be set as FakeHost::netlink.
class FakeNetlink {
 public:
  using Key = std::tuple<int, uint16_t, uint8_t>;
  static constexpr uint8_t kAnyFamily = 0;

  // One answer for each time that it is asked; the last one stays.
  void answer(int protocol, uint16_t type, uint8_t first, std::vector<std::string> replies) {
    m_answers[{protocol, type, first}] = std::move(replies);
  }
  void fail(int protocol, uint16_t type, int error) { m_failures[{protocol, type}] = error; }

  int operator()(int protocol, const std::string& request, std::string& reply) {
    nlmsghdr header{};
    if (request.size() <= sizeof header) return EINVAL;
    std::memcpy(&header, request.data(), sizeof header);
    const Key key{protocol, header.nlmsg_type, static_cast<uint8_t>(request[sizeof header])};
    requests.push_back(key);
    const auto found = m_answers.find(key);
    if (found != m_answers.end()) {
      reply = found->second.front();
      if (found->second.size() > 1) found->second.erase(found->second.begin());
    }
    const auto failure = m_failures.find({protocol, header.nlmsg_type});
    if (failure != m_failures.end()) return failure->second;
    return found == m_answers.end() ? EOPNOTSUPP : 0;
  }

  std::vector<Key> requests;

 private:
  std::map<Key, std::vector<std::string>> m_answers;
  std::map<std::pair<int, uint16_t>, int> m_failures;
};

}  // namespace quenlor::test
