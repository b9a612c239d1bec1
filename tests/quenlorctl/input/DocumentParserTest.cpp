#include "quenlorctl/input/DocumentParser.h"

#include <gtest/gtest.h>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

using Texts = std::vector<std::string>;

std::string storage(const std::string& model) {
  return hardware(row("Storage", {{"Index", "1"}, {"ID", "x"}, {"Model", model}}));
}

Texts modelsOf(const ReadAll& read) {
  Texts models;
  for (const Document& document : read.documents) {
    models.emplace_back(document.textOf(group::kStorage, 4));
  }
  return models;
}

// Gives one byte at a time, so that every token is cut everywhere.
class DrippingSource : public ByteSource {
 public:
  explicit DrippingSource(std::string_view bytes) : m_bytes(bytes) {}
  size_t read(char* buffer, size_t) override {
    const size_t count = m_bytes.copy(buffer, 1);
    m_bytes.remove_prefix(count);
    return count;
  }

 private:
  std::string_view m_bytes;
};

TEST(DocumentParser, documentsOneAfterAnotherAreReadOneByOne) {
  const ReadAll read = readAll(storage("a") + storage("b") + "\n\n" + storage("c"));
  EXPECT_EQ((Texts{"a", "b", "c"}), modelsOf(read));
  EXPECT_EQ(Texts{}, read.texts());
}

TEST(DocumentParser, documentsNeedNoDeclarationToBeToldApart) {
  const ReadAll read =
      readAll("<Hardware/><Hardware/><!-- between --><Hardware/>\xEF\xBB\xBF<Hardware/>");
  EXPECT_EQ(4U, read.documents.size());
  EXPECT_EQ(Texts{}, read.texts());
}

TEST(DocumentParser, bytesOfADocumentReachFromItsStartToItsRootsEnd) {
  const ReadAll read = readAll(storage("a") + "<!-- x -->" + storage("b"));
  ASSERT_EQ(2U, read.bytes.size());
  EXPECT_EQ(storage("a"), read.bytes[0] + "\n");
  EXPECT_EQ(storage("b"), read.bytes[1] + "\n");
}

TEST(DocumentParser, nothingDependsOnHowTheBytesCome) {
  const std::string text =
      storage("a&amp;b") + "<oops>" + storage("\xC3\xBC") + " \n" + storage("c");
  std::vector<std::string> models;
  std::vector<std::string> troubles;
  InputSinks sinks;
  sinks.document = [&](Document& document, const std::string&) {
    models.emplace_back(document.textOf(group::kStorage, 4));
  };
  sinks.trouble = [&](const Trouble& trouble) {
    troubles.push_back(std::to_string(trouble.place.line) + ":" +
                       std::to_string(trouble.place.column) + ": " + trouble.text);
  };
  DrippingSource source(text);
  parseDocuments(source, "test", sinks);
  EXPECT_EQ(modelsOf(readAll(text)), models);
  EXPECT_EQ(readAll(text).texts(), troubles);
  EXPECT_EQ((Texts{"a&b", "\xC3\xBC", "c"}), models);
}

TEST(DocumentParser, damagedDocumentIsNamedWithItsPlaceAndTheOthersAreRead) {
  const ReadAll read = readAll(
      storage("a") + "<?xml version=\"1.0\"?>\n<Hardware>\n <Storage></Memory>" + storage("b"));
  EXPECT_EQ((Texts{"a", "b"}), modelsOf(read));
  EXPECT_EQ(Texts{"5:13: not XML: mismatched tag"}, read.texts());
}

TEST(DocumentParser, placeIsThatInTheWholeFile) {
  const ReadAll read = readAll("<Hardware/> <Hardware><a></b></Hardware>");
  EXPECT_EQ(1U, read.documents.size());
  EXPECT_EQ(Texts{"1:28: not XML: mismatched tag"}, read.texts());
}

TEST(DocumentParser, documentThatIsCutOffIsNamedAndTheNextOneRead) {
  const std::string whole = storage("a");
  const ReadAll read = readAll(whole.substr(0, whole.size() / 2) + "\n" + storage("b"));
  EXPECT_EQ(Texts{"b"}, modelsOf(read));
  EXPECT_EQ(1U, read.troubles.size());
  const ReadAll last = readAll(whole.substr(0, whole.size() / 2));
  EXPECT_EQ(0U, last.documents.size());
  ASSERT_EQ(1U, last.troubles.size());
  EXPECT_EQ("the document is cut off", last.troubles[0].text);
}

TEST(DocumentParser, nothingAtAllIsNoDocument) {
  EXPECT_EQ(Texts{"1:1: no document"}, readAll("").texts());
  EXPECT_EQ(Texts{"3:1: no document"}, readAll(" \n\n").texts());
}

TEST(DocumentParser, rubbishIsToldOnce) {
  EXPECT_EQ(1U, readAll(std::string(300000, 'x')).troubles.size());
  EXPECT_EQ(1U, readAll("{\"json\":1}").troubles.size());
}

