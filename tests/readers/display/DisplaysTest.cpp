#include "readers/display/Displays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/EdidBytes.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFolder = "/sys/class/drm";

class DisplaysTest : public ::testing::Test {
 protected:
  ~DisplaysTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void add(const std::string& entry, const std::string& status, const std::string& edid,
           const std::string& card = "0000:00:02.0") {
    const std::string folder = std::string(kFolder) + "/" + entry;
    machine.directories[kFolder].push_back(entry);
    machine.links[folder] = "../../devices/pci0000:00/" + card + "/drm/card0/" + entry;
    machine.files[folder + "/status"] = status + "\n";
    machine.files[folder + "/edid"] = edid;
  }

  static std::vector<std::string> connectors(const Displays& found) {
    std::vector<std::string> names;
    for (const Display& display : found.displays) names.push_back(display.connector);
    return names;
  }

  test::FakeHost machine;
};

TEST_F(DisplaysTest, connectedOutputsAreDisplays) {
  machine.directories[kFolder] = {"card0", "renderD128", "version"};
  add("card0-eDP-1", "connected", test::EdidBytes().manufacturer("AUO").bytes());
  add("card0-HDMI-A-1", "disconnected", "");
  add("card0-Writeback-1", "unknown", "");
  const Displays found = readDisplays();
  EXPECT_THAT(connectors(found), ElementsAre("eDP-1"));
  EXPECT_EQ(found.displays[0].edid.manufacturer, "AUO");
  EXPECT_EQ(found.displays[0].adapter->text(), "0000:00:02.0");
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(DisplaysTest, displaysComeByAdapterThenConnector) {
  add("card0-DP-10", "connected", "", "0000:03:00.0");
  add("card0-DP-9", "connected", "", "0000:03:00.0");
  add("card1-eDP-1", "connected", "", "0000:00:02.0");
  EXPECT_THAT(connectors(readDisplays()), ElementsAre("eDP-1", "DP-9", "DP-10"));
}

TEST_F(DisplaysTest, displayWithoutDataHasTheFirstModeOfTheKernel) {
  add("card0-VGA-1", "connected", "");
  machine.files[std::string(kFolder) + "/card0-VGA-1/modes"] = "1024x768\n800x600\n";
  const Displays found = readDisplays();
  ASSERT_EQ(found.displays.size(), 1u);
  EXPECT_EQ(found.displays[0].preferredMode->width, 1024u);
  EXPECT_EQ(found.displays[0].preferredMode->height, 768u);
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(DisplaysTest, damagedDataIsNoDataAndSaidSo) {
  std::string edid = test::EdidBytes().manufacturer("AUO").bytes();
  edid[9] = 0;
  add("card0-eDP-1", "connected", edid);
  const Displays found = readDisplays();
  ASSERT_EQ(found.displays.size(), 1u);
  EXPECT_EQ(found.displays[0].edid.manufacturer, "");
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
}

TEST_F(DisplaysTest, machineWithoutGraphicsDriverHasNoSource) {
  EXPECT_EQ(readDisplays().outcome.status(), OutcomeStatus::kNoSource);
  EXPECT_THAT(readDisplays().displays, IsEmpty());
}

TEST(ConnectorTest, isWhatFollowsTheCardsNumber) {
  EXPECT_EQ(connectorOf("card0-HDMI-A-1"), "HDMI-A-1");
  EXPECT_EQ(connectorOf("card12-DP-3"), "DP-3");
  for (const char* entry :
       {"", "card0", "card", "card-DP-1", "cardX-DP-1", "renderD128", "card0-", "version"}) {
    EXPECT_EQ(connectorOf(entry), "") << entry;
  }
}

TEST(FirstModeTest, takesWidthAndHeight) {
  EXPECT_EQ(parseFirstMode("1920x1080i\n720x576\n")->height, 1080u);
  for (const char* modes :
       {"", "\n1920x1080", "1920", "1920x", "x1080", "0x1080", "1920x0", "-1x5", "4294967296x1"}) {
    EXPECT_FALSE(parseFirstMode(modes).has_value()) << modes;
  }
}

}  // namespace
}  // namespace quenlor
