// Lpar of the modern sources: how much of the machine this system may use. What the host of a
// VMware guest has only its tools agent tells; the guests of others know their own processors.
#include "groups/capacity/AgentOutcome.h"
#include "groups/capacity/HostCapacity.h"
#include "groups/modern/Collectors.h"
#include "groups/modern/GuestOfScan.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kLparId = 2;
constexpr uint32_t kSharedPoolId = 3;
constexpr uint32_t kNodeCapacity = 4;
constexpr uint32_t kLparCapacity = 5;
constexpr uint32_t kSharedPoolCapacity = 6;
constexpr uint32_t kSerialNumber = 7;
constexpr uint32_t kNodeCapacityInCores = 8;
constexpr uint32_t kLparCapacityInCores = 9;
constexpr uint32_t kSharedPoolCapacityInCores = 10;
constexpr uint32_t kCpuLimitInCores = 103;
constexpr uint32_t kMemoryLimitMb = 104;

constexpr float kUnknown = -1.0F;
constexpr uint64_t kBytesPerMiB = uint64_t{1} << 20;

// Packages and cores that the kernel sees, a guest's own in a guest.
void addNode(ModernRow& row, const CpuInventory& cpus) {
  size_t cores = 0;
  for (const CpuPackage& package : cpus.packages) cores += package.cores.size();
  const auto packages = static_cast<float>(cpus.packages.size());
  row.real(kNodeCapacity, cpus.packages.empty() ? kUnknown : packages)
      .real(kNodeCapacityInCores, cores == 0 ? kUnknown : static_cast<float>(cores));
}

void addLimits(ModernRow& row, const CgroupLimits& limits) {
  if (limits.cpus) row.real(kCpuLimitInCores, static_cast<float>(*limits.cpus));
  if (limits.memoryBytes) row.ulong(kMemoryLimitMb, *limits.memoryBytes / kBytesPerMiB);
}

void addHostCapacity(ModernRow& row, const HostCapacity& host) {
  row.textAlways(kLparId, host.guestId)
      .real(kNodeCapacity, static_cast<float>(host.packages))
      .real(kNodeCapacityInCores, host.cores)
      .real(kLparCapacity, host.guestPackages)
      .real(kLparCapacityInCores, host.guestCores)
      .textAlways(kSerialNumber, host.hostId);
}

void addGuestCapacity(ModernScan& scan, ModernTable& table, ModernRow& row, const Guest& guest,
                      const CpuInventory& cpus) {
  if (guest.isVmware) {
    addHostCapacity(row, readHostCapacity(scan.toolsAgent(), cpus));
    noteAgent(table.outcome(), scan.toolsAgent(), "capacity of the host");
  } else if (guest.isVirtualMachine) {
    row.real(kLparCapacityInCores, static_cast<float>(cpus.online));
  }
  addLimits(row, guest.limits);
}

// The serial number that a guest's firmware shows is the guest's.
std::optional<std::string> serialNumber(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = scan.dmi(table.outcome());
  if (dmi == nullptr) return std::nullopt;
  table.outcome().mergePart(dmi->outcome);
  return dmi->system ? dmi->system->serial : std::nullopt;
}

}  // namespace

void collectLpar(ModernScan& scan, ModernTable& table) {
  const CpuInventory* cpus = scan.cpus(table.outcome());
  const std::optional<Guest> guest = guestOfScan(scan, table.outcome());
  const CpuInventory seen = cpus == nullptr ? CpuInventory{} : *cpus;
  ModernRow& row = table.addRow();
  row.textAlways(kLparId, "")
      .textAlways(kSharedPoolId, "")
      .real(kLparCapacity, kUnknown)
      .real(kLparCapacityInCores, kUnknown)
      .real(kSharedPoolCapacity, kUnknown)
      .real(kSharedPoolCapacityInCores, kUnknown);
  addNode(row, seen);
  if (guest) addGuestCapacity(scan, table, row, *guest, seen);
  if (!guest || !guest->isVmware) row.textAlways(kSerialNumber, serialNumber(scan, table));
}

}  // namespace quenlor
