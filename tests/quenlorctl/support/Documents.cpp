#include "tests/quenlorctl/support/Documents.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace quenlor::ctl {
namespace {

InputSinks sinksInto(ReadAll& read) {
  InputSinks sinks;
  sinks.document = [&read](Document& document, const std::string& bytes) {
    read.documents.push_back(document);
    read.bytes.push_back(bytes);
  };
  sinks.trouble = [&read](const Trouble& trouble) { read.troubles.push_back(trouble); };
  sinks.wantsBytes = true;
  return sinks;
}

constexpr std::string_view kMarkerCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

// What a golden document has in place of a value that changes from run to run.
std::string valueOfMarker(std::string_view marker, bool isCores) {
  if (marker == "@SCAN_DATE@") return "2026-11-22-01.02.03.000000";
  if (marker == "@CPU_64BIT@") return "Y";
  return isCores ? "7.000000" : "7";
}

std::string filled(std::string text) {
  for (size_t at = text.find('@'); at != text.npos; at = text.find('@', at + 1)) {
    const size_t end = text.find_first_not_of(kMarkerCharacters, at + 1);
    if (end == text.npos || end == at + 1 || text[end] != '@') continue;
    const bool isCores = std::string_view(text).substr(0, at).ends_with("InCores>");
    text.replace(at, end + 1 - at, valueOfMarker(text.substr(at, end + 1 - at), isCores));
  }
  return text;
}

}  // namespace

std::vector<std::string> ReadAll::texts() const {
  std::vector<std::string> texts;
  for (const Trouble& trouble : troubles) {
    texts.push_back(std::to_string(trouble.place.line) + ":" +
                    std::to_string(trouble.place.column) + ": " + trouble.text);
  }
  return texts;
}

ReadAll readAll(std::string_view bytes, const std::string& file) {
  ReadAll read;
  readBytes(bytes, file, sinksInto(read));
  return read;
}

ReadAll readFiles(const std::vector<std::string>& files) {
  ReadAll read;
  readInputs(files, sinksInto(read));
  return read;
}

Document documentOf(std::string_view bytes) {
  const ReadAll read = readAll(bytes);
  if (read.documents.size() != 1 || !read.troubles.empty()) {
    throw std::runtime_error(read.troubles.empty() ? "not one document" : read.texts().front());
  }
  return read.documents.front();
}

std::string hardware(std::string_view inside) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Hardware>" + std::string(inside) +
         "</Hardware>\n";
}

std::string row(std::string_view group, const Attributes& attributes) {
  const Group* known = findGroupElement(group);
  std::string text = "<" + std::string(group) + " version=\"1\">";
  for (const auto& [name, value] : attributes) {
    const Field* field = known == nullptr ? nullptr : known->findElement(name);
    const bool isKey = field != nullptr && field->isKey;
    text += "<" + name + (isKey ? " IsKey=\"1\">" : ">") + value + "</" + name + ">";
  }
  return text + "</" + std::string(group) + ">";
}

std::string goldenText(const std::string& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return filled(text.str());
}

std::vector<std::string> goldenPaths(const std::string& sourceFolder) {
  std::vector<std::string> paths;
  for (const char* folder : {"/tests/machines", "/tests/recorded"}) {
    for (const auto& machine : std::filesystem::directory_iterator(sourceFolder + folder)) {
      const auto golden = machine.path() / "golden.xml";
      if (std::filesystem::exists(golden)) paths.push_back(golden);
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace quenlor::ctl
