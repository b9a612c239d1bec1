// The companion program's reader, writers and comparison, on the documents of fixture machines.
// What is counted is documents; the figures to reach on one core are 8,000 a second read and 6,000
// as rows, and 5 ms for the differences between two.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <string>

#include "quenlorctl/diff/Diff.h"
#include "quenlorctl/input/Inputs.h"
#include "quenlorctl/json/JsonDocument.h"
#include "quenlorctl/rows/RowWriter.h"
#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

constexpr int kDocuments = 100;

std::string fullMachine() {
  return goldenText(std::string(QUENLOR_SOURCE_DIR) + "/tests/machines/full-server/golden.xml");
}

std::string manyDocuments() {
  std::string many;
  const std::string one = fullMachine();
  for (int i = 0; i < kDocuments; ++i) many += one;
  return many;
}

template <class Use>
void readMany(benchmark::State& state, Use use) {
  const std::string bytes = manyDocuments();
  InputSinks sinks;
  sinks.document = [&](Document& document, const std::string&) { use(document); };
  sinks.trouble = [&](const Trouble& trouble) { state.SkipWithError(trouble.text.c_str()); };
  for (auto step : state) {
    (void)step;
    readBytes(bytes, "bench", sinks);
  }
  state.SetItemsProcessed(state.iterations() * kDocuments);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

// What the XML parser takes by itself, with handlers that do nothing: no reader on it is faster.
void expatAlone(benchmark::State& state) {
  const std::string one = fullMachine();
  XML_Parser parser = XML_ParserCreate(nullptr);
  for (auto step : state) {
    (void)step;
    for (int i = 0; i < kDocuments; ++i) {
      XML_ParserReset(parser, nullptr);
      XML_SetElementHandler(
          parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
      XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
      if (XML_Parse(parser, one.data(), static_cast<int>(one.size()), XML_TRUE) == XML_STATUS_ERROR)
        state.SkipWithError("not well-formed");
    }
  }
  XML_ParserFree(parser);
  state.SetItemsProcessed(state.iterations() * kDocuments);
}

// With every check that `validate` makes.
void readDocuments(benchmark::State& state) {
  readMany(state,
           [](const Document& document) { benchmark::DoNotOptimize(document.rows().data()); });
}

void documentsAsRows(benchmark::State& state) {
  std::string out;
  readMany(state, [&](const Document& document) {
    out.clear();
    const RowHead head = RowHead::of(document, "");
    for (const Document::Row& row : document.rows()) {
      if (row.group != nullptr) appendNdjson(out, head, document, row);
    }
    benchmark::DoNotOptimize(out.data());
  });
}

void documentsAsJson(benchmark::State& state) {
  readMany(state,
           [](const Document& document) { benchmark::DoNotOptimize(jsonDocument(document)); });
}

void differences(benchmark::State& state) {
  std::vector<Document> documents;
  InputSinks sinks;
  sinks.document = [&](Document& document, const std::string&) { documents.push_back(document); };
  sinks.trouble = [](const Trouble&) {};
  std::string other = fullMachine();
  for (size_t at = 0; (at = other.find("1024", at)) != other.npos; at += 4)
    other.replace(at, 4, "2048");
  readBytes(fullMachine() + other, "bench", sinks);
  for (auto step : state) {
    (void)step;
    benchmark::DoNotOptimize(diffText(diffDocuments(documents.at(0), documents.at(1))));
  }
}

BENCHMARK(expatAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(readDocuments)->Unit(benchmark::kMillisecond);
BENCHMARK(documentsAsRows)->Unit(benchmark::kMillisecond);
BENCHMARK(documentsAsJson)->Unit(benchmark::kMillisecond);
BENCHMARK(differences)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quenlor::ctl
