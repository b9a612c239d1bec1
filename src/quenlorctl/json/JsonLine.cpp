#include "quenlorctl/json/JsonLine.h"

namespace quenlor::ctl {

void putKey(JsonLine& line, std::string_view name) {
  line.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void putText(JsonLine& line, std::string_view text) {
  line.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void putValue(JsonLine& line, const Document& document, const Document::Value& value) {
  if (value.isUnknown()) return putText(line, "");
  switch (value.field->form) {
    case Form::kNumber:
      line.Uint64(value.number.number);
      break;
    case Form::kInteger:
      line.Int64(value.number.integer);
      break;
    case Form::kReal:
      line.Double(value.number.real);
      break;
    case Form::kYesNo:
      line.Bool(value.number.yes);
      break;
    case Form::kDateTime:
      putText(line, isoDateTime(document.text(value.text)).value_or(""));
      break;
    default:
      putText(line, document.text(value.text));
  }
}

}  // namespace quenlor::ctl
