// Which values and rows of two documents are compared, and how.
#pragma once

#include <string_view>
#include <vector>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

// Both documents' sources, and whether everything counts.
struct DiffTerms {
  Sources before = Sources::kClassic;
  Sources after = Sources::kClassic;
  bool isAll = false;

  bool isAcross() const { return before != after; }
  // Whose identities hold: those that both documents have.
  Sources common() const { return isAcross() ? Sources::kClassic : before; }
};

// Where the row of a table lies in its document.
struct PlacedRow {
  const Document* document = nullptr;
  const Document::Row* row = nullptr;
};

// False for what says nothing about the machine: row numbers, values that change by themselves, and
// between classic and modern documents what only one kind can tell.
bool isCompared(const Group& group, const Field& field, const PlacedRow& before,
                const PlacedRow& after, const DiffTerms& terms);
// Part of what tells rows apart.
bool isStableIdentity(const Group& group, const Field& field, const DiffTerms& terms);
// True where the kinds of sources see different rows of one machine.
bool hasOtherRows(const Group& group, const DiffTerms& terms);
// True for values that differ as texts and yet are alike: kilobytes that the kernel reserved, a
// boot time that was computed twice.
bool isAlike(const Group& group, const PlacedRow& before, const Document::Value& valueBefore,
             const PlacedRow& after, const Document::Value& valueAfter);
// What another scanner explains.
bool isOfScanner(const Group& group, const Field& field);

// The rows of a group that are compared: without the interfaces of containers unless everything
// counts, and with an adapter of a classic document once, which has a row for each address.
std::vector<PlacedRow> comparedRows(const Document& document, const Group& group,
                                    const DiffTerms& terms);

// True where a row that is missing from the document's table is missing from the machine.
bool isComplete(const Document& document, const Group& group);

}  // namespace quenlor::ctl
