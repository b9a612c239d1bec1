// The facts as people read them.
#include <algorithm>

#include "quenlorctl/diff/Diff.h"
#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

bool isNumeric(Form form) {
  return form == Form::kNumber || form == Form::kInteger || form == Form::kReal;
}

// Numbers with their unit, texts between quotation marks.
std::string shown(const Fact::Side& side) {
  if (side.value == nullptr) return '"' + cleanText(side.text) + '"';
  const Field& field = *side.value->field;
  const std::string_view text = side.document->text(side.value->text);
  if (field.form == Form::kDateTime) return isoDateTime(text).value_or("no time");
  const std::string unit = field.unit[0] == '\0' ? "" : std::string(" ") + field.unit;
  if (isNumeric(field.form)) return std::string(text) + unit;
  return '"' + cleanText(text) + '"';
}

std::string rowsText(uint32_t count) {
  return std::to_string(count) + (count == 1 ? " row" : " rows");
}

char signOf(const Fact& fact) {
  switch (fact.kind) {
    case Fact::Kind::kAdded:
      return '+';
    case Fact::Kind::kRemoved:
      return '-';
    case Fact::Kind::kNotReported:
      return '?';
    default:
      return '~';
  }
}

std::string valueText(const Fact& fact) {
  const std::string name = cleanText(fact.attribute) + ": ";
  if (fact.kind == Fact::Kind::kNotReported)
    return name + "not reported, was " + shown(fact.before);
  if (fact.kind == Fact::Kind::kAdded) return name + shown(fact.after);
  return name + shown(fact.before) + " to " + shown(fact.after);
}

std::string notReported(const Fact& fact) {
  const bool isNow = fact.before.rows > fact.after.rows;
  const uint32_t rows =
      isNow ? fact.before.rows - fact.after.rows : fact.after.rows - fact.before.rows;
  const std::string when = isNow ? "not reported" : "not reported before";
  if (fact.identity.empty()) return when + " (" + rowsText(rows) + ")";
  const std::string count = rows == 1 ? "" : std::to_string(rows) + " x ";
  return count + cleanText(fact.identity) + ": " + when;
}

std::string rowText(const Fact& fact) {
  if (fact.kind == Fact::Kind::kNotReported) return notReported(fact);
  const uint32_t before = fact.before.rows;
  const uint32_t after = fact.after.rows;
  const std::string name = fact.identity.empty() ? "row" : cleanText(fact.identity);
  if (fact.kind == Fact::Kind::kChanged) {
    return std::to_string(before) + " x " + name + " to " + std::to_string(after) + " x";
  }
  const uint32_t count = before + after;
  return (count == 1 ? "" : std::to_string(count) + " x ") + name;
}

std::string factText(const Fact& fact) {
  const std::string identity = fact.identity.empty() ? "" : cleanText(fact.identity) + ": ";
  return fact.attribute.empty() ? rowText(fact) : identity + valueText(fact);
}

std::string plain(const Fact::Side& side) {
  return side.value == nullptr ? cleanText(side.text) : shown(side);
}

// "scanner changed: sources classic to modern".
std::string scannerText(const Fact& fact) {
  std::string name = fact.attribute;
  std::transform(name.begin(), name.end(), name.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  const auto side = [](const Fact::Side& s) { return s.isEmpty() ? "none" : plain(s); };
  return "scanner changed: " + name + " " + side(fact.before) + " to " + side(fact.after) + "\n";
}

}  // namespace

std::string diffText(const std::vector<Fact>& facts) {
  std::string text;
  std::string group;
  for (const Fact& fact : facts) {
    if (fact.isOfScanner) {
      text += scannerText(fact);
      continue;
    }
    if (fact.group != group) text += (text.empty() ? "" : "\n") + cleanText(fact.group) + "\n";
    group = fact.group;
    text += std::string("  ") + signOf(fact) + " " + factText(fact) + "\n";
  }
  return text;
}

}  // namespace quenlor::ctl
