#include "groups/processor/ProcessorGroup.h"

#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string>

#include "base/Text.h"
#include "factory/GroupFactory.h"
#include "groups/processor/ProcessorFamily.h"
#include "groups/processor/ProcessorFlagAttributes.h"
#include "groups/processor/RealSpeedValue.h"
#include "host/Host.h"
#include "identity/Identity.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/smbios/SMMemory.h"
#include "readers/processor/ProcCpuinfo.h"
#include "readers/processor/ProcessorFlags.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/ProcessorGroup.cpp";

// Attribute ids.
constexpr uint32_t kIndex = 1;
constexpr uint32_t kId = 2;
constexpr uint32_t kFamily = 3;
constexpr uint32_t kMaxClockSpeed = 4;
constexpr uint32_t kCurrentClockSpeed = 5;
constexpr uint32_t kExternalClockSpeed = 6;
constexpr uint32_t kManufacturer = 7;
constexpr uint32_t kInterface = 9;
constexpr uint32_t kChipFamily = 10;
constexpr uint32_t kChipModel = 11;
constexpr uint32_t kChipStepping = 12;
constexpr uint32_t kChipFeatures = 13;
constexpr uint32_t k3DNow = 35;
constexpr uint32_t kCpuEnabled = 42;

constexpr uint32_t kReportedFeatures = 0x7FFFFFFF;

struct ProcessorFacts {
  ProcCpuinfo cpuinfo;
  int count = 0;
  uint32_t normalisedSpeed = 0;      // MHz
  unsigned short currentSpeed = 0;   // MHz, by the firmware
  unsigned short externalClock = 0;  // MHz, by the firmware
  unsigned short upgrade = 0;        // the firmware's code of the socket
  unsigned int features = 0;
  unsigned int smbiosFamily = 0;
  String familyName;
  std::string identity;

  // 16 bits hold what the firmware says, not the fallback.
  uint32_t clockSpeed() const { return currentSpeed != 0 ? currentSpeed : normalisedSpeed; }
  bool hasHyperThreading() const {
    return (features & kHyperThreadingFlag) != 0 && cpuinfo.siblings > 1;
  }
};

void loadDescriptions(const TraceFunction& at) {
  GroupFactory& factory = GroupFactory::getInstance();
  getCcLogHw()->traceMAX(at(), "hardware ProcessorGroup Group config file= %s",
                         factory.hwConfigFile().c_str());
  factory.loadNodeFromFile(factory.hwConfigFile(), kProcessorsSection);
}

// The calls cost a look at the kernel's files each, and only a trace wants their answers.
void traceCounts(int nprocs, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  if (!log->isEnabled(TraceLevel::kMax)) return;
  log->traceMAX(at(), "hardware %s %ld",
                "number of procs available =", host().sysconf(_SC_NPROCESSORS_CONF));
  log->traceMAX(at(), "hardware %s %ld",
                "number of procs on line =", host().sysconf(_SC_NPROCESSORS_ONLN));
  log->traceMAX(at(), "hardware number of procs the os is configured =%d", host().getNprocsConf());
  log->traceMAX(at(), "hardware %s %d", "number of procs available get_nprocs() count=", nprocs);
}

void readFirmware(ProcessorFacts& facts, const TraceFunction& at) {
  SM_Processor(&facts.currentSpeed, &facts.externalClock, &facts.upgrade, &facts.features);
  getCcLogHw()->traceMAX(at(), "hardware %s %i %s %08x", "SM_cpuspeed=", facts.currentSpeed,
                         "SM_cpuflags=", facts.features);
  if (facts.cpuinfo.flags) facts.features = makeCPUflagsFromString(facts.cpuinfo.flags->c_str());
}

// Never more processors than the firmware knows of, where it knows.
int cappedByFirmware(int count, unsigned int populated, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  const auto unsignedCount = static_cast<unsigned int>(count);
  if (populated == 0 || unsignedCount == populated) {
    log->traceMIN(at(), "hardware %s", "***Processor count == SMBIOS count or SMBIOS count == 0");
    log->traceMIN(at(), "hardware %s", "***Hyperthreading check not useful");
    return count;
  }
  return unsignedCount > populated ? static_cast<int>(populated) : count;
}

int physicalCount(const ProcessorFacts& facts, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  const int lines = facts.cpuinfo.processorLines;
  log->traceMAX(at(), "hardware %s",
                facts.count == lines ? "API and cpuinfo processor counts match"
                                     : "API and cpuinfo processor counts don't match");
  log->traceMAX(at(), "hardware %s %d", "pcount=", lines);
  log->traceMAX(at(), "hardware %s %d", "logical procs=", facts.cpuinfo.siblings);
  const unsigned int populated = SM_PopulatedProcessorCount();
  log->traceMAX(at(), "hardware %s %u", "SMBIOS Populated Processors =", populated);

  int count = facts.count;
  if (facts.hasHyperThreading()) count = hyperThreadedPackages(facts.cpuinfo, at).value_or(count);
  return cappedByFirmware(count, populated, at);
}

