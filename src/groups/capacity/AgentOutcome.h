// What a group says of the tools agent that it asked.
#pragma once

#include <string>

#include "base/Outcome.h"
#include "readers/virtualization/ToolsAgent.h"

namespace quenlor {

// `what` names the facts that only the agent tells.
void noteAgent(Outcome& outcome, const ToolsAgent& agent, const std::string& what);

}  // namespace quenlor
