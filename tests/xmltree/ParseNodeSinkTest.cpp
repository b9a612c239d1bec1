#include "xmltree/ParseNodeSink.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "tests/support/ProcessorTime.h"
#include "tests/xmltree/Documents.h"

namespace quenlor {
namespace {

// "Name" of every "Group" that a walk through "Hardware" elements meets.
std::string groupNames(const Node& node) {
  if (node.name() == "Group") return node.attribute("Name").str() + ";";
  std::string names;
  if (node.name() == "Hardware") {
    for (const auto& child : node.children()) names += groupNames(*child);
  }
  return names;
}

// Names of the groups of a document's hardware section; "none" without a section.
std::string groupsOf(const std::string& text) {
  ParseNodeSink sink;
  EXPECT_EQ(readDocument(text, sink), 0);
  const std::unique_ptr<Node> section(sink.getNode(1));
  EXPECT_EQ(sink.getNode(1), nullptr);
  return section == nullptr ? "none" : groupNames(*section);
}

TEST(ParseNodeSink, theRootIsTheSectionWhenItIsNamedSo) {
  EXPECT_EQ(groupsOf("<Hardware><Group Name='A'/><Group Name='B'/><Group Name='A'/></Hardware>"),
            "A;B;A;");
}

TEST(ParseNodeSink, theSectionIsFoundAnywhereBelowAnotherRoot) {
  EXPECT_EQ(groupsOf("<Scan><x/><y><Hardware><Group Name='A'/></Hardware></y></Scan>"), "A;");
}

TEST(ParseNodeSink, severalSectionsCountInDocumentOrder) {
  EXPECT_EQ(groupsOf("<Scan><Hardware><Group Name='A'/></Hardware><x><Hardware><Group Name='B'/>"
                     "</Hardware></x><Hardware><Group Name='C'/></Hardware></Scan>"),
            "A;B;C;");
}

TEST(ParseNodeSink, nestedSectionsStayInTheirPlace) {
  EXPECT_EQ(groupsOf("<Scan><Hardware><Group Name='A'/><Hardware><Group Name='B'/></Hardware>"
                     "<Group Name='C'/></Hardware></Scan>"),
            "A;B;C;");
}

TEST(ParseNodeSink, withoutASectionThereIsNoNode) {
  EXPECT_EQ(groupsOf("<Scan><Group Name='A'/></Scan>"), "none");
  EXPECT_EQ(groupsOf("<hardware><Group Name='A'/></hardware>"), "none");
}

TEST(ParseNodeSink, anEmptySectionIsASection) {
  EXPECT_EQ(groupsOf("<Scan><Hardware/></Scan>"), "");
}

TEST(ParseNodeSink, aSingleSectionIsTheElementItself) {
  ParseNodeSink sink;
  ASSERT_EQ(readDocument("<Scan><Hardware Kind='x'/></Scan>", sink), 0);
  const std::unique_ptr<Node> section(sink.getNode(ParseNodeSink::kHardwareTag));
  ASSERT_NE(section, nullptr);
  EXPECT_EQ(section->attribute("Kind"), "x");
  EXPECT_EQ(section->parent(), nullptr);
}

TEST(ParseNodeSink, otherTagTypesHaveNoNodeAndTakeNothingAway) {
  ParseNodeSink sink;
  ASSERT_EQ(readDocument("<Hardware/>", sink), 0);
  for (const int tagType : {-1, 0, 2, 5, 6}) EXPECT_EQ(sink.getNode(tagType), nullptr);
  const std::unique_ptr<Node> section(sink.getNode(1));
  EXPECT_NE(section, nullptr);
}

TEST(ParseNodeSink, theNodeOutlivesTheSink) {
  std::unique_ptr<Node> section;
  {
    ParseNodeSink sink;
    ASSERT_EQ(readDocument("<r><Hardware><Group Name='A'/></Hardware></r>", sink), 0);
    section.reset(sink.getNode(1));
  }
  EXPECT_EQ(groupNames(*section), "A;");
}

TEST(ParseNodeSink, aFailedDocumentHasNoNode) {
  ParseNodeSink sink;
  EXPECT_EQ(readDocument("<Hardware><Group Name='A'/>", sink), NodeSink::kStop);
  EXPECT_EQ(sink.getNode(1), nullptr);
}

TEST(ParseNodeSink, hundredsOfThousandsOfSectionsAreCollectedInLinearTime) {
  std::string text = "<r>";
  for (int i = 0; i < 300000; ++i) text += "<Hardware><Group Name='A'/></Hardware>";
  const auto start = test::processorTime();
  EXPECT_EQ(groupsOf(text + "</r>").size(), 600000u);
  EXPECT_LT(test::processorTime() - start, std::chrono::seconds(20));
}

TEST(ParseNodeSink, sectionsBelowTheDeepestElementAreFound) {
  std::string open, close;
  for (int i = 0; i < 254; ++i) {
    open += "<a>";
    close += "</a>";
  }
  EXPECT_EQ(groupsOf(open + "<Hardware><Group Name='A'/></Hardware>" + close), "A;");
}

}  // namespace
}  // namespace quenlor
