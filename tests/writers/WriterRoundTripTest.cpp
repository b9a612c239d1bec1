// Properties of whole documents: whatever the values, a document can be read, and what is read is
// what was written.
#include <expat.h>
#include <gmock/gmock.h>

#include <array>
#include <climits>
#include <cstring>
#include <cwchar>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tables/ValueBlock.h"
#include "tests/support/TestLocale.h"
#include "tests/writers/WriterTest.h"
#include "writers/mifUtil.h"
#include "writers/xmlUtil.h"

namespace quenlor {
namespace {

using test::DocumentFolder;
using test::kKeyed;
using test::kWriterGroups;
using test::ScopedLocale;

// An element two levels below the root: name, text, and whether it is marked as a key.
struct Element {
  std::string name;
  std::string text;
  bool isKey;

  bool operator==(const Element&) const = default;
};

struct Document {
  std::string error;
  std::string root;
  std::vector<std::pair<std::string, std::vector<Element>>> groups;
  int depth = 0;
};

void startElement(void* data, const XML_Char* name, const XML_Char** attributes) {
  auto& document = *static_cast<Document*>(data);
  switch (document.depth++) {
    case 0:
      document.root = name;
      break;
    case 1:
      document.groups.push_back({name, {}});
      break;
    default:
      document.groups.back().second.push_back({name, "", attributes[0] != nullptr});
  }
}

void endElement(void* data, const XML_Char*) { --static_cast<Document*>(data)->depth; }

void characterData(void* data, const XML_Char* text, int length) {
  auto& document = *static_cast<Document*>(data);
  if (document.depth == 3) {
    document.groups.back().second.back().text.append(text, static_cast<size_t>(length));
  }
}

Document parse(const std::string& xml) {
  Document document;
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
      XML_ParserCreate(nullptr), &XML_ParserFree);
  XML_SetUserData(parser.get(), &document);
  XML_SetElementHandler(parser.get(), startElement, endElement);
  XML_SetCharacterDataHandler(parser.get(), characterData);
  if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK) {
    document.error = XML_ErrorString(XML_GetErrorCode(parser.get()));
  }
  return document;
}

bool isXmlCharacter(uint32_t c) {
  if (c < 0x20) return c == 0x9 || c == 0xA || c == 0xD;
  return c < 0xD800 || (c > 0xDFFF && c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF);
}

void appendUtf8(std::string& out, uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
    return;
  }
  const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr std::array<uint32_t, 4> kLead = {0, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kLead[static_cast<size_t>(more)] | (c >> (6 * more)));
  for (int i = more - 1; i >= 0; --i) out += static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F));
}

// The text that a reader of the document gets for a stored string.
std::string readableText(const VelTableAttrib& attrib) {
  const unsigned char* value = blockValue(attrib.getAttribPtr());
  std::string text;
  for (uint32_t i = 0; i + 1 < readNumber<uint32_t>(value); ++i) {
    const auto c = readNumber<uint32_t>(value + 4 + 4 * i);
    appendUtf8(text, isXmlCharacter(c) ? c : 0xFFFD);
  }
  return text;
}

std::string randomBytes(std::mt19937& random) {
  static const std::vector<std::string> kPieces = {"<",
                                                   ">",
                                                   "&",
                                                   "]]>",
                                                   "\"",
                                                   "'",
                                                   "\\",
                                                   "\r\n",
                                                   "\t",
                                                   "\x01",
                                                   "\x1F",
                                                   "\x7F",
                                                   "\xEF\xBF\xBE",
                                                   "\xEF\xBF\xBF",
                                                   "\xED\xA0\x80",
                                                   "\xF0\x9F\x98\x80",
                                                   "\xC3\xA9",
                                                   "\xE2\x82",
                                                   "\xFF",
                                                   "plain"};
  std::string text;
  for (auto pieces = random() % 12; pieces > 0; --pieces) {
    if (random() % 3 == 0) {
      text += static_cast<char>(random() % 255 + 1);
    } else {
      text += kPieces[random() % kPieces.size()];
    }
  }
  return text;
}

