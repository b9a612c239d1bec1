#include "xmltree/NodeReader.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>

#include "tests/support/ProcessorTime.h"
#include "tests/xmltree/Documents.h"
#include "xmltree/XmlDovParser.h"

namespace quenlor {
namespace {

using namespace std::string_literals;

std::string repeated(const std::string& text, int count) {
  std::string all;
  all.reserve(text.size() * static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string nested(int depth) { return repeated("<a>", depth) + repeated("</a>", depth); }

// The document is refused; kind is what the sink was told.
void expectRefused(const std::string& text, const std::string& kind) {
  RecordingSink sink;
  const auto start = test::processorTime();
  EXPECT_EQ(readDocument(text, sink), NodeSink::kStop) << text.substr(0, 200);
  EXPECT_LT(test::processorTime() - start, std::chrono::seconds(5));
  EXPECT_EQ(sink.kinds, std::vector<std::string>{kind}) << text.substr(0, 200);
  EXPECT_EQ(sink.root, nullptr);
}

void expectGroupNamed(const std::string& text, const std::string& name) {
  RecordingSink sink;
  ASSERT_EQ(readDocument(text, sink), 0);
  ASSERT_NE(sink.root, nullptr);
  ASSERT_EQ(sink.root->children().size(), 1u);
  EXPECT_EQ(sink.root->children()[0]->attribute("Name"), name);
}

std::string asUtf16(const std::u16string& text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

TEST(NodeReader, buildsTheTreeOfTheDocument) {
  RecordingSink sink;
  ASSERT_EQ(readDocument("<?xml version=\"1.0\"?>\n<!-- c --><r a='1' b='&lt;&#233;'>text<x/>"
                         "<y><z/></y><![CDATA[<w/>]]><?pi <v/>?></r>\n",
                         sink),
            0);
  ASSERT_NE(sink.root, nullptr);
  EXPECT_EQ(sink.root->name(), "r");
  EXPECT_EQ(sink.root->attribute("a"), "1");
  EXPECT_EQ(sink.root->attribute("b"), "<\xC3\xA9");
  ASSERT_EQ(sink.root->children().size(), 2u);
  EXPECT_EQ(sink.root->children()[0]->name(), "x");
  EXPECT_EQ(sink.root->children()[1]->children()[0]->name(), "z");
  EXPECT_TRUE(sink.kinds.empty());
}

TEST(NodeReader, malformedDocumentsAreCriticalErrors) {
  for (const std::string& text : {""s,
                                  " "s,
                                  "\n"s,
                                  "x"s,
                                  "<"s,
                                  "<a"s,
                                  "<a>"s,
                                  "<a></b>"s,
                                  "<a/><b/>"s,
                                  "<a b/>"s,
                                  "<a b='1' b='2'/>"s,
                                  "<a b='<'/>"s,
                                  "<a>&nothing;</a>"s,
                                  "<a>&#0;</a>"s,
                                  "<a>\x01</a>"s,
                                  "<a>\xFF</a>"s,
                                  "<a b='\xC3'/>"s,
                                  "<a>]]></a>"s,
                                  "<a/>\0"s,
                                  "\0<a/>"s,
                                  "\0\0\0\0"s,
                                  "<!-- -- --><a/>"s,
                                  "<?xml version='1.0' encoding='no-such'?><a/>"s,
                                  "<a/>tail"s,
                                  "\x7F"
                                  "ELF\2\1\1\0"s,
                                  "<!DOCTYPE a [<!ENTITY"s,
                                  "<a><![CDATA[</a>"s}) {
    expectRefused(text, "critical");
  }
}

TEST(NodeReader, errorsNameTheirLine) {
  RecordingSink sink;
  readDocument("<a>\n<b>\n</a>\n", sink);
  EXPECT_EQ(sink.lines, std::vector<int>{3});
}

TEST(NodeReader, everyTruncationOfADocumentIsAnError) {
  const std::string text =
      "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e 'x'>]><r a='1'><b c=\"&e;\">t</b><!-- c "
      "--></r>";
  for (size_t length = 0; length < text.size(); ++length) {
    RecordingSink sink;
    EXPECT_EQ(readDocument(text.substr(0, length), sink), NodeSink::kStop) << length;
  }
  RecordingSink sink;
  EXPECT_EQ(readDocument(text, sink), 0);
}

TEST(NodeReader, randomDamageNeverDoesHarm) {
  const std::string text =
      "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e 'x'><!ATTLIST r a CDATA #IMPLIED>]>"
      "<r a='1'><b c=\"&e;\">&e;</b><Hardware><Group Name='Memory'/></Hardware></r>";
  std::mt19937 random(3);
  for (int round = 0; round < 5000; ++round) {
    std::string damaged = text;
    for (unsigned hits = 1 + random() % 4; hits > 0; --hits) {
      const size_t place = random() % damaged.size();
      switch (random() % 3) {
        case 0:
          damaged[place] = static_cast<char>(random());
          break;
        case 1:
          damaged.erase(place, 1 + random() % 8);
          break;
        default:
          damaged.insert(place, damaged.substr(random() % damaged.size(), random() % 16));
      }
      if (damaged.empty()) damaged = "<";
    }
    RecordingSink sink;
    FILE* stream = fmemopen(damaged.data(), damaged.size(), "r");
    ASSERT_NE(stream, nullptr);
    const int result = NodeReader(sink).read(stream);
    fclose(stream);
    EXPECT_EQ(result == 0, sink.root != nullptr);
    EXPECT_EQ(result == 0, sink.kinds.empty() || sink.kinds.back() == "warning");
  }
}

TEST(NodeReader, filesThatCannotBeReadAreCriticalErrors) {
  for (const char* name : {"/no/such/file", "", "/proc/self", "/proc/self/mem", "/dev/zero"}) {
    RecordingSink sink;
    EXPECT_EQ(NodeReader(sink).readFile(name), NodeSink::kStop) << name;
    EXPECT_EQ(sink.kinds, std::vector<std::string>{"critical"}) << name;
  }
}

TEST(NodeReader, aReadErrorBehindACompleteDocumentIsAnErrorAllTheSame) {
  std::string rest = "<Hardware/>";
  cookie_io_functions_t functions{};
  functions.read = [](void* cookie, char* buffer, size_t size) -> ssize_t {
    std::string& text = *static_cast<std::string*>(cookie);
    if (text.empty()) {
      errno = EIO;
      return -1;
    }
    const size_t count = text.copy(buffer, size);
    text.erase(0, count);
    return static_cast<ssize_t>(count);
  };
  FILE* stream = fopencookie(&rest, "r", functions);
  ASSERT_NE(stream, nullptr);
  RecordingSink sink;
  EXPECT_EQ(NodeReader(sink).read(stream), NodeSink::kStop);
  EXPECT_EQ(sink.kinds, std::vector<std::string>{"critical"});
  EXPECT_EQ(sink.lines, std::vector<int>{0});
  EXPECT_EQ(sink.root, nullptr);
  std::fclose(stream);
}

TEST(NodeReader, depthUpToTheLimitIsTaken) {
  RecordingSink sink;
  EXPECT_EQ(readDocument(nested(NodeReader::kMaxDepth), sink), 0);
  expectRefused(nested(NodeReader::kMaxDepth + 1), "error");
  // An empty element one level too deep, which the parser still closes.
  expectRefused(repeated("<a>", NodeReader::kMaxDepth) + "<b/>", "error");
}

TEST(NodeReader, aMillionOpenElementsEndAtTheDepthLimit) {
  expectRefused(repeated("<a>", 1000000), "error");
}

TEST(NodeReader, aMillionElementsAreRead) {
  RecordingSink sink;
  ASSERT_EQ(readDocument("<r>" + repeated("<a b='1'/>", 1000000) + "</r>", sink), 0);
  EXPECT_EQ(sink.root->children().size(), 1000000u);
}

TEST(NodeReader, timeGrowsLinearlyWithOneHugeToken) {
  RecordingSink sink;
  const auto start = test::processorTime();
  ASSERT_EQ(readDocument("<r a='" + std::string(10 * 1024 * 1024, 'x') + "'/>", sink), 0);
  EXPECT_LT(test::processorTime() - start, std::chrono::seconds(5));
  EXPECT_EQ(sink.root->attribute("a").length(), 10u * 1024 * 1024);
}

TEST(NodeReader, documentsOfWholeBlocksAreReadToTheirEnd) {
  for (const size_t size : {65535u, 65536u, 65537u, 131072u}) {
    std::string text = "<r><!--";
    text += std::string(size - text.size() - 11, 'x') + "--><a/></r>";
    ASSERT_EQ(text.size(), size);
    RecordingSink sink;
    ASSERT_EQ(readDocument(text, sink), 0);
    EXPECT_EQ(sink.root->children().size(), 1u);
  }
}

TEST(NodeReader, otherEncodingsGiveTheSameTree) {
  const std::u16string text = u"<Hardware><Group Name='M\u00E9m\U0001F600'/></Hardware>";
  const std::string name = "M\xC3\xA9m\xF0\x9F\x98\x80";
  const std::string utf8 = "<Hardware><Group Name='" + name + "'/></Hardware>";
  expectGroupNamed(utf8, name);
  expectGroupNamed("\xEF\xBB\xBF" + utf8, name);
  expectGroupNamed("\xFF\xFE"s + asUtf16(text, false), name);
  expectGroupNamed("\xFE\xFF"s + asUtf16(text, true), name);
  expectGroupNamed("<?xml version='1.0' encoding='ISO-8859-1'?><r><g Name='\xE9'/></r>",
                   "\xC3\xA9");
  expectGroupNamed("<?xml version='1.0'?>\r\n<r>\r\n<g Name='x'/>\r\n</r>\r\n", "x");
}

TEST(NodeReader, shortInternalEntitiesAreExpanded) {
  expectGroupNamed("<!DOCTYPE r [<!ENTITY m 'Memory'>]><r><g Name='&m;'/>&m;</r>", "Memory");
}

TEST(NodeReader, externalEntitiesAreRefused) {
  expectRefused("<!DOCTYPE r [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><r>&x;</r>", "error");
  expectRefused("<!DOCTYPE r [<!ENTITY x PUBLIC 'p' 'http://localhost/'>]><r/>", "error");
  expectRefused("<!DOCTYPE r [<!ENTITY % x SYSTEM 'file:///dev/random'>%x;]><r/>", "error");
  expectRefused("<!DOCTYPE r [<!NOTATION n SYSTEM 'n'><!ENTITY x SYSTEM 'x' NDATA n>]><r/>",
                "error");
}

TEST(NodeReader, parameterEntitiesAreRefused) {
  expectRefused("<!DOCTYPE r [<!ENTITY % x '<!ENTITY y \"z\">'>%x;]><r>&y;</r>", "error");
}

TEST(NodeReader, nestedAndLongEntitiesAreRefused) {
  expectRefused("<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '&a;&a;'>]><r>&b;</r>", "error");
  expectRefused("<!DOCTYPE r [<!ENTITY a '&a;'>]><r>&a;</r>", "error");
  expectRefused("<!DOCTYPE r [<!ENTITY a '" + std::string(1025, 'x') + "'>]><r>&a;</r>", "error");
}

TEST(NodeReader, entitiesThatBlowTheDocumentUpAreRefused) {
  const std::string entity = "<!DOCTYPE r [<!ENTITY a '" + std::string(1024, 'x') + "'>]><r>";
  expectRefused(entity + repeated("&a;", 1000000) + "</r>", "critical");
  expectRefused(entity + repeated("<g Name='&a;&a;&a;&a;'/>", 100000) + "</r>", "critical");
  // Fifty times the document's size is too much as well.
  const std::string shorter = "<!DOCTYPE r [<!ENTITY a '" + std::string(200, 'x') + "'>]><r>";
  expectRefused(shorter + repeated("&a;", 100000) + "</r>", "critical");
}

TEST(NodeReader, attributeDefaultsAreRefusedSinceEachElementWouldHoldThem) {
  expectRefused("<!DOCTYPE r [<!ATTLIST r a CDATA 'x'>]><r/>", "error");
  expectRefused("<!DOCTYPE r [<!ATTLIST r a CDATA #FIXED 'x'>]><r/>", "error");
}

TEST(NodeReader, attributeDeclarationsAreTakenUpToALimit) {
  RecordingSink sink;
  EXPECT_EQ(readDocument("<!DOCTYPE r [<!ELEMENT r EMPTY><!ATTLIST r a CDATA #REQUIRED b CDATA "
                         "#IMPLIED>]><r a='1'/>",
                         sink),
            0);
  std::string many;
  for (int i = 0; i < 65; ++i) many += " a" + std::to_string(i) + " CDATA #IMPLIED";
  expectRefused("<!DOCTYPE r [<!ATTLIST r" + many + ">]><r/>", "error");
}

TEST(NodeReader, anExternalDocumentTypeIsNotReadAndWarnedOf) {
  RecordingSink sink;
  EXPECT_EQ(readDocument("<!DOCTYPE r SYSTEM '/no/such.dtd'><r/>", sink), 0);
  EXPECT_EQ(sink.kinds, std::vector<std::string>{"warning"});
  EXPECT_NE(sink.root, nullptr);
}

TEST(NodeReader, contentThatWouldNeedTheExternalDocumentTypeIsRefused) {
  RecordingSink sink;
  EXPECT_EQ(readDocument("<!DOCTYPE r SYSTEM 'x.dtd'><r>&y;</r>", sink), NodeSink::kStop);
  EXPECT_EQ(sink.kinds, (std::vector<std::string>{"warning", "error"}));
}

TEST(NodeReader, theSinksAnswerIsTheResult) {
  RecordingSink warned;
  warned.warningAnswer = 5;
  EXPECT_EQ(readDocument("<!DOCTYPE r SYSTEM 'x'><r/>", warned), 5);
  EXPECT_EQ(warned.root, nullptr);
  RecordingSink refusing;
  refusing.treeAnswer = 7;
  EXPECT_EQ(readDocument("<r/>", refusing), 7);
}

TEST(NodeReader, aSinkThatIgnoresErrorsStillGetsNoTreeAndAResult) {
  RecordingSink malformed(0);
  EXPECT_EQ(readDocument("<a>", malformed), NodeReader::kFailed);
  RecordingSink deep(0);
  EXPECT_EQ(readDocument(nested(NodeReader::kMaxDepth + 1), deep), NodeReader::kFailed);
  EXPECT_EQ(deep.root, nullptr);
  EXPECT_EQ(deep.kinds.size(), 1u);
}

TEST(NodeSink, aNodeHandedOverLivesOnAndTheRestGoesWithTheSink) {
  std::unique_ptr<Node> node;
  {
    RecordingSink sink;
    ASSERT_EQ(readDocument("<r><a><b/></a><c/></r>", sink), 0);
    node.reset(sink.handOver(sink.root->children()[0].get()));
  }
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->children()[0]->name(), "b");
}

TEST(NodeSink, theRootCanBeHandedOver) {
  std::unique_ptr<Node> node;
  {
    RecordingSink sink;
    ASSERT_EQ(readDocument("<r><a/></r>", sink), 0);
    node.reset(sink.handOver(sink.root));
    EXPECT_EQ(sink.handOver(nullptr), nullptr);
  }
  EXPECT_EQ(node->name(), "r");
}

TEST(XmlDovParser, errorTellsWhetherTheFileWasParsed) {
  RecordingSink sink;
  const TemporaryFile good("<r/>");
  EXPECT_EQ(XmlDovParser(good.path(), sink).error(), 0);
  EXPECT_NE(sink.root, nullptr);
  const TemporaryFile bad("<r>");
  EXPECT_NE(XmlDovParser(bad.path(), sink).error(), 0);
  EXPECT_NE(XmlDovParser("/no/such/file", sink).error(), 0);
  EXPECT_NE(XmlDovParser("/tmp", sink).error(), 0);
}

}  // namespace
}  // namespace quenlor
