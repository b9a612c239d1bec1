#include "readers/storage/SgModule.h"

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

// False when the command was not run: nothing may be written under a name in /tmp that is not ours.
bool runModprobe() {
  if (!secureTemporaryFile(kErrorFile)) return false;
  if (CommandStream(kLoadCommand)) return true;
  host().unlink(kErrorFile);
  return false;
}

// With --first-time modprobe complains when the module was there already; silence means that it was
// loaded now. What cannot be read counts as a complaint, so that nobody else's module is unloaded.
bool modprobeWasSilent() {
  CommandStream output(kShowErrorCommand);
  const bool complained = LineReader(output.get(), kLineSize).next();
  return output.close() == 0 && !complained;
}

}  // namespace

int loadSG() {
  const TraceFunction at{kSourcePath, "loadSG()"};
  CcLogWrapper* log = getCcLogHw();
  if (!runModprobe()) {
    log->traceMIN(at(), "hardware %s", "popen fp = NULL");
    return 0;
  }
  log->traceMAX(at(), "hardware %s", "popen fp != NULL");
  const bool loaded = modprobeWasSilent();
  log->traceMAX(at(), "hardware %s", loaded ? "Module sg was OFF" : "Module sg was ON");
  CommandStream(kRemoveErrorCommand).close();
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
