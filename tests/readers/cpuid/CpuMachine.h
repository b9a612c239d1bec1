// A machine's processors as a FakeHost shows them: CPUID leaves, /sys/devices/system/cpu and
// /proc/cpuinfo, all telling of the same packages, cores and threads.
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

struct CpuMachine {
  std::string vendor = "GenuineIntel";
  std::string brand = "Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz";
  uint32_t signature = 0x000406F1;
  unsigned family = 6;
  unsigned model = 79;
  unsigned stepping = 1;
  std::string mhz = "2399.998";
  std::string flags = "fpu vme de pse tsc msr pae mce cx8 apic sep mtrr pge mca cmov mmx ht lm";
  uint32_t featuresEdx = 1u << 28;  // CPUID leaf 1
  uint32_t l2KiloBytes = 256;

  unsigned packages = 1;
  unsigned coresPerPackage = 4;
  unsigned threadsPerCore = 2;
  std::set<unsigned> offline;  // CPU numbers

  bool hasCpuid = true;
  bool hasTopologyLeaf = true;  // leaf 0xB
  bool hasSysTopology = true;   // false: a container that sees no /sys
  bool hasCpuinfo = true;
  bool hasCpuinfoTopology = true;  // "physical id", "core id", "siblings", "cpu cores"

  unsigned cpus() const { return packages * coresPerPackage * threadsPerCore; }
  unsigned onlineCpus() const { return cpus() - static_cast<unsigned>(offline.size()); }
  std::string cpuinfo() const;
  void installOn(FakeHost& host) const;

 private:
  void installCpuid(FakeHost& host) const;
  void installSys(FakeHost& host) const;
  std::string onlineThreadsOfCore(unsigned globalCore) const;
  unsigned onlineOfPackage(unsigned package, bool coresOnly) const;
};

// The twelve vendor characters in the registers of leaf 0.
CpuidRegisters vendorLeaf(const std::string& vendor);
// Leaves 0x80000002 to 0x80000004.
void setBrand(FakeHost& host, const std::string& brand);

}  // namespace quenlor::test
