// The kernel module "sg", which gives every SCSI device a generic node.
#pragma once

namespace quenlor {

// What modprobe complains of while it loads the module lands here for a moment.
inline constexpr const char* kModprobeErrorFile = "/tmp/modprobe.error";
// Unloads the module, without a shell; ends with a null pointer.
inline constexpr const char* kUnloadSgCommand[] = {"/sbin/modprobe", "--first-time", "-r", "sg",
                                                   nullptr};

// Loads the module: 1 when this call loaded it and the caller must unload it, else 0. It counts as
// loaded by this call only when modprobe ended with success and without a message.
int loadSG();
// Waits until the freshly loaded driver shows itself, at most about five seconds.
void waitForSG();
void unloadSG();

}  // namespace quenlor
