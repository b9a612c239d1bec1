#include "readers/interfaces/NetlinkDump.h"

#include <linux/fib_rules.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>

#include "host/Host.h"

namespace quenlor {
namespace {

std::string because(const char* what, const char* cause) {
  return std::string(what) + ": " + cause;
}

// A kernel without the table, or without the protocol, has nothing to list.
bool isWithoutSource(int error) {
  return error == EOPNOTSUPP || error == EPROTONOSUPPORT || error == EAFNOSUPPORT ||
         error == ENOENT;
}

bool isRefusal(int error) { return error == EACCES || error == EPERM; }

template <class Header>
std::string dumpRequest(uint16_t type, const Header& header) {
  return NetlinkRequest(type, NLM_F_DUMP, &header, sizeof header).bytes();
}

}  // namespace

NetlinkDump::NetlinkDump(int protocol, const std::string& request) {
  ask(protocol, request);
  if (m_answer.isInterrupted) ask(protocol, request);
}

void NetlinkDump::ask(int protocol, const std::string& request) {
  m_error = host().netlinkRequest(protocol, request, m_bytes);
  m_answer = parseNetlinkAnswer(m_bytes);
  if (m_error == 0) m_error = m_answer.error;
}

void NetlinkDump::report(const char* what, Outcome& outcome) const {
  if (m_answer.isWhole && m_error == 0) {
    if (m_answer.isInterrupted) {
      outcome.note(OutcomeStatus::kPartial, because(what, "changed while listed"));
    }
    return;
  }
  if (!m_answer.messages.empty() || m_error == 0) {
    outcome.note(OutcomeStatus::kPartial, because(what, "list cut"));
  } else if (isRefusal(m_error)) {
    outcome.note(OutcomeStatus::kRefused, because(what, "refused"));
  } else if (isWithoutSource(m_error)) {
    outcome.note(OutcomeStatus::kNoSource, because(what, "not told by this kernel"));
  } else {
    outcome.note(OutcomeStatus::kFailed, because(what, "no answer"));
  }
}

std::string linkDumpRequest() {
  const ifinfomsg header{};
  NetlinkRequest request(RTM_GETLINK, NLM_F_DUMP, &header, sizeof header);
  // Counters are half of what the kernel tells of a link, and nothing that an inventory reports.
  request.add(netlinkAttributeBytes(IFLA_EXT_MASK, uint32_t{RTEXT_FILTER_SKIP_STATS}));
  return request.bytes();
}

std::string addressDumpRequest() { return dumpRequest(RTM_GETADDR, ifaddrmsg{}); }

std::string routeDumpRequest(unsigned char family) {
  rtmsg header{};
  header.rtm_family = family;
  return dumpRequest(RTM_GETROUTE, header);
}

std::string ruleDumpRequest() { return dumpRequest(RTM_GETRULE, fib_rule_hdr{}); }

}  // namespace quenlor
