#include "base/Outcome.h"

#include <gtest/gtest.h>

namespace quenlor {
namespace {

TEST(OutcomeTest, nothingNotedIsComplete) {
  const Outcome outcome;
  EXPECT_STREQ(outcomeWord(outcome.status()), "complete");
  EXPECT_EQ(outcome.reason(), "");
}

TEST(OutcomeTest, theWorstStatusWinsWhateverTheOrder) {
  Outcome outcome;
  outcome.note(OutcomeStatus::kTimedOut, "a");
  outcome.note(OutcomeStatus::kPartial, "b");
  EXPECT_STREQ(outcomeWord(outcome.status()), "timed out");
  EXPECT_EQ(outcome.reason(), "a; b");
}

TEST(OutcomeTest, aReasonIsGivenOnce) {
  Outcome outcome;
  outcome.note(OutcomeStatus::kPartial, "serial numbers: not root");
  outcome.note(OutcomeStatus::kPartial, "uuid: not root");
  outcome.note(OutcomeStatus::kPartial, "serial numbers: not root");
  EXPECT_EQ(outcome.reason(), "serial numbers: not root; uuid: not root");
}

TEST(OutcomeTest, aReasonThatBeginsAnotherIsStillItsOwn) {
  Outcome outcome;
  outcome.note(OutcomeStatus::kPartial, "serial numbers");
  outcome.note(OutcomeStatus::kPartial, "serial");
  EXPECT_EQ(outcome.reason(), "serial numbers; serial");
}

TEST(OutcomeTest, mergingTakesStatusAndReasonsOver) {
  Outcome reader;
  reader.note(OutcomeStatus::kRefused, "table: not root");
  reader.note(OutcomeStatus::kRefused, "uuid: not root");
  Outcome group;
  group.note(OutcomeStatus::kPartial, "uuid: not root");
  group.merge(reader);
  EXPECT_EQ(group.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(group.reason(), "uuid: not root; table: not root");
}

TEST(OutcomeTest, everyStatusHasItsWord) {
  EXPECT_STREQ(outcomeWord(OutcomeStatus::kNoSource), "no source");
  EXPECT_STREQ(outcomeWord(OutcomeStatus::kRefused), "refused");
  EXPECT_STREQ(outcomeWord(OutcomeStatus::kPartial), "partial");
  EXPECT_STREQ(outcomeWord(OutcomeStatus::kFailed), "failed");
}

TEST(OutcomeTest, partThatWasRefusedLeavesTheRest) {
  Outcome part;
  part.note(OutcomeStatus::kRefused, "serial numbers: not root");
  Outcome whole;
  whole.mergePart(part);
  EXPECT_EQ(whole.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(whole.reason(), "serial numbers: not root");
}

TEST(OutcomeTest, partThatTheMachineDoesNotHaveIsNotMissing) {
  Outcome part;
  part.note(OutcomeStatus::kNoSource, "firmware table: none");
  Outcome whole;
  whole.mergePart(part);
  EXPECT_EQ(whole.status(), OutcomeStatus::kComplete);
  EXPECT_EQ(whole.reason(), "");
}

TEST(OutcomeTest, partThatTimedOutIsToldAsThat) {
  Outcome part;
  part.note(OutcomeStatus::kTimedOut, "firmware table: timed out");
  Outcome whole;
  whole.mergePart(part);
  EXPECT_EQ(whole.status(), OutcomeStatus::kTimedOut);
}

}  // namespace
}  // namespace quenlor
