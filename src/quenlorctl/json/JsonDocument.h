// A document as one JSON object.
#pragma once

#include <string>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

struct JsonOptions {
  bool isPretty = false;  // over many lines, indented by two blanks
  bool isRaw = false;     // values as texts, as the document has them
};

// Without a newline at the end. Format 1:
//   {"format":1,"sources":"modern","file":"...","groups":{"Storage":[{"Index":1,...}],"Memory":{}},
//    "extra":{"Storage":[{}]}}
// Groups and attributes stand under their element names, in the document's order; groups of many
// rows are lists, the others objects. Numbers are numbers, yes or no is true or false, date-times
// are ISO 8601 without a zone, enumerated values are words; what is absent is left out. "extra"
// has, row by row, the texts that the catalogue does not know. Only ASCII: every other character is
// escaped.
std::string jsonDocument(const Document& document, const JsonOptions& options = {});

}  // namespace quenlor::ctl