// One attribute of every type, in any state, and what a reader gets of its text or "".
void addRandomRow(VelTable& table, std::mt19937& random, std::vector<std::string>& texts) {
  auto row = std::make_unique<VelTableRow>();
  const std::string text = randomBytes(random);
  const std::string bytes = randomBytes(random);
  const uint64_t bits = (uint64_t{random()} << 32) | random();
  double number;
  std::memcpy(&number, &bits, sizeof number);
  addUlong(*row, 1, static_cast<uint32_t>(random()));
  addText(*row, 2, text);
  addUlong(*row, 3, static_cast<uint32_t>(random() % 4));
  row->addAttrib(new VelTableAttrib(4, static_cast<unsigned char>(random())));
  row->addAttrib(new VelTableAttrib(5, static_cast<unsigned short>(random())));
  row->addAttrib(new VelTableAttrib(6, _uquad{static_cast<uint32_t>(random()), 0}));
  addFloat(*row, 7, static_cast<float>(random()));
  row->addAttrib(new VelTableAttrib(8, number));
  row->addAttrib(new VelTableAttrib(9, reinterpret_cast<const unsigned char*>(bytes.data()),
                                    static_cast<uint32_t>(bytes.size())));
  row->addAttrib(new VelTableAttrib(10, static_cast<long>(bits)));
  addUlongLong(*row, 11, bits);
  addLongLong(*row, 12, static_cast<int64_t>(bits));
  texts.push_back(readableText(VelTableAttrib(2, text.c_str())));
  table.addRow(row.release());
}

class WriterRoundTripTest : public testing::TestWithParam<const char*> {
 protected:
  WriterRoundTripTest() : m_locale(GetParam()) {}

  ScopedLocale m_locale;
  DocumentFolder m_folder;
  std::mt19937 m_random{7};
};

INSTANTIATE_TEST_SUITE_P(Locales, WriterRoundTripTest, testing::Values("C", "C.UTF-8"),
                         [](const auto& locale) {
                           return std::string(locale.param) == "C" ? "Plain" : "Utf8";
                         });

TEST_P(WriterRoundTripTest, everyXmlDocumentParsesAndGivesBackItsTexts) {
  const std::string file = m_folder.path("out.xml");
  for (int round = 0; round < 100; ++round) {
    VelTable table(kWriterGroups, kKeyed, 1);
    std::vector<std::string> texts;
    for (int row = 0; row < 4; ++row) addRandomRow(table, m_random, texts);
    ASSERT_EQ(printXMLHeader(file.c_str(), "Hardware"), 0);
    ASSERT_EQ(printXML(file.c_str(), &table), 0);
    ASSERT_EQ(printXMLFooter(file.c_str(), "Hardware"), 0);

    const Document document = parse(test::contentOf(file));
    ASSERT_EQ(document.error, "") << test::contentOf(file);
    ASSERT_EQ(document.root, "Hardware");
    ASSERT_EQ(document.groups.size(), 4u);
    for (size_t row = 0; row < 4; ++row) {
      const auto& [name, elements] = document.groups[row];
      ASSERT_EQ(name, "KeyedGroup");
      ASSERT_EQ(elements.size(), 12u);
      ASSERT_EQ(elements[1], (Element{"FullName", texts[row], true}));
    }
  }
}

TEST_P(WriterRoundTripTest, rowComesBackAsItWasWritten) {
  setenv("TZ", "UTC", 1);
  tzset();
  const unsigned char octets[] = {0xDE, 0xAD};
  VelTable table(kWriterGroups, kKeyed, 1);
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, 1, 42);
  addText(*row, 2, "R&D <lab>\r\n");
  addUlong(*row, 3, 2);
  row->addAttrib(new VelTableAttrib(9, octets, 2));
  addTime(*row, 10, 86400);
  table.addRow(row.release());
  const std::string file = m_folder.path("out.xml");
  printXMLHeader(file.c_str(), "Hardware");
  printXML(file.c_str(), &table);
  printXMLFooter(file.c_str(), "Hardware");

  const Document document = parse(test::contentOf(file));
  ASSERT_EQ(document.error, "");
  EXPECT_THAT(document.groups.at(0).second,
              testing::ElementsAre(
                  Element{"Index", "42", true}, Element{"FullName", "R&D <lab>\r\n", true},
                  Element{"Colour", "Green > blue", false}, Element{"Octets", "\"DEAD\"", false},
                  Element{"Date", "1970-01-02-00.00.00.000000", false}));
}

