#include "quenlorctl/json/JsonDocument.h"

#include <nlohmann/json.hpp>

#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;
constexpr int kIndent = 2;
constexpr int kOneLine = -1;

// Null for what is left out.
Json typedValue(const Document& document, const Document::Value& value) {
  if (value.isUnknown()) return nullptr;
  const std::string_view text = document.text(value.text);
  switch (value.field->form) {
    case Form::kNumber:
      return value.number.number;
    case Form::kInteger:
      return value.number.integer;
    case Form::kReal:
      return value.number.real;
    case Form::kYesNo:
      return value.number.yes;
    case Form::kDateTime:
      return isoDateTime(text).value_or("");
    default:
      return std::string(text);
  }
}

Json rowObject(const Document& document, const Document::Row& row, const JsonOptions& options) {
  Json object = Json::object();
  const Document::Value* values = document.valuesOf(row);
  for (uint32_t i = 0; i < row.valueCount; ++i) {
    Json value = options.isRaw ? Json(std::string(document.text(values[i].text)))
                               : typedValue(document, values[i]);
    if (value.is_null()) continue;
    // A row has an attribute once: no search for an older one.
    object.get_ref<Json::object_t&>().emplace_back(std::string(values[i].field->element),
                                                   std::move(value));
  }
  return object;
}

// An element that stands twice becomes a list.
void addText(Json& object, const std::string& name, std::string text) {
  const auto found = object.find(name);
  if (found == object.end()) {
    object[name] = std::move(text);
  } else if (found->is_array()) {
    found->push_back(std::move(text));
  } else {
    *found = Json::array({*found, std::move(text)});
  }
}

Json extraObject(const Document& document, const Document::Row& row) {
  Json object = Json::object();
  const Document::Extra* extras = document.extrasOf(row);
  for (uint32_t i = 0; i < row.extraCount; ++i) {
    addText(object, std::string(document.text(extras[i].name)),
            std::string(document.text(extras[i].text)));
  }
  return object;
}

// What a row has beside what its place in "groups" can hold: all of a further row where one is
// meant.
Json restObject(const Document& document, const Document::Row& row) {
  Json rest = extraObject(document, row);
  if (row.group == nullptr || row.group->isKeyed || row.number == 1) return rest;
  const Json values = rowObject(document, row, {.isPretty = false, .isRaw = true});
  for (const auto& [name, value] : values.items()) addText(rest, name, value);
  return rest;
}

void addRow(Json& groups, const Document& document, const Document::Row& row,
            const JsonOptions& options) {
  const std::string element(row.group->element);
  if (row.group->isKeyed) {
    groups[element].push_back(rowObject(document, row, options));
  } else if (row.number == 1) {
    groups[element] = rowObject(document, row, options);
  }
}

// Row by row, up to the last one that has something.
void addRest(Json& extra, const Document& document, const Document::Row& row) {
  Json rest = restObject(document, row);
  if (rest.empty()) return;
  Json& list = extra[std::string(document.elementOf(row))];
  while (list.size() + 1 < row.number) list.push_back(Json::object());
  list.push_back(std::move(rest));
}

}  // namespace

std::string jsonDocument(const Document& document, const JsonOptions& options) {
  Json groups = Json::object();
  Json extra = Json::object();
  for (const Document::Row& row : document.rows()) {
    if (row.group != nullptr) addRow(groups, document, row, options);
    addRest(extra, document, row);
  }
  Json whole = {{"format", kFormat},
                {"sources", sourcesWord(document.sources())},
                {"file", validUtf8(document.file())},
                {"groups", std::move(groups)}};
  if (!extra.empty()) whole["extra"] = std::move(extra);
  return whole.dump(options.isPretty ? kIndent : kOneLine, ' ', true);
}

}  // namespace quenlor::ctl
