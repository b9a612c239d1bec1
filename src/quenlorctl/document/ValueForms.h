// The texts of values by the form of their attribute: which are valid in a document, and what they
// stand for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quenlorctl/document/Fields.h"

namespace quenlor::ctl {

// What a text stands for; which member holds says the attribute's form. Texts, words and date-times
// have none.
union Number {
  uint64_t number;
  int64_t integer;
  double real;
  bool yes;
};

// True when the schema of documents takes the text as a value of the attribute.
bool isValid(const Field& field, std::string_view text);

// What the text stands for; nothing when it is none of the attribute's form: a number that is none,
// a day that no calendar has, "nan", a yes or no that is neither. An empty date-time, a time beyond
// the year 9999, is of its form, and so is an empty yes or no, which nobody knows.
std::optional<Number> numberOf(const Field& field, std::string_view text);

// A whole number of 64 bits, behind a sign or without one; nothing for any other text.
std::optional<int64_t> signedDecimal(std::string_view text);

// A date-time of a document, 2026-11-22-01.02.03.000000, as ISO 8601 without a zone,
// 2026-11-22T01:02:03; nothing for any other text.
std::optional<std::string> isoDateTime(std::string_view text);

}  // namespace quenlor::ctl
