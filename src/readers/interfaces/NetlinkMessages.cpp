#include "readers/interfaces/NetlinkMessages.h"

#include <linux/netlink.h>

#include <algorithm>

namespace quenlor {
namespace {

constexpr size_t kAlignment = 4;

// Cuts the thing of `length` bytes and its padding off the front.
void skipAligned(std::string_view& bytes, size_t length) {
  const size_t padded = (length + kAlignment - 1) & ~(kAlignment - 1);
  bytes.remove_prefix(std::min(padded, bytes.size()));
}

void pad(std::string& bytes) { bytes.resize((bytes.size() + kAlignment - 1) & ~(kAlignment - 1)); }

// The errno in front of an error message or of a dump's end; 0 for an acknowledgement.
int errorOf(std::string_view payload) {
  int32_t code = 0;
  if (payload.size() < sizeof code) return 0;
  std::memcpy(&code, payload.data(), sizeof code);
  // The kernel sends the errno negated; the smallest number has no counterpart.
  return code < 0 && code > -4096 ? -code : 0;
}

// Takes one message into the answer; true when it is the last one.
bool takeMessage(const nlmsghdr& header, std::string_view payload, NetlinkAnswer& answer) {
  if ((header.nlmsg_flags & NLM_F_DUMP_INTR) != 0) answer.isInterrupted = true;
  if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR) {
    answer.error = errorOf(payload);
    answer.isWhole = answer.error == 0;
    return true;
  }
  if (header.nlmsg_type == NLMSG_NOOP) return false;
  answer.messages.push_back({header.nlmsg_type, header.nlmsg_flags, payload});
  answer.isWhole = (header.nlmsg_flags & NLM_F_MULTI) == 0;
  return answer.isWhole;
}

}  // namespace

NetlinkAnswer parseNetlinkAnswer(std::string_view bytes) {
  NetlinkAnswer answer;
  nlmsghdr header{};
  while (bytes.size() >= sizeof header) {
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.nlmsg_len < sizeof header || header.nlmsg_len > bytes.size()) break;
    const std::string_view payload = bytes.substr(sizeof header, header.nlmsg_len - sizeof header);
    if (takeMessage(header, payload, answer)) break;
    skipAligned(bytes, header.nlmsg_len);
  }
  return answer;
}

std::optional<NetlinkAttribute> NetlinkAttributes::next() {
  nlattr header{};
  if (m_rest.size() < sizeof header) return {};
  std::memcpy(&header, m_rest.data(), sizeof header);
  if (header.nla_len < sizeof header || header.nla_len > m_rest.size()) return {};
  const NetlinkAttribute attribute{static_cast<uint16_t>(header.nla_type & NLA_TYPE_MASK),
                                   m_rest.substr(sizeof header, header.nla_len - sizeof header)};
  skipAligned(m_rest, header.nla_len);
  return attribute;
}

std::optional<std::string_view> netlinkAttribute(std::string_view attributes, uint16_t type) {
  NetlinkAttributes walk(attributes);
  while (const auto attribute = walk.next()) {
    if (attribute->type == type) return attribute->value;
  }
  return {};
}

std::string netlinkText(std::string_view value) {
  return std::string(value.substr(0, value.find('\0')));
}

std::string netlinkAttributeBytes(uint16_t type, std::string_view value) {
  const nlattr header{static_cast<uint16_t>(sizeof(nlattr) + value.size()), type};
  std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
  bytes += value;
  pad(bytes);
  return bytes;
}

std::string netlinkAttributeBytes(uint16_t type, uint32_t number) {
  return netlinkAttributeBytes(
      type, std::string_view(reinterpret_cast<const char*>(&number), sizeof number));
}

NetlinkRequest::NetlinkRequest(uint16_t type, uint16_t flags, const void* payload, size_t size) {
  nlmsghdr header{};
  header.nlmsg_type = type;
  header.nlmsg_flags = static_cast<uint16_t>(flags | NLM_F_REQUEST);
  m_bytes.assign(reinterpret_cast<const char*>(&header), sizeof header);
  m_bytes.append(static_cast<const char*>(payload), size);
  pad(m_bytes);
  setLength();
}

void NetlinkRequest::add(const std::string& attribute) {
  m_bytes += attribute;
  setLength();
}

// nlmsg_len stands first in the header.
void NetlinkRequest::setLength() {
  const auto length = static_cast<uint32_t>(m_bytes.size());
  std::memcpy(m_bytes.data(), &length, sizeof length);
}

}  // namespace quenlor
