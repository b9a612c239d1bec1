#include "quenlorctl/json/JsonDocument.h"

#include <gtest/gtest.h>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

std::string jsonOf(const std::string& inside, const JsonOptions& options = {}) {
  return jsonDocument(documentOf(hardware(inside)), options);
}

std::string classic(const std::string& rest) {
  return R"({"format":1,"sources":"classic","file":"test",)" + rest + "}";
}

TEST(JsonDocument, emptyDocumentHasAnEmptyObjectOfGroups) {
  EXPECT_EQ(classic(R"("groups":{})"), jsonOf(""));
}

TEST(JsonDocument, keyedGroupsAreListsAndOthersObjects) {
  EXPECT_EQ(classic(R"("groups":{"Storage":[{"Index":1},{}],"Memory":{"PageSize":4096}})"),
            jsonOf(row("Storage", {{"Index", "1"}}) + row("Storage", {}) +
                   row("Memory", {{"PageSize", "4096"}})));
}

TEST(JsonDocument, valuesHaveTheTypeOfTheirAttribute) {
  EXPECT_EQ(classic(R"("groups":{"Storage":[{"Type":"Hard Disk","TotalSize":18446744073709551615,)"
                    R"("SizeBytes":-1,"Removable":true,"ReadOnly":false,"Model":"5"}]})"),
            jsonOf(row("Storage", {{"Type", "Hard Disk"},
                                   {"TotalSize", "18446744073709551615"},
                                   {"SizeBytes", "-1"},
                                   {"Removable", "Y"},
                                   {"ReadOnly", "N"},
                                   {"Model", "5"}})));
  EXPECT_EQ(classic(R"("groups":{"UnixCpuMeter":{"LoadAvg1":0.25,"LoadAvg5":-1.0}})"),
            jsonOf(row("UnixCpuMeter", {{"LoadAvg1", "0.250000"}, {"LoadAvg5", "-1.000000"}})));
  EXPECT_EQ(classic(R"("groups":{"ScanInfo":{"ScanDate":"2026-11-22T01:02:03"}})"),
            jsonOf(row("ScanInfo", {{"ScanDate", "2026-11-22-01.02.03.000000"}})));
}

TEST(JsonDocument, numberWithoutAWordStaysAText) {
  EXPECT_EQ(classic(R"("groups":{"Storage":[{"Type":"77"}]})"),
            jsonOf(row("Storage", {{"Type", "77"}})));
}

TEST(JsonDocument, yesOrNoThatNobodyKnowsIsAbsent) {
  EXPECT_EQ(classic(R"("groups":{"Storage":[{}]})"), jsonOf(row("Storage", {{"Removable", ""}})));
}

TEST(JsonDocument, timeThatCannotBeExpressedIsAbsent) {
  EXPECT_EQ(classic(R"("groups":{"ScanInfo":{}})"), jsonOf(row("ScanInfo", {{"ScanDate", ""}})));
}

TEST(JsonDocument, modernDocumentSaysSo) {
  EXPECT_EQ(
      R"({"format":1,"sources":"modern","file":"test","groups":{"ScanInfo":{"Sources":"modern"}}})",
      jsonOf(row("ScanInfo", {{"Sources", "modern"}})));
}

TEST(JsonDocument, rawValuesAreTexts) {
  EXPECT_EQ(classic(R"("groups":{"Storage":[{"TotalSize":"012","Removable":"Y"}],)"
                    R"("ScanInfo":{"ScanDate":""}})"),
            jsonOf(row("Storage", {{"TotalSize", "012"}, {"Removable", "Y"}}) +
                       row("ScanInfo", {{"ScanDate", ""}}),
                   {.isPretty = false, .isRaw = true}));
}

TEST(JsonDocument, extraTextsStandAtTheirRowsPlace) {
  EXPECT_EQ(classic(R"("groups":{"Storage":[{},{},{}]},"extra":{"Storage":[{},{"Colour":"red"}]})"),
            jsonOf(row("Storage", {}) + row("Storage", {{"Colour", "red"}}) + row("Storage", {})));
}

TEST(JsonDocument, unknownGroupsAreExtra) {
  EXPECT_EQ(classic(R"("groups":{},"extra":{"Fan":[{"Speed":["1","2","3"]},{"Speed":"4"}]})"),
            jsonOf(row("Fan", {{"Speed", "1"}, {"Speed", "2"}, {"Speed", "3"}}) +
                   row("Fan", {{"Speed", "4"}})));
}

TEST(JsonDocument, valueThatIsNotOfItsTypeIsExtra) {
  EXPECT_EQ(
      classic(R"("groups":{"UnixCpuMeter":{}},"extra":{"UnixCpuMeter":[{"LoadAvg1":"nan"}]})"),
      jsonOf(row("UnixCpuMeter", {{"LoadAvg1", "nan"}})));
}

TEST(JsonDocument, furtherRowOfASingleGroupIsExtra) {
  EXPECT_EQ(
      classic(R"("groups":{"Memory":{"PageSize":1}},"extra":{"Memory":[{},{"PageSize":"2"}]})"),
      jsonOf(row("Memory", {{"PageSize", "1"}}) + row("Memory", {{"PageSize", "2"}})));
}

TEST(JsonDocument, onlyAsciiComesOut) {
  EXPECT_EQ(
      classic(
          R"("groups":{"Memory":{}},"extra":{"Memory":[{"X":"\u00fc\u202e\u007f\"\\\n\ud83d\ude00"}]})"),
      jsonOf(row("Memory", {{"X", "\xC3\xBC\xE2\x80\xAE\x7F\"\\\n\xF0\x9F\x98\x80"}})));
}

TEST(JsonDocument, fileNameThatIsNoUtf8IsMadeOne) {
  Document document = documentOf(hardware(""));
  document.setFile("a\xFF");
  EXPECT_EQ(R"({"format":1,"sources":"classic","file":"a\ufffd","groups":{}})",
            jsonDocument(document));
}

TEST(JsonDocument, prettyIsTheSameOverManyLines) {
  EXPECT_EQ(
      "{\n  \"format\": 1,\n  \"sources\": \"classic\",\n  \"file\": \"test\",\n  \"groups\": "
      "{}\n}",
      jsonOf("", {.isPretty = true, .isRaw = false}));
}

}  // namespace
}  // namespace quenlor::ctl
