// The companion program's reader, whatever the bytes are: XML, gzip, Zstandard, tar. What it reads
// is written in every form, and does not differ from itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "quenlorctl/diff/Diff.h"
#include "quenlorctl/input/Inputs.h"
#include "quenlorctl/json/JsonDocument.h"
#include "quenlorctl/rows/RowWriter.h"
#include "quenlorctl/text/CleanText.h"

namespace {

using namespace quenlor::ctl;

void require(bool holds) {
  if (!holds) std::abort();
}

void writeRows(const Document& document) {
  const RowHead head = RowHead::of(document, "");
  std::string out;
  for (const Document::Row& row : document.rows()) {
    if (row.group == nullptr) continue;
    appendNdjson(out, head, document, row);
    appendCsv(out, head, document, row, false);
  }
}

void use(const Document& document) {
  require(document.findings().size() <= Document::kMostFindings);
  const std::string json = jsonDocument(document);
  for (const char character : json) require(character >= 0x20 && character < 0x7F);
  jsonDocument(document, {.isPretty = true, .isRaw = true});
  writeRows(document);
  require(diffDocuments(document, document).empty());
  require(diffDocuments(document, document, {.isAll = true, .groups = {}}).empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Document previous;
  InputSinks sinks;
  sinks.document = [&](Document& document, const std::string&) {
    use(document);
    diffText(diffDocuments(previous, document));
    diffJson(diffDocuments(document, previous));
    previous = document;
  };
  sinks.trouble = [](const Trouble& trouble) { cleanText(trouble.text); };
  sinks.wantsBytes = true;
  readBytes({reinterpret_cast<const char*>(data), size}, "input", sinks);
  return 0;
}
