// Name servers and the machine's own name: /etc/resolv.conf, systemd-resolved's list, /etc/hosts
// and the kernel. No name is looked up. Sources: resolv.conf(5), hosts(5).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Outcome.h"

namespace quenlor {

struct ResolverSettings {
  std::vector<std::string> nameServers;  // as written, in order
  std::string domain;                    // first one of the last "domain" or "search" line
};

ResolverSettings parseResolverSettings(std::string_view text);

// The domain that the text of /etc/hosts gives the host: of the first "HOST.DOMAIN" in it; empty
// when there is none.
std::string domainInHosts(std::string_view text, std::string_view host);

struct Resolver {
  std::string hostName;  // first label of the kernel's node name; empty: none set
  std::string domain;    // of the node name, of /etc/hosts, else of the resolver; may be empty
  std::vector<std::string> nameServers;  // behind systemd-resolved's stub, if that is what is set
  Outcome outcome;
};

// Reads everything anew. Never fails: what could not be read is in the outcome.
Resolver readResolver();

}  // namespace quenlor
