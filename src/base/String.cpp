#include "base/String.h"

#include "base/Text.h"

namespace quenlor {

static_assert(sizeof(wchar_t) == sizeof(uint32_t), "wide text is UTF-32");

String::String(const char* text) {
  if (text != nullptr) m_text = text;
}

String::String(const wchar_t* text) {
  if (text == nullptr) return;
  for (; *text != L'\0'; ++text) appendUtf8(m_text, static_cast<uint32_t>(*text));
}

String& String::operator+=(const String& other) {
  m_text += other.m_text;
  return *this;
}

}  // namespace quenlor
