#include "readers/display/Edid.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/EdidBytes.h"

namespace quenlor {
namespace {

using test::EdidBytes;

constexpr uint8_t kSerial = 0xFF;
constexpr uint8_t kFree = 0xFE;
constexpr uint8_t kName = 0xFC;

EdidBytes monitor() {
  EdidBytes edid;
  edid.manufacturer("DEL").byte(16, 12).byte(17, 33).byte(21, 60).byte(22, 34);
  edid.timing(2560, 1440, 597, 336).text(1, kSerial, "8Q0XJ3").text(2, kName, "DELL U2722D");
  return edid;
}

std::string mode(const std::optional<Edid>& edid) {
  if (!edid || !edid->preferredMode) return "none";
  return std::to_string(edid->preferredMode->width) + "x" +
         std::to_string(edid->preferredMode->height);
}

TEST(EdidTest, takesAllThatIsReported) {
  const auto edid = parseEdid(monitor().bytes());
  ASSERT_TRUE(edid.has_value());
  EXPECT_EQ(edid->manufacturer, "DEL");
  EXPECT_EQ(edid->model, "DELL U2722D");
  EXPECT_EQ(edid->serialNumber, "8Q0XJ3");
  EXPECT_EQ(edid->year, 2023u);
  EXPECT_EQ(edid->week, 12u);
  EXPECT_EQ(edid->width, 597u);
  EXPECT_EQ(edid->height, 336u);
  EXPECT_EQ(mode(edid), "2560x1440");
}

TEST(EdidTest, version13IsReadTheSameWay) {
  EXPECT_EQ(parseEdid(monitor().byte(19, 3).bytes())->model, "DELL U2722D");
}

TEST(EdidTest, blockOfAnotherVersionIsNone) {
  EXPECT_FALSE(parseEdid(monitor().byte(18, 2).bytes()).has_value());
}

TEST(EdidTest, everyCutIsNone) {
  const std::string whole = monitor().bytes();
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string cut(whole.data(), size);
    EXPECT_FALSE(parseEdid(cut).has_value()) << size;
  }
}

TEST(EdidTest, everyFlippedBitMakesItNone) {
  const std::string whole = monitor().bytes();
  for (size_t bit = 0; bit < whole.size() * 8; ++bit) {
    std::string damaged = whole;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
    EXPECT_FALSE(parseEdid(damaged).has_value()) << bit;
  }
}

TEST(EdidTest, headerThatDiffersIsNoneAlsoWithTheRightSum) {
  EXPECT_FALSE(parseEdid(EdidBytes().byte(0, 1).bytes()).has_value());
}

TEST(EdidTest, extensionBlocksWholeOrCutChangeNothing) {
  const std::string base = monitor().byte(126, 1).bytes();
  EXPECT_EQ(parseEdid(base)->model, "DELL U2722D");
  EXPECT_EQ(parseEdid(base + std::string(128, '\x02'))->model, "DELL U2722D");
  EXPECT_EQ(parseEdid(base + std::string(50, '\xFF'))->model, "DELL U2722D");
}

TEST(EdidTest, serialNumberIsTheNumberWhereThereIsNoText) {
  EdidBytes edid;
  edid.set(12, std::string("\x04\x03\x02\xF1", 4));
  EXPECT_EQ(parseEdid(edid.bytes())->serialNumber, "4043440900");
}

TEST(EdidTest, fillersOfTheNumberAreNone) {
  EXPECT_EQ(parseEdid(EdidBytes().bytes())->serialNumber, "");
  EXPECT_EQ(parseEdid(EdidBytes().set(12, "\x01\x01\x01\x01").bytes())->serialNumber, "");
}

TEST(EdidTest, panelHasItsModelInTheLastFreeText) {
  EdidBytes edid;
  edid.timing(1920, 1080).text(1, kFree, "LG Display").text(2, kFree, "LP156WF6-SPB1");
  EXPECT_EQ(parseEdid(edid.bytes())->model, "LP156WF6-SPB1");
}

TEST(EdidTest, nameHoldsBeforeFreeTexts) {
  EdidBytes edid;
  edid.text(1, kName, "NAME").text(2, kFree, "free");
  EXPECT_EQ(parseEdid(edid.bytes())->model, "NAME");
}

TEST(EdidTest, textOfItsFullLengthHasNoEnd) {
  EXPECT_EQ(parseEdid(EdidBytes().text(3, kName, "ABCDEFGHIJKLM").bytes())->model, "ABCDEFGHIJKLM");
}

TEST(EdidTest, textsAreOfCodePage437) {
  EXPECT_EQ(parseEdid(EdidBytes().text(1, kName, "B\x81ro").bytes())->model, "B\xC3\xBCro");
  EXPECT_EQ(utf8OfCodePage437("\x80\xFF"), "\xC3\x87\xC2\xA0");
  EXPECT_EQ(utf8OfCodePage437("\xF0"), "\xE2\x89\xA1");
}

TEST(EdidTest, lettersBeyondTheAlphabetAreNoManufacturer) {
  EXPECT_EQ(parseEdid(EdidBytes().bytes())->manufacturer, "");
  EXPECT_EQ(parseEdid(EdidBytes().set(8, "\x7F\xFF").bytes())->manufacturer, "");
}

TEST(EdidTest, yearOfTheModelHasNoWeek) {
  const auto edid = parseEdid(EdidBytes().byte(16, 0xFF).byte(17, 30).bytes());
  EXPECT_EQ(edid->year, 2020u);
  EXPECT_EQ(edid->week, std::nullopt);
}

TEST(EdidTest, weekThatNoYearHasIsNone) {
  EXPECT_EQ(parseEdid(EdidBytes().byte(16, 0).byte(17, 30).bytes())->week, std::nullopt);
  EXPECT_EQ(parseEdid(EdidBytes().byte(16, 54).byte(17, 30).bytes())->week, 54u);
  EXPECT_EQ(parseEdid(EdidBytes().byte(16, 55).byte(17, 30).bytes())->week, std::nullopt);
  EXPECT_EQ(parseEdid(EdidBytes().byte(16, 9).byte(17, 0).bytes())->year, std::nullopt);
}

TEST(EdidTest, projectorHasNoSize) {
  EXPECT_EQ(parseEdid(EdidBytes().timing(1920, 1080, 500, 300).bytes())->width, std::nullopt);
}

TEST(EdidTest, ratioInPlaceOfASizeIsNone) {
  const auto edid = parseEdid(EdidBytes().byte(21, 79).bytes());
  EXPECT_EQ(edid->width, std::nullopt);
  EXPECT_EQ(edid->height, std::nullopt);
}

TEST(EdidTest, ratioInATimingIsNoSize) {
  const auto edid =
      parseEdid(EdidBytes().byte(21, 60).byte(22, 34).timing(1920, 1080, 16, 9).bytes());
  EXPECT_EQ(edid->width, 600u);
  EXPECT_EQ(edid->height, 340u);
}

TEST(EdidTest, widthOfATimingMayHaveNoLowBits) {
  // 2560 is A00h: the third byte of the descriptor is 0, as in one that is no timing.
  EXPECT_EQ(mode(parseEdid(EdidBytes().timing(2560, 1440).bytes())), "2560x1440");
}

TEST(EdidTest, interlacedTimingCountsHalfPictures) {
  EdidBytes edid;
  edid.timing(1920, 540).byte(54 + 17, 0x80);
  EXPECT_EQ(mode(parseEdid(edid.bytes())), "1920x1080");
}

TEST(EdidTest, blockWithoutTimingHasNoMode) {
  EXPECT_EQ(mode(parseEdid(EdidBytes().text(0, kName, "X").bytes())), "none");
  EXPECT_EQ(mode(parseEdid(EdidBytes().timing(0, 1080).bytes())), "none");
}

}  // namespace
}  // namespace quenlor
