#include "listing/Entry.h"

namespace quenlor {

std::string SimpleEntry::getEntryAttribute(int index) const {
  if (index < 0 || index >= getAttributeNumber()) return {};
  return m_values[static_cast<size_t>(index)];
}

std::string AttributeReplacingEntry::getEntryAttribute(int index) const {
  const std::string value = SimpleEntry::getEntryAttribute(index);
  for (const auto& [search, replacement] : m_replacements) {
    if (value.find(search) != std::string::npos) return replacement;
  }
  return m_default.empty() ? value : m_default;
}

}  // namespace quenlor
