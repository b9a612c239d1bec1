// A machine's processors as a FakeHost shows them under /sys/devices/system/cpu, with /proc/cpuinfo
// and CPUID that agree with it. Processors are numbered thread by thread, as firmware does: first
// threads of all cores, then second ones.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

struct TopologyMachine {
  uint32_t packages = 1;
  uint32_t coresPerPackage = 4;
  uint32_t threadsPerCore = 2;
  uint32_t diesPerPackage = 1;
  uint32_t nodesPerPackage = 1;
  std::set<uint32_t> offline{};
  bool hasNewNames = true;  // core_cpus_list and so on; false: kernels before 5.3
  bool hasDies = true;
  bool hasCaches = true;
  std::string brand = "Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz";
  std::string flags = "fpu vme de pse tsc msr pae cx8 cmov mmx fxsr sse sse2 ht syscall lm";

  uint32_t cpus() const { return packages * coresPerPackage * threadsPerCore; }
  uint32_t packageOf(uint32_t cpu) const { return coreOf(cpu) / coresPerPackage; }
  uint32_t coreOf(uint32_t cpu) const { return cpu % (packages * coresPerPackage); }
  bool isOnline(uint32_t cpu) const { return offline.count(cpu) == 0; }

  void installOn(FakeHost& host) const;
  // The text of /proc/cpuinfo.
  std::string cpuinfo() const;

 private:
  template <class Predicate>
  std::string listOf(Predicate belongs) const;
  void installCpu(FakeHost& host, uint32_t cpu) const;
  void installCaches(FakeHost& host, uint32_t cpu) const;
};

// The 48 characters of leaves 80000002 to 80000004.
void setBrandLeaves(std::map<std::pair<uint32_t, uint32_t>, CpuidRegisters>& leaves,
                    const std::string& brand);

}  // namespace quenlor::test