// Everything run together: a digest of it identifies the processor from scan to scan.
std::string identityOf(const ProcessorFacts& facts) {
  constexpr const char* kFormat = "%s%i%i%i%i%i%x%i%i%i";
  const ProcCpuinfo& chip = facts.cpuinfo;
  char text[512];
  std::snprintf(text, sizeof text, kFormat, chip.vendor.c_str(),
                static_cast<int>(facts.normalisedSpeed), static_cast<int>(facts.clockSpeed()),
                chip.chipFamily, chip.chipModel, chip.chipStepping, facts.features,
                facts.externalClock, facts.upgrade, static_cast<int>(facts.smbiosFamily));
  return md5Text(text);
}

void nameProcessor(ProcessorFacts& facts, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  const ProcCpuinfo& chip = facts.cpuinfo;
  facts.smbiosFamily = SM_ProcessorFamily();
  log->traceMAX(at(), "hardware %s %u", "cpuenum=", facts.smbiosFamily);
  facts.familyName =
      getEnum(chip.vendor.c_str(), chip.chipFamily, chip.chipModel, chip.modelName.c_str());
  log->traceMAX(at(), "hardware CPU_Family=%s", facts.familyName.c_str());
  facts.identity = identityOf(facts);
  log->traceMAX(at(), "hardware %s %s", "md5out=", facts.identity.c_str());
}

ProcessorFacts gather(const TraceFunction& at) {
  ProcessorFacts facts;
  facts.count = host().getNprocs();
  traceCounts(facts.count, at);
  facts.cpuinfo = readProcCpuinfo();
  const int mhz = decimalValue(facts.cpuinfo.mhz.c_str());
  facts.normalisedSpeed = RealSpeedValue(static_cast<uint32_t>(mhz < 0 ? 0 : mhz));
  readFirmware(facts, at);
  facts.count = physicalCount(facts, at);
  nameProcessor(facts, at);
  return facts;
}

void traceRow(const ProcessorFacts& facts, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s %d", "family=", facts.cpuinfo.chipFamily);
  log->traceMAX(at(), "hardware %s %d", "model=", facts.cpuinfo.chipModel);
  log->traceMAX(at(), "hardware %s %d", "stepping=", facts.cpuinfo.chipStepping);
  log->traceMAX(at(), "hardware %s %u", "speed=", facts.clockSpeed());
  log->traceMAX(at(), "hardware %s %d", "extspd=", facts.externalClock);
  log->traceMAX(at(), "hardware %s %d", "interface=", facts.upgrade);
}

void addFlags(VelTableRow& row, const ProcessorFacts& facts) {
  for (const FlagAttribute& flag : FLAG_ATTRIBUTES) {
    addText(row, flag.id, (facts.features & flag.mask) != 0 ? "Y" : "N");
  }
  if (facts.cpuinfo.flags) {
    addText(row, k3DNow, facts.cpuinfo.flags->find("3dnow") != std::string::npos ? "Y" : "N");
  }
  if (facts.hasHyperThreading()) addText(row, kCpuEnabled, "H");
}

std::unique_ptr<VelTableRow> makeRow(uint32_t number, const ProcessorFacts& facts) {
  const ProcCpuinfo& chip = facts.cpuinfo;
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, number);
  addText(*row, kId, facts.identity);
  addText(*row, kFamily, facts.familyName.c_str());
  addUlong(*row, kMaxClockSpeed, facts.normalisedSpeed);
  addUlong(*row, kCurrentClockSpeed, facts.clockSpeed());
  if (facts.externalClock != 0) addUlong(*row, kExternalClockSpeed, facts.externalClock);
  addText(*row, kManufacturer, chip.vendor);
  // A number although the catalogue lists a text: writers print the enumeration's text for it.
  if (facts.upgrade != 0) addUlong(*row, kInterface, facts.upgrade);
  addUlong(*row, kChipFamily, static_cast<uint32_t>(chip.chipFamily));
  addUlong(*row, kChipModel, static_cast<uint32_t>(chip.chipModel));
  addUlong(*row, kChipStepping, static_cast<uint32_t>(chip.chipStepping));
  addUlong(*row, kChipFeatures, facts.features & kReportedFeatures);
  addFlags(*row, facts);
  return row;
}

}  // namespace

VelTable* ProcessorGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "ProcessorGroup");
  loadDescriptions(at);
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  const ProcessorFacts facts = gather(at);
  for (int number = 1; number <= facts.count; ++number) {
    traceRow(facts, at);
    table->addRow(makeRow(static_cast<uint32_t>(number), facts).release());
  }
  log->traceMidExit(at(), "hardware %s", "ProcessorGroup");
  return table.release();
}

}  // namespace quenlor
