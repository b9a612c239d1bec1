#include "base/Trace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quenlor {
namespace {

class RecordingTracer final : public Tracer {
 public:
  RecordingTracer() { install(this); }
  ~RecordingTracer() { install(nullptr); }
  void write(const char* sourcePath, const char* function, unsigned line,
             const char* text) override {
    records.push_back(std::string(function) + "|" + text);
    paths.push_back(sourcePath);
    lines.push_back(line);
  }
  std::vector<std::string> records;
  std::vector<std::string> paths;
  std::vector<unsigned> lines;
};

TEST(Trace, eachStatementIsOneRecordNamedAfterTheFunction) {
  RecordingTracer output;
  const Trace trace("HWParseNodeSink::onNodeTree", "path.cpp");
  const unsigned line = __LINE__ - 1;
  trace << "Node name is " << String("QCMs");
  trace << "no children";
  trace << 7 << " of " << -1L;
  EXPECT_EQ(output.records,
            (std::vector<std::string>{"HWParseNodeSink::onNodeTree|Node name is QCMs",
                                      "HWParseNodeSink::onNodeTree|no children",
                                      "HWParseNodeSink::onNodeTree|7 of -1"}));
  EXPECT_EQ(output.paths.front(), "path.cpp");
  EXPECT_EQ(output.lines.front(), line);
}

TEST(Trace, nothingIsWrittenWithoutAnOutput) {
  EXPECT_EQ(Tracer::installed(), nullptr);
  const Trace trace("f");
  trace << "text " << 1;
  RecordingTracer output;
  EXPECT_TRUE(output.records.empty());
}

TEST(Trace, aNullTextIsVisible) {
  RecordingTracer output;
  const Trace trace("f");
  const char* missing = nullptr;
  trace << missing << " at " << 1u;
  EXPECT_EQ(output.records.front(), "f|(null) at 1");
}

}  // namespace
}  // namespace quenlor
