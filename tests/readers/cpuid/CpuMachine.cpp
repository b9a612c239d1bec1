#include "tests/readers/cpuid/CpuMachine.h"

#include <cstring>

namespace quenlor::test {
namespace {

constexpr const char* kDirectory = "/sys/devices/system/cpu";

uint32_t wordOf(const std::string& text, size_t offset) {
  char characters[4] = {};
  for (size_t i = 0; i < 4 && offset + i < text.size(); ++i) characters[i] = text[offset + i];
  uint32_t word = 0;
  std::memcpy(&word, characters, sizeof word);
  return word;
}

std::string line(const std::string& key, const std::string& value) {
  return key + ": " + value + "\n";
}

}  // namespace

CpuidRegisters vendorLeaf(const std::string& vendor) {
  return {
      .eax = 0x16, .ebx = wordOf(vendor, 0), .ecx = wordOf(vendor, 8), .edx = wordOf(vendor, 4)};
}

void setBrand(FakeHost& host, const std::string& brand) {
  for (uint32_t leaf = 0; leaf < 3; ++leaf) {
    const size_t at = leaf * 16;
    host.cpuidLeaves[{0x80000002 + leaf, 0}] = {wordOf(brand, at), wordOf(brand, at + 4),
                                                wordOf(brand, at + 8), wordOf(brand, at + 12)};
  }
}

// CPUs are numbered as the kernel does: first thread of all cores, then the second of all cores.
std::string CpuMachine::onlineThreadsOfCore(unsigned globalCore) const {
  std::string list;
  for (unsigned thread = 0; thread < threadsPerCore; ++thread) {
    const unsigned cpu = thread * packages * coresPerPackage + globalCore;
    if (offline.count(cpu) != 0) continue;
    list += (list.empty() ? "" : ",") + std::to_string(cpu);
  }
  return list;
}

unsigned CpuMachine::onlineOfPackage(unsigned package, bool coresOnly) const {
  unsigned count = 0;
  for (unsigned core = 0; core < coresPerPackage; ++core) {
    unsigned threads = 0;
    for (unsigned thread = 0; thread < threadsPerCore; ++thread) {
      const unsigned cpu = (thread * packages + package) * coresPerPackage + core;
      if (offline.count(cpu) == 0) ++threads;
    }
    count += coresOnly ? (threads > 0 ? 1 : 0) : threads;
  }
  return count;
}

std::string CpuMachine::cpuinfo() const {
  std::string text;
  for (unsigned cpu = 0; cpu < cpus(); ++cpu) {
    if (offline.count(cpu) != 0) continue;
    const unsigned globalCore = cpu % (packages * coresPerPackage);
    const unsigned package = globalCore / coresPerPackage;
    text += line("processor\t", std::to_string(cpu)) + line("vendor_id\t", vendor) +
            line("cpu family\t", std::to_string(family)) +
            line("model\t\t", std::to_string(model)) + line("model name\t", brand) +
            line("stepping\t", std::to_string(stepping)) + line("cpu MHz\t\t", mhz);
    if (hasCpuinfoTopology) {
      text += line("physical id\t", std::to_string(package)) +
              line("siblings\t", std::to_string(onlineOfPackage(package, false))) +
              line("core id\t\t", std::to_string(globalCore % coresPerPackage)) +
              line("cpu cores\t", std::to_string(onlineOfPackage(package, true)));
    }
    text += line("flags\t\t", flags) + "\n";
  }
  return text;
}

void CpuMachine::installCpuid(FakeHost& host) const {
  auto& leaves = host.cpuidLeaves;
  const uint32_t logical = coresPerPackage * threadsPerCore;
  leaves[{0, 0}] = vendorLeaf(vendor);
  leaves[{1, 0}] = {.eax = signature, .ebx = logical << 16, .ecx = 0, .edx = featuresEdx};
  leaves[{0x80000001, 0}] = {.eax = 0, .ebx = 0, .ecx = 0, .edx = 1u << 29};
  leaves[{0x80000006, 0}] = {.eax = 0, .ebx = 0, .ecx = l2KiloBytes << 16, .edx = 0};
  setBrand(host, brand);
  if (!hasTopologyLeaf) return;
  leaves[{0xB, 0}] = {.eax = 1, .ebx = threadsPerCore, .ecx = 0x100, .edx = 0};
  leaves[{0xB, 1}] = {.eax = 4, .ebx = logical, .ecx = 0x201, .edx = 0};
  leaves[{0xB, 2}] = {};
}

void CpuMachine::installSys(FakeHost& host) const {
  auto& names = host.directories[kDirectory];
  names = {"cpufreq", "cpuidle", "online", "present"};
  for (unsigned cpu = 0; cpu < cpus(); ++cpu) {
    const std::string name = "cpu" + std::to_string(cpu);
    names.push_back(name);
    if (offline.count(cpu) != 0) continue;
    const std::string topology = std::string(kDirectory) + "/" + name + "/topology/";
    const unsigned globalCore = cpu % (packages * coresPerPackage);
    host.files[topology + "physical_package_id"] =
        std::to_string(globalCore / coresPerPackage) + "\n";
    host.files[topology + "core_id"] = std::to_string(globalCore % coresPerPackage) + "\n";
    host.files[topology + "thread_siblings_list"] = onlineThreadsOfCore(globalCore) + "\n";
  }
}

void CpuMachine::installOn(FakeHost& host) const {
  if (hasCpuid) installCpuid(host);
  if (hasSysTopology) installSys(host);
  if (hasCpuinfo) host.files["/proc/cpuinfo"] = cpuinfo();
  host.nprocs = static_cast<int>(onlineCpus());
  host.nprocsConf = static_cast<int>(cpus());
}

}  // namespace quenlor::test
