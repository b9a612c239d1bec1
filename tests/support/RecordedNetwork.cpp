// Answers of a recorded machine's netlink and ethtool interfaces.
#include <arpa/inet.h>
#include <linux/ethtool.h>
#include <linux/netlink.h>
#include <linux/sockios.h>
#include <net/if.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tests/support/RecordedHost.h"

namespace quenlor::test {
namespace {

// Bytes of a text of hexadecimal digits; blanks and colons between them are left out.
std::string bytesOfHex(const std::string& text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
               [](unsigned char c) { return std::isxdigit(c) != 0; });
  std::string bytes;
  for (size_t at = 0; at + 1 < digits.size(); at += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
  }
  return bytes;
}

// Messages of a recording carry the numbers of the request that was once sent; the kernel's carry
// those of the present one.
void renumber(std::string& answer, const nlmsghdr& request) {
  for (size_t at = 0; answer.size() - at >= sizeof(nlmsghdr);) {
    nlmsghdr header{};
    std::memcpy(&header, answer.data() + at, sizeof header);
    const size_t step = NLMSG_ALIGN(static_cast<size_t>(header.nlmsg_len));
    header.nlmsg_seq = request.nlmsg_seq;
    header.nlmsg_pid = request.nlmsg_pid;
    std::memcpy(answer.data() + at, &header, sizeof header);
    if (header.nlmsg_len < sizeof header || step > answer.size() - at) return;
    at += step;
  }
}

// The kernel first tells how many words of link modes it has, negated, when asked with another
// number; only a request that fits is answered in full.
bool asksForWords(const void* request, const std::string& answer) {
  ethtool_link_settings asked{};
  ethtool_link_settings known{};
  std::memcpy(&asked, request, sizeof asked);
  std::memcpy(&known, answer.data(), std::min(sizeof known, answer.size()));
  return asked.link_mode_masks_nwords != known.link_mode_masks_nwords;
}

void answerWords(void* request, const std::string& answer) {
  ethtool_link_settings known{};
  std::memcpy(&known, answer.data(), std::min(sizeof known, answer.size()));
  ethtool_link_settings reply{};
  reply.cmd = ETHTOOL_GLINKSETTINGS;
  reply.link_mode_masks_nwords = static_cast<int8_t>(-known.link_mode_masks_nwords);
  std::memcpy(request, &reply, sizeof reply);
}

// How much of an answer the asker has room for.
size_t roomFor(uint32_t command, const void* request, size_t size) {
  if (command != ETHTOOL_GPERMADDR) return size;
  ethtool_perm_addr asked{};
  std::memcpy(&asked, request, sizeof asked);
  return std::min(size, sizeof asked + asked.size);
}

}  // namespace

int RecordedHost::socket(int, int, int) {
  const std::lock_guard lock(m_mutex);
  m_open[m_nextDescriptor] = {};
  return m_nextDescriptor++;
}

int RecordedHost::ioctl(int fd, unsigned long request, void* argument) {
  {
    const std::lock_guard lock(m_mutex);
    const auto found = m_open.find(fd);
    if (found == m_open.end()) return fail(EBADF);
    if (found->second.node != nullptr || request != SIOCETHTOOL) return fail(ENOTTY);
  }
  return ethtool(argument);
}

int RecordedHost::ethtool(void* argument) const {
  const auto* asked = static_cast<const ifreq*>(argument);
  const auto interface = m_ethtool.find(
      std::string(asked->ifr_name, ::strnlen(asked->ifr_name, sizeof asked->ifr_name)));
  if (interface == m_ethtool.end()) return fail(ENODEV);
  uint32_t command = 0;
  std::memcpy(&command, asked->ifr_data, sizeof command);
  for (const auto& [number, hex] : interface->second) {
    if (std::stoul(number, nullptr, 0) != command) continue;
    const std::string answer = bytesOfHex(hex);
    if (command == ETHTOOL_GLINKSETTINGS && asksForWords(asked->ifr_data, answer)) {
      answerWords(asked->ifr_data, answer);
      return 0;
    }
    std::memcpy(asked->ifr_data, answer.data(), roomFor(command, asked->ifr_data, answer.size()));
    return 0;
  }
  return fail(EOPNOTSUPP);
}

std::optional<std::string> RecordedHost::netlinkAnswer(int protocol, const std::string& request) {
  nlmsghdr header{};
  std::memcpy(&header, request.data(), sizeof header);
  const auto family = static_cast<uint8_t>(request[NLMSG_HDRLEN]);
  const std::string key = "netlink/" + std::to_string(protocol) + "-" +
                          std::to_string(header.nlmsg_type) + "-" + std::to_string(family);
  const std::lock_guard lock(m_mutex);
  const std::string again = key + "." + std::to_string(++m_netlinkRequests[key]) + ".bin";
  std::optional<std::string> answer;
  if (fileOf(again)) {
    answer = optionalFile(again);
  } else if (fileOf(key + ".bin")) {
    answer = optionalFile(key + ".bin");
  } else {
    answer = m_netlink.answer(protocol, header.nlmsg_type, family);
  }
  if (answer) renumber(*answer, header);
  return answer;
}

int RecordedHost::netlinkRequest(int protocol, const std::string& request, std::string& reply) {
  reply.clear();
  if (request.size() <= NLMSG_HDRLEN) return EINVAL;
  const std::optional<std::string> answer = netlinkAnswer(protocol, request);
  if (!answer) return EOPNOTSUPP;
  reply = *answer;
  return 0;
}

bool RecordedHost::hostNameOfAddress(const in_addr& address, std::string&) {
  char text[INET_ADDRSTRLEN] = "";
  ::inet_ntop(AF_INET, &address, text, sizeof text);
  forbid(std::string("resolve ") + text, ENOENT);
  return false;
}

}  // namespace quenlor::test
