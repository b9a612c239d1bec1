// What the management agent of a VMware host publishes to its guests, read by running the VMware
// tools agent "vmware-guestd" once per key.
#pragma once

#include <string>

#include "base/String.h"

namespace quenlor {

// Identity of the physical host; unknown texts are empty.
struct HostInfo {
  String product;
  String manufacturer;
  String modelClass;  // no key gives it
  String type;
  String version;
  String serialNumber;  // the node id
};

// First line of a command's output, trailing blanks stripped. 0, the command's exit code (a signed
// byte) when it is not 0, -1 when the command cannot be run or prints nothing; output is left
// untouched unless the result is 0.
int getInfo(std::string& output, const char* command);

// The functions below run the agent until one of its commands is killed, by the ceiling of all
// commands, without having said a word. From then on they fail at once, until this is called.
void askStuckAgentAgain();

// 1 on success, else 0. A text is left untouched on failure, a number is 0 then.
int getNodeId(std::string& nodeId);
int getNodeCapacity(int* capacity);  // physical packages of the host
int getVMId(std::string& vmId);
int getVMCapacity(double* capacity);  // packages that this guest may use, a fraction allowed
// "packages:manufacturer:family:type:cores per package:threads per core:MHz", then perhaps ":bits".
int getPhysicalProc(std::string& description);

// Node id, node capacity, guest id and guest capacity in this order; 0 at the first that fails.
int getGuestInfo(std::string& nodeId, int* nodeCapacity, std::string& vmId, double* vmCapacity);

// Fills the record with what can be read; the getInfo result of the last key read.
int getHostInfo(HostInfo& record);

}  // namespace quenlor
