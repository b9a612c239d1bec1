// Texts of firmware, devices, labels and files as clean UTF-8, whatever the locale.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quenlor {

inline constexpr size_t kLongestText = 255;  // characters

// The character at the start of `bytes`, which are not empty, and how many of them it takes;
// nothing when they are no UTF-8 (RFC 3629).
std::optional<std::pair<char32_t, size_t>> decodeUtf8(std::string_view bytes);

// The bytes as characters: each byte that is not UTF-8 (RFC 3629), each control (C0, DEL, C1) and
// each bidirectional control (U+202A to U+202E, U+2066 to U+2069) becomes U+FFFD; blanks at both
// ends go; what is longer than `longest` characters is cut.
std::u32string cleanCharacters(std::string_view bytes, size_t longest = kLongestText);

// The same as UTF-8.
std::string cleanUtf8(std::string_view bytes, size_t longest = kLongestText);

// Characters as UTF-8.
std::string toUtf8(std::u32string_view characters);

// Several values in one text: joined by a comma without blank, a comma or backslash inside a part
// behind a backslash.
std::string joinParts(const std::vector<std::string>& parts);

}  // namespace quenlor
