// The kernel module "sg", which gives every SCSI device a generic node.
#pragma once

#include <atomic>

namespace quenlor {

// What loadSG() has changed on the machine and nobody has put right yet. All of the state there is,
// without pointers and free of locks, so that it may lie in memory that processes share.
struct SgLeftovers {
  std::atomic<bool> errorFile{false};  // modprobe's messages in /tmp, in a file of ours
  std::atomic<bool> module{false};     // sg, loaded by us
};

// The leftovers of this run.
SgLeftovers& sgLeftovers();
// Removes the error file and unloads the module where the leftovers tell of them: for whoever finds
// that a collection has ended without doing so.
void removeSgLeftovers();

// Loads the module: 1 when this call loaded it and the caller must unload it, else 0. It counts as
// loaded by this call only when modprobe ended with success and without a message.
int loadSG();
// Waits until the freshly loaded driver shows itself, at most about five seconds.
void waitForSG();
void unloadSG();

}  // namespace quenlor
