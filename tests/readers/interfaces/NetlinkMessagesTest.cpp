#include "readers/interfaces/NetlinkMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::bytesOf;
using test::dumpEnd;
using test::netlinkMessage;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint16_t kType = 16;

std::string part(const std::string& payload, uint16_t flags = NLM_F_MULTI) {
  return netlinkMessage(kType, flags, payload);
}

std::vector<std::string> payloads(const NetlinkAnswer& answer) {
  std::vector<std::string> texts;
  for (const NetlinkMessage& message : answer.messages) texts.emplace_back(message.payload);
  return texts;
}

TEST(NetlinkAnswerTest, emptyAnswerIsNotWhole) {
  const NetlinkAnswer answer = parseNetlinkAnswer("");
  EXPECT_FALSE(answer.isWhole);
  EXPECT_THAT(answer.messages, IsEmpty());
}

TEST(NetlinkAnswerTest, dumpOfSeveralDatagramsIsWholeWithItsEnd) {
  const std::string bytes = part("one") + part("second") + part("") + dumpEnd();
  const NetlinkAnswer answer = parseNetlinkAnswer(bytes);
  EXPECT_TRUE(answer.isWhole);
  EXPECT_FALSE(answer.isInterrupted);
  EXPECT_EQ(answer.error, 0);
  EXPECT_THAT(payloads(answer), ElementsAre("one", "second", ""));
  EXPECT_EQ(answer.messages[0].type, kType);
}

TEST(NetlinkAnswerTest, dumpWithoutItsEndKeepsWhatCame) {
  const std::string bytes = part("one") + part("second");
  const NetlinkAnswer answer = parseNetlinkAnswer(bytes);
  EXPECT_FALSE(answer.isWhole);
  EXPECT_THAT(payloads(answer), ElementsAre("one", "second"));
}

TEST(NetlinkAnswerTest, everyCutOfADumpIsNotWhole) {
  const std::string bytes = part("one") + part("second") + dumpEnd();
  for (size_t size = 0; size < bytes.size(); ++size) {
    // A copy, so that a read behind the cut is seen.
    const std::string cut(bytes.data(), size);
    const NetlinkAnswer answer = parseNetlinkAnswer(cut);
    EXPECT_FALSE(answer.isWhole) << size;
    EXPECT_LE(answer.messages.size(), 2u) << size;
  }
}

TEST(NetlinkAnswerTest, singleMessageIsWholeAndEndsTheAnswer) {
  const std::string bytes = part("only", 0) + part("never sent");
  const NetlinkAnswer answer = parseNetlinkAnswer(bytes);
  EXPECT_TRUE(answer.isWhole);
  EXPECT_THAT(payloads(answer), ElementsAre("only"));
}

TEST(NetlinkAnswerTest, interruptedDumpIsToldByAnyOfItsMessages) {
  EXPECT_TRUE(
      parseNetlinkAnswer(part("a", NLM_F_MULTI | NLM_F_DUMP_INTR) + dumpEnd()).isInterrupted);
  EXPECT_TRUE(parseNetlinkAnswer(part("a") + dumpEnd(0, NLM_F_DUMP_INTR)).isInterrupted);
}

TEST(NetlinkAnswerTest, errorMessageGivesItsErrno) {
  const NetlinkAnswer answer = parseNetlinkAnswer(test::netlinkError(EPERM));
  EXPECT_EQ(answer.error, EPERM);
  EXPECT_FALSE(answer.isWhole);
}

TEST(NetlinkAnswerTest, endOfADumpMayCarryAnErrno) {
  const NetlinkAnswer answer = parseNetlinkAnswer(part("a") + dumpEnd(EMSGSIZE));
  EXPECT_EQ(answer.error, EMSGSIZE);
  EXPECT_FALSE(answer.isWhole);
  EXPECT_EQ(answer.messages.size(), 1u);
}

TEST(NetlinkAnswerTest, acknowledgementIsNoError) {
  const NetlinkAnswer answer = parseNetlinkAnswer(test::netlinkError(0));
  EXPECT_EQ(answer.error, 0);
  EXPECT_TRUE(answer.isWhole);
}

TEST(NetlinkAnswerTest, smallestNumberAsErrorIsNoErrno) {
  const std::string bytes = netlinkMessage(NLMSG_ERROR, 0, bytesOf(INT32_MIN));
  EXPECT_EQ(parseNetlinkAnswer(bytes).error, 0);
}

