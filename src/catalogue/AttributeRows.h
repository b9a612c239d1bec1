// What the rows of attribute tables are written with.
#pragma once

#include <array>
#include <cstddef>

#include "catalogue/Catalogue.h"

namespace quenlor {

constexpr velAttribDef number(uint32_t id, const char* name,
                              const velEnumDef* enumTable = nullptr) {
  return {id, name, VEL_ULONG, 0, enumTable};
}

constexpr velAttribDef text(uint32_t id, const char* name, uint32_t length,
                            const velEnumDef* enumTable = nullptr) {
  return {id, name, VEL_STRING, length, enumTable};
}

// A text "Y" or "N".
constexpr velAttribDef yesNo(uint32_t id, const char* name) { return text(id, name, 1); }

constexpr velAttribDef dateTime(uint32_t id, const char* name) {
  return {id, name, VEL_DATETIME, 0, nullptr};
}

constexpr velAttribDef real(uint32_t id, const char* name) {
  return {id, name, VEL_FLOAT, 0, nullptr};
}

constexpr velAttribDef longNumber(uint32_t id, const char* name) {
  return {id, name, VEL_LONGLONG, 0, nullptr};
}

inline constexpr velAttribDef kEndOfAttributes = {kCatalogueEnd, nullptr, 0, 0, nullptr};

// A classic table and the attributes that modern sources add, one list behind the other.
template <size_t classicCount, size_t addedCount>
constexpr std::array<velAttribDef, classicCount + addedCount - 1> joinAttributes(
    const velAttribDef (&classic)[classicCount], const velAttribDef (&added)[addedCount]) {
  std::array<velAttribDef, classicCount + addedCount - 1> joined{};
  for (size_t i = 0; i + 1 < classicCount; ++i) joined[i] = classic[i];
  for (size_t i = 0; i < addedCount; ++i) joined[classicCount - 1 + i] = added[i];
  return joined;
}

// The same list with another enumeration for one of its attributes.
template <size_t count>
constexpr std::array<velAttribDef, count> withEnumeration(std::array<velAttribDef, count> attribs,
                                                          uint32_t id,
                                                          const velEnumDef* enumTable) {
  for (velAttribDef& attrib : attribs) {
    if (attrib.id == id) attrib.enumTable = enumTable;
  }
  return attribs;
}

}  // namespace quenlor
