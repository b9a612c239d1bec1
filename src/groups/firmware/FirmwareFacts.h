// What the groups built on the firmware's table have in common.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "groups/modern/ModernScan.h"
#include "groups/modern/ModernTable.h"

namespace quenlor {

// The table with whatever texts of types 0 to 3 there are; null when there is nothing.
const DmiTable* firmwareTexts(ModernScan& scan, ModernTable& table);
// The table with its lists of structures; null when they are not known. In both cases the group's
// outcome says what is missing.
const DmiTable* firmwareStructures(ModernScan& scan, ModernTable& table);

// The text unless its maker left a placeholder there.
std::optional<std::string> known(const DmiText& text);

// A word of a list; nothing for the empty one.
std::optional<std::string> word(std::string_view name);

}  // namespace quenlor
