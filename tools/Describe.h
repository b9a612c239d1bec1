// What the forms that describe the catalogue share.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "catalogue/Catalogue.h"

namespace quenlor::describe {

// One line of data/fields.tsv behind group and attribute.
struct FieldText {
  std::string unit;
  std::string source;
  std::string absent;
  std::string change;
  std::string privateKind;
  std::string identity;
  std::string scale;
  std::string sql;
  std::string words;
};

// By group and attribute; the group's own line stands under an empty attribute name.
using FieldTexts = std::map<std::pair<std::string, std::string>, FieldText>;

// Lines without enough columns have empty ones; a file that cannot be read has no texts.
FieldTexts readFieldTexts(const char* path);

// Name of the XML element that stands for a group or an attribute.
std::string elementName(const char* name);

bool isKey(const velGroupDef& group, uint32_t id);

// True for what only documents of modern sources have.
bool isModernGroup(const velGroupDef& group);
bool isModern(const velGroupDef& group, const velAttribDef& attrib);

// Modern documents have all that classic ones have, and more.
template <class Visitor>
void forEachGroup(Visitor visit) {
  for (const velGroupDef* group = MODERN_GROUPS_DEF; group->id != kCatalogueEnd; ++group) {
    visit(*group);
  }
}

template <class Visitor>
void forEachAttribute(const velGroupDef& group, Visitor visit) {
  for (const velAttribDef* attrib = group.attribs; attrib->id != kCatalogueEnd; ++attrib) {
    visit(*attrib);
  }
}

// The forms. Each prints to standard output and returns the exit status.
int printSchema(const FieldTexts& texts);
int printFields(FieldTexts texts);
int printGroups();

}  // namespace quenlor::describe
