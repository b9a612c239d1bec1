#include "readers/battery/Batteries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using ::testing::ElementsAre;

constexpr const char* kFolder = "/sys/class/power_supply";
constexpr const char* kEvent =
    "POWER_SUPPLY_NAME=BAT0\nPOWER_SUPPLY_STATUS=Discharging\nPOWER_SUPPLY_PRESENT=1\n"
    "POWER_SUPPLY_TECHNOLOGY=Li-poly\nPOWER_SUPPLY_CYCLE_COUNT=212\n"
    "POWER_SUPPLY_VOLTAGE_MIN_DESIGN=11400000\nPOWER_SUPPLY_ENERGY_FULL_DESIGN=57020000\n"
    "POWER_SUPPLY_ENERGY_FULL=51300000\nPOWER_SUPPLY_MODEL_NAME=DELL 0F8G \n"
    "POWER_SUPPLY_MANUFACTURER=SMP\nPOWER_SUPPLY_SERIAL_NUMBER= 1234\n";

class BatteriesTest : public ::testing::Test {
 protected:
  ~BatteriesTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void add(const std::string& name, const std::string& type, const std::string& event,
           const std::string& scope = "") {
    const std::string folder = std::string(kFolder) + "/" + name;
    machine.directories[kFolder].push_back(name);
    machine.files[folder + "/type"] = type + "\n";
    machine.files[folder + "/uevent"] = event;
    if (!scope.empty()) machine.files[folder + "/scope"] = scope + "\n";
  }

  static std::vector<std::string> names(const Batteries& found) {
    std::vector<std::string> texts;
    for (const Battery& battery : found.batteries) texts.push_back(battery.name);
    return texts;
  }

  test::FakeHost machine;
};

std::optional<Battery> parse(const std::string& event) { return parseBattery("BAT0", event); }

TEST(BatteryEventTest, takesAllThatIsReported) {
  const auto battery = parse(kEvent);
  ASSERT_TRUE(battery.has_value());
  EXPECT_EQ(battery->name, "BAT0");
  EXPECT_EQ(battery->manufacturer, "SMP");
  EXPECT_EQ(battery->model, "DELL 0F8G");
  EXPECT_EQ(battery->serialNumber, "1234");
  EXPECT_EQ(battery->technology, "Li-poly");
  EXPECT_EQ(battery->state, "Discharging");
  EXPECT_EQ(battery->cycles, 212u);
  EXPECT_EQ(battery->designCapacity, 57020u);
  EXPECT_EQ(battery->fullCapacity, 51300u);
  EXPECT_EQ(battery->health, 90u);
}

TEST(BatteryEventTest, chargeBecomesEnergyByTheDesignVoltage) {
  const auto battery = parse(
      "POWER_SUPPLY_VOLTAGE_MIN_DESIGN=11400000\nPOWER_SUPPLY_CHARGE_FULL_DESIGN=4000000\n"
      "POWER_SUPPLY_CHARGE_FULL=3000000\n");
  EXPECT_EQ(battery->designCapacity, 45600u);
  EXPECT_EQ(battery->fullCapacity, 34200u);
  EXPECT_EQ(battery->health, 75u);
}

TEST(BatteryEventTest, chargeWithoutVoltageTellsItsHealthOnly) {
  const auto battery =
      parse("POWER_SUPPLY_CHARGE_FULL_DESIGN=4000000\nPOWER_SUPPLY_CHARGE_FULL=3000000\n");
  EXPECT_EQ(battery->designCapacity, std::nullopt);
  EXPECT_EQ(battery->fullCapacity, std::nullopt);
  EXPECT_EQ(battery->health, 75u);
}

TEST(BatteryEventTest, designCapacityOfZeroIsUnknown) {
  const auto battery =
      parse("POWER_SUPPLY_ENERGY_FULL_DESIGN=0\nPOWER_SUPPLY_ENERGY_FULL=51300000\n");
  EXPECT_EQ(battery->designCapacity, std::nullopt);
  EXPECT_EQ(battery->fullCapacity, 51300u);
  EXPECT_EQ(battery->health, std::nullopt);
}

TEST(BatteryEventTest, healthEndsAtHundred) {
  EXPECT_EQ(parse("POWER_SUPPLY_ENERGY_FULL_DESIGN=50000000\nPOWER_SUPPLY_ENERGY_FULL=60000000\n")
                ->health,
            100u);
}

TEST(BatteryEventTest, unitsThatDoNotMatchTellNoHealth) {
  EXPECT_EQ(
      parse("POWER_SUPPLY_ENERGY_FULL_DESIGN=50000000\nPOWER_SUPPLY_CHARGE_FULL=4000000\n")->health,
      std::nullopt);
}

TEST(BatteryEventTest, whatIsUnknownIsLeftOut) {
  const auto battery = parse(
      "POWER_SUPPLY_STATUS=Unknown\nPOWER_SUPPLY_TECHNOLOGY=Unknown\nPOWER_SUPPLY_CYCLE_COUNT=0\n"
      "POWER_SUPPLY_SERIAL_NUMBER= \nPOWER_SUPPLY_ENERGY_FULL=-1\n");
  EXPECT_EQ(battery->state, "");
  EXPECT_EQ(battery->technology, "");
  EXPECT_EQ(battery->cycles, std::nullopt);
  EXPECT_EQ(battery->serialNumber, "");
  EXPECT_EQ(battery->fullCapacity, std::nullopt);
}

TEST(BatteryEventTest, emptyBayIsNoBattery) {
  EXPECT_FALSE(parse("POWER_SUPPLY_PRESENT=0\n").has_value());
  EXPECT_TRUE(parse("").has_value());
}

TEST(BatteryEventTest, largestNumbersSaturate) {
  EXPECT_EQ(parse("POWER_SUPPLY_VOLTAGE_MIN_DESIGN=4294967295\n"
                  "POWER_SUPPLY_CHARGE_FULL=4294967295\n")
                ->fullCapacity,
            UINT32_MAX);
  EXPECT_EQ(parse("POWER_SUPPLY_ENERGY_FULL=4294967296\n")->fullCapacity, std::nullopt);
}

TEST_F(BatteriesTest, mainsSuppliesAndPeripheralsAreLeftOut) {
  add("BAT1", "Battery", kEvent, "System");
  add("BAT0", "Battery", kEvent);
  add("AC", "Mains", "POWER_SUPPLY_ONLINE=1\n");
  add("ups0", "UPS", kEvent);
  add("hidpp_battery_0", "Battery", kEvent, "Device");
  EXPECT_THAT(names(readBatteries()), ElementsAre("BAT0", "BAT1"));
  // The event of a peripheral would ask the peripheral.
  EXPECT_EQ(std::count(machine.opened.begin(), machine.opened.end(),
                       std::string(kFolder) + "/hidpp_battery_0/uevent"),
            0);
}

TEST_F(BatteriesTest, batteryThatDoesNotAnswerIsSaidSo) {
  add("BAT0", "Battery", kEvent);
  machine.openErrors[std::string(kFolder) + "/BAT0/uevent"] = ENODEV;
  const Batteries found = readBatteries();
  EXPECT_TRUE(found.batteries.empty());
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kPartial);
}

TEST_F(BatteriesTest, machineWithoutBatteriesIsComplete) {
  machine.directories[kFolder] = {};
  EXPECT_EQ(readBatteries().outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(BatteriesTest, kernelWithoutTheClassHasNoSource) {
  EXPECT_EQ(readBatteries().outcome.status(), OutcomeStatus::kNoSource);
}

}  // namespace
}  // namespace quenlor
