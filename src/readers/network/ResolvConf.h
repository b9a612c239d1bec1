// Name servers and domain of /etc/resolv.conf.
#pragma once

#include <string>

namespace quenlor {

struct ResolvConf {
  std::string domain;
  std::string primaryDns;    // empty: none accepted
  std::string secondaryDns;  // empty: none accepted
};

// Adds what the file says; a domain that is set already stays. Reading ends at the second name
// server.
void readResolvConf(ResolvConf& result);

}  // namespace quenlor
