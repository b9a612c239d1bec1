#include "groups/processor/PhysicalProcessorGroup.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include "log/CcLogWrapper.h"
#include "readers/cpuid/VtCommand.h"
#include "readers/processor/PhysicalProcDescription.h"
#include "readers/virtualization/check_vm.h"
#include "readers/virtualization/retriever.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/PhysicalProcessorGroup.cpp";
constexpr const char* kClass = "PhysicalProcessorGroup";

constexpr const char* kCpuidCommand = "cpuid";
constexpr const char* kProcessor = "Processor";
constexpr const char* kCpuid = "Processor.CPUID";
constexpr const char* kL2Cache = "Processor.L2Cache";
constexpr const char* kFeatures = "Processor.Features";

constexpr const char* kUnknown = "Unknown";
// No machine has more packages; an agent's number must not fill the memory with rows.
constexpr int kMaxPackages = 65536;

// Attribute ids.
constexpr uint32_t kId = 1;
constexpr uint32_t kCoresPerPackage = 2;
constexpr uint32_t kThreadsPerCore = 3;
constexpr uint32_t kManufacturer = 4;
constexpr uint32_t kFamily = 5;
constexpr uint32_t kType = 6;
constexpr uint32_t kClock = 7;
constexpr uint32_t kL2CacheSize = 8;
constexpr uint32_t kL3CacheSize = 9;
constexpr uint32_t kBrandName = 10;
constexpr uint32_t kSignature = 11;
constexpr uint32_t kIs64BitSupported = 12;

struct PackageFacts {
  int packages = -1;
  int coresPerPackage = 0;
  int threadsPerCore = 0;
  int clockMhz = 0;
  int l2Size = 0;
  int is64Bit = -1;  // negative: unknown
  String manufacturer;
  String family;
  String type;
  String brand;
  String signature;
};

void trace(const TraceFunction& at, const char* text) {
  getCcLogHw()->traceMAX(at(), "hardware %s", text);
}

// All keys but the package count. A null result gives the defaults.
void readCpuid(const VtExecInfo* result, const char* nameDefault, PackageFacts& facts,
               const TraceFunction& at) {
  trace(at, "Default values from CPUID");
  facts.manufacturer = vtGetValue(result, kProcessor, "Manufacturer", nameDefault);
  facts.family = vtGetValue(result, kProcessor, "Family", nameDefault);
  facts.type = vtGetValue(result, kProcessor, "Type", nameDefault);
  facts.coresPerPackage = vtGetValue(result, kCpuid, "CorePerPackageCount", 0);
  facts.threadsPerCore = vtGetValue(result, kCpuid, "HtPerCoreCount", 0);
  facts.clockMhz = vtGetValue(result, kProcessor, "CpuClockMHz", 0);
  facts.l2Size = vtGetValue(result, kL2Cache, "Size", 0);
  facts.brand = vtGetValue(result, kCpuid, "BrandString", "");
  facts.signature = vtGetValue(result, kCpuid, "Signature", "");
  const int intel64 = vtGetValue(result, kFeatures, "IEM64T", 0);
  facts.is64Bit = vtGetValue(result, kFeatures, "LM", intel64);
}

bool describeByAgentText(PackageFacts& facts, const TraceFunction& at) {
  trace(at, "Getting host info. Method 1: PHYSICAL_PROCESSOR started.");
  std::string text;
  if (getPhysicalProc(text) == 0) {
    trace(at, "Getting host info. Method 1: PHYSICAL_PROCESSOR failed.");
    return false;
  }
  getCcLogHw()->traceMAX(at(), "hardware PHYSICAL_PROCESSOR='%s'", text.c_str());
  const std::optional<PhysicalProcDescription> host = parsePhysicalProc(text);
  if (!host) return false;
  facts.packages = host->packages;
  facts.manufacturer = host->manufacturer;
  facts.family = host->family;
  facts.type = host->type;
  facts.coresPerPackage = host->coresPerPackage;
  facts.threadsPerCore = host->threadsPerCore;
  facts.clockMhz = host->clockMhz;
  if (host->is64Bit) facts.is64Bit = *host->is64Bit ? 1 : 0;
  trace(at, "Getting host info. Method 1: PHYSICAL_PROCESSOR completed successfully.");
  return true;
}

