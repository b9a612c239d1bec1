#include "readers/block/ScsiHosts.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "host/Host.h"
#include "readers/block/SysfsAttributes.h"

namespace quenlor {
namespace {

constexpr std::string_view kHost = "host";

struct HostClass {
  const char* directory;
  const char* bus;
};
constexpr HostClass HOST_CLASSES[] = {
    {"/sys/class/iscsi_host", "iscsi"},
    {"/sys/class/fc_host", "fc"},
    {"/sys/class/sas_host", "sas"},
    {"/sys/class/spi_host", "scsi"},
};

// Adapters that make logical drives of the disks behind them. Disks that they pass through stand on
// channels of their own, those below `firstLogical`, or (without one) behind an "end_device".
struct RaidDriver {
  std::string_view name;
  uint32_t firstLogical;
  uint32_t lastLogical;
};
constexpr RaidDriver RAID_DRIVERS[] = {
    {"megaraid_sas", 2, UINT32_MAX}, {"aacraid", 0, 0},          {"hpsa", 0, UINT32_MAX},
    {"smartpqi", 0, UINT32_MAX},     {"mpt2sas", 0, UINT32_MAX}, {"mpt3sas", 0, UINT32_MAX},
    {"megaraid", 0, UINT32_MAX},     {"3w-9xxx", 0, UINT32_MAX}, {"3w-sas", 0, UINT32_MAX},
    {"arcmsr", 0, UINT32_MAX},       {"ips", 0, UINT32_MAX},
};

struct DriverBus {
  std::string_view prefix;
  const char* bus;
};
constexpr DriverBus DRIVER_BUSES[] = {
    {"virtio_scsi", "virtio"}, {"storvsc", "hyper-v"}, {"vmw_pvscsi", "vmware"}, {"xen", "xen"},
    {"ahci", "sata"},          {"sata", "sata"},
};

bool isRaid(std::string_view driver, uint32_t channel) {
  return std::any_of(std::begin(RAID_DRIVERS), std::end(RAID_DRIVERS), [&](const RaidDriver& raid) {
    return raid.name == driver && channel >= raid.firstLogical && channel <= raid.lastLogical;
  });
}

bool isRaidDriver(std::string_view driver) {
  return std::any_of(std::begin(RAID_DRIVERS), std::end(RAID_DRIVERS),
                     [&](const RaidDriver& raid) { return raid.name == driver; });
}

}  // namespace

ScsiHosts::ScsiHosts() {
  for (const HostClass& known : HOST_CLASSES) {
    std::vector<DirectoryEntry> entries;
    host().listEntries(known.directory, entries);
    for (const DirectoryEntry& entry : entries) {
      if (!entry.name.starts_with(kHost)) continue;
      const auto number = parseDecimal(std::string_view(entry.name).substr(kHost.size()));
      if (number) m_classes.emplace(static_cast<uint32_t>(*number), known.bus);
    }
  }
}

std::string ScsiHosts::busOf(const BlockPath& path, const ScsiPlace& address) {
  if (!path.component("usb").empty()) return "usb";
  if (!path.component("session").empty()) return "iscsi";
  if (path.hasPrefix("rport-")) return "fc";
  if (path.hasPrefix("end_device-")) return "sas";
  if (!path.ataPort().empty()) {
    const std::string& driver = driverOf(address.host);
    return driver.starts_with("ahci") || driver.starts_with("sata") ? "sata" : "ata";
  }
  if (!path.component("fw").empty()) return "firewire";
  return busOfDriver(address);
}

// The driver comes first: those of RAID adapters may stand in the class of SAS hosts for the disks
// that they pass through.
std::string ScsiHosts::busOfDriver(const ScsiPlace& address) {
  const std::string& driver = driverOf(address.host);
  if (isRaid(driver, address.channel)) return "raid";
  if (isRaidDriver(driver)) return "sas";
  for (const DriverBus& known : DRIVER_BUSES) {
    if (driver.starts_with(known.prefix)) return known.bus;
  }
  const auto found = m_classes.find(address.host);
  if (found != m_classes.end()) return found->second;
  return driver.find("ata") != std::string::npos ? "ata" : "scsi";
}

const std::string& ScsiHosts::driverOf(uint32_t host) {
  const auto found = m_drivers.find(host);
  if (found != m_drivers.end()) return found->second;
  const SysfsAttributes attributes("/sys/class/scsi_host/host" + std::to_string(host));
  return m_drivers.emplace(host, attributes.text("proc_name")).first->second;
}

const std::string& ScsiHosts::portOf(const BlockPath& path) {
  const std::string name = path.ataPort();
  const auto [found, isNew] = m_ports.try_emplace(name);
  if (isNew && !name.empty()) {
    const SysfsAttributes port(path.ataPortDirectory() + "/ata_port/" + name);
    found->second = port.text("port_no");
  }
  return found->second;
}

}  // namespace quenlor
