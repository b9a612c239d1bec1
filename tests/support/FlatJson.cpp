#include "tests/support/FlatJson.h"

#include <cctype>
#include <functional>
#include <stdexcept>

namespace quenlor::test {
namespace {

class Parser {
 public:
  explicit Parser(const std::string& text) : m_text(text) {}

  FlatJson parse() {
    FlatJson result;
    if (next() == '\0') return result;
    object([&](const std::string& name) {
      object([&, &inner = result[name]](const std::string& key) { inner[key] = scalar(); });
    });
    if (next() != '\0') fail();
    return result;
  }

 private:
  [[noreturn]] void fail() const {
    throw std::runtime_error("no JSON that is understood here, at " + std::to_string(m_at));
  }

  char next() {
    while (m_at < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[m_at])) != 0) {
      ++m_at;
    }
    return m_at < m_text.size() ? m_text[m_at] : '\0';
  }

  void expect(char character) {
    if (next() != character) fail();
    ++m_at;
  }

  void object(const std::function<void(const std::string&)>& member) {
    expect('{');
    while (next() != '}') {
      const std::string name = quoted();
      expect(':');
      member(name);
      if (next() != '}') expect(',');
    }
    expect('}');
  }

  std::string quoted() {
    expect('"');
    const size_t end = m_text.find_first_of("\"\\", m_at);
    if (end == std::string::npos || m_text[end] == '\\') fail();
    std::string text = m_text.substr(m_at, end - m_at);
    m_at = end + 1;
    return text;
  }

  std::string scalar() {
    if (next() == '"') return quoted();
    const size_t begin = m_at;
    while (std::isdigit(static_cast<unsigned char>(next())) != 0) ++m_at;
    if (m_at == begin) fail();
    return m_text.substr(begin, m_at - begin);
  }

  const std::string& m_text;
  size_t m_at = 0;
};

}  // namespace

FlatJson parseFlatJson(const std::string& text) { return Parser(text).parse(); }

}  // namespace quenlor::test
