#include "readers/virtualization/check_vm.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

constexpr uint32_t kMagic = 0x564D5868;

volatile sig_atomic_t strangerCalls = 0;
void strangersHandler(int) { strangerCalls = strangerCalls + 1; }

// Puts SIGSEGV back as the test found it.
class SegvKeeper {
 public:
  SegvKeeper() { sigaction(SIGSEGV, nullptr, &m_action); }
  ~SegvKeeper() { sigaction(SIGSEGV, &m_action, nullptr); }

 private:
  struct sigaction m_action = {};
};

void installStranger() {
  struct sigaction action = {};
  action.sa_handler = strangersHandler;
  action.sa_flags = SA_NODEFER;
  sigaddset(&action.sa_mask, SIGUSR1);
  sigaction(SIGSEGV, &action, nullptr);
}

void expectStrangerInstalled() {
  struct sigaction action = {};
  sigaction(SIGSEGV, nullptr, &action);
  EXPECT_EQ(action.sa_handler, strangersHandler);
  EXPECT_EQ(action.sa_flags & SA_NODEFER, SA_NODEFER);
  EXPECT_EQ(sigismember(&action.sa_mask, SIGUSR1), 1);
}

std::function<void(PortRegisters*)> answering(uint32_t eax, uint32_t ebx, uint32_t ecx) {
  return [=](PortRegisters* registers) {
    registers->eax = eax;
    registers->ebx = ebx;
    registers->ecx = ecx;
  };
}

TEST(CheckVirtual, faultOfThePortInputMeansNoVmware) {
  CapturedTraces trace;
  FakeHost host;  // raises SIGSEGV
  EXPECT_EQ(check_virtual(), 0);
  EXPECT_TRUE(trace.contains("hardware signal handler backup successful"));
  EXPECT_TRUE(trace.contains("hardware not running on VMware"));
  EXPECT_TRUE(trace.contains("hardware signal handler restore successful"));
}

TEST(CheckVirtual, faultIsTracedAtTheLevelOfFailures) {
  CapturedTraces trace("MIN");
  FakeHost host;
  check_virtual();
  EXPECT_EQ(trace.records().size(), 1u);
  EXPECT_EQ(trace.count("hardware not running on VMware"), 1);
}

TEST(CheckVirtual, onlyTheExitRecordNamesTheOtherFunction) {
  CapturedTraces trace;
  FakeHost host;
  check_virtual();
  EXPECT_EQ(trace.countHolding("checkVirtual()"), 1);
  EXPECT_EQ(trace.count(" checkVirtual() hardware return=0"), 1);
  EXPECT_EQ(trace.count(" check_virtual() hardware check_virtual()"), 1);
}

