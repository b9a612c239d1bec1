// What a start of the VMware tools agent tells: a line of output and a wait status.
#pragma once

#include <optional>
#include <string>

#include "host/Handles.h"

namespace quenlor {

// Keys of what the host publishes to its guests, and the agent's command for one of them.
namespace agent_key {
inline constexpr const char* kNodeId = "dov_node_id";
inline constexpr const char* kNodeCapacity = "dov_node_capacity";
inline constexpr const char* kVmId = "dov_vm_id";
inline constexpr const char* kVmCapacity = "dov_vm_capacity";
inline constexpr const char* kPhysicalProcessor = "dov_physical_processor";
inline constexpr const char* kNodeManufacturer = "dov_node_man";
inline constexpr const char* kNodeProduct = "dov_node_prod";
inline constexpr const char* kNodeVersion = "dov_node_ver";
inline constexpr const char* kNodeType = "dov_node_type";
// What the agent says of a product, version or type that it does not know.
inline constexpr const char* kNone = "None";
}  // namespace agent_key

// "info-get guestinfo.KEY"
std::string agentQuestion(const char* key);

// The first line with its newline; nothing when there is no output. The rest of the output is read
// and dropped: a child that writes into a closed pipe would end with a code that is not its own.
// Behind its line the command is given a second to end.
std::optional<std::string> readFirstLine(CommandStream& command);

// The first character always stays, even when it is blank: an empty value arrives as a newline.
void stripTrailingBlanks(std::string& text);

// Bits 8 to 15 of a wait status as a signed byte.
int exitCodeOf(int waitStatus);
bool wasKilled(int waitStatus);

// 0 for a text that is no finite number.
double finiteNumber(const std::string& text);

}  // namespace quenlor
