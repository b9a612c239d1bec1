// Text of an XML document's content.
#pragma once

#include <cstdio>
#include <string>

namespace quenlor {

// Wide text as UTF-8 in which & < > are escaped. What XML 1.0 forbids (control characters except
// tab and newline, surrogates, U+FFFE, U+FFFF, values above U+10FFFF) becomes U+FFFD; a carriage
// return becomes "&#13;", since a reader would turn the bare character into a newline.
class UTF8XMLEncoding {
 public:
  // Encodes at once; the text need not outlive the call. Null is the empty text.
  explicit UTF8XMLEncoding(const wchar_t* text);
  virtual ~UTF8XMLEncoding() = default;

  // Writes bytes, so that the stream never becomes wide; whether they arrived, ferror() tells.
  virtual void printx(FILE* stream) const;

 private:
  std::string m_encoded;
};

}  // namespace quenlor