TEST(DocumentParser, anotherRootIsNoInventory) {
  const ReadAll read = readAll("\n<html><body/></html>" + storage("a"));
  EXPECT_EQ(Texts{"2:1: the root element is \"html\", not \"Hardware\""}, read.texts());
  EXPECT_EQ(Texts{"a"}, modelsOf(read));
}

TEST(DocumentParser, doctypeIsRefusedBeforeItsEntitiesAreRead) {
  const ReadAll read = readAll(
      "<?xml version=\"1.0\"?>\n<!DOCTYPE Hardware [<!ENTITY a \"b\">]>"
      "<Hardware>&a;</Hardware>" +
      storage("a"));
  ASSERT_EQ(1U, read.troubles.size());
  EXPECT_EQ("a DOCTYPE is not taken", read.troubles[0].text);
  EXPECT_EQ(2U, read.troubles[0].place.line);
  EXPECT_EQ(Texts{"a"}, modelsOf(read));
}

TEST(DocumentParser, eightLevelsAreTakenAndNotNine) {
  const auto nested = [](const char* start, const char* end) {
    return hardware(std::string("<a>") + start + "<c></c>" + end + "</a>");
  };
  EXPECT_EQ(Texts{}, readAll(nested("<b><b><b><b><b>", "</b></b></b></b></b>")).texts());
  const ReadAll read =
      readAll(nested("<b><b><b><b><b><b>", "</b></b></b></b></b></b>") + storage("a"));
  EXPECT_EQ(Texts{"2:32: elements are nested more than 8 deep"}, read.texts());
  EXPECT_EQ(Texts{"a"}, modelsOf(read));
}

TEST(DocumentParser, textOfAMebibyteIsTakenAndNoLongerOne) {
  const std::string longest(kMostText, 'x');
  EXPECT_EQ(Texts{longest}, modelsOf(readAll(storage(longest))));
  const ReadAll read = readAll(storage(longest + "x") + storage("a"));
  ASSERT_EQ(1U, read.troubles.size());
  EXPECT_EQ("a text of more than 1048576 bytes", read.troubles[0].text);
  EXPECT_EQ(Texts{"a"}, modelsOf(read));
}

TEST(DocumentParser, textsInNestedElementsAreBoundedToo) {
  const ReadAll read =
      readAll(hardware("<a><b><c>" + std::string(kMostText + 1, 'x') + "</c></b></a>"));
  ASSERT_EQ(1U, read.troubles.size());
  EXPECT_EQ("a text of more than 1048576 bytes", read.troubles[0].text);
}

TEST(DocumentParser, longMarkupIsRefusedBeforeItTakesMinutes) {
  const std::string blanks(size_t{4} << 20, ' ');
  for (const std::string& markup : {"<!--" + blanks + "-->", "<?x " + blanks + "?>",
                                    "<a " + blanks + "/>", "<a b='" + blanks + "'/>"}) {
    const ReadAll read = readAll(hardware(markup) + storage("a"));
    ASSERT_EQ(1U, read.troubles.size());
    EXPECT_EQ("markup of more than 1048576 bytes", read.troubles[0].text);
    EXPECT_EQ(Texts{"a"}, modelsOf(read));
  }
  EXPECT_EQ(Texts{}, readAll(hardware("<!--" + std::string(kMostText, ' ') + "-->")).texts());
  EXPECT_EQ(Texts{}, readAll(hardware(std::string(size_t{4} << 20, ' '))).texts());
}

TEST(DocumentParser, documentOfMoreThan64MebibytesIsRefused) {
  const std::string comment = "<!--" + std::string(kMostText / 2, ' ') + "-->\n";
  std::string comments;
  while (comments.size() <= kMostBytes) comments += comment;
  const ReadAll read = readAll(hardware(comments) + storage("a"));
  ASSERT_EQ(1U, read.troubles.size());
  EXPECT_EQ("more than 64 MiB", read.troubles[0].text);
  EXPECT_EQ(Texts{"a"}, modelsOf(read));
}

TEST(DocumentParser, sourceThatBreaksEndsThereWithItsPlace) {
  class BreakingSource : public ByteSource {
   public:
    size_t read(char* buffer, size_t) override {
      if (m_isRead) throw InputError("broken");
      m_isRead = true;
      return std::string("<Hardware/>\n<Hardware>").copy(buffer, 64);
    }

   private:
    bool m_isRead = false;
  };
  std::vector<Trouble> troubles;
  size_t documents = 0;
  InputSinks sinks;
  sinks.document = [&](Document&, const std::string&) { ++documents; };
  sinks.trouble = [&](const Trouble& trouble) { troubles.push_back(trouble); };
  BreakingSource source;
  parseDocuments(source, "file", sinks);
  EXPECT_EQ(1U, documents);
  ASSERT_EQ(1U, troubles.size());
  EXPECT_EQ("broken", troubles[0].text);
  EXPECT_EQ(2U, troubles[0].place.line);
}

}  // namespace
}  // namespace quenlor::ctl
