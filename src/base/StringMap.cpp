#include "base/StringMap.h"

#include <utility>

namespace quenlor {

void StringMap::set(String key, String value) {
  m_values.insert_or_assign(std::move(key), std::move(value));
}

const String* StringMap::find(const String& key) const {
  const auto found = m_values.find(key);
  return found == m_values.end() ? nullptr : &found->second;
}

String StringMap::get(const String& key) const {
  const String* value = find(key);
  return value == nullptr ? String() : *value;
}

}  // namespace quenlor
