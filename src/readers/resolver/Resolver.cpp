#include "readers/resolver/Resolver.h"

#include <sys/utsname.h>

#include <algorithm>
#include <iterator>

#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kResolvConf = "/etc/resolv.conf";
constexpr const char* kServersBehindStub = "/run/systemd/resolve/resolv.conf";
constexpr const char* kHosts = "/etc/hosts";

// Where systemd-resolved listens; 54 is its proxy that leaves answers as they are.
constexpr std::string_view STUBS[] = {"127.0.0.53", "127.0.0.54"};
constexpr std::string_view kNotSet = "(none)";
constexpr std::string_view kBlanks = " \t\r\v\f";

std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

// The next word of a line, cut off it; empty at its end.
std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

void takeSetting(std::string_view line, ResolverSettings& settings) {
  const std::string_view keyword = takeWord(line);
  const std::string value(takeWord(line));
  if (value.empty()) return;
  if (keyword == "nameserver") settings.nameServers.push_back(value);
  if (keyword == "domain" || keyword == "search") settings.domain = value;
}

bool isStub(const std::string& server) {
  return std::find(std::begin(STUBS), std::end(STUBS), server) != std::end(STUBS);
}

ResolverSettings readSettings(const char* path, Outcome& outcome) {
  const WholeFile file = readWholeFile(path);
  if (file.status != FileStatus::kRead && file.status != FileStatus::kAbsent) {
    outcome.note(OutcomeStatus::kPartial, "name servers: not readable");
  }
  return parseResolverSettings(file.bytes);
}

// The stub knows no servers of its own: they are in the list behind it, where there is one.
std::vector<std::string> serversBehind(std::vector<std::string> servers, Outcome& outcome) {
  if (std::none_of(servers.begin(), servers.end(), isStub)) return servers;
  ResolverSettings behind = readSettings(kServersBehindStub, outcome);
  return behind.nameServers.empty() ? servers : behind.nameServers;
}

std::string nodeName() {
  struct utsname names {};
  if (host().uname(&names) != 0) return {};
  const std::string name = names.nodename;
  return name == kNotSet ? std::string() : name;
}

}  // namespace

ResolverSettings parseResolverSettings(std::string_view text) {
  ResolverSettings settings;
  while (!text.empty()) {
    const std::string_view line = takeLine(text);
    // A keyword has to start its line; "#" and ";" there begin a comment.
    if (!line.empty() && kBlanks.find(line[0]) == kBlanks.npos) takeSetting(line, settings);
  }
  return settings;
}

std::string domainInHosts(std::string_view text, std::string_view host) {
  if (host.empty()) return {};
  const std::string front = std::string(host) + ".";
  while (!text.empty()) {
    std::string_view line = takeLine(text);
    line = line.substr(0, line.find('#'));
    takeWord(line);  // the address
    for (auto name = takeWord(line); !name.empty(); name = takeWord(line)) {
      if (name.size() > front.size() && name.starts_with(front)) {
        return std::string(name.substr(front.size()));
      }
    }
  }
  return {};
}

Resolver readResolver() {
  Resolver result;
  const std::string node = nodeName();
  const size_t dot = node.find('.');
  result.hostName = node.substr(0, dot);
  ResolverSettings settings = readSettings(kResolvConf, result.outcome);
  result.nameServers = serversBehind(std::move(settings.nameServers), result.outcome);

  if (dot != std::string::npos) result.domain = node.substr(dot + 1);
  if (result.domain.empty()) {
    result.domain = domainInHosts(readWholeFile(kHosts).bytes, result.hostName);
  }
  if (result.domain.empty()) result.domain = std::move(settings.domain);
  return result;
}

}  // namespace quenlor
