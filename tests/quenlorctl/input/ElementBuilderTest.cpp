#include "quenlorctl/input/ElementBuilder.h"

#include <gtest/gtest.h>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

using Texts = std::vector<std::string>;

Texts findingsOf(const std::string& inside) {
  Texts texts;
  const Document document = documentOf(hardware(inside));
  for (const Finding& finding : document.findings()) texts.push_back(finding.text);
  return texts;
}

// "name=text" of what the catalogue does not know.
Texts extrasOf(const std::string& inside) {
  const Document document = documentOf(hardware(inside));
  Texts texts;
  for (const Document::Row& row : document.rows()) {
    for (uint32_t i = 0; i < row.extraCount; ++i) {
      const Document::Extra& extra = document.extrasOf(row)[i];
      texts.push_back(std::string(document.text(extra.name)) + "=" +
                      std::string(document.text(extra.text)));
    }
  }
  return texts;
}

TEST(ElementBuilder, valuesAreOfTheirForm) {
  const Document document = documentOf(
      hardware(row("Storage", {{"Index", "3"}, {"Model", "A &lt;B&gt;"}, {"SizeBytes", "-1"}})));
  const Document::Row& storage = *document.firstRow(group::kStorage);
  EXPECT_EQ(3U, document.find(storage, 1)->number.number);
  EXPECT_EQ("A <B>", document.textOf(storage, 4));
  EXPECT_EQ(-1, document.find(storage, 103)->number.integer);
  EXPECT_EQ(nullptr, document.find(storage, 5));
}

TEST(ElementBuilder, rowsAreNumberedWithinTheirGroup) {
  const Document document =
      documentOf(hardware("<Storage/><Memory/><Storage/><Own/><Other/><Own/><Storage/>"));
  std::string numbers;
  for (const Document::Row& row : document.rows()) numbers += std::to_string(row.number);
  EXPECT_EQ("1121123", numbers);
}

TEST(ElementBuilder, whatTheCatalogueLacksIsKeptAsText) {
  EXPECT_EQ((Texts{"Colour=red"}), extrasOf(row("Storage", {{"Colour", "red"}})));
  EXPECT_EQ((Texts{"A=1", "B="}), extrasOf(row("Fan", {{"A", "1"}, {"B", ""}})));
}

TEST(ElementBuilder, valueThatIsNotOfItsFormIsKeptAsText) {
  EXPECT_EQ((Texts{"TotalSize=big"}), extrasOf(row("Storage", {{"TotalSize", "big"}})));
}

TEST(ElementBuilder, secondValueIsKeptAsText) {
  EXPECT_EQ((Texts{"Model=b"}), extrasOf(row("Storage", {{"Model", "a"}, {"Model", "b"}})));
}

TEST(ElementBuilder, elementsInAValueStandBehindIt) {
  EXPECT_EQ((Texts{"Model/b/c=2", "Model/b=1", "Model/d=3"}),
            extrasOf("<Storage version='1'><Model>x<b>1<c>2</c></b>y<d>3</d></Model></Storage>"));
  const Document document = documentOf(hardware("<Storage><Model>x<b>1</b>y</Model></Storage>"));
  EXPECT_EQ("xy", document.textOf(group::kStorage, 4));
}

TEST(ElementBuilder, whatTheSchemaTakesHasNoFindings) {
  const std::string allowed[] = {
      "",
      " \n<!-- comment --><?target text?>",
      "<Memory version='1'/><Memory version='-2147483648'/><Memory version='+7'/>",
      "<Storage version='1'> <Index IsKey='&#49;'>1</Index>\n</Storage>",
      "<Memory version='1' xmlns:x='u' xsi:noNamespaceSchemaLocation='quenlor.xsd'/>",
      "<Storage version='1'><Model><![CDATA[<a>]]></Model></Storage>",
  };
  for (const std::string& inside : allowed) EXPECT_EQ(Texts{}, findingsOf(inside)) << inside;
}

TEST(ElementBuilder, whatTheSchemaRefusesIsFound) {
  const std::pair<const char*, const char*> refused[] = {
      {"x", "text where only elements may stand"},
      {"<![CDATA[ ]]>", "text where only elements may stand"},
      {"<Memory version='1'>x</Memory>", "text where only elements may stand"},
      {"<Fan version='1'/>", "unknown group \"Fan\""},
      {"<Memory/>", "\"Memory\" has no version"},
      {"<Memory version=''/>", "\"\" is no version"},
      {"<Memory version=' 1 '/>", "\" 1 \" is no version"},
      {"<Memory version='2147483648'/>", "\"2147483648\" is no version"},
      {"<Memory version='1' a='b'/>", "unexpected \"a\""},
      {"<Memory version='1' xmlns='u'/>", "unexpected \"xmlns\""},
      {"<Memory version='1'><Fan>1</Fan></Memory>", "unknown attribute \"Fan\" of \"Memory\""},
      {"<Memory version='1'><PageSize>4k</PageSize></Memory>",
       "\"4k\" is no value of \"PageSize\""},
      {"<Memory version='1'><PageSize a='1'>4</PageSize></Memory>", "unexpected \"a\""},
      {"<Memory version='1'><PageSize>4</PageSize><PageSize>4</PageSize></Memory>",
       "a second \"PageSize\""},
      {"<Memory version='1'><PageSize>4<a/></PageSize></Memory>", "\"PageSize\" holds an element"},
      {"<Storage version='1'><Index>1</Index></Storage>",
       "key \"Index\" is not marked IsKey=\"1\""},
      {"<Storage version='1'><Index IsKey='01'>1</Index></Storage>",
       "key \"Index\" is not marked IsKey=\"1\""},
      {"<Storage version='1'><Model IsKey='1'>1</Model></Storage>", "unexpected \"IsKey\""},
  };
  for (const auto& [inside, finding] : refused) EXPECT_EQ(Texts{finding}, findingsOf(inside));
}

TEST(ElementBuilder, findingsNameTheirPlace) {
  const Document document =
      documentOf("<Hardware>\n <Memory version='1'>\n  <A/></Memory></Hardware>");
  ASSERT_EQ(1U, document.findings().size());
  EXPECT_EQ(3U, document.findings()[0].place.line);
  EXPECT_EQ(3U, document.findings()[0].place.column);
}

TEST(ElementBuilder, millionElementsAreTakenAndNoMore) {
  ElementBuilder builder([] { return Place(); });
  Document document;
  builder.start(document);
  const char* none[] = {nullptr};
  builder.startElement("Hardware", none);
  for (size_t i = 1; i < kMostElements; ++i) {
    ASSERT_FALSE(builder.startElement("Memory", none));
    builder.endElement("Memory");
  }
  EXPECT_EQ("more than 1000000 elements", builder.startElement("Memory", none));
}

TEST(ElementBuilder, findingsAreBounded) {
  std::string inside;
  for (int i = 0; i < 1000; ++i) inside += "<Fan/>";
  EXPECT_EQ(Document::kMostFindings, findingsOf(inside).size());
}

}  // namespace
}  // namespace quenlor::ctl
