#include "quenlorctl/document/ValueForms.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/Text.h"

namespace quenlor::ctl {
namespace {

constexpr std::string_view kDateTimePattern = "0000-00-00-00.00.00.!!!!!!";
constexpr std::string_view kDigits = "0123456789";
constexpr size_t kDecimals = 6;

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of(kDigits) == text.npos;
}

template <class Integer>
std::optional<Integer> decimal(std::string_view text) {
  Integer value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return value;
}

std::optional<uint64_t> unsignedDecimal(std::string_view text) { return decimal<uint64_t>(text); }

bool matches(char character, char pattern) {
  if (pattern == '0') return character >= '0' && character <= '9';
  return pattern == '!' ? character == '0' : character == pattern;
}

bool isDateTime(std::string_view text) {
  return std::equal(text.begin(), text.end(), kDateTimePattern.begin(), kDateTimePattern.end(),
                    matches);
}

bool isFixedPoint(std::string_view text) {
  const size_t point = text.find('.');
  if (point == text.npos) return false;
  const std::string_view decimals = text.substr(point + 1);
  return isDigits(text.substr(0, point)) && isDigits(decimals) && decimals.size() == kDecimals;
}

bool isReal(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return text == "nan" || text == "inf" || isFixedPoint(text);
}

bool isWithin(std::string_view digits, unsigned least, unsigned most) {
  const auto value = decimal<unsigned>(digits);
  return value && *value >= least && *value <= most;
}

// A second may be a leap second.
bool isOfCalendar(std::string_view text) {
  return isWithin(text.substr(5, 2), 1, 12) && isWithin(text.substr(8, 2), 1, 31) &&
         isWithin(text.substr(11, 2), 0, 23) && isWithin(text.substr(14, 2), 0, 59) &&
         isWithin(text.substr(17, 2), 0, 60);
}

std::optional<Number> realOf(std::string_view text) {
  if (!isReal(text)) return {};
  const double value = parseDouble(std::string(text).c_str());
  if (!std::isfinite(value)) return {};
  return Number{.real = value};
}

std::optional<Number> yesOrNo(std::string_view text) {
  if (!text.empty() && text != "Y" && text != "N") return {};
  return Number{.yes = text == "Y"};
}

std::optional<Number> dateTimeOf(std::string_view text) {
  if (!text.empty() && !isoDateTime(text)) return {};
  return Number{.number = 0};
}

}  // namespace

std::optional<int64_t> signedDecimal(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return {};
  }
  return decimal<int64_t>(text);
}

bool isValid(const Field& field, std::string_view text) {
  switch (field.form) {
    case Form::kNumber:
      return unsignedDecimal(text).has_value();
    case Form::kInteger:
      return signedDecimal(text).has_value();
    case Form::kReal:
      return isReal(text);
    case Form::kDateTime:
      return text.empty() || isDateTime(text);
    case Form::kWord:
      // Blanks are collapsed where a number is one of several kinds of value.
      return field.hasWord(text) || unsignedDecimal(trimmed(text)).has_value();
    default:
      return field.words.empty() || field.hasWord(text);
  }
}

std::optional<Number> numberOf(const Field& field, std::string_view text) {
  switch (field.form) {
    case Form::kNumber:
      if (const auto value = unsignedDecimal(text)) return Number{.number = *value};
      return {};
    case Form::kInteger:
      if (const auto value = signedDecimal(text)) return Number{.integer = *value};
      return {};
    case Form::kReal:
      return realOf(text);
    case Form::kYesNo:
      return yesOrNo(text);
    case Form::kDateTime:
      return dateTimeOf(text);
    default:
      return Number{.number = 0};
  }
}

std::optional<std::string> isoDateTime(std::string_view text) {
  if (!isDateTime(text) || !isOfCalendar(text)) return {};
  std::string iso(text.substr(0, 19));
  iso[10] = 'T';
  iso[13] = iso[16] = ':';
  return iso;
}

}  // namespace quenlor::ctl
