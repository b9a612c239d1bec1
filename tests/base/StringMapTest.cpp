#include "base/StringMap.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

TEST(StringMap, findsWhatWasSetAndNothingElse) {
  StringMap map;
  map.set("Name", "Memory");
  ASSERT_NE(map.find("Name"), nullptr);
  EXPECT_EQ(*map.find("Name"), "Memory");
  EXPECT_EQ(map.find("name"), nullptr);
  EXPECT_EQ(map.get("name"), "");
}

TEST(StringMap, lastValueOfAKeyWins) {
  StringMap map;
  map.set("k", "1");
  map.set("k", "2");
  EXPECT_EQ(map.size(), 1u);
  EXPECT_EQ(map.get("k"), "2");
}

TEST(StringMap, anEmptyValueIsNotAnAbsentKey) {
  StringMap map;
  map.set("k", "");
  EXPECT_NE(map.find("k"), nullptr);
}

TEST(StringMap, walksInTheOrderOfTheKeys) {
  StringMap map;
  for (const char* key : {"c", "a", "b"}) map.set(key, "");
  std::string keys;
  for (const auto& [key, value] : map) keys += key.str();
  EXPECT_EQ(keys, "abc");
  map.clear();
  EXPECT_TRUE(map.empty());
}

}  // namespace
}  // namespace quenlor