TEST(NetlinkAnswerTest, lengthBelowAHeaderEndsTheWalk) {
  std::string bytes = part("one") + part("second") + dumpEnd();
  const uint32_t length = 3;
  std::memcpy(bytes.data(), &length, sizeof length);
  EXPECT_THAT(parseNetlinkAnswer(bytes).messages, IsEmpty());
}

TEST(NetlinkAnswerTest, lengthBeyondTheAnswerEndsTheWalk) {
  std::string bytes = part("one") + dumpEnd();
  const uint32_t length = 0xFFFFFFFF;
  std::memcpy(bytes.data(), &length, sizeof length);
  EXPECT_THAT(parseNetlinkAnswer(bytes).messages, IsEmpty());
}

TEST(NetlinkAnswerTest, fillerIsLeftOut) {
  const std::string bytes = netlinkMessage(NLMSG_NOOP, NLM_F_MULTI, "x") + part("one") + dumpEnd();
  EXPECT_THAT(payloads(parseNetlinkAnswer(bytes)), ElementsAre("one"));
}

TEST(NetlinkAttributesTest, walksOverPaddingAndDropsFlags) {
  const std::string bytes =
      test::attribute(1, "abc") + test::attribute(2 | NLA_F_NESTED, "") + test::attribute(3, "d");
  NetlinkAttributes attributes(bytes);
  EXPECT_EQ(attributes.next()->value, "abc");
  const auto second = attributes.next();
  EXPECT_EQ(second->type, 2);
  EXPECT_EQ(second->value, "");
  EXPECT_EQ(attributes.next()->value, "d");
  EXPECT_FALSE(attributes.next().has_value());
}

TEST(NetlinkAttributesTest, lastAttributeMayLackItsPadding) {
  std::string bytes = test::attribute(1, "abcde");
  bytes.resize(bytes.size() - 3);
  EXPECT_EQ(netlinkAttribute(bytes, 1), "abcde");
}

TEST(NetlinkAttributesTest, attributeThatDoesNotFitEndsTheWalk) {
  std::string bytes = test::attribute(1, "abcd") + test::attribute(2, "efgh");
  bytes.pop_back();
  EXPECT_EQ(netlinkAttribute(bytes, 1), "abcd");
  EXPECT_FALSE(netlinkAttribute(bytes, 2).has_value());
}

TEST(NetlinkAttributesTest, lengthZeroEndsTheWalk) {
  EXPECT_FALSE(netlinkAttribute(std::string(64, '\0'), 0).has_value());
}

TEST(NetlinkNumberTest, takesItsOwnWidthOnly) {
  EXPECT_EQ(netlinkNumber<uint32_t>(bytesOf(uint32_t{70000})), 70000u);
  EXPECT_FALSE(netlinkNumber<uint32_t>(bytesOf(uint16_t{7})).has_value());
  EXPECT_FALSE(netlinkNumber<uint32_t>(bytesOf(uint64_t{7})).has_value());
  EXPECT_FALSE(netlinkNumber<uint8_t>("").has_value());
}

TEST(NetlinkHeaderTest, shortPayloadHasNoHeader) {
  std::string_view payload = "abc";
  EXPECT_FALSE(takeNetlinkHeader<uint32_t>(payload).has_value());
  EXPECT_EQ(payload, "abc");
}

TEST(NetlinkTextTest, endsAtTheTerminatorWhichMayBeMissing) {
  EXPECT_EQ(netlinkText(std::string_view("eth0\0rest", 9)), "eth0");
  EXPECT_EQ(netlinkText("eth0"), "eth0");
  EXPECT_EQ(netlinkText(""), "");
}

TEST(NetlinkRequestTest, lengthCoversHeaderPayloadAndAttributes) {
  const uint8_t payload[5] = {1, 2, 3, 4, 5};
  NetlinkRequest request(18, NLM_F_DUMP, payload, sizeof payload);
  request.add(netlinkAttributeBytes(29, uint32_t{8}));
  nlmsghdr header{};
  ASSERT_GE(request.bytes().size(), sizeof header);
  std::memcpy(&header, request.bytes().data(), sizeof header);
  EXPECT_EQ(header.nlmsg_len, request.bytes().size());
  EXPECT_EQ(header.nlmsg_len, sizeof header + 8 + 8);
  EXPECT_EQ(header.nlmsg_type, 18);
  EXPECT_EQ(header.nlmsg_flags, NLM_F_DUMP | NLM_F_REQUEST);
  const auto value = netlinkAttribute(std::string_view(request.bytes()).substr(24), 29);
  EXPECT_EQ(netlinkNumber<uint32_t>(value.value_or("")), 8u);
}

}  // namespace
}  // namespace quenlor
