// What the groups of one modern scan share: settings, readers that run once, limits, and the result
// of every group.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/ScanSettings.h"
#include "groups/modern/SharedReader.h"
#include "readers/block/BlockInventory.h"
#include "readers/dmi/DmiReader.h"
#include "readers/guest/Guest.h"
#include "readers/interfaces/InterfaceReader.h"
#include "readers/mounts/MountFacts.h"
#include "readers/pci/PciFunctions.h"
#include "readers/resolver/Resolver.h"
#include "readers/system/KernelStatistics.h"
#include "readers/system/Security.h"
#include "readers/system/ZoneAndLocale.h"
#include "readers/topology/CpuInventory.h"
#include "readers/usb/UsbDevices.h"
#include "readers/virtualization/ToolsAgent.h"

namespace quenlor {

// What a group of this scan came to.
struct GroupResult {
  std::string group;
  size_t rows = 0;
  Milliseconds time{0};
  Outcome outcome;
};

// Held by shared_ptr: a worker that was given up may outlive the scan.
class ModernScan {
 public:
  explicit ModernScan(const ScanSettings& settings);
  ModernScan(const ModernScan&) = delete;
  ModernScan& operator=(const ModernScan&) = delete;

  const ScanSettings& settings() const { return m_settings; }

  // Time for the next piece of work: the group's limit, or what is left of the scan's.
  Milliseconds limit() const;

  // Collects a group within limit(). What it waits for shared readers, which have limits of their
  // own, is not counted.
  BoundedWorker::Result runGroup(std::function<void()> job);

  // The facts that groups share; null, with a note in `outcome`, when they could not be had.
  // Of the processors and the firmware's table, groups note themselves what the reader was refused.
  const CpuInventory* cpus(Outcome& outcome) { return m_cpus.get(m_readers, outcome); }
  const DmiTable* dmi(Outcome& outcome);
  const GuestFacts* guestFacts(Outcome& outcome) { return m_guestFacts.get(m_readers, outcome); }
  const BlockInventory* blockDevices(Outcome& outcome) {
    return m_blockDevices.get(m_readers, outcome);
  }
  const KernelStatistics* kernelStatistics(Outcome& outcome) {
    return m_kernelStatistics.get(m_readers, outcome);
  }
  const MountFacts* mounts(Outcome& outcome) { return m_mounts.get(m_readers, outcome); }
  const NetworkInterfaces* networkInterfaces(Outcome& outcome) {
    return m_networkInterfaces.get(m_readers, outcome);
  }
  const PciFunctions* pciFunctions(Outcome& outcome) {
    return m_pciFunctions.get(m_readers, outcome);
  }
  const Resolver* resolver(Outcome& outcome) { return m_resolver.get(m_readers, outcome); }
  const Security* security(Outcome& outcome) { return m_security.get(m_readers, outcome); }
  const SystemLocale* systemLocale(Outcome& outcome) {
    return m_systemLocale.get(m_readers, outcome);
  }
  const UsbDevices* usbDevices(Outcome& outcome) { return m_usbDevices.get(m_readers, outcome); }

  // Only to be asked in a guest that CPUID calls VMware.
  ToolsAgent& toolsAgent() { return m_toolsAgent; }

  // By the driver's thread alone.
  void addResult(GroupResult result) { m_results.push_back(std::move(result)); }
  const std::vector<GroupResult>& results() const { return m_results; }

 private:
  using Clock = std::chrono::steady_clock;

  const ScanSettings m_settings;
  const Clock::time_point m_start;
  BoundedWorker m_groupWorker;
  ReaderLine m_readers;
  SharedReader<DmiTable, bool> m_dmi{"firmware table", readDmi};
  SharedReader<BlockInventory> m_blockDevices{"block devices", readBlockInventory};
  SharedReader<KernelStatistics> m_kernelStatistics{"processor times", readKernelStatistics};
  SharedReader<MountFacts> m_mounts{"mounts", readMountFacts};
  SharedReader<CpuInventory> m_cpus{"processors", readCpus};
  SharedReader<GuestFacts> m_guestFacts{"virtualization", readGuestFacts};
  SharedReader<NetworkInterfaces> m_networkInterfaces{"interfaces", readNetworkInterfaces};
  SharedReader<PciFunctions> m_pciFunctions{"PCI devices", readPciFunctions};
  SharedReader<Resolver> m_resolver{"host and domain name", readResolver};
  SharedReader<Security> m_security{"security", readSecurity};
  SharedReader<SystemLocale> m_systemLocale{"locale", readSystemLocale};
  SharedReader<UsbDevices> m_usbDevices{"USB devices", readUsbDevices};
  ToolsAgent m_toolsAgent{[this] { return limit(); }};
  std::vector<GroupResult> m_results;
};

}  // namespace quenlor
