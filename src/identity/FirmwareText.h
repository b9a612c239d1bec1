// Texts of firmware as an inventory wants them: makers leave fillers where they had nothing to say.
#pragma once

#include <string_view>

namespace quenlor {

// True for what makers leave in fields that nobody filled in ("To Be Filled By O.E.M.", "Default
// string", "00000000"). Case and padding do not matter; an empty text is one.
bool isPlaceholder(std::string_view text);

// The text without padding (white space, NUL and FF bytes) at both ends; empty for a placeholder.
std::string_view knownFirmwareText(std::string_view text);

}  // namespace quenlor
