#include "factory/ProcessorDescriptions.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "factory/HWXmlDovParser.h"
#include "host/Handles.h"
#include "host/WholeFile.h"
#include "tests/support/TemporaryDirectory.h"
#include "xmltree/Node.h"

namespace quenlor::test {
namespace {

constexpr const char* kShipped = QUENLOR_SOURCE_DIR "/data/DovHWConfig.xml";

std::vector<String> typesOf(const std::vector<std::unique_ptr<ProcessorInfo>>& descriptions) {
  std::vector<String> types;
  for (const auto& description : descriptions) types.push_back(description->typeEnum);
  return types;
}

std::vector<String> namesIn(const std::string& document, int model) {
  const TemporaryDirectory directory;
  return typesOf(ProcessorDescriptions(directory.write("known.xml", document)).ofModel(model));
}

std::string inSection(const std::string& elements) {
  return "<HardwareDescriptions><Processors>" + elements + "</Processors></HardwareDescriptions>";
}

TEST(ProcessorDescriptions, ofTheShippedFileAreAllThoseOfAModelInTheirOrder) {
  HWParseNodeSink sink;
  const HWXmlDovParser parser(String(kShipped), sink);
  const std::unique_ptr<Node> section(sink.getNode(kProcessorsSection));
  ASSERT_NE(section, nullptr);
  std::map<int, std::vector<String>> everyModel;
  for (const auto& child : section->children()) {
    everyModel[std::stoi(child->attribute("Model").c_str())].push_back(
        child->attribute("TypeEnum"));
  }
  ASSERT_GT(everyModel.size(), 50u);
  ProcessorDescriptions known(kShipped);
  for (const auto& [model, types] : everyModel) {
    std::vector<String> found;
    for (const auto& description : known.ofModel(model)) {
      if (description->model == std::to_string(model).c_str()) {
        found.push_back(description->typeEnum);
      }
    }
    EXPECT_EQ(found, types) << model;
  }
}

TEST(ProcessorDescriptions, areFewOfALongFile) {
  EXPECT_LT(withModelOnly(readWholeFile(kShipped).bytes, 143).size(), 3000u);
  EXPECT_GT(readWholeFile(kShipped).bytes.size(), 60000u);
}

TEST(ProcessorDescriptions, mayBeInEitherKindOfQuotesAndHoldEveryCharacter) {
  EXPECT_EQ(namesIn(inSection("<Processor Model=\"7\" TypeEnum=\"a > b\"/>"
                              "<Processor Model='7' TypeEnum='\"/>'/>"
                              "<Processor Model=\"8\" TypeEnum=\"other\"/>"),
                    7),
            (std::vector<String>{"a > b", "\"/>"}));
}

TEST(ProcessorDescriptions, inCommentsAreNone) {
  EXPECT_EQ(namesIn(inSection("<!-- <Processor Model=\"7\" TypeEnum=\"old\"/> -->"
                              "<Processor Model=\"7\" TypeEnum=\"new\"/>"
                              "<!-- it's > here --><Processor Model=\"7\" TypeEnum=\"newer\"/>"),
                    7),
            (std::vector<String>{"new", "newer"}));
}

TEST(ProcessorDescriptions, withAnEndTagOrReferencesAreReadAsWell) {
  EXPECT_EQ(namesIn(inSection("<Processor Model=\"7\" TypeEnum=\"seven\"></Processor>"), 7),
            std::vector<String>{"seven"});
  EXPECT_EQ(namesIn(inSection("<Processor Model=\"&#55;\" TypeEnum=\"A&amp;B\"/>"), 7),
            std::vector<String>{"A&B"});
}

TEST(ProcessorDescriptions, ofADocumentWithATypeAreParsedWhole) {
  const std::string document =
      "<!DOCTYPE HardwareDescriptions>" + inSection("<Processor Model=\"8\" TypeEnum=\"x\"/>");
  EXPECT_EQ(withModelOnly(document, 7), document);
  EXPECT_EQ(namesIn(document, 7), std::vector<String>{"x"});
}

TEST(ProcessorDescriptions, ofABrokenOrMissingFileAreNone) {
  EXPECT_TRUE(ProcessorDescriptions("/no/such/file").ofModel(7).empty());
  for (const char* broken :
       {"", "<", "<Processor Model=\"7\"", "<Processors><Processor Model=\"7\"/>", "<!--",
        "<Processors><Processor Model=\"7/></Processors>", "7", "<Other/>"}) {
    EXPECT_TRUE(namesIn(broken, 7).empty()) << broken;
  }
}

}  // namespace
}  // namespace quenlor::test
