#include "groups/capacity/LParGroup.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <optional>
#include <string>

#include "log/CcLogWrapper.h"
#include "readers/cpuid/VtCommand.h"
#include "readers/firmware/machine/smbiosinfo.h"
#include "readers/firmware/smbios/SMMemory.h"
#include "readers/processor/PhysicalProcDescription.h"
#include "readers/processor/ProcCpuinfo.h"
#include "readers/processor/ProcessorFlags.h"
#include "readers/virtualization/check_vm.h"
#include "readers/virtualization/retriever.h"
#include "readers/vmware/VMwareGuestInfo.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/LParGroup.cpp";

constexpr const char* kCpuidCommand = "cpuid";
constexpr const char* kCpuid = "Processor.CPUID";
constexpr const char* kCoresKey = "CorePerPackageCount";

constexpr size_t kMaxLparId = 256;
constexpr int kCoresField = 4;  // colons before the cores per package in the agent's text

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

// Capacities count packages unless they count cores; negative: unknown.
struct Capacity {
  int nodeCapacity = -1;
  int coresPerPackage = 1;
  float nodeCores = -1;
  float lparCapacity = -1;
  float lparCores = -1;
  std::string lparId;
  String serialNumber;
};

void trace(const TraceFunction& at, const char* text) {
  getCcLogHw()->traceMAX(at(), "hardware %s", text);
}

// Nothing of the row depends on it; the trace shows what the Processor group reports.
void traceHyperThreading(const TraceFunction& at) {
  if (!getCcLogHw()->isEnabled(TraceLevel::kMax)) return;
  const ProcCpuinfo cpuinfo = readProcCpuinfo();
  uint32_t features = 0;
  if (cpuinfo.flags) {
    features = makeCPUflagsFromString(cpuinfo.flags->c_str());
  } else {
    unsigned short ignored[3] = {};
    SM_Processor(&ignored[0], &ignored[1], &ignored[2], &features);
  }
  if ((features & kHyperThreadingFlag) != 0 && cpuinfo.siblings > 1) {
    hyperThreadedPackages(cpuinfo, at);
  }
}

void readPhysicalProcessors(Capacity& capacity, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  std::string text;
  if (getPhysicalProc(text) == 0) return;
  const int packages = physicalProcNumber(text, 0).value_or(0);
  if (packages > 0) capacity.nodeCapacity = packages;
  log->traceMAX(at(), "hardware Host node capacity retrieved from getPhysicalProc: value = %d",
                capacity.nodeCapacity);
  const int cores = physicalProcNumber(text, kCoresField).value_or(0);
  capacity.coresPerPackage = cores > 0 ? cores : -1;
  log->traceMAX(at(), "hardware Host core per package retrieved from getPhysicalProc: value = %d",
                capacity.coresPerPackage);
}

void readNodeId(Capacity& capacity, const TraceFunction& at) {
  std::string nodeId;
  if (getNodeId(nodeId) == 0) {
    capacity.serialNumber = "";
    trace(at, "Unable to retrieve host node id");
    return;
  }
  capacity.serialNumber = nodeId;
  getCcLogHw()->traceMAX(at(), "hardware Host node id retrieved: value = %s", nodeId.c_str());
}

// The agent counts packages only: a guest sees the cores of its host's packages as its own.
void readCoresOfOwnProcessor(Capacity& capacity, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  const VtResult result(vtExecCommand(kCpuidCommand));
  if (result == nullptr) {
    log->traceMIN(at(), "hardware Failed to exec cpuid command");
    return;
  }
  if (result->status != 0) {
    log->traceMIN(at(), "hardware cpuid command failed with error=%d", result->status);
    return;
  }
  const int cores = vtGetValue(result.get(), kCpuid, kCoresKey, capacity.coresPerPackage);
  log->traceMAX(at(), "hardware Host core per package retrieved from cpuid: value = %d", cores);
  if (cores > 0) capacity.coresPerPackage = cores;
}

// True when the agent answers at all, be it with a usable capacity or not.
bool readNodeCapacity(Capacity& capacity, const TraceFunction& at) {
  int agentCapacity = -1;
  const bool answered = getNodeCapacity(&agentCapacity) == 1;
  if (capacity.nodeCapacity < 0 && answered) {
    if (agentCapacity > 0) {
      capacity.nodeCapacity = agentCapacity;
      readCoresOfOwnProcessor(capacity, at);
    }
    getCcLogHw()->traceMAX(at(), "hardware Host node capacity retrieved: value = %d",
                           capacity.nodeCapacity);
  }
  if (capacity.nodeCapacity < 0) trace(at, "Unable to retrieve host node capacity");
  return answered;
}

void readGuestId(Capacity& capacity, const TraceFunction& at) {
  std::string id;
  if (getVMId(id) == 0) {
    trace(at, "Unable to retrieve guest node Id");
    return;
  }
  capacity.lparId = id.substr(0, kMaxLparId);
  getCcLogHw()->traceMAX(at(), "hardware Guest node id retrieved: value = %s",
                         capacity.lparId.c_str());
}

void readGuestCapacity(Capacity& capacity, const TraceFunction& at) {
  double agentCapacity = -1;
  if (getVMCapacity(&agentCapacity) == 0) {
    capacity.lparCapacity = -1;
    trace(at, "Unable to retrieve guest node capacity");
    return;
  }
  capacity.lparCapacity = static_cast<float>(std::clamp<double>(agentCapacity, -FLT_MAX, FLT_MAX));
  getCcLogHw()->traceMAX(at(), "hardware Guest node capacity retrieved: value = %d",
                         static_cast<int>(std::clamp<double>(agentCapacity, INT_MIN, INT_MAX)));
}

