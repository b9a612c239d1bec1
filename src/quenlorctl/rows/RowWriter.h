// The rows of documents, a line each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

// What every row of a document begins with.
struct RowHead {
  std::string host;  // empty: none is known
  int hostRank = 0;  // 0: told by the user
  std::string scan;  // UTC; empty: none is known, as in classic documents

  // The document's own host key, but for one that is told.
  static RowHead of(const Document& document, const std::string& toldHost);
};

// Appends the row as one object and a newline:
//   {"host":"...","host_rank":1,"scan":"2026-11-22T01:02:03Z","group":"storage","row":1,...}
// Attributes stand under their SQL names with the values of jsonDocument(). Only ASCII.
void appendNdjson(std::string& out, const RowHead& head, const Document& document,
                  const Document::Row& row);

// Appends the row, or the names of the columns, as RFC 4180 has it: the same columns for every row
// of a group. Texts that a spreadsheet would take for a formula get an apostrophe in front, unless
// raw; characters that steer a terminal become U+FFFD.
void appendCsvHeader(std::string& out, const Group& group);
void appendCsv(std::string& out, const RowHead& head, const Document& document,
               const Document::Row& row, bool isRaw);

}  // namespace quenlor::ctl
