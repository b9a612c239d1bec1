// Just enough JSON for recorded machines: an object of objects of texts and numbers.
#pragma once

#include <map>
#include <string>

namespace quenlor::test {

using FlatJson = std::map<std::string, std::map<std::string, std::string>>;

// Numbers stay as they are written; an empty text is an empty object; throws std::runtime_error for
// anything else.
FlatJson parseFlatJson(const std::string& text);

}  // namespace quenlor::test