// Every text of the catalogue that a document can hold, in one document.
TEST_P(WriterRoundTripTest, documentWithTheWholeCatalogueParses) {
  const std::string file = m_folder.path("out.xml");
  printXMLHeader(file.c_str(), "Hardware");
  size_t rows = 0;
  for (const velGroupDef* group = GROUPS_DEF; group->id != kCatalogueEnd; ++group) {
    for (const velAttribDef* attrib = group->attribs; attrib->id != kCatalogueEnd; ++attrib) {
      if (attrib->enumTable == nullptr) continue;
      for (const velEnumDef* pair = attrib->enumTable; pair->value != kCatalogueEnd; ++pair) {
        VelTable table(group->id, 1);
        auto row = std::make_unique<VelTableRow>();
        addUlong(*row, attrib->id, pair->value);
        table.addRow(row.release());
        ASSERT_EQ(printXML(file.c_str(), &table), 0);
        ++rows;
      }
    }
  }
  printXMLFooter(file.c_str(), "Hardware");
  const Document document = parse(test::contentOf(file));
  EXPECT_EQ(document.error, "");
  EXPECT_EQ(document.groups.size(), rows);
  EXPECT_GT(rows, 300u);
}

// Undoes the escaping of a MIF string; what follows its closing quote is left in `rest`.
std::string unescape(const std::string& quoted, std::string& rest) {
  std::string text;
  size_t i = 1;
  for (; i < quoted.size() && quoted[i] != '"'; ++i) {
    if (quoted[i] != '\\') {
      text += quoted[i];
    } else if (quoted[++i] == 'x') {
      text += static_cast<char>(std::stoi(quoted.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      text += quoted[i];
    }
  }
  rest = quoted.substr(std::min(i + 1, quoted.size()));
  return text;
}

// The bytes of a stored string in the current locale.
std::string localeText(const VelTableAttrib& attrib) {
  const unsigned char* value = blockValue(attrib.getAttribPtr());
  std::string text;
  for (uint32_t i = 0; i + 1 < readNumber<uint32_t>(value); ++i) {
    std::mbstate_t state{};
    char bytes[MB_LEN_MAX];
    const size_t length = std::wcrtomb(bytes, readNumber<wchar_t>(value + 4 + 4 * i), &state);
    text += length == static_cast<size_t>(-1) ? "?" : std::string(bytes, length);
  }
  return text;
}

TEST_P(WriterRoundTripTest, everyMifStringEndsAtItsQuoteAndGivesBackItsText) {
  const std::string file = m_folder.path("out.mif");
  for (int round = 0; round < 300; ++round) {
    const std::string text = randomBytes(m_random);
    const auto table = test::oneValue(kKeyed, 2, text.c_str());
    test::writeFile(file, "");
    ASSERT_EQ(printMif(file.c_str(), table.get()), 0);

    const std::string document = test::contentOf(file);
    std::string rest;
    const std::string read = unescape(document.substr(document.find("\n{") + 2), rest);
    ASSERT_EQ(rest, "}\nEnd Table\n");
    ASSERT_EQ(read, localeText(VelTableAttrib(2, text.c_str())));
  }
}

TEST_P(WriterRoundTripTest, valueOfAMillionCharactersIsWrittenWhole) {
  const std::string text(1000000, '<');
  const auto table = test::oneValue(kKeyed, 2, text.c_str());
  const std::string file = m_folder.path("out.xml");
  printXMLHeader(file.c_str(), "Hardware");
  EXPECT_EQ(printXML(file.c_str(), table.get()), 0);
  printXMLFooter(file.c_str(), "Hardware");
  const Document document = parse(test::contentOf(file));
  ASSERT_EQ(document.error, "");
  EXPECT_EQ(document.groups.at(0).second.at(0).text, text);
}

}  // namespace
}  // namespace quenlor
