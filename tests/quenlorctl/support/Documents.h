// Documents made of texts, for tests.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenlorctl/document/Document.h"
#include "quenlorctl/input/Inputs.h"

namespace quenlor::ctl {

// What a reader gave: copies.
struct ReadAll {
  std::vector<Document> documents;
  std::vector<std::string> bytes;
  std::vector<Trouble> troubles;

  // "line:column: text" of each trouble.
  std::vector<std::string> texts() const;
};

ReadAll readAll(std::string_view bytes, const std::string& file = "test");
ReadAll readFiles(const std::vector<std::string>& files);

// The one document of the bytes; throws where they are none.
Document documentOf(std::string_view bytes);

// <Hardware> around the text.
std::string hardware(std::string_view inside);
// A row of a group; attributes in the given order, keys marked as the catalogue has them.
using Attributes = std::vector<std::pair<std::string, std::string>>;
std::string row(std::string_view group, const Attributes& attributes);

// The golden document of a fixture machine or a recorded one, with a value of its kind in the place
// of each marker for what differs from scan to scan.
std::string goldenText(const std::string& path);
// Paths of all of them, below the source directory.
std::vector<std::string> goldenPaths(const std::string& sourceFolder);

}  // namespace quenlor::ctl
