#include "readers/virtualization/check_vm.h"

#include <csetjmp>
#include <csignal>
#include <cstdint>
#include <iterator>

#include "host/Host.h"
#include "log/CcLogWrapper.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/enabler/check_vm.cpp";

constexpr uint32_t kMagic = 0x564D5868;  // "VMXh"
constexpr uint32_t kGetVersionCommand = 10;
constexpr uint32_t kBackdoorPort = 0x5658;  // "VX"
constexpr uint32_t kVersion = 6;

// By product code minus one.
constexpr const char* product[] = {"Express", "ESX Server", "GSX Server", "Workstation"};

// Per thread, so that a fault of another thread never jumps onto the prober's stack.
thread_local sigjmp_buf probeReturn;
thread_local volatile sig_atomic_t probeArmed = 0;

// Installs the probe's handler, with SIGSEGV unblocked: the kernel kills a process whose fault
// signal is blocked. Puts the previous action and mask back when it goes out of scope.
class ProbeSignalScope {
 public:
  ProbeSignalScope() {
    struct sigaction action = {};
    action.sa_handler = sigsegvhandler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    m_installed = sigaction(SIGSEGV, &action, &m_previousAction) == 0;

    sigset_t faults;
    sigemptyset(&faults);
    sigaddset(&faults, SIGSEGV);
    pthread_sigmask(SIG_UNBLOCK, &faults, &m_previousMask);
    if (m_installed) getCcLogHw()->traceMAX(m_at(), "hardware signal handler backup successful");
  }

  ~ProbeSignalScope() {
    if (!m_installed) return;
    pthread_sigmask(SIG_SETMASK, &m_previousMask, nullptr);
    sigaction(SIGSEGV, &m_previousAction, nullptr);
    getCcLogHw()->traceMAX(m_at(), "hardware signal handler restore successful");
  }

  ProbeSignalScope(const ProbeSignalScope&) = delete;
  ProbeSignalScope& operator=(const ProbeSignalScope&) = delete;

  bool isInstalled() const { return m_installed; }

 private:
  const TraceFunction m_at{kSourcePath, "check_virtual()"};
  struct sigaction m_previousAction = {};
  sigset_t m_previousMask = {};
  bool m_installed = false;
};

// False when the port input faulted. This frame holds nothing that a jump out of it would skip.
bool portInputSurvives(PortRegisters* const registers) {
  if (sigsetjmp(probeReturn, 1) != 0) {
    probeArmed = 0;
    return false;
  }
  probeArmed = 1;
  host().portInput(registers);
  probeArmed = 0;
  return true;
}

bool askHypervisor(PortRegisters& registers) {
  const TraceFunction at{kSourcePath, "check_virtual()"};
  const ProbeSignalScope signals;
  if (!signals.isInstalled() || !portInputSurvives(&registers)) {
    getCcLogHw()->traceMIN(at(), "hardware not running on VMware");
    return false;
  }
  getCcLogHw()->traceMAX(at(), "hardware call to 'vmware_door()' successful");
  return true;
}

// Other hypervisors answer on the port as well, with another version or product.
bool isSupportedAnswer(const PortRegisters& answer) {
  const TraceFunction at{kSourcePath, "check_virtual()"};
  CcLogWrapper* log = getCcLogHw();
  if (answer.ebx != kMagic) {
    log->traceMIN(at(), "hardware incorrect virtual machine version: detected %x required %x",
                  answer.ebx, kMagic);
    return false;
  }
  if (answer.eax != kVersion) {
    log->traceMIN(at(), "hardware VMware software version: detected %d required %d",
                  static_cast<int>(answer.eax), static_cast<int>(kVersion));
    return false;
  }
  log->traceMAX(at(), "hardware VMware software version %d", static_cast<int>(answer.eax));
  if (answer.ecx < 1 || answer.ecx > std::size(product)) {
    log->traceMIN(at(), "hardware unknown VMware software product");
    return false;
  }
  log->traceMAX(at(), "hardware VMware software product: %s", product[answer.ecx - 1]);
  return true;
}

}  // namespace

void sigsegvhandler(int signalNumber) {
  if (probeArmed != 0) siglongjmp(probeReturn, signalNumber);
  // Not the probe's: the signal comes again, to its default action, when this handler returns.
  signal(signalNumber, SIG_DFL);
  raise(signalNumber);
}

int check_virtual() {
#if defined(__x86_64__) || defined(__i386__)
  const TraceFunction atEntry{kSourcePath, "check_virtual()"};
  const TraceFunction atExit{kSourcePath, "checkVirtual()"};  // trace readers know the exit so
  getCcLogHw()->traceMidEntry(atEntry(), "hardware %s", "check_virtual()");
  PortRegisters registers{.eax = kMagic, .ebx = 0, .ecx = kGetVersionCommand, .edx = kBackdoorPort};
  const int result = askHypervisor(registers) && isSupportedAnswer(registers) ? 1 : 0;
  getCcLogHw()->traceMidExit(atExit(), "hardware return=%d", result);
  return result;
#else
  return 0;
#endif
}

}  // namespace quenlor
