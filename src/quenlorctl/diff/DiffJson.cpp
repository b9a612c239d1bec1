// The facts as programs read them.
#include "quenlorctl/diff/Diff.h"
#include "quenlorctl/json/JsonLine.h"

namespace quenlor::ctl {
namespace {

const char* wordOf(Fact::Kind kind) {
  switch (kind) {
    case Fact::Kind::kAdded:
      return "added";
    case Fact::Kind::kRemoved:
      return "removed";
    case Fact::Kind::kNotReported:
      return "not_reported";
    default:
      return "changed";
  }
}

void putSide(JsonLine& line, const char* key, const Fact::Side& side) {
  if (side.isEmpty()) return;
  putKey(line, key);
  if (side.value != nullptr) {
    putValue(line, *side.document, *side.value);
  } else if (side.rows != 0) {
    line.Uint(side.rows);
  } else {
    putText(line, side.text);
  }
}

void putFact(JsonLine& line, const Fact& fact) {
  line.StartObject();
  putKey(line, "group");
  putText(line, fact.group);
  putKey(line, "identity");
  putText(line, fact.identity);
  putKey(line, "kind");
  putText(line, wordOf(fact.kind));
  if (!fact.attribute.empty()) {
    putKey(line, "attribute");
    putText(line, fact.attribute);
  }
  putSide(line, "old", fact.before);
  putSide(line, "new", fact.after);
  line.EndObject();
}

}  // namespace

std::string diffJson(const std::vector<Fact>& facts) {
  std::string text;
  JsonStream stream(text);
  JsonLine line(stream);
  line.StartArray();
  for (const Fact& fact : facts) putFact(line, fact);
  line.EndArray();
  return text + '\n';
}

}  // namespace quenlor::ctl
