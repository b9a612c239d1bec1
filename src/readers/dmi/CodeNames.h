// Looking up the name of a code that is wider than a list by position could hold.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace quenlor {

// The name in a table of {code, name} in ascending order of codes; empty for a code that it lacks.
template <class Name, size_t kCount>
std::string_view nameOfCode(const Name (&names)[kCount], unsigned code) {
  const auto* found =
      std::lower_bound(std::begin(names), std::end(names), code,
                       [](const Name& name, unsigned wanted) { return name.code < wanted; });
  const bool isNamed = found != std::end(names) && found->code == code;
  return isNamed ? found->name : std::string_view();
}

}  // namespace quenlor
