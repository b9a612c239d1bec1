// The rows of data/fields.tsv as they are compiled in. Everybody but the field catalogue goes by
// Fields.h.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "quenlorctl/document/Flags.h"

namespace quenlor::ctl {

struct GroupRow {
  const char* name;
  const char* element;
  const char* sql;
};

// Pairs are of classic and of modern documents.
struct FieldRow {
  const char* group;
  const char* name;
  const char* element;
  const char* unit;  // empty: none that stands behind a number
  std::array<Change, 2> change;
  std::array<Privacy, 2> privacy;
  std::array<uint8_t, 2> identity;  // a bit for each rank, 1 for the first
  double scale;                     // factor to bytes, seconds or hertz; 0: none
  const char* sql;
  const char* words;  // closed list, separated by commas; empty: open
  bool isYesNo;
};

std::span<const GroupRow> groupRows();
std::span<const FieldRow> fieldRows();

}  // namespace quenlor::ctl
