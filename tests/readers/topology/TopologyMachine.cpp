#include "tests/readers/topology/TopologyMachine.h"

#include <algorithm>
#include <cstring>

namespace quenlor::test {
namespace {

const std::string kDirectory = "/sys/devices/system/cpu";

std::string topologyFile(uint32_t cpu, const char* name) {
  return kDirectory + "/cpu" + std::to_string(cpu) + "/topology/" + name;
}

void setCache(FakeHost& host, uint32_t cpu, unsigned index, const char* level, const char* type,
              const char* size, const std::string& shared) {
  const std::string directory =
      kDirectory + "/cpu" + std::to_string(cpu) + "/cache/index" + std::to_string(index) + "/";
  host.files[directory + "level"] = std::string(level) + "\n";
  host.files[directory + "type"] = std::string(type) + "\n";
  host.files[directory + "size"] = std::string(size) + "\n";
  host.files[directory + "ways_of_associativity"] = "8\n";
  host.files[directory + "coherency_line_size"] = "64\n";
  host.files[directory + "shared_cpu_list"] = shared;
}

}  // namespace

template <class Predicate>
std::string TopologyMachine::listOf(Predicate belongs) const {
  std::string list;
  for (uint32_t cpu = 0; cpu < cpus(); ++cpu) {
    if (!isOnline(cpu) || !belongs(cpu)) continue;
    list += (list.empty() ? "" : ",") + std::to_string(cpu);
  }
  return list + "\n";
}

void TopologyMachine::installCaches(FakeHost& host, uint32_t cpu) const {
  const std::string core = listOf([&](uint32_t other) { return coreOf(other) == coreOf(cpu); });
  const std::string package =
      listOf([&](uint32_t other) { return packageOf(other) == packageOf(cpu); });
  setCache(host, cpu, 0, "1", "Data", "32K", core);
  setCache(host, cpu, 1, "1", "Instruction", "64K", core);
  setCache(host, cpu, 2, "2", "Unified", "256K", core);
  setCache(host, cpu, 3, "3", "Unified", "35840K", package);
}

void TopologyMachine::installCpu(FakeHost& host, uint32_t cpu) const {
  if (!isOnline(cpu)) return;
  const uint32_t coresPerDie = coresPerPackage / diesPerPackage;
  const uint32_t core = coreOf(cpu);
  host.files[topologyFile(cpu, "physical_package_id")] = std::to_string(packageOf(cpu)) + "\n";
  host.files[topologyFile(cpu, hasNewNames ? "package_cpus_list" : "core_siblings_list")] =
      listOf([&](uint32_t other) { return packageOf(other) == packageOf(cpu); });
  host.files[topologyFile(cpu, hasNewNames ? "core_cpus_list" : "thread_siblings_list")] =
      listOf([&](uint32_t other) { return coreOf(other) == core; });
  if (hasDies) {
    host.files[topologyFile(cpu, "die_cpus_list")] =
        listOf([&](uint32_t other) { return coreOf(other) / coresPerDie == core / coresPerDie; });
  }
  if (hasCaches) installCaches(host, cpu);
}

std::string TopologyMachine::cpuinfo() const {
  std::string text;
  for (uint32_t cpu = 0; cpu < cpus(); ++cpu) {
    if (!isOnline(cpu)) continue;
    text += "processor\t: " + std::to_string(cpu) + "\nvendor_id\t: GenuineIntel\n" +
            "cpu family\t: 6\nmodel\t\t: 79\nmodel name\t: " + brand +
            "\nstepping\t: 1\nmicrocode\t: 0xb000040\ncpu MHz\t\t: 1199.870\nphysical id\t: " +
            std::to_string(packageOf(cpu)) +
            "\nsiblings\t: " + std::to_string(coresPerPackage * threadsPerCore) +
            "\ncore id\t\t: " + std::to_string(coreOf(cpu) % coresPerPackage) +
            "\ncpu cores\t: " + std::to_string(coresPerPackage) + "\nflags\t\t: " + flags + "\n\n";
  }
  return text;
}

void TopologyMachine::installOn(FakeHost& host) const {
  auto& names = host.directories[kDirectory];
  for (uint32_t cpu = 0; cpu < cpus(); ++cpu) {
    names.push_back("cpu" + std::to_string(cpu));
    installCpu(host, cpu);
  }
  names.insert(names.end(), {"cpufreq", "cpuidle", "online", "smt"});
  auto& nodes = host.directories["/sys/devices/system/node"];
  nodes.emplace_back("possible");
  for (uint32_t node = 0; node < packages * nodesPerPackage; ++node) {
    nodes.push_back("node" + std::to_string(node));
    const uint32_t coresPerNode = coresPerPackage / nodesPerPackage;
    host.files["/sys/devices/system/node/node" + std::to_string(node) + "/cpulist"] =
        listOf([&](uint32_t cpu) { return coreOf(cpu) / coresPerNode == node; });
  }
  host.files["/proc/cpuinfo"] = cpuinfo();
}

void setBrandLeaves(std::map<std::pair<uint32_t, uint32_t>, CpuidRegisters>& leaves,
                    const std::string& brand) {
  uint32_t words[12] = {};
  std::memcpy(words, brand.data(), std::min(brand.size(), sizeof words));
  for (uint32_t leaf = 0; leaf < 3; ++leaf) {
    const uint32_t* word = words + size_t{leaf} * 4;
    leaves[{0x80000002 + leaf, 0}] = {word[0], word[1], word[2], word[3]};
  }
}

}  // namespace quenlor::test
