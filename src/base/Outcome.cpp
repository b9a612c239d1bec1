#include "base/Outcome.h"

#include <algorithm>
#include <string_view>

namespace quenlor {
namespace {

constexpr std::string_view kSeparator = "; ";

// True when `reasons` has `reason` as one of its parts.
bool hasPart(std::string_view reasons, std::string_view reason) {
  while (!reasons.empty()) {
    const size_t end = std::min(reasons.find(kSeparator), reasons.size());
    if (reasons.substr(0, end) == reason) return true;
    reasons.remove_prefix(std::min(end + kSeparator.size(), reasons.size()));
  }
  return false;
}

void addParts(std::string& reasons, std::string_view added) {
  while (!added.empty()) {
    const size_t end = std::min(added.find(kSeparator), added.size());
    const std::string_view part = added.substr(0, end);
    if (!hasPart(reasons, part)) {
      if (!reasons.empty()) reasons += kSeparator;
      reasons += part;
    }
    added.remove_prefix(std::min(end + kSeparator.size(), added.size()));
  }
}

}  // namespace

void Outcome::note(OutcomeStatus status, const std::string& reason) {
  m_status = std::max(m_status, status);
  addParts(m_reason, reason);
}

void Outcome::mergePart(const Outcome& part) {
  if (part.m_status <= OutcomeStatus::kNoSource) return;
  note(std::max(part.m_status, OutcomeStatus::kPartial), part.m_reason);
}

const char* outcomeWord(OutcomeStatus status) {
  switch (status) {
    case OutcomeStatus::kComplete:
      return "complete";
    case OutcomeStatus::kNoSource:
      return "no source";
    case OutcomeStatus::kRefused:
      return "refused";
    case OutcomeStatus::kPartial:
      return "partial";
    case OutcomeStatus::kTimedOut:
      return "timed out";
    case OutcomeStatus::kFailed:
      break;
  }
  return "failed";
}

}  // namespace quenlor
