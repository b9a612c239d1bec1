// Comma-separated values (RFC 4180).
#include <algorithm>

#include "quenlorctl/rows/RowWriter.h"
#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view HEAD_COLUMNS[] = {"host", "host_rank", "scan", "group", "row"};
constexpr std::string_view kFormulaStarts = "=+-@\t\r";

void putField(std::string& out, std::string_view field) {
  if (field.find_first_of(",\"\r\n") == field.npos) {
    out += field;
    return;
  }
  out += '"';
  for (const char character : field) {
    if (character == '"') out += '"';
    out += character;
  }
  out += '"';
}

void putText(std::string& out, std::string_view text, bool isRaw) {
  const bool isFormula = !text.empty() && kFormulaStarts.find(text[0]) != kFormulaStarts.npos;
  putField(out, (isFormula && !isRaw ? "'" : "") + cleanText(text));
}

void putValue(std::string& out, const Document& document, const Document::Value& value,
              bool isRaw) {
  const std::string_view text = document.text(value.text);
  if (value.isUnknown()) return;
  switch (value.field->form) {
    case Form::kNumber:
    case Form::kInteger:
    case Form::kReal:
      out += text;
      break;
    case Form::kYesNo:
      out += value.number.yes ? "true" : "false";
      break;
    case Form::kDateTime:
      out += isoDateTime(text).value_or("");
      break;
    default:
      putText(out, text, isRaw);
  }
}

}  // namespace

void appendCsvHeader(std::string& out, const Group& group) {
  for (const std::string_view column : HEAD_COLUMNS) {
    if (column != HEAD_COLUMNS[0]) out += ',';
    out += column;
  }
  for (const Field& field : group.fields) (out += ',') += field.sql;
  out += kLineEnd;
}

void appendCsv(std::string& out, const RowHead& head, const Document& document,
               const Document::Row& row, bool isRaw) {
  putText(out, head.host, isRaw);
  out += ',';
  if (!head.host.empty()) out += std::to_string(head.hostRank);
  out += ',';
  putText(out, head.scan, isRaw);
  (out += ',') += row.group->sql;
  (out += ',') += std::to_string(row.number);
  for (const Field& field : row.group->fields) {
    out += ',';
    if (const Document::Value* value = document.find(row, field.id)) {
      putValue(out, document, *value, isRaw);
    }
  }
  out += kLineEnd;
}

}  // namespace quenlor::ctl