TEST(CheckVirtual, faultOfARealInstructionIsCaughtAsWell) {
  const auto pageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* page = mmap(nullptr, pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(page, MAP_FAILED);
  FakeHost host;
  host.port = [page](PortRegisters*) { *static_cast<volatile int*>(page) = 1; };
  EXPECT_EQ(check_virtual(), 0);
  munmap(page, pageSize);
}

// Faults on real machines and most hypervisors; whatever it does, the probe survives it.
TEST(CheckVirtual, realPortInputOfThisMachineIsSurvived) {
  const int result = check_virtual();
  EXPECT_TRUE(result == 0 || result == 1);
}

TEST(CheckVirtual, probesAgainAfterAFault) {
  FakeHost host;
  for (int i = 0; i < 100; ++i) EXPECT_EQ(check_virtual(), 0);
  host.port = answering(6, kMagic, 2);
  EXPECT_EQ(check_virtual(), 1);
}

TEST(CheckVirtual, asksForTheVersionOnTheBackdoorPort) {
  FakeHost host;
  PortRegisters asked;
  host.port = [&asked](PortRegisters* registers) { asked = *registers; };
  check_virtual();
  EXPECT_EQ(asked.eax, kMagic);
  EXPECT_EQ(asked.ebx, 0u);
  EXPECT_EQ(asked.ecx, 10u);
  EXPECT_EQ(asked.edx, 0x5658u);
}

TEST(CheckVirtual, wrongMagicIsNoVmware) {
  CapturedTraces trace("MIN");
  FakeHost host;
  host.port = answering(6, 0xFFFFFFFF, 2);
  EXPECT_EQ(check_virtual(), 0);
  EXPECT_TRUE(trace.contains(
      "hardware incorrect virtual machine version: detected ffffffff required 564d5868"));
}

TEST(CheckVirtual, wrongVersionIsNoVmware) {
  CapturedTraces trace("MIN");
  FakeHost host;
  host.port = answering(5, kMagic, 2);
  EXPECT_EQ(check_virtual(), 0);
  EXPECT_TRUE(trace.contains("hardware VMware software version: detected 5 required 6"));
}

TEST(CheckVirtual, productCodesOneToFourAreVmware) {
  const char* const kNames[] = {"Express", "ESX Server", "GSX Server", "Workstation"};
  for (uint32_t code = 1; code <= 4; ++code) {
    CapturedTraces trace;
    FakeHost host;
    host.port = answering(6, kMagic, code);
    EXPECT_EQ(check_virtual(), 1) << code;
    EXPECT_TRUE(trace.contains("hardware call to 'vmware_door()' successful"));
    EXPECT_TRUE(trace.contains("hardware VMware software version 6"));
    EXPECT_TRUE(
        trace.contains(std::string("hardware VMware software product: ") + kNames[code - 1]));
  }
}

TEST(CheckVirtual, otherProductCodesAreNot) {
  for (const uint32_t code : {0u, 5u, 0xFFFFFFFFu}) {
    CapturedTraces trace("MIN");
    FakeHost host;
    host.port = answering(6, kMagic, code);
    EXPECT_EQ(check_virtual(), 0) << code;
    EXPECT_TRUE(trace.contains("hardware unknown VMware software product"));
  }
}

TEST(CheckVirtual, previousActionIsRestoredOnEveryPath) {
  const SegvKeeper keeper;
  FakeHost host;
  installStranger();
  for (const auto& port :
       {std::function<void(PortRegisters*)>(), answering(6, 0, 2), answering(5, kMagic, 2),
        answering(6, kMagic, 2), answering(6, kMagic, 5)}) {
    host.port = port;
    check_virtual();
    expectStrangerInstalled();
  }
  EXPECT_EQ(strangerCalls, 0);
}

TEST(CheckVirtual, blockedFaultSignalDoesNotKillTheScanAndStaysBlocked) {
  FakeHost host;
  sigset_t faults;
  sigset_t before;
  sigemptyset(&faults);
  sigaddset(&faults, SIGSEGV);
  pthread_sigmask(SIG_BLOCK, &faults, &before);
  EXPECT_EQ(check_virtual(), 0);
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(sigismember(&after, SIGSEGV), 1);
  EXPECT_EQ(sigismember(&after, SIGUSR1), 0);
}

TEST(CheckVirtual, signalMaskIsTheSameAfterAFault) {
  FakeHost host;
  check_virtual();
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(sigismember(&after, SIGSEGV), 0);
}

void withoutCore() {
  const struct rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

TEST(CheckVirtualDeathTest, faultOutsideTheProbeGetsItsDefaultAction) {
  EXPECT_EXIT(
      {
        withoutCore();
        signal(SIGSEGV, sigsegvhandler);
        raise(SIGSEGV);
      },
      testing::KilledBySignal(SIGSEGV), "");
}

TEST(CheckVirtualDeathTest, faultOfAnotherThreadWhileProbingGetsItsDefaultAction) {
  EXPECT_EXIT(
      {
        withoutCore();
        FakeHost host;
        host.port = [](PortRegisters*) { std::thread([] { raise(SIGSEGV); }).join(); };
        check_virtual();
        _exit(0);
      },
      testing::KilledBySignal(SIGSEGV), "");
}

}  // namespace
}  // namespace quenlor::test
