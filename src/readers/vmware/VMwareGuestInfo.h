// CPU resources that the VMware hypervisor grants to this virtual machine, read through VMware's
// guest SDK library, which is loaded at run time where it is installed.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quenlor {

// MHz except the shares. A reservation or limit of 0xFFFFFFFF means that there is none.
struct VMwareGuestInfo {
  uint32_t cpuReservation = 0;
  uint32_t cpuLimit = 0;
  uint32_t cpuShares = 0;
  uint32_t hostProcessorSpeed = 0;
};

// What the library says of a processor limit that is none.
inline constexpr uint32_t kUnlimitedMhz = 0xFFFFFFFF;

// How many of its host's packages the guest may use by its processor limit: all where it has none;
// nothing without the host's speed, for then the limit has no measure.
std::optional<float> packagesByLimit(const VMwareGuestInfo& guest, int hostPackages);

class VMwareGuestInfoProvider_impl;

// Where the tools' installer and distributions put the library for 64-bit programs; those of them
// that are files.
std::vector<std::string> installedGuestLibraries();

// Keeps the library loaded for its whole life, so that repeated reads are cheap. Not thread safe.
class VMwareGuestInfoProvider {
 public:
  VMwareGuestInfoProvider();
  // Tries these libraries instead, in their order.
  explicit VMwareGuestInfoProvider(std::vector<std::string> libraries);
  ~VMwareGuestInfoProvider();

  // Fills the record and returns true only when every value could be read; else leaves it
  // untouched.
  bool retrieveGuestInfo(VMwareGuestInfo& info);

 private:
  std::unique_ptr<VMwareGuestInfoProvider_impl> m_impl;
};

}  // namespace quenlor
