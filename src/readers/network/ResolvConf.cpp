#include "readers/network/ResolvConf.h"

#include <cstring>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/IpAddressGroup.cpp";
constexpr TraceFunction kAt{kSourcePath, "getTable()"};
constexpr const char* kPath = "/etc/resolv.conf";
constexpr size_t kLineSize = 255;
constexpr const char* kBlanks = " \t\n";
constexpr const char* kDomainEnds = " \t\n#";
// Only the length tells a dotted quad from an IPv6 address, so "::1" passes.
constexpr size_t kLongestNameServer = 15;

void takeNameServer(char** rest, ResolvConf& result) {
  const char* server = strtok_r(nullptr, kBlanks, rest);
  if (server == nullptr || std::strlen(server) > kLongestNameServer) return;
  const bool isFirst = result.primaryDns.empty();
  (isFirst ? result.primaryDns : result.secondaryDns) = server;
  getCcLogHw()->traceMAX(kAt(), "hardware %s %s",
                         isFirst ? "nameserver1=" : "nameserver2=", server);
}

void takeDomain(char** rest, ResolvConf& result) {
  const char* domain = strtok_r(nullptr, kDomainEnds, rest);
  if (domain == nullptr) {
    getCcLogHw()->traceMAX(kAt(), "hardware %s", "/etc/resolv.conf domain name null");
    return;
  }
  result.domain = domain;
  getCcLogHw()->traceMAX(kAt(), "hardware %s %s",
                         "using domainName from /etc/resolv.conf:", domain);
}

void takeLine(char* line, ResolvConf& result) {
  char* rest = nullptr;
  const char* keyword = strtok_r(line, kBlanks, &rest);
  if (keyword == nullptr) return;
  if (std::strcmp(keyword, "nameserver") == 0) {
    takeNameServer(&rest, result);
  } else if (std::strcmp(keyword, "domain") == 0 && result.domain.empty()) {
    takeDomain(&rest, result);
  }
}

}  // namespace

void readResolvConf(ResolvConf& result) {
  const FileStream file = openFile(kPath);
  if (!file) return;
  LineReader reader(file.get(), kLineSize);
  while (result.secondaryDns.empty() && reader.next()) takeLine(reader.line(), result);
  getCcLogHw()->traceMAX(kAt(), "hardware %s", "done parsing resolv.conf...");
}

}  // namespace quenlor
