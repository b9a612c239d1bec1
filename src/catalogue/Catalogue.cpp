// Lookups in the catalogue.
#include "catalogue/Catalogue.h"

#include <cstring>

namespace quenlor {
namespace {

const char* textOf(const velEnumDef* table, uint32_t value) {
  if (table == nullptr) return nullptr;
  for (; table->value != kCatalogueEnd; ++table) {
    if (table->value == value) return table->text;
  }
  return nullptr;
}

}  // namespace

const velGroupDef* findGroup(const velGroupDef* catalogue, uint32_t id) {
  for (const velGroupDef* group = catalogue; group->id != kCatalogueEnd; ++group) {
    if (group->id == id) return group;
  }
  return nullptr;
}

const velGroupDef* findGroup(const velGroupDef* catalogue, const char* name) {
  for (const velGroupDef* group = catalogue; group->name != nullptr; ++group) {
    if (std::strcmp(group->name, name) == 0) return group;
  }
  return nullptr;
}

String getGroupNameFromId(uint32_t id) {
  const velGroupDef* group = getGroupDefinitionFromId(id);
  return group == nullptr ? "Unknown" : group->name;
}

uint32_t getGroupIdFromName(const String& name) {
  const velGroupDef* group = findGroup(GROUPS_DEF, name.c_str());
  return group == nullptr ? 0 : group->id;
}

const velGroupDef* getGroupDefinitionFromId(uint32_t id) { return findGroup(GROUPS_DEF, id); }

uint32_t getDebugMaskFromName(const char* name) {
  const velGroupDef* group = name == nullptr ? nullptr : findGroup(GROUPS_DEF, name);
  return group == nullptr ? 0 : group->debugMask;
}

const char* getAttribNameFromId(const velGroupDef* group, uint32_t attribId) {
  const velAttribDef* attrib = getAttribDefinitionFromId(group, attribId);
  return attrib == nullptr ? nullptr : attrib->name;
}

const velAttribDef* getAttribDefinitionFromId(const velGroupDef* group, uint32_t attribId) {
  if (group == nullptr || group->attribs == nullptr) return nullptr;
  for (const velAttribDef* attrib = group->attribs; attrib->id != kCatalogueEnd; ++attrib) {
    if (attrib->id == attribId) return attrib;
  }
  return nullptr;
}

const char* getEnumAsciiValue(const velGroupDef* group, uint32_t attribId, uint32_t value) {
  if (getAttribDefinitionFromId(group, attribId) == nullptr) return nullptr;
  return textOf(group->attribs[0].enumTable, value);
}

}  // namespace quenlor
