// The machine's own batteries: /sys/class/power_supply. Those of mice, keyboards and headsets are
// told apart by their scope.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"

namespace quenlor {

// One battery. Texts are its controller's bytes; empty: not known.
struct Battery {
  std::string name;  // the kernel's, "BAT0"
  std::string manufacturer;
  std::string model;
  std::string serialNumber;
  std::string technology;                  // the kernel's word, "Li-ion"
  std::optional<uint32_t> designCapacity;  // mWh
  std::optional<uint32_t> fullCapacity;    // mWh
  std::optional<uint32_t> cycles;          // never 0, which means that nobody counts
  std::string state;                       // the kernel's word, "Discharging"
  std::optional<uint32_t> health;          // full by design capacity in percent, at most 100
};

// What the event file of a supply tells; nothing when no battery is in its bay.
std::optional<Battery> parseBattery(const std::string& name, const std::string& event);

struct Batteries {
  std::vector<Battery> batteries;  // in natural order of their names
  Outcome outcome;
};

// Reads everything anew. Never fails: what could not be read is in the outcome.
Batteries readBatteries();

}  // namespace quenlor
