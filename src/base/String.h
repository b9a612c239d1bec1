// The text type of the base runtime library.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace quenlor {

// An owned narrow text. Wide (32-bit) text is taken over as UTF-8. A null pointer gives the empty
// text.
class String {
 public:
  String() = default;
  String(const char* text);     // NOLINT: implicit, so that literals serve as String arguments
  String(const wchar_t* text);  // NOLINT: implicit for the same reason
  String(std::string text) : m_text(std::move(text)) {}  // NOLINT: implicit for the same reason

  // The text, zero-terminated; valid until the String changes.
  const char* c_str() const { return m_text.c_str(); }
  const std::string& str() const { return m_text; }
  size_t length() const { return m_text.size(); }
  bool empty() const { return m_text.empty(); }

  String& operator+=(const String& other);
  friend String operator+(String left, const String& right) { return left += right; }
  friend bool operator==(const String&, const String&) = default;
  friend auto operator<=>(const String&, const String&) = default;

 private:
  std::string m_text;
};

}  // namespace quenlor
