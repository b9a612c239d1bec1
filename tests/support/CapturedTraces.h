// What the code under test traces while this lives.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {

// The records of a trace file in order, without what changes from run to run: "KIND source function
// text", the source path without the start that all have in common.
std::vector<std::string> readTraces(const std::filesystem::path& path);

// Traces into a directory of its own: everything, or from the given level on.
class CapturedTraces {
 public:
  explicit CapturedTraces(const std::string& level = "MAX");
  ~CapturedTraces();
  CapturedTraces(const CapturedTraces&) = delete;
  CapturedTraces& operator=(const CapturedTraces&) = delete;

  // The trace file so far.
  std::string text() const;

  // Its lines, in order: time, kind, source path, function and text in one line each.
  std::vector<std::string> records() const;

  // The records so far as readTraces() gives them.
  std::vector<std::string> texts() const;

  // How many records end with the text.
  long count(const std::string& text) const;

  // How many records hold the text.
  long countHolding(const std::string& text) const;

  // True when a record holds the text.
  bool contains(const std::string& text) const { return countHolding(text) > 0; }

  // The number of the first record that ends with the text, or -1.
  long position(const std::string& text) const;

 private:
  TemporaryDirectory m_directory;
};

}  // namespace quenlor::test
