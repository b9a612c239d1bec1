// Asks the kernel for a whole table of its own by netlink.
#pragma once

#include <string>

#include "base/Outcome.h"
#include "readers/interfaces/NetlinkMessages.h"

namespace quenlor {

// A dump and the bytes that it points into. Not to be copied or moved: the messages are views.
class NetlinkDump {
 public:
  // Sends the request; once more when the table changed while it was listed.
  NetlinkDump(int protocol, const std::string& request);
  NetlinkDump(const NetlinkDump&) = delete;
  NetlinkDump& operator=(const NetlinkDump&) = delete;

  const std::vector<NetlinkMessage>& messages() const { return m_answer.messages; }
  int error() const { return m_error; }  // errno of the call or of the kernel's answer
  // Says in `outcome` what is not whole, as "what: cause".
  void report(const char* what, Outcome& outcome) const;

 private:
  void ask(int protocol, const std::string& request);

  std::string m_bytes;
  NetlinkAnswer m_answer;
  int m_error = 0;
};

// Dump requests of the rtnetlink tables; the family is AF_UNSPEC for all families.
std::string linkDumpRequest();
std::string addressDumpRequest();
std::string routeDumpRequest(unsigned char family);
std::string ruleDumpRequest();

}  // namespace quenlor
