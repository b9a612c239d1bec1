#include "readers/vmware/VMwareGuestInfo.h"

#include <sys/stat.h>

#include <utility>

#include "host/Host.h"
#include "readers/vmware/VMwareGuestInfoProvider_impl.h"

namespace quenlor {
namespace {

constexpr const char* kLibraries[] = {
    "/usr/lib/vmware-tools/lib64/libvmGuestLib.so",
    "/usr/lib64/libguestlib.so.0",
    "/usr/lib/x86_64-linux-gnu/libguestlib.so.0",
    "/usr/lib/libguestlib.so.0",
};

bool isFile(const char* path) {
  struct stat status {};
  return host().stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::optional<float> packagesByLimit(const VMwareGuestInfo& guest, int hostPackages) {
  if (guest.cpuLimit == kUnlimitedMhz || guest.cpuLimit == guest.hostProcessorSpeed) {
    return static_cast<float>(hostPackages);
  }
  if (guest.hostProcessorSpeed == 0) return std::nullopt;
  return static_cast<float>(guest.cpuLimit) / static_cast<float>(guest.hostProcessorSpeed);
}

std::vector<std::string> installedGuestLibraries() {
  std::vector<std::string> installed;
  for (const char* path : kLibraries) {
    if (isFile(path)) installed.emplace_back(path);
  }
  return installed;
}

VMwareGuestInfoProvider::VMwareGuestInfoProvider()
    : m_impl(std::make_unique<VMwareGuestInfoProvider_impl>()) {}

VMwareGuestInfoProvider::VMwareGuestInfoProvider(std::vector<std::string> libraries)
    : m_impl(std::make_unique<VMwareGuestInfoProvider_impl>(std::move(libraries))) {}

VMwareGuestInfoProvider::~VMwareGuestInfoProvider() = default;

bool VMwareGuestInfoProvider::retrieveGuestInfo(VMwareGuestInfo& info) {
  return m_impl != nullptr && m_impl->retrieve(info);
}

}  // namespace quenlor
