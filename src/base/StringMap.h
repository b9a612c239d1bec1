// Texts by name.
#pragma once

#include <cstddef>
#include <map>

#include "base/String.h"

namespace quenlor {

// Ordered by key, byte for byte; each key once.
class StringMap {
 public:
  using const_iterator = std::map<String, String>::const_iterator;

  // Adds the key or replaces its value.
  void set(String key, String value);
  // The key's value, valid until it is replaced; null when the key is absent.
  const String* find(const String& key) const;
  // The key's value; the empty text when the key is absent.
  String get(const String& key) const;

  size_t size() const { return m_values.size(); }
  bool empty() const { return m_values.empty(); }
  void clear() { m_values.clear(); }
  const_iterator begin() const { return m_values.begin(); }
  const_iterator end() const { return m_values.end(); }

 private:
  std::map<String, String> m_values;
};

}  // namespace quenlor
