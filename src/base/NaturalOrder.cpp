#include "base/NaturalOrder.h"

#include <algorithm>
#include <cstdint>

namespace quenlor {
namespace {

// Drivers that count their disks in letters. In any other name letters are a word: "br0" does not
// come before "bond0" for being shorter.
constexpr std::string_view LETTER_SERIES[] = {"sd", "vd", "xvd", "hd", "dasd", "ubd", "rssd"};

enum class Kind : uint8_t { kEnd, kNumber, kLetters, kText };

struct Token {
  Kind kind = Kind::kEnd;
  std::string_view text;
};

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
bool isLetter(char byte) { return byte >= 'a' && byte <= 'z'; }

// Takes a name apart from front to back.
class Tokens {
 public:
  explicit Tokens(std::string_view name) : m_rest(name) {}

  Token next() {
    if (m_rest.empty()) return {};
    if (isDigit(m_rest.front())) return number();
    if (m_isAfterSeries) return letters();
    return text();
  }

 private:
  std::string_view take(size_t length) {
    const std::string_view taken = m_rest.substr(0, length);
    m_rest.remove_prefix(taken.size());
    return taken;
  }

  template <typename Predicate>
  size_t runLength(Predicate belongs) const {
    const auto* end = std::find_if_not(m_rest.begin(), m_rest.end(), belongs);
    return static_cast<size_t>(end - m_rest.begin());
  }

  // Without its leading zeros: a zero is empty, and the shorter one is the lesser.
  Token number() {
    m_isAtStart = false;
    std::string_view digits = take(runLength(isDigit));
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return {Kind::kNumber, digits};
  }

  Token letters() {
    m_isAfterSeries = false;
    return {Kind::kLetters, take(runLength(isLetter))};
  }

  // Length of the series' name that stands here with letters behind it; 0 without one.
  size_t seriesLength() const {
    for (const std::string_view series : LETTER_SERIES) {
      const size_t length = series.size();
      const bool isHere = m_rest.starts_with(series) && m_rest.size() > length;
      if (isHere && isLetter(m_rest[length])) return length;
    }
    return 0;
  }

  // Up to the next digit, the end of a path's part or the end of a series' name.
  Token text() {
    const size_t series = m_isAtStart ? seriesLength() : 0;
    m_isAfterSeries = series > 0;
    if (series > 0) {
      m_isAtStart = false;
      return {Kind::kText, take(series)};
    }
    const size_t length = runLength([](char byte) { return !isDigit(byte) && byte != '/'; });
    const bool endsPart = length < m_rest.size() && m_rest[length] == '/';
    m_isAtStart = endsPart;
    return {Kind::kText, take(length + (endsPart ? 1 : 0))};
  }

  std::string_view m_rest;
  bool m_isAtStart = true;
  bool m_isAfterSeries = false;
};

// Less than 0, 0 or more than 0.
int compare(const Token& left, const Token& right) {
  if (left.kind != right.kind) return left.kind < right.kind ? -1 : 1;
  const bool isCounted = left.kind == Kind::kNumber || left.kind == Kind::kLetters;
  if (isCounted && left.text.size() != right.text.size()) {
    return left.text.size() < right.text.size() ? -1 : 1;
  }
  return left.text.compare(right.text);
}

}  // namespace

bool naturalLess(std::string_view left, std::string_view right) {
  Tokens leftTokens(left);
  Tokens rightTokens(right);
  while (true) {
    const Token token = leftTokens.next();
    const int order = compare(token, rightTokens.next());
    if (order != 0) return order < 0;
    if (token.kind == Kind::kEnd) return left < right;  // "eth01" and "eth1"
  }
}

}  // namespace quenlor
