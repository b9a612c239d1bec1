#include "quenlorctl/input/Inputs.h"

#include <memory>
#include <utility>

#include "quenlorctl/input/Sniff.h"
#include "quenlorctl/input/TarReader.h"

namespace quenlor::ctl {
namespace {

// Runs a step; what cannot be read is the file's trouble.
template <class Step>
void guarded(const std::string& file, const InputSinks& sinks, Step step) {
  try {
    step();
  } catch (const InputError& error) {
    sinks.trouble({file, {}, error.what()});
  }
}

void readMember(const std::string& file, std::unique_ptr<ByteSource> source,
                const InputSinks& sinks) {
  guarded(file, sinks, [&] {
    const SniffedSource sniffed = sniff(std::move(source));
    if (sniffed.kind == InputKind::kTar) throw InputError("an archive in an archive is not taken");
    parseDocuments(*sniffed.bytes, file, sinks);
  });
}

void readSource(const std::string& file, std::unique_ptr<ByteSource> source,
                const InputSinks& sinks) {
  SniffedSource sniffed = sniff(std::move(source));
  if (sniffed.kind != InputKind::kTar) return parseDocuments(*sniffed.bytes, file, sinks);
  readTar(std::move(sniffed.bytes), [&](const std::string& name, auto member) {
    readMember(file + ":" + name, std::move(member), sinks);
  });
}

}  // namespace

void readInputs(const std::vector<std::string>& files, const InputSinks& sinks) {
  static const std::vector<std::string> STANDARD_INPUT = {"-"};
  for (const std::string& file : files.empty() ? STANDARD_INPUT : files) {
    guarded(file, sinks, [&] { readSource(file, openFile(file), sinks); });
  }
}

void readBytes(std::string_view bytes, const std::string& file, const InputSinks& sinks) {
  guarded(file, sinks, [&] { readSource(file, bytesOf(bytes), sinks); });
}

}  // namespace quenlor::ctl
