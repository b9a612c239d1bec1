// Interfaces that hold a DHCP lease, as the clients' files below /run tell.
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace quenlor {

struct Leases {
  std::set<uint32_t> indexes;   // interfaces by the kernel's index
  std::set<std::string> names;  // and by name

  bool hold(uint32_t index, const std::string& name) const;
};

// True when the state that NetworkManager keeps of an interface has something that only a lease
// gives.
bool tellsOfLease(const std::string& state);
// True for the file that an initramfs leaves of its network when that came from a lease.
bool isLeasedAtBoot(const std::string& settings);

// Lists the folders of systemd-networkd, NetworkManager, wicked and the initramfs.
Leases readLeases();

}  // namespace quenlor
