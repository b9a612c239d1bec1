#include "readers/storage/SgModule.h"

#include <optional>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "host/SecureTemporary.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/SgModule.cpp";
constexpr const char* kErrorFile = "/tmp/modprobe.error";
constexpr const char* kLoadCommand = "/sbin/modprobe --first-time sg 2>/tmp/modprobe.error";
constexpr const char* kShowErrorCommand = "cat /tmp/modprobe.error 2>/dev/null";
constexpr const char* kRemoveErrorCommand = "rm -f /tmp/modprobe.error 2>/dev/null";
constexpr const char* kUnloadCommand = "/sbin/modprobe --first-time -r sg 2>/dev/null";
constexpr size_t kLineSize = 256;
constexpr const char* kScsiDirectory = "/proc/scsi";
constexpr const char* kSgDirectory = "/proc/scsi/sg";
constexpr int kMaxChecks = 51;
constexpr uint32_t kPauseMicroseconds = 100000;

bool exists(const char* path) {
  struct stat status = {};
  return host().stat(path, &status) == 0;
}

// Wait status of modprobe. Nothing when the command was not run: nothing may be written under a
// name in /tmp that is not ours.
std::optional<int> runModprobe() {
  if (!secureTemporaryFile(kErrorFile)) return std::nullopt;
  CommandStream modprobe(kLoadCommand);
  if (modprobe) return modprobe.close();
  host().unlink(kErrorFile);
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
  if (CommandStream(kRemoveErrorCommand).close() != 0) host().unlink(kErrorFile);
}

}  // namespace

int loadSG() {
  const TraceFunction at{kSourcePath, "loadSG()"};
  CcLogWrapper* log = getCcLogHw();
  const std::optional<int> modprobeStatus = runModprobe();
  if (!modprobeStatus) {
    log->traceMIN(at(), "hardware %s", "popen fp = NULL");
    return 0;
  }
  log->traceMAX(at(), "hardware %s", "popen fp != NULL");
  const bool loaded = modprobeWasSilent() && *modprobeStatus == 0;
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
  CommandStream(kUnloadCommand).close();
}

}  // namespace quenlor
