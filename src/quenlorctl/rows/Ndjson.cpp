#include "quenlorctl/json/JsonLine.h"
#include "quenlorctl/rows/RowWriter.h"

namespace quenlor::ctl {
namespace {

void putHead(JsonLine& line, const RowHead& head, const Document::Row& row) {
  if (!head.host.empty()) {
    putKey(line, "host");
    putText(line, head.host);
    putKey(line, "host_rank");
    line.Int(head.hostRank);
  }
  if (!head.scan.empty()) {
    putKey(line, "scan");
    putText(line, head.scan);
  }
  putKey(line, "group");
  putText(line, row.group->sql);
  putKey(line, "row");
  line.Uint(row.number);
}

}  // namespace

void appendNdjson(std::string& out, const RowHead& head, const Document& document,
                  const Document::Row& row) {
  JsonStream stream(out);
  JsonLine line(stream);
  line.StartObject();
  putHead(line, head, row);
  const Document::Value* values = document.valuesOf(row);
  for (uint32_t i = 0; i < row.valueCount; ++i) {
    if (values[i].isUnknown()) continue;
    putKey(line, values[i].field->sql);
    putValue(line, document, values[i]);
  }
  line.EndObject();
  out += '\n';
}

}  // namespace quenlor::ctl
