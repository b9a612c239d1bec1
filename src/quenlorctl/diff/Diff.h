// What differs between two documents of a machine. Rows are paired by the identities of the field
// catalogue, never by their order; values that change by themselves are left out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

struct DiffOptions {
  bool isAll = false;                // volatile values too, and what comes and goes with containers
  std::vector<const Group*> groups;  // empty: all
};

// One thing that differs: a value, a row, several equal rows, or a table.
struct Fact {
  // A row is not reported where its table is missing or incomplete: nobody knows whether it is
  // gone. A value is not reported where its row lacks it.
  enum class Kind : uint8_t { kAdded, kRemoved, kChanged, kNotReported };

  // What a side has. Of a value: the value, or its text where the catalogue does not know it. Of
  // rows: how many. Nothing: not that.
  struct Side {
    const Document* document = nullptr;
    const Document::Value* value = nullptr;
    std::string text;
    uint32_t rows = 0;

    bool isEmpty() const { return value == nullptr && text.empty() && rows == 0; }
  };

  Kind kind = Kind::kChanged;
  std::string group;      // catalogue name; of an unknown group its element's
  std::string identity;   // of the row; empty: the only one, or a table
  std::string attribute;  // catalogue name; of an unknown one its element's; empty: rows
  Side before;
  Side after;
  bool isOfScanner = false;  // that another scanner looked, which explains other facts
};

// The facts, those of the scanner first, then by group in the catalogue's order. They point into
// both documents.
std::vector<Fact> diffDocuments(const Document& before, const Document& after,
                                const DiffOptions& options = {});

// A line per fact below its group's name; texts are cleaned for terminals. Empty for no facts.
std::string diffText(const std::vector<Fact>& facts);

// One list of objects {"group","identity","kind","attribute","old","new"} and a newline. Facts
// about rows have no attribute, and as old and new the number of rows.
std::string diffJson(const std::vector<Fact>& facts);

}  // namespace quenlor::ctl
