// Joins the program's catalogue with the flags of data/fields.tsv.
#include "quenlorctl/document/Fields.h"

#include <strings.h>

#include <algorithm>
#include <stdexcept>

#include "quenlorctl/document/FieldRows.h"

namespace quenlor::ctl {
namespace {

constexpr uint32_t kFirstModernGroup = 1001;

Form formOf(const velAttribDef& attrib, const FieldRow& row) {
  switch (attrib.type) {
    case VEL_ULONG:
      return attrib.enumTable == nullptr ? Form::kNumber : Form::kWord;
    case VEL_LONGLONG:
      return Form::kInteger;
    case VEL_FLOAT:
    case VEL_DOUBLE:
      return Form::kReal;
    case VEL_DATETIME:
      return Form::kDateTime;
    default:
      return row.isYesNo ? Form::kYesNo : Form::kText;
  }
}

std::vector<std::string_view> split(std::string_view list) {
  std::vector<std::string_view> words;
  while (!list.empty()) {
    const size_t end = std::min(list.find(','), list.size());
    words.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return words;
}

std::vector<std::string_view> wordsOf(const velAttribDef& attrib, const FieldRow& row) {
  std::vector<std::string_view> words = split(row.words);
  if (attrib.type == VEL_ULONG && attrib.enumTable != nullptr) {
    for (const velEnumDef* pair = attrib.enumTable; pair->value != kCatalogueEnd; ++pair) {
      words.emplace_back(pair->text);
    }
  }
  std::sort(words.begin(), words.end());
  return words;
}

const FieldRow& rowOf(std::string_view group, std::string_view name) {
  for (const FieldRow& row : fieldRows()) {
    if (group == row.group && name == row.name) return row;
  }
  throw std::logic_error("no flags: " + std::string(group) + ": " + std::string(name));
}

const GroupRow& rowOf(std::string_view group) {
  for (const GroupRow& row : groupRows()) {
    if (group == row.name) return row;
  }
  throw std::logic_error("no flags: " + std::string(group));
}

bool isKeyOf(const velGroupDef& group, uint32_t id) {
  return std::find(group.keys, group.keys + group.keyCount, id) != group.keys + group.keyCount;
}

Field fieldOf(const velGroupDef& group, const velAttribDef& attrib, size_t place) {
  const FieldRow& row = rowOf(group.name, attrib.name);
  Field field;
  field.id = attrib.id;
  field.place = static_cast<uint32_t>(place);
  field.name = attrib.name;
  field.element = row.element;
  field.form = formOf(attrib, row);
  field.isKey = isKeyOf(group, attrib.id);
  field.unit = row.unit;
  field.change = row.change;
  field.privacy = row.privacy;
  field.identity = row.identity;
  field.scale = row.scale;
  field.sql = row.sql;
  field.words = wordsOf(attrib, row);
  return field;
}

Group groupOf(const velGroupDef& def, size_t place) {
  const GroupRow& row = rowOf(def.name);
  Group group;
  group.id = def.id;
  group.place = static_cast<uint32_t>(place);
  group.name = def.name;
  group.element = row.element;
  group.sql = row.sql;
  group.isKeyed = def.keys != nullptr;
  group.isModern = def.id >= kFirstModernGroup;
  for (const velAttribDef* attrib = def.attribs; attrib->id != kCatalogueEnd; ++attrib) {
    group.fields.push_back(fieldOf(def, *attrib, group.fields.size()));
  }
  return group;
}

std::vector<Group> allGroups() {
  std::vector<Group> all;
  for (const velGroupDef* def = MODERN_GROUPS_DEF; def->id != kCatalogueEnd; ++def) {
    all.push_back(groupOf(*def, all.size()));
  }
  return all;
}

// Documents list groups and attributes in the catalogue's order, so that the one looked for is most
// often the one behind the last.
template <class Thing>
const Thing* findFrom(const std::vector<Thing>& things, std::string_view element, uint32_t hint) {
  const size_t start = hint < things.size() ? hint : 0;
  for (size_t i = 0; i < things.size(); ++i) {
    const size_t place = start + i < things.size() ? start + i : start + i - things.size();
    if (things[place].element == element) return &things[place];
  }
  return nullptr;
}

template <class Thing>
const Thing* findById(const std::vector<Thing>& things, uint32_t id) {
  const auto found =
      std::find_if(things.begin(), things.end(), [id](const Thing& t) { return t.id == id; });
  return found == things.end() ? nullptr : &*found;
}

}  // namespace

bool Field::hasWord(std::string_view word) const {
  return std::binary_search(words.begin(), words.end(), word);
}

const Field* Group::findElement(std::string_view wanted, uint32_t hint) const {
  return findFrom(fields, wanted, hint);
}

const Field* Group::findId(uint32_t wanted) const { return findById(fields, wanted); }

const std::vector<Group>& groups() {
  static const std::vector<Group> all = allGroups();
  return all;
}

const Group* findGroupElement(std::string_view element, uint32_t hint) {
  return findFrom(groups(), element, hint);
}

const Group* findGroupId(uint32_t id) { return findById(groups(), id); }

bool isAmong(const std::vector<const Group*>& wanted, const Group& group) {
  return wanted.empty() || std::find(wanted.begin(), wanted.end(), &group) != wanted.end();
}

const Group* findGroupName(std::string_view name) {
  const std::string wanted(name);
  const auto is = [&wanted](std::string_view known) {
    return strcasecmp(wanted.c_str(), std::string(known).c_str()) == 0;
  };
  for (const Group& group : groups()) {
    if (is(group.name) || is(group.element) || is(group.sql)) return &group;
  }
  return nullptr;
}

}  // namespace quenlor::ctl
