#include "log/TraceSettings.h"

#include <gtest/gtest.h>

namespace quenlor {
namespace {

using namespace std::string_literals;

TEST(TraceSettings, everySettingIsRead) {
  const auto settings = parseTraceSettings(
      "# tracing\r\ntrace.file = /tmp/x\r\ntrace.level = MID\r\ntrace.size = 4096\r\n"
      "trace.count = 0\r\nother = ignored\r\n");
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->file, "/tmp/x");
  EXPECT_EQ(settings->level, TraceLevel::kMid);
  EXPECT_EQ(settings->maxSize, 4096u);
  EXPECT_EQ(settings->rotatedFiles, 0u);
}

TEST(TraceSettings, anEmptyTextGivesTheDefaults) {
  const auto settings = parseTraceSettings("");
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->level, TraceLevel::kNone);
  EXPECT_EQ(settings->maxSize, 1024u * 1024);
  EXPECT_EQ(settings->rotatedFiles, 3u);
  EXPECT_EQ(settings->file, "/var/log/quenlor.trace");
}

TEST(TraceSettings, levelsAreKnownByName) {
  EXPECT_EQ(parseTraceSettings("trace.level=NONE")->level, TraceLevel::kNone);
  EXPECT_EQ(parseTraceSettings("trace.level=MIN")->level, TraceLevel::kMin);
  EXPECT_EQ(parseTraceSettings("trace.level=max")->level, TraceLevel::kMax);
  EXPECT_FALSE(parseTraceSettings("trace.level=ALL"));
  EXPECT_FALSE(parseTraceSettings("trace.level="));
}

TEST(TraceSettings, numbersOutOfRangeAndOtherTextAreMalformed) {
  for (const char* text :
       {"trace.size = 0", "trace.size = -1", "trace.size = 1k", "trace.size =", "trace.size = 1.5",
        "trace.size = 2147483648", "trace.size = 99999999999999999999999", "trace.count = -1",
        "trace.count = 101", "trace.count = three", "trace.file ="}) {
    EXPECT_FALSE(parseTraceSettings(text)) << text;
  }
  EXPECT_TRUE(parseTraceSettings("trace.size = 2147483647\ntrace.count = 100"));
}

TEST(TraceSettings, malformedLinesAndBinaryAreMalformed) {
  EXPECT_FALSE(parseTraceSettings("trace.level"));
  EXPECT_FALSE(
      parseTraceSettings("\x7F"
                         "ELF\x02\x01\0\0"s));
}

}  // namespace
}  // namespace quenlor
