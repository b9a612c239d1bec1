// Texts of documents and names of files as they may be shown: what a maker or a user wrote into
// them must not steer a terminal.
#pragma once

#include <string>
#include <string_view>

namespace quenlor::ctl {

// The text as UTF-8 with U+FFFD for each byte that is none, each control (C0, DEL, C1), each
// bidirectional control, each line and paragraph separator (U+2028, U+2029) and each character
// without width.
std::string cleanText(std::string_view text);

// The text with U+FFFD for each byte that is not UTF-8; everything else stays.
std::string validUtf8(std::string_view text);

}  // namespace quenlor::ctl
