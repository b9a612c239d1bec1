// What the Processor group writes to the trace file, record by record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "factory/GroupFactory.h"
#include "groups/processor/ProcessorGroup.h"
#include "identity/Identity.h"
#include "tests/groups/FirmwareScope.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;

constexpr Version kVersion{2, 4};
constexpr char kOrigin[] = " linux/ProcessorGroup.cpp getTable() hardware ";

std::string configFileRecord() {
  return std::string("MAX ProcessorGroup Group config file= ") +
         GroupFactory::getInstance().hwConfigFile().c_str();
}

class ProcessorTraceTest : public testing::Test {
 protected:
  void cpuinfo(const std::string& text, int nprocs) {
    m_host.files["/proc/cpuinfo"] = text;
    m_host.nprocs = nprocs;
    m_host.nprocsConf = 8;
  }
  void firmware(unsigned processors, const Processor& like = {}) {
    FirmwareTable table(kVersion);
    for (unsigned i = 0; i < processors; ++i) table.add(like);
    m_firmware.emplace(m_host, table);
  }
  // Level and text of the group's own records; those of the helpers it calls are left out.
  std::vector<std::string> records() {
    const CapturedTraces traces;
    collect<ProcessorGroup>();
    std::vector<std::string> own;
    for (const std::string& record : traces.texts()) {
      const size_t at = record.find(kOrigin);
      if (at == record.npos) continue;
      own.push_back(record.substr(0, at) + ' ' + record.substr(at + sizeof kOrigin - 1));
    }
    return own;
  }

  FakeHost m_host;
  std::optional<FirmwareScope> m_firmware;
};

TEST_F(ProcessorTraceTest, everyStepInItsOrderAndAtItsLevel) {
  cpuinfo(
      "processor\t: 0\nvendor_id\t: X\ncpu family\t: 15\nmodel\t\t: 2\nstepping\t: 7\n"
      "cpu MHz\t\t: 2793.020\nsiblings\t: 2\nflags\t\t: ht\nprocessor\t: 1\n",
      2);
  Processor record;
  record.family = 17;
  record.edx = 0x1234ABCD;
  record.currentSpeed = 2790;
  record.externalClock = 133;
  record.upgrade = 4;
  firmware(1, record);
  EXPECT_THAT(
      records(),
      ElementsAre("MID entry ProcessorGroup", configFileRecord(),
                  "MAX number of procs available = 8", "MAX number of procs on line = 2",
                  "MAX number of procs the os is configured =8",
                  "MAX number of procs available get_nprocs() count= 2",
                  "MAX SM_cpuspeed= 2790 SM_cpuflags= 1234abcd",
                  "MAX API and cpuinfo processor counts match", "MAX pcount= 2",
                  "MAX logical procs= 2", "MAX SMBIOS Populated Processors = 1",
                  "MAX Hyperthreading detected: Physical CPU count= 1",
                  "MIN ***Processor count == SMBIOS count or SMBIOS count == 0",
                  "MIN ***Hyperthreading check not useful", "MAX cpuenum= 17",
                  "MAX CPU_Family=Unknown", "MAX md5out= " + md5Text("X28002790152710000000133417"),
                  "MAX family= 15", "MAX model= 2", "MAX stepping= 7", "MAX speed= 2790",
                  "MAX extspd= 133", "MAX interface= 4", "MID exit ProcessorGroup"));
}

TEST_F(ProcessorTraceTest, capOfTheFirmwareIsSilent) {
  cpuinfo("processor\t: 0\nsiblings\t: 4\nflags\t\t: ht\n", 2);
  firmware(1);
  const std::vector<std::string> found = records();
  EXPECT_THAT(found, IsSupersetOf({"MAX API and cpuinfo processor counts don't match",
                                   "MAX Hyperthreading detected but the number of CPUs is less "
                                   "than the number of logical CPUs",
                                   "MAX left the number of CPUs unchanged"}));
  EXPECT_THAT(found, Not(testing::Contains(testing::StartsWith("MIN"))));
}

}  // namespace
}  // namespace quenlor::test