// Without a measure of the limit the agent's capacity stays.
void applyLimit(Capacity& capacity, const VMwareGuestInfo& guest, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(),
                "hardware Guest SDK data: cpu min mhz = %d, cpu max mhz = %d, cpu total mhz = %d",
                static_cast<int>(guest.cpuReservation), static_cast<int>(guest.cpuLimit),
                static_cast<int>(guest.hostProcessorSpeed));
  capacity.lparCapacity =
      packagesByLimit(guest, capacity.nodeCapacity).value_or(capacity.lparCapacity);
  log->traceMAX(at(), "hardware Updated lpar_capacity after Guest SDK data = %f, %f",
                static_cast<double>(capacity.lparCapacity),
                static_cast<double>(capacity.lparCores));
}

void applyOwnCores(Capacity& capacity, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  trace(at, "Getting Guest SDK data failed or not supported");
  trace(at, "Using CPUID to calculate VM capacity...");
  const VtResult result(vtExecCommand(kCpuidCommand));
  if (result == nullptr) {
    const TraceFunction atCapacity{kSourcePath, "getNodeCapacity()"};
    log->traceMIN(atCapacity(), "hardware Error! %s", "Failed to execute CPUID command!");
    return;
  }
  const int cores = vtGetValue(result.get(), nullptr, "ActiveCoreCount", -1);
  const int coresPerPackage = vtGetValue(result.get(), kCpuid, kCoresKey, 1);
  capacity.lparCores = static_cast<float>(cores);
  capacity.lparCapacity = capacity.lparCores / static_cast<float>(std::max(coresPerPackage, 1));
  log->traceMAX(at(), "hardware Updated lpar_capacity per CPUID data = %f, %f",
                static_cast<double>(capacity.lparCapacity),
                static_cast<double>(capacity.lparCores));
}

void gatherInGuest(Capacity& capacity, const TraceFunction& at) {
  trace(at, "VMWare virtualization environment detected");
  readPhysicalProcessors(capacity, at);
  readNodeId(capacity, at);
  const bool agentHasCapacity = readNodeCapacity(capacity, at);
  readGuestId(capacity, at);
  readGuestCapacity(capacity, at);
  if (!agentHasCapacity) return;

  VMwareGuestInfoProvider provider;
  VMwareGuestInfo guest{kUnlimitedMhz, kUnlimitedMhz, kUnlimitedMhz, kUnlimitedMhz};
  if (provider.retrieveGuestInfo(guest)) {
    applyLimit(capacity, guest, at);
  } else {
    applyOwnCores(capacity, at);
  }
}

VtResult runCpuidPatiently(const TraceFunction& at) {
  VtResult result(vtExecCommand(kCpuidCommand));
  if (result == nullptr) {
    getCcLogHw()->traceMIN(at(), "hardware Cannot execute VT command, try again...");
    result.reset(vtExecCommand(kCpuidCommand));
  }
  if (result != nullptr && result->status != 0) {
    getCcLogHw()->traceMIN(at(), "hardware VT command returned %d, try again...", result->status);
    result.reset(vtExecCommand(kCpuidCommand));
  }
  return result;
}

void gatherOnRealMachine(Capacity& capacity, const TraceFunction& at) {
  trace(at, "Real machine environment detected");
  const VtResult result = runCpuidPatiently(at);
  capacity.nodeCapacity = vtGetValue(result.get(), nullptr, "PhysicalPackageCount", -1);
  capacity.coresPerPackage = vtGetValue(result.get(), kCpuid, kCoresKey, 1);
  if (capacity.nodeCapacity == -1) {
    getCcLogHw()->traceMIN(at(), "hardware Unable to detect node_capacity, returning -1");
  }
  capacity.lparCapacity = capacity.lparCores;
}

void countCores(Capacity& capacity) {
  const auto cores = static_cast<float>(capacity.coresPerPackage);
  if (capacity.nodeCapacity > 0 && cores > 0) {
    capacity.nodeCores = static_cast<float>(capacity.nodeCapacity) * cores;
  }
  if (capacity.lparCores < 0 && capacity.lparCapacity > 0 && cores > 0) {
    capacity.lparCores = std::min(cores * capacity.lparCapacity, FLT_MAX);
  }
}

std::unique_ptr<VelTableRow> makeRow(const Capacity& capacity) {
  auto row = std::make_unique<VelTableRow>();
  addText(*row, kLparId, capacity.lparId);
  addText(*row, kSharedPoolId, "");
  addFloat(*row, kNodeCapacity, static_cast<float>(capacity.nodeCapacity));
  addFloat(*row, kNodeCapacityInCores, capacity.nodeCores);
  addFloat(*row, kLparCapacity, capacity.lparCapacity);
  addFloat(*row, kLparCapacityInCores, capacity.lparCores);
  addFloat(*row, kSharedPoolCapacity, -1.0F);
  addFloat(*row, kSharedPoolCapacityInCores, -1.0F);
  addText(*row, kSerialNumber, capacity.serialNumber.c_str());
  return row;
}

}  // namespace

VelTable* LParGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "LParGroup");
  Capacity capacity;
  capacity.serialNumber = smbiosinfo().serialNumber();
  log->traceMAX(at(), "hardware %s %s", "Serial Number =", capacity.serialNumber.c_str());
  traceHyperThreading(at);
  if (check_virtual() == 1) {
    gatherInGuest(capacity, at);
  } else {
    gatherOnRealMachine(capacity, at);
  }
  countCores(capacity);
  log->traceMAX(at(), "hardware %s %d", "node capacity=", capacity.nodeCapacity);

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(makeRow(capacity).release());
  log->traceMidExit(at(), "hardware %s", "LParGroup");
  return table.release();
}

}  // namespace quenlor
