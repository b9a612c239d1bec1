#include "config/ScanSettings.h"

#include <gtest/gtest.h>

#include <map>

namespace quenlor {
namespace {

using Keys = std::map<std::string, std::string>;

std::optional<ScanSettings> parse(const Keys& keys, std::string* message = nullptr) {
  std::string text;
  const auto settings = parseScanSettings(
      [&](const char* key) {
        const auto found = keys.find(key);
        return found == keys.end() ? std::string() : found->second;
      },
      text);
  if (message != nullptr) *message = text;
  return settings;
}

TEST(ScanSettingsTest, withoutKeysTheSourcesAreClassic) {
  const auto settings = parse({});
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->sources, Sources::kClassic);
  EXPECT_EQ(settings->groupLimit, 10000u);
  EXPECT_EQ(settings->mountLimit, 2000u);
  EXPECT_EQ(settings->scanLimit, 30000u);
}

TEST(ScanSettingsTest, theSourcesAreNamedInLowerCaseWithBlanksAround) {
  EXPECT_EQ(parse({{"hwscanner.sources", " modern\t"}})->sources, Sources::kModern);
  EXPECT_EQ(parse({{"hwscanner.sources", "classic"}})->sources, Sources::kClassic);
  EXPECT_EQ(parse({{"hwscanner.sources", "  "}})->sources, Sources::kClassic);
}

TEST(ScanSettingsTest, anyOtherNameOfSourcesIsMalformed) {
  for (const char* name : {"Modern", "both", "modern,classic", "1", "moder", "modern x"}) {
    std::string message;
    EXPECT_FALSE(parse({{"hwscanner.sources", name}}, &message)) << name;
    EXPECT_EQ(message, "hwscanner.sources: neither \"classic\" nor \"modern\"");
  }
}

TEST(ScanSettingsTest, limitsAreMilliseconds) {
  const auto settings = parse({{"hwscanner.group_limit_ms", "1"},
                               {"hwscanner.mount_limit_ms", " 500 "},
                               {"hwscanner.scan_limit_ms", "3600000"}});
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->groupLimit, 1u);
  EXPECT_EQ(settings->mountLimit, 500u);
  EXPECT_EQ(settings->scanLimit, 3600000u);
}

TEST(ScanSettingsTest, aLimitThatIsNoneIsMalformedWhateverTheSources) {
  for (const char* key :
       {"hwscanner.group_limit_ms", "hwscanner.mount_limit_ms", "hwscanner.scan_limit_ms"}) {
    for (const char* value :
         {"0", "3600001", "-5", "ten", "10s", "1.5", "99999999999999999999", "+1"}) {
      std::string message;
      EXPECT_FALSE(parse({{key, value}}, &message)) << key << value;
      EXPECT_EQ(message, std::string(key) + ": not a number of milliseconds from 1 to 3600000");
    }
  }
}

}  // namespace
}  // namespace quenlor
