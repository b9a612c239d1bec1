#include "readers/battery/Batteries.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <map>
#include <string_view>
#include <utility>

#include "base/NaturalOrder.h"
#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kSupplies = "/sys/class/power_supply";
constexpr std::string_view kPrefix = "POWER_SUPPLY_";
constexpr std::string_view kUnknown = "Unknown";
constexpr const char* kBattery = "Battery";
constexpr const char* kPeripheral = "Device";

using Properties = std::map<std::string_view, std::string_view>;

// The views point into the event.
Properties propertiesOf(std::string_view event) {
  Properties properties;
  while (!event.empty()) {
    const std::string_view line = event.substr(0, event.find('\n'));
    event.remove_prefix(std::min(line.size() + 1, event.size()));
    const size_t equals = line.find('=');
    if (equals == line.npos || !line.starts_with(kPrefix) || equals < kPrefix.size()) continue;
    properties.emplace(line.substr(kPrefix.size(), equals - kPrefix.size()),
                       trimmed(line.substr(equals + 1)));
  }
  return properties;
}

std::string_view valueOf(const Properties& properties, std::string_view key) {
  const auto found = properties.find(key);
  return found == properties.end() ? std::string_view() : found->second;
}

std::string wordOf(const Properties& properties, std::string_view key) {
  const std::string_view word = valueOf(properties, key);
  return word == kUnknown ? std::string() : std::string(word);
}

// Controllers say 0 for what they do not know.
std::optional<uint32_t> numberOf(const Properties& properties, std::string_view key) {
  const std::string_view text = valueOf(properties, key);
  uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const bool isKnown = error == std::errc() && stop == end && number != 0;
  return isKnown ? std::optional(number) : std::nullopt;
}

// One capacity in the units that the controller has.
struct Capacity {
  std::optional<uint32_t> energy;  // µWh
  std::optional<uint32_t> charge;  // µAh

  // mWh; a charge needs the voltage that the battery is designed for, in µV.
  std::optional<uint32_t> milliwattHours(std::optional<uint32_t> voltage) const {
    if (energy) return *energy / 1000;
    if (!charge || !voltage) return {};
    const uint64_t product = uint64_t{*charge} * *voltage / 1'000'000'000;
    return static_cast<uint32_t>(std::min<uint64_t>(product, UINT32_MAX));
  }
};

Capacity capacityOf(const Properties& properties, const std::string& suffix) {
  return {numberOf(properties, "ENERGY_" + suffix), numberOf(properties, "CHARGE_" + suffix)};
}

// A worn gauge may hold more than it was designed for.
std::optional<uint32_t> healthOf(const Capacity& full, const Capacity& design) {
  const bool isEnergy = full.energy && design.energy;
  const auto part = isEnergy ? full.energy : full.charge;
  const auto whole = isEnergy ? design.energy : design.charge;
  if (!part || !whole) return {};
  const uint64_t percent = (uint64_t{*part} * 100 + *whole / 2) / *whole;
  return static_cast<uint32_t>(std::min<uint64_t>(percent, 100));
}

std::string pathOf(const std::string& name, const char* file) {
  return std::string(kSupplies) + "/" + name + "/" + file;
}

// Asked before anything else: the event of a mouse's battery asks the mouse.
bool isOfMachine(const std::string& name) {
  return readAttribute(pathOf(name, "type")) == kBattery &&
         readAttribute(pathOf(name, "scope")) != kPeripheral;
}

}  // namespace

std::optional<Battery> parseBattery(const std::string& name, const std::string& event) {
  const Properties properties = propertiesOf(event);
  if (valueOf(properties, "PRESENT") == "0") return {};
  const Capacity design = capacityOf(properties, "FULL_DESIGN");
  const Capacity full = capacityOf(properties, "FULL");
  const auto voltage = numberOf(properties, "VOLTAGE_MIN_DESIGN");
  Battery battery;
  battery.name = name;
  battery.manufacturer = valueOf(properties, "MANUFACTURER");
  battery.model = valueOf(properties, "MODEL_NAME");
  battery.serialNumber = valueOf(properties, "SERIAL_NUMBER");
  battery.technology = wordOf(properties, "TECHNOLOGY");
  battery.designCapacity = design.milliwattHours(voltage);
  battery.fullCapacity = full.milliwattHours(voltage);
  battery.cycles = numberOf(properties, "CYCLE_COUNT");
  battery.state = wordOf(properties, "STATUS");
  battery.health = healthOf(full, design);
  return battery;
}

Batteries readBatteries() {
  Batteries result;
  std::vector<DirectoryEntry> entries;
  if (!host().listEntries(kSupplies, entries)) {
    const bool isRefused = fileStatusOf(errno) == FileStatus::kRefused;
    result.outcome.note(isRefused ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                        isRefused ? "batteries: refused" : "batteries: not shown by this kernel");
    return result;
  }
  for (const DirectoryEntry& entry : entries) {
    if (!isOfMachine(entry.name)) continue;
    const auto event = readAttribute(pathOf(entry.name, "uevent"));
    // A controller that is busy with a change of its state answers with an error.
    if (!event) result.outcome.note(OutcomeStatus::kPartial, "batteries: one did not answer");
    auto battery = event ? parseBattery(entry.name, *event) : std::nullopt;
    if (battery) result.batteries.push_back(std::move(*battery));
  }
  std::sort(result.batteries.begin(), result.batteries.end(),
            [](const Battery& a, const Battery& b) { return naturalLess(a.name, b.name); });
  return result;
}

}  // namespace quenlor
