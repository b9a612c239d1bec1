#include "readers/interfaces/Leases.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kNetworkdLeases = "/run/systemd/netif/leases";
constexpr const char* kNetworkManagerDevices = "/run/NetworkManager/devices";
constexpr const char* kWickedLeases = "/run/wicked";
constexpr const char* kRun = "/run";

// Options of a DHCP answer; NetworkManager keeps them for whoever boots from the network.
constexpr std::string_view LEASE_KEYS[] = {"next-server=", "root-path=", "dhcp-bootfile="};
// Protocols of the initramfs' ipconfig that ask a server for the address.
constexpr std::string_view LEASE_PROTOCOLS[] = {"dhcp", "bootp", "both", "any"};

std::vector<DirectoryEntry> list(const char* folder) {
  std::vector<DirectoryEntry> entries;
  if (!host().listEntries(folder, entries)) entries.clear();
  return entries;
}

// The lines of a text to `test`, until one passes.
template <class Test>
bool anyLine(std::string_view text, Test test) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    if (test(line)) return true;
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return false;
}

std::optional<uint32_t> indexOf(std::string_view name) {
  uint32_t index = 0;
  const char* end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, index);
  return error == std::errc() && stop == end ? std::optional(index) : std::nullopt;
}

// What stands between the two parts of a file name; empty when it has another form.
std::string between(std::string_view name, std::string_view front, std::string_view back) {
  if (!name.starts_with(front) || !name.ends_with(back)) return {};
  if (name.size() <= front.size() + back.size()) return {};
  return std::string(name.substr(front.size(), name.size() - front.size() - back.size()));
}

// A file named by the index; it is removed with the lease.
void addNetworkd(Leases& leases) {
  for (const DirectoryEntry& entry : list(kNetworkdLeases)) {
    if (const auto index = indexOf(entry.name)) leases.indexes.insert(*index);
  }
}

void addNetworkManager(Leases& leases) {
  for (const DirectoryEntry& entry : list(kNetworkManagerDevices)) {
    const auto index = indexOf(entry.name);
    if (!index) continue;
    const WholeFile state = readWholeFile(std::string(kNetworkManagerDevices) + "/" + entry.name);
    if (tellsOfLease(state.bytes)) leases.indexes.insert(*index);
  }
}

void addWicked(Leases& leases) {
  for (const DirectoryEntry& entry : list(kWickedLeases)) {
    std::string name = between(entry.name, "leaseinfo.", ".dhcp.ipv4");
    if (!name.empty()) leases.names.insert(std::move(name));
  }
}

void addInitramfs(Leases& leases) {
  for (const DirectoryEntry& entry : list(kRun)) {
    std::string name = between(entry.name, "net-", ".conf");
    if (name.empty()) continue;
    const WholeFile settings = readWholeFile(std::string(kRun) + "/" + entry.name);
    if (isLeasedAtBoot(settings.bytes)) leases.names.insert(std::move(name));
  }
}

}  // namespace

bool Leases::hold(uint32_t index, const std::string& name) const {
  return indexes.count(index) != 0 || names.count(name) != 0;
}

bool tellsOfLease(const std::string& state) {
  return anyLine(state, [](std::string_view line) {
    return std::any_of(std::begin(LEASE_KEYS), std::end(LEASE_KEYS), [&](std::string_view key) {
      return line.size() > key.size() && line.starts_with(key);
    });
  });
}

bool isLeasedAtBoot(const std::string& settings) {
  constexpr std::string_view kProtocol = "PROTO=";
  return anyLine(settings, [&](std::string_view line) {
    if (!line.starts_with(kProtocol)) return false;
    std::string_view word = line.substr(kProtocol.size());
    if (word.size() >= 2 && word.front() == '\'' && word.back() == '\'') {
      word = word.substr(1, word.size() - 2);
    }
    return std::find(std::begin(LEASE_PROTOCOLS), std::end(LEASE_PROTOCOLS), word) !=
           std::end(LEASE_PROTOCOLS);
  });
}

Leases readLeases() {
  Leases leases;
  addNetworkd(leases);
  addNetworkManager(leases);
  addWicked(leases);
  addInitramfs(leases);
  return leases;
}

}  // namespace quenlor
