// How complete what a reader or a group of a modern scan has found is, and what is missing.
#pragma once

#include <cstdint>
#include <string>

namespace quenlor {

// From the best to the worst.
enum class OutcomeStatus : uint8_t {
  kComplete,  // the source was read to its end; nothing found means that there is nothing
  kNoSource,  // nothing on this machine tells; nothing may be concluded
  kRefused,   // the kernel refused all of it
  kPartial,   // some facts were refused, cut or left out; the rest holds
  kTimedOut,
  kFailed,
};

// Not thread safe. The worst status wins; reasons are kept in the order in which they came, each
// once.
class Outcome {
 public:
  OutcomeStatus status() const { return m_status; }
  // The reasons, joined by "; ". They name facts and causes, never a path or an address of the
  // machine ("serial numbers: not root").
  const std::string& reason() const { return m_reason; }

  void note(OutcomeStatus status, const std::string& reason);
  void merge(const Outcome& other) { note(other.m_status, other.m_reason); }
  // Of a source that tells only some of the facts: what it was refused leaves the rest standing,
  // and a machine without that source lacks nothing.
  void mergePart(const Outcome& part);

 private:
  OutcomeStatus m_status = OutcomeStatus::kComplete;
  std::string m_reason;
};

// The word that documents use: "complete", "no source", "refused", "partial", "timed out",
// "failed".
const char* outcomeWord(OutcomeStatus status);

}  // namespace quenlor
