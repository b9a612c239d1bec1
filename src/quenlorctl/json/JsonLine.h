// JSON by RapidJSON's writer, for what is written by the thousand: compact, and only ASCII.
#pragma once

#include <rapidjson/writer.h>

#include <string>
#include <string_view>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

// Appends to a text. DEL, which the library takes for a printing character, is escaped here: it
// comes only inside of texts.
class JsonStream {
 public:
  using Ch = char;
  explicit JsonStream(std::string& out) : m_out(out) {}
  void Put(char character) {
    if (character == '\x7F') {
      m_out += "\\u007F";
    } else {
      m_out += character;
    }
  }
  void Flush() {}

 private:
  std::string& m_out;
};

// The library's name for a write into room that was reserved; a text grows by itself.
inline void PutUnsafe(JsonStream& stream, char character) { stream.Put(character); }

using JsonLine = rapidjson::Writer<JsonStream, rapidjson::UTF8<>, rapidjson::ASCII<>>;

void putKey(JsonLine& line, std::string_view name);
void putText(JsonLine& line, std::string_view text);
// As jsonDocument() writes it; what is not known is an empty text.
void putValue(JsonLine& line, const Document& document, const Document::Value& value);

}  // namespace quenlor::ctl
