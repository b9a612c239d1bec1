// UNIX System Params of the modern sources: names from the kernel, boot time from its clocks, run
// level from the target that the init system boots to.
#include <algorithm>
#include <string>

#include "groups/modern/Collectors.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "identity/Identity.h"
#include "readers/system/BootClock.h"
#include "readers/system/BootTarget.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kBootTime = 1;
constexpr uint32_t kRunLevel = 2;
constexpr uint32_t kHostname = 3;
constexpr uint32_t kComputerAlias = 4;
constexpr uint32_t kDomain = 101;
constexpr uint32_t kMachineIdDigest = 102;
constexpr uint32_t kBootId = 103;

constexpr uint32_t kUnknownRunLevel = 0;
constexpr size_t kMachineIdDigits = 32;
constexpr size_t kBootIdLength = 36;

std::string nodeName() {
  struct utsname names {};
  return host().uname(&names) == 0 ? names.nodename : "";
}

bool isMachineId(const std::string& id) {
  return id.size() == kMachineIdDigits &&
         std::all_of(id.begin(), id.end(), [](unsigned char c) { return isxdigit(c) != 0; });
}

// machine-id(5) asks that the id itself stay on the machine: a digest under it tells machines apart
// as well. Images are shipped with an empty file or "uninitialized" in it.
std::string machineIdDigest(Outcome& outcome) {
  const WholeFile file = readWholeFile("/etc/machine-id");
  if (file.status == FileStatus::kRefused) {
    outcome.note(OutcomeStatus::kPartial, "machine id: cannot be read");
  }
  const std::string id = file.bytes.substr(0, file.bytes.find_first_of("\r\n"));
  return isMachineId(id) ? hmacMd5Text(id, "quenlor") : std::string();
}

std::string bootId() {
  const std::string id = readAttribute("/proc/sys/kernel/random/boot_id").value_or("");
  return id.size() == kBootIdLength ? id : std::string();
}

}  // namespace

void collectUnixSystemParams(ModernScan& scan, ModernTable& table) {
  const std::string name = nodeName();
  const Resolver* resolver = scan.resolver(table.outcome());
  table.addRow()
      .time(kBootTime, readBootTime().value_or(0))
      .ulongAlways(kRunLevel, readBootRunLevel(), kUnknownRunLevel)
      .textAlways(kHostname, name)
      .textAlways(kComputerAlias, name.substr(0, name.find('.')))
      .text(kDomain, resolver == nullptr ? std::string() : resolver->domain)
      .text(kMachineIdDigest, machineIdDigest(table.outcome()))
      .text(kBootId, bootId());
}

}  // namespace quenlor
