// The format of the program's own configuration files: lines "key = value".
#pragma once

#include <string_view>

#include "base/StringMap.h"

namespace quenlor {

// Parses lines "key = value", blank lines and lines beginning with "#". Blanks around key and value
// are dropped, the value may be empty, the last of equal keys wins; a UTF-8 byte-order mark and
// CRLF are tolerated. Returns 0, or the number of the first line, from 1, that is none of these (no
// "=", no key, a NUL byte); the values hold the lines before it then.
int parseProperties(std::string_view text, StringMap& values);

}  // namespace quenlor
