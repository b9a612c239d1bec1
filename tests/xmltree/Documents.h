// Documents of the XML tests: read from memory, and as files.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "xmltree/NodeReader.h"
#include "xmltree/NodeSink.h"

namespace quenlor {

// A file with the given content, for the lifetime of the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content) : m_path(testing::TempDir() + "xml-XXXXXX") {
    close(mkstemp(m_path.data()));
    std::ofstream(m_path, std::ios::binary) << content;
  }
  ~TemporaryFile() { std::filesystem::remove(m_path); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  String path() const { return m_path; }

 private:
  std::string m_path;
};

inline int readDocument(const std::string& text, NodeSink& sink) {
  const TemporaryFile file(text);
  return NodeReader(sink).readFile(file.path());
}

// Remembers everything it is told; answers errors with the given result.
class RecordingSink : public NodeSink {
 public:
  explicit RecordingSink(int answer = kStop) : m_answer(answer) {}

  int onNodeTree(Node* node) override {
    root = node;
    return treeAnswer;
  }
  int onWarning(const String& message, int line) override {
    return note("warning", message, line, warningAnswer);
  }
  int onError(const String& message, int line) override {
    return note("error", message, line, m_answer);
  }
  int onCriticalError(const String& message, int line) override {
    return note("critical", message, line, m_answer);
  }
  using NodeSink::handOver;

  Node* root = nullptr;
  int treeAnswer = 0;
  int warningAnswer = 0;
  std::vector<std::string> kinds;
  std::vector<int> lines;

 private:
  int note(const char* kind, const String& message, int line, int answer) {
    EXPECT_FALSE(message.empty());
    kinds.emplace_back(kind);
    lines.push_back(line);
    return answer;
  }
  int m_answer;
};

}  // namespace quenlor
