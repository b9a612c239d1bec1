// The framing of netlink: messages in the datagrams of an answer, and the attributes of a message.
// Source: linux/netlink.h. Numbers are in the machine's own byte order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

// One message; the payload points into the answer.
struct NetlinkMessage {
  uint16_t type = 0;
  uint16_t flags = 0;
  std::string_view payload;
};

// An answer taken apart. Messages that came before an error or a cut hold.
struct NetlinkAnswer {
  std::vector<NetlinkMessage> messages;  // without the ones that end, fail or fill
  bool isWhole = false;  // its end is there: of a dump, of an acknowledgement, or a single message
  bool isInterrupted =
      false;      // what was listed changed meanwhile: things may be missing or doubled
  int error = 0;  // errno that the kernel answered, 0: none
};

// The answer must outlive what is returned.
NetlinkAnswer parseNetlinkAnswer(std::string_view bytes);

// One attribute; the value points into the message.
struct NetlinkAttribute {
  uint16_t type = 0;  // without the flags "nested" and "network byte order"
  std::string_view value;
};

// The attributes of a message, one after the other, up to the first that does not fit.
class NetlinkAttributes {
 public:
  explicit NetlinkAttributes(std::string_view bytes) : m_rest(bytes) {}
  std::optional<NetlinkAttribute> next();

 private:
  std::string_view m_rest;
};

// The value of the first attribute of the type; nothing when there is none.
std::optional<std::string_view> netlinkAttribute(std::string_view attributes, uint16_t type);

// Takes the fixed header of a message off the payload, with its padding; nothing when it is short.
template <class Header>
std::optional<Header> takeNetlinkHeader(std::string_view& payload) {
  if (payload.size() < sizeof(Header)) return {};
  Header header{};
  std::memcpy(&header, payload.data(), sizeof header);
  const size_t padded = (sizeof(Header) + 3) & ~size_t{3};
  payload.remove_prefix(padded < payload.size() ? padded : payload.size());
  return header;
}

// A number of exactly the width; nothing for any other length of the value.
template <class Number>
std::optional<Number> netlinkNumber(std::string_view value) {
  if (value.size() != sizeof(Number)) return {};
  Number number{};
  std::memcpy(&number, value.data(), sizeof number);
  return number;
}

// The text up to its terminator, which may be missing.
std::string netlinkText(std::string_view value);

// An attribute as it stands in a message, with its padding.
std::string netlinkAttributeBytes(uint16_t type, std::string_view value);
std::string netlinkAttributeBytes(uint16_t type, uint32_t number);

// A message ready to be sent: header, payload and attributes.
class NetlinkRequest {
 public:
  // `flags` besides NLM_F_REQUEST.
  NetlinkRequest(uint16_t type, uint16_t flags, const void* payload, size_t size);
  void add(const std::string& attribute);
  const std::string& bytes() const { return m_bytes; }

 private:
  void setLength();

  std::string m_bytes;
};

}  // namespace quenlor
