#include "readers/dmi/DmiFacts.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <vector>

#include "readers/dmi/DmiNames.h"

namespace quenlor {
namespace {

constexpr uint64_t kKiBPerMiB = 1024;
constexpr uint8_t kSystemMemory = 3;
constexpr unsigned kLargestExponent = 31;
constexpr int kFirstYearOfLastCentury = 96;

bool isSystemMemory(const DmiMemoryArray& array) { return array.use == kSystemMemory; }

// The modules of one array.
struct Modules {
  uint64_t count = 0;
  uint64_t installedKiB = 0;
  uint64_t biggestKiB = 0;
};

// One per array, and a last one for modules without array.
std::vector<Modules> modulesOfArrays(const DmiTable& table) {
  std::vector<Modules> all(table.memoryArrays.size() + 1);
  for (const DmiMemoryDevice& device : table.memoryDevices) {
    Modules& modules = all[device.array.value_or(table.memoryArrays.size())];
    ++modules.count;
    modules.installedKiB += device.sizeKiB.value_or(0);
    modules.biggestKiB = std::max(modules.biggestKiB, device.sizeKiB.value_or(0));
  }
  return all;
}

// An array's size that is a power of two is shared among the slots only where the share is one as
// well and no module is larger than it; else a single slot may take all of it.
uint64_t moduleLimitMiB(uint64_t arrayMiB, uint64_t slots, uint64_t biggestMiB) {
  const uint64_t share = arrayMiB / slots;
  if (!std::has_single_bit(arrayMiB)) return share;
  return std::has_single_bit(share) && share >= biggestMiB ? share : arrayMiB;
}

void addController(DmiMemoryFacts& facts, const DmiTable& table) {
  const auto& controller = table.memoryController;
  if (!controller) return;
  const unsigned exponent = controller->moduleLimitExponent.value_or(0);
  facts.slots = controller->slots.value_or(0);
  if (exponent != 0 && exponent <= kLargestExponent) facts.maxModuleMiB = uint64_t{1} << exponent;
  for (const DmiMemoryModule& module : table.memoryModules) {
    facts.maxModuleMiB = std::max(facts.maxModuleMiB, module.installedMiB.value_or(0));
  }
}

// Where a controller tells the slots, its number holds for the array as well.
void addArray(DmiMemoryFacts& facts, const DmiMemoryArray& array, const Modules& modules,
              uint64_t controllerSlots) {
  const uint64_t own = array.slots.value_or(0) != 0 ? *array.slots : modules.count;
  const uint64_t slots = controllerSlots != 0 ? controllerSlots : own;
  if (controllerSlots == 0) facts.slots += own;
  const uint64_t sizeMiB = std::max(array.maxKiB.value_or(0), modules.installedKiB) / kKiBPerMiB;
  facts.maxMiB += sizeMiB;
  if (slots == 0 || sizeMiB == 0) return;
  const uint64_t limit = moduleLimitMiB(sizeMiB, slots, modules.biggestKiB / kKiBPerMiB);
  facts.maxModuleMiB = std::max(facts.maxModuleMiB, limit);
}

// What is installed is known once a module's size is.
void addInstalled(std::optional<uint64_t>& installedKiB, const Modules& modules) {
  if (modules.installedKiB == 0) return;
  installedKiB = installedKiB.value_or(0) + modules.installedKiB;
}

bool areDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

// A part of a date of at most `longest` digits; moves behind it and one separator.
std::optional<int> takeNumber(std::string_view& rest, size_t longest) {
  const size_t end = std::min(rest.find_first_not_of("0123456789"), rest.size());
  if (end == 0 || end > longest) return {};
  int value = 0;
  for (const char digit : rest.substr(0, end)) value = value * 10 + (digit - '0');
  rest = rest.substr(std::min(end + 1, rest.size()));
  return value;
}

std::optional<int> yearOf(std::string_view digits) {
  if (!areDigits(digits) || (digits.size() != 2 && digits.size() != 4)) return {};
  std::string_view rest = digits;
  const int year = takeNumber(rest, digits.size()).value_or(0);
  if (digits.size() == 4) return year;
  return year < kFirstYearOfLastCentury ? 2000 + year : 1900 + year;
}

}  // namespace

DmiMemoryFacts dmiMemoryFacts(const DmiTable& table) {
  DmiMemoryFacts facts;
  addController(facts, table);
  const uint64_t controllerSlots = facts.slots;
  std::optional<uint64_t> installedKiB;
  const std::vector<Modules> all = modulesOfArrays(table);
  if (table.memoryArrays.empty()) addInstalled(installedKiB, all.front());
  for (size_t i = 0; i < table.memoryArrays.size(); ++i) {
    const DmiMemoryArray& array = table.memoryArrays[i];
    if (!isSystemMemory(array)) continue;
    addArray(facts, array, all[i], controllerSlots);
    addInstalled(installedKiB, all[i]);
    if (facts.errorCorrection.empty()) {
      facts.errorCorrection = dmiErrorCorrection(array.errorCorrection.value_or(0));
    }
  }
  if (installedKiB) facts.installedMiB = *installedKiB / kKiBPerMiB;
  if (facts.maxMiB == 0) facts.maxMiB = facts.maxModuleMiB * facts.slots;
  return facts;
}

std::string dmiDate(std::string_view text) {
  const std::string_view date = text.substr(0, text.find(' '));
  std::string_view rest = date;
  const auto month = takeNumber(rest, 2);
  const auto day = month ? takeNumber(rest, 2) : std::nullopt;
  const auto year = day ? yearOf(rest) : std::nullopt;
  if (!year || *month < 1 || *month > 12 || *day < 1 || *day > 31) return std::string(date);
  char iso[16];
  std::snprintf(iso, sizeof iso, "%04d-%02d-%02d", *year, *month, *day);
  return iso;
}

}  // namespace quenlor