// The host's package count, completed by what the guest's own processor tells.
void describeByNodeCapacity(PackageFacts& facts, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  trace(at, "Getting host info. Method 2: getNodeCapacity() started.");
  int capacity = -1;
  if (getNodeCapacity(&capacity) == 0) {
    trace(at, "Getting host info. Method 2: getNodeCapacity() failed.");
    return;
  }
  log->traceMAX(at(),
                "hardware Getting host info. Method 2: getNodeCapacity() returned nodeCapacity=%d",
                capacity);
  if (capacity < 1) return;
  facts.packages = capacity;
  trace(at, "Getting host info. Method 2: getNodeCapacity() completed successfully.");
  const VtResult result(vtExecCommand(kCpuidCommand));
  if (result == nullptr) {
    log->traceMIN(at(), "hardware ERROR! Failed to execute cpuid command");
  } else if (result->status != 0) {
    log->traceMIN(at(), "hardware ERROR! cpuid command failed with error=%d", result->status);
  }
  readCpuid(result.get(), kUnknown, facts, at);
  trace(at, "CPUID data retrieved");
}

PackageFacts gatherInGuest(const TraceFunction& at) {
  trace(at, "VMWare virtualization environment detected");
  PackageFacts facts;
  if (describeByAgentText(facts, at)) return facts;
  describeByNodeCapacity(facts, at);
  if (facts.packages <= 0) {
    // The text says otherwise, but readers rely on the one row of defaults that follows.
    getCcLogHw()->traceMIN(at(), "hardware %s",
                           "ERROR! Failed to determine node capacity in VMware guest. "
                           "PhysicalProcessor group will not be reported.");
  }
  return facts;
}

PackageFacts gatherOnRealMachine(const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  trace(at, "Real machine environment detected");
  PackageFacts facts;
  const VtResult result(vtExecCommand(kCpuidCommand));
  if (result == nullptr) {
    log->traceMIN(at(), "hardware [E] %s", "Cannot execute VT command");
    return facts;
  }
  if (result->status != 0) {
    log->traceMIN(at(), "hardware [E] VT command returned %d", result->status);
  }
  readCpuid(result.get(), "", facts, at);
  facts.packages = vtGetValue(result.get(), nullptr, "PhysicalPackageCount", -1);
  trace(at, "CPUID data retrieved");
  return facts;
}

int rowCount(int packages, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware Number of processors: %d", packages);
  if (packages > kMaxPackages) {
    log->traceMIN(at(), "hardware Number of processors cut to %d", kMaxPackages);
  }
  return std::clamp(packages, 1, kMaxPackages);
}

uint32_t notNegative(int value) { return static_cast<uint32_t>(std::max(value, 0)); }

const char* orUnknown(const String& text) { return text.empty() ? kUnknown : text.c_str(); }

const char* yesNoUnknown(int state) {
  if (state < 0) return "";
  return state == 0 ? "N" : "Y";
}

std::unique_ptr<VelTableRow> makeRow(long number, const PackageFacts& facts,
                                     const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  char id[24];
  std::snprintf(id, sizeof id, "%ld", number);
  const char* manufacturer = orUnknown(facts.manufacturer);
  const char* family = orUnknown(facts.family);
  log->traceMAX(at(), "hardware Adding package ID: %s", id);
  log->traceMAX(at(), "hardware Adding Manufacturer: %s", manufacturer);
  log->traceMAX(at(), "hardware Adding Family: %s", family);
  log->traceMAX(at(), "hardware Adding Type: %s", facts.type.c_str());
  log->traceMAX(at(), "hardware Adding Brand: %s", facts.brand.c_str());
  log->traceMAX(at(), "hardware Adding Signature: %s", facts.signature.c_str());

  auto row = std::make_unique<VelTableRow>();
  addText(*row, kId, id);
  addUlong(*row, kCoresPerPackage, notNegative(facts.coresPerPackage));
  addUlong(*row, kThreadsPerCore, notNegative(facts.threadsPerCore));
  addText(*row, kManufacturer, manufacturer);
  addText(*row, kFamily, family);
  addText(*row, kType, facts.type.c_str());
  addUlong(*row, kClock, notNegative(facts.clockMhz));
  addUlong(*row, kL2CacheSize, notNegative(facts.l2Size));
  addUlong(*row, kL3CacheSize, 0);
  addText(*row, kBrandName, facts.brand.c_str());
  addText(*row, kSignature, facts.signature.c_str());
  addText(*row, kIs64BitSupported, yesNoUnknown(facts.is64Bit));
  return row;
}

}  // namespace

VelTable* PhysicalProcessorGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", kClass);
  const PackageFacts facts = check_virtual() != 0 ? gatherInGuest(at) : gatherOnRealMachine(at);
  const int count = rowCount(facts.packages, at);
  trace(at, "Creating table for PhysicalProcessorGroup");
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  for (int number = 1; number <= count; ++number) {
    table->addRow(makeRow(number, facts, at).release());
  }
  log->traceMidExit(at(), "hardware %s", kClass);
  return table.release();
}

}  // namespace quenlor
