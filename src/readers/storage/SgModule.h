// The kernel module "sg", which gives every SCSI device a generic node.
#pragma once

namespace quenlor {

// Loads the module: 1 when this call loaded it and the caller must unload it, else 0. It counts as
// loaded by this call only when modprobe ended with success and without a message.
int loadSG();
// Waits until the freshly loaded driver shows itself, at most about five seconds.
void waitForSG();
void unloadSG();

}  // namespace quenlor
