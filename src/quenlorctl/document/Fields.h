// The groups and attributes that documents may have, by element name, with their flags: the
// program's catalogue joined with data/fields.tsv. Immutable after its first use.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"
#include "quenlorctl/document/Flags.h"

namespace quenlor::ctl {

// What the text of a value stands for.
enum class Form : uint8_t {
  kText,
  kNumber,    // decimal, without a sign
  kInteger,   // decimal, 64 bits with a sign
  kReal,      // decimal fraction
  kYesNo,     // Y or N
  kDateTime,  // local time, as documents write it
  kWord,      // a word of an enumeration, or a number that has none
};

// One attribute. Pairs are of classic and of modern documents.
struct Field {
  uint32_t id = 0;
  uint32_t place = 0;  // within its group, from 0
  const char* name = "";
  std::string_view element;
  Form form = Form::kText;
  bool isKey = false;
  const char* unit = "";  // empty: none
  std::array<Change, 2> change{};
  std::array<Privacy, 2> privacy{};
  std::array<uint8_t, 2> identity{};  // a bit for each rank of the row's identity, 1 for the first
  double scale = 0;                   // factor to bytes, seconds or hertz; 0: none
  const char* sql = "";
  // The words of the enumeration, or of a closed list of texts; empty: any text.
  std::vector<std::string_view> words;

  Change changeIn(Sources sources) const { return change[static_cast<size_t>(sources)]; }
  uint8_t identityIn(Sources sources) const { return identity[static_cast<size_t>(sources)]; }
  bool hasWord(std::string_view word) const;
};

struct Group {
  uint32_t id = 0;
  uint32_t place = 0;  // within the catalogue, from 0
  const char* name = "";
  std::string_view element;
  const char* sql = "";
  bool isKeyed = false;   // may have many rows
  bool isModern = false;  // in modern documents only
  std::vector<Field> fields;

  // Null when there is none. A hint is the place where the search begins.
  const Field* findElement(std::string_view element, uint32_t hint = 0) const;
  const Field* findId(uint32_t id) const;
};

// All groups in the order of a scan.
const std::vector<Group>& groups();
// Null when there is none. A hint is the place where the search begins.
const Group* findGroupElement(std::string_view element, uint32_t hint = 0);
const Group* findGroupId(uint32_t id);
// By catalogue, element or SQL name, whatever the case; null when there is none.
const Group* findGroupName(std::string_view name);
// True for a group of the list; an empty list is of all.
bool isAmong(const std::vector<const Group*>& wanted, const Group& group);

}  // namespace quenlor::ctl
