#include "readers/storage/SgModule.h"

#include <optional>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "host/ScanState.h"
#include "host/SecureTemporary.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/SgModule.cpp";
constexpr const char* kLoadCommand = "/sbin/modprobe --first-time sg 2>/tmp/modprobe.error";
constexpr const char* kShowErrorCommand = "cat /tmp/modprobe.error 2>/dev/null";
constexpr const char* kRemoveErrorCommand = "rm -f /tmp/modprobe.error 2>/dev/null";
constexpr const char* kUnloadCommand = "/sbin/modprobe --first-time -r sg 2>/dev/null";
constexpr size_t kLineSize = 256;
constexpr const char* kScsiDirectory = "/proc/scsi";
constexpr const char* kSgDirectory = "/proc/scsi/sg";
constexpr const char* kSgModule = "/sys/module/sg";
constexpr int kMaxChecks = 51;
constexpr uint32_t kPauseMicroseconds = 100000;

bool exists(const char* path) {
  struct stat status = {};
  return host().stat(path, &status) == 0;
}

// Wait status of modprobe. Nothing when the command was not run: nothing may be written under a
// name in /tmp that is not ours.
std::optional<int> runModprobe() {
  scanState().temporaryMade = true;
  const bool secured = secureTemporaryFile(kModprobeErrorFile);
  if (secured) {
    CommandStream modprobe(kLoadCommand);
    if (modprobe) return modprobe.close();
    host().unlink(kModprobeErrorFile);
  }
  scanState().temporaryMade = false;
  return std::nullopt;
}

// With --first-time modprobe complains when the module was there already. What cannot be read
// counts as a complaint, so that nobody else's module is unloaded. Silence alone says nothing: a
// modprobe that hung, was killed or could not write its message is silent too.
bool modprobeWasSilent() {
  CommandStream output(kShowErrorCommand);
  const bool complained = LineReader(output.get(), kLineSize).next();
  return output.close() == 0 && !complained;
}

// Where the limits for descriptors or processes are tight, a shell may not be able to.
void removeErrorFile() {
  bool removed = CommandStream(kRemoveErrorCommand).close() == 0;
  if (!removed) removed = host().unlink(kModprobeErrorFile) == 0;
  if (removed) scanState().temporaryMade = false;
}

// While modprobe runs nobody knows whether a module that was not there before has been loaded.
class LoadInProgress {
 public:
  LoadInProgress() {
    const bool isThere = exists(kSgModule) || exists(kSgDirectory);
    scanState().sgLoaded = isThere ? Certainty::kNo : Certainty::kPerhaps;
  }
  ~LoadInProgress() { scanState().sgLoaded = m_loaded ? Certainty::kYes : Certainty::kNo; }
  LoadInProgress(const LoadInProgress&) = delete;
  LoadInProgress& operator=(const LoadInProgress&) = delete;

  void setLoaded(bool loaded) { m_loaded = loaded; }

 private:
  bool m_loaded = false;
};

}  // namespace

int loadSG() {
  const TraceFunction at{kSourcePath, "loadSG()"};
  CcLogWrapper* log = getCcLogHw();
  LoadInProgress inProgress;
  const std::optional<int> modprobeStatus = runModprobe();
  if (!modprobeStatus) {
    log->traceMIN(at(), "hardware %s", "popen fp = NULL");
    return 0;
  }
  log->traceMAX(at(), "hardware %s", "popen fp != NULL");
  const bool loaded = modprobeWasSilent() && *modprobeStatus == 0;
  inProgress.setLoaded(loaded);
  log->traceMAX(at(), "hardware %s", loaded ? "Module sg was OFF" : "Module sg was ON");
  removeErrorFile();
  return loaded ? 1 : 0;
}

void waitForSG() {
  const TraceFunction at{kSourcePath, "waitForSG()"};
  CcLogWrapper* log = getCcLogHw();
  for (int cycle = 0; cycle < kMaxChecks; ++cycle) {
    if (exists(kSgDirectory)) {
      log->traceMAX(at(), "hardware  found /dev/sg*  cycle = %d", cycle);
      return;
    }
    log->traceMAX(at(), "hardware  not found /dev/sg* cycle = %d", cycle);
    // A kernel built without this directory never shows the driver there: nothing to wait for.
    if (exists(kScsiDirectory)) host().sleepMicroseconds(kPauseMicroseconds);
  }
  log->traceMAX(at(), "hardware  not found /dev/sg*");
}

void unloadSG() {
  const TraceFunction at{kSourcePath, "unloadSG()"};
  getCcLogHw()->traceMAX(at(), "hardware Unload SG MODULE");
  scanState().sgLoaded = Certainty::kPerhaps;
  const bool unloaded = CommandStream(kUnloadCommand).close() == 0;
  scanState().sgLoaded = unloaded ? Certainty::kNo : Certainty::kYes;
}

}  // namespace quenlor
