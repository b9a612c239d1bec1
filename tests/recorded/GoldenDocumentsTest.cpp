// Every recorded machine is scanned as a whole, and its documents are the golden ones beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/recorded/RecordedScan.h"
#include "tests/support/RecordedHost.h"

namespace quenlor::test {
namespace {

struct DocumentKind {
  Document kind;
  const char* golden;
};

constexpr DocumentKind DOCUMENTS[] = {{Document::kXml, "golden.xml"},
                                      {Document::kMif, "golden.mif"},
                                      {Document::kList, "golden.list"}};

// Names of the directories that are machines, split by semicolons.
std::vector<std::string> machineNames() {
  std::istringstream stream(QUENLOR_RECORDED_MACHINES);
  std::vector<std::string> names;
  for (std::string name; std::getline(stream, name, ';');) names.push_back(name);
  return names;
}

std::string fileText(const std::string& path) {
  std::ostringstream text;
  std::ifstream stream(path, std::ios::binary);
  if (stream) text << stream.rdbuf();
  return text.str();
}

bool isUpdating() {
  const char* update = std::getenv("QUENLOR_UPDATE_GOLDEN");
  return update != nullptr && std::string(update) == "1";
}

class GoldenDocuments : public testing::TestWithParam<std::string> {
 protected:
  static std::string directory() { return QUENLOR_SOURCE_DIR "/tests/recorded/" + GetParam(); }

  static void compare(const std::string& golden, const std::string& document) {
    const std::string path = directory() + "/" + golden;
    if (isUpdating()) std::ofstream(path, std::ios::binary) << document;
    EXPECT_EQ(document, fileText(path)) << "QUENLOR_UPDATE_GOLDEN=1 writes " << golden;
  }
};

TEST_P(GoldenDocuments, areWhatAScanGives) {
  for (const DocumentKind& document : DOCUMENTS) {
    SCOPED_TRACE(document.golden);
    const RecordedHost machine(directory());
    const ScanOutput output = scanHost(document.kind);
    EXPECT_EQ(output.status, 0) << output.errors;
    compare(document.golden, output.document);
    EXPECT_EQ(machine.forbidden(), std::vector<std::string>{});
    EXPECT_EQ(machine.readTwice(), std::vector<std::string>{});
    EXPECT_EQ(machine.openDescriptors(), 0);
    if (document.kind == Document::kList) continue;  // names the incomplete groups
    EXPECT_EQ(output.errors, "");
  }
  EXPECT_EQ(schemaErrors({fileText(directory() + "/golden.xml")}), "");
}

INSTANTIATE_TEST_SUITE_P(Recorded, GoldenDocuments, testing::ValuesIn(machineNames()),
                         [](const auto& machine) {
                           std::string name = machine.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace quenlor::test
