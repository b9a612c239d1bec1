#include "groups/capacity/AgentOutcome.h"

namespace quenlor {
namespace {

constexpr const char* kAsked = "tools agent: asked";
constexpr const char* kTimedOut = "tools agent: timed out";

void noteCutOff(Outcome& outcome, ToolsAgent::State state) {
  const bool toldSome = state == ToolsAgent::State::kAnswered;
  outcome.note(toldSome ? OutcomeStatus::kPartial : OutcomeStatus::kTimedOut, kTimedOut);
}

}  // namespace

void noteAgent(Outcome& outcome, const ToolsAgent& agent, const std::string& what) {
  const ToolsAgent::State state = agent.state();
  if (state >= ToolsAgent::State::kSilent) outcome.note(OutcomeStatus::kComplete, kAsked);
  if (agent.wasCutOff()) return noteCutOff(outcome, state);
  switch (state) {
    case ToolsAgent::State::kNotThere:
      return outcome.note(OutcomeStatus::kNoSource, what + ": no tools agent");
    case ToolsAgent::State::kNoProgram:
      return outcome.note(OutcomeStatus::kNoSource, what + ": tools agent does not start");
    case ToolsAgent::State::kSilent:
      return outcome.note(OutcomeStatus::kNoSource, what + ": the host publishes nothing");
    case ToolsAgent::State::kAnswered:
      return;
  }
}

}  // namespace quenlor
