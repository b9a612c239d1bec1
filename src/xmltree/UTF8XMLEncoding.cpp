#include "xmltree/UTF8XMLEncoding.h"

#include <cstdint>

#include "base/Text.h"

namespace quenlor {
namespace {

// XML 1.0, production 2 (Char). Surrogates and values above U+10FFFF are left to appendUtf8().
bool isForbidden(uint32_t character) {
  if (character < 0x20) return character != '\t' && character != '\n';
  return character == 0xFFFE || character == 0xFFFF;
}

bool isPlain(uint32_t character) { return character >= 0x20 && character < 0x7F; }

void appendEscaped(std::string& out, uint32_t character) {
  switch (character) {
    case '&':
      out += "&amp;";
      break;
    case '<':
      out += "&lt;";
      break;
    case '>':
      out += "&gt;";
      break;
    case '\r':
      out += "&#13;";
      break;
    default:
      if (isPlain(character)) {
        out += static_cast<char>(character);
      } else {
        appendUtf8(out, isForbidden(character) ? kReplacementCharacter : character);
      }
  }
}

}  // namespace

UTF8XMLEncoding::UTF8XMLEncoding(const wchar_t* text) {
  if (text == nullptr) return;
  for (; *text != L'\0'; ++text) appendEscaped(m_encoded, static_cast<uint32_t>(*text));
}

void UTF8XMLEncoding::printx(FILE* stream) const {
  std::fwrite(m_encoded.data(), 1, m_encoded.size(), stream);
}

}  // namespace quenlor
