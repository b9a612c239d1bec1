// Prints what the catalogue says in forms that others read: the XML schema of the inventory
// document, and the field reference in Markdown.
//
//   describe_catalogue schema
//   describe_catalogue fields <fields.tsv>
//   describe_catalogue groups
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/Catalogue.h"
#include "writers/xmlUtil.h"

namespace {

using quenlor::velAttribDef;
using quenlor::velEnumDef;
using quenlor::velGroupDef;

// --- what both forms need ---

std::string elementName(const char* name) {
  const std::unique_ptr<char, decltype(&std::free)> owned(quenlor::spaceOut(name), &std::free);
  return owned.get();
}

bool isKey(const velGroupDef& group, uint32_t id) { return quenlor::isKey(&group, id) != 0; }

template <class Visitor>
void forEachGroup(Visitor visit) {
  for (const velGroupDef* group = quenlor::GROUPS_DEF; group->id != quenlor::kCatalogueEnd;
       ++group) {
    visit(*group);
  }
}

template <class Visitor>
void forEachAttribute(const velGroupDef& group, Visitor visit) {
  for (const velAttribDef* attrib = group.attribs; attrib->id != quenlor::kCatalogueEnd; ++attrib) {
    visit(*attrib);
  }
}

// --- schema ---

constexpr const char* kSchemaHead =
    R"xsd(<?xml version="1.0" encoding="UTF-8"?>
<!-- The inventory document of quenlor. Generated from the program's catalogue. -->
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" elementFormDefault="qualified">

  <!-- Local time with microseconds, which are always zero; empty for a year beyond 9999. -->
  <xs:simpleType name="dateTime">
    <xs:restriction base="xs:string">
      <xs:pattern value="([0-9]{4}-[0-9]{2}-[0-9]{2}-[0-9]{2}\.[0-9]{2}\.[0-9]{2}\.0{6})?"/>
    </xs:restriction>
  </xs:simpleType>

  <xs:simpleType name="float">
    <xs:restriction base="xs:string">
      <xs:pattern value="-?([0-9]+\.[0-9]{6}|nan|inf)"/>
    </xs:restriction>
  </xs:simpleType>

  <!-- Sizes may need more than the 32 bits that most numbers have. -->
  <xs:simpleType name="number">
    <xs:restriction base="xs:unsignedLong"/>
  </xs:simpleType>
)xsd";

std::string escapeXml(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    switch (character) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += character;
    }
  }
  return escaped;
}

std::string valueTypeName(const velGroupDef& group, const velAttribDef& attrib) {
  switch (attrib.type) {
    case quenlor::VEL_ULONG:
      return attrib.enumTable == nullptr
                 ? "number"
                 : elementName(group.name) + "." + elementName(attrib.name) + ".value";
    case quenlor::VEL_LONGLONG:
      return "xs:long";
    case quenlor::VEL_FLOAT:
    case quenlor::VEL_DOUBLE:
      return "float";
    case quenlor::VEL_DATETIME:
      return "dateTime";
    default:
      return "xs:string";
  }
}

void printEnumeration(const velGroupDef& group, const velAttribDef& attrib) {
  std::cout
      << "\n  <!-- A number that has no text is written as it is. -->\n  <xs:simpleType name=\""
      << valueTypeName(group, attrib) << "\">\n    <xs:union memberTypes=\"number\">\n"
      << "      <xs:simpleType>\n        <xs:restriction base=\"xs:string\">\n";
  std::set<std::string> seen;  // different numbers may share a text
  for (const velEnumDef* pair = attrib.enumTable; pair->value != quenlor::kCatalogueEnd; ++pair) {
    if (!seen.insert(pair->text).second) continue;
    std::cout << "          <xs:enumeration value=\"" << escapeXml(pair->text) << "\"/>\n";
  }
  std::cout << "        </xs:restriction>\n      </xs:simpleType>\n    </xs:union>\n"
            << "  </xs:simpleType>\n";
}

void printAttribute(const velGroupDef& group, const velAttribDef& attrib) {
  const std::string open =
      "        <xs:element name=\"" + elementName(attrib.name) + "\" minOccurs=\"0\"";
  const std::string type = valueTypeName(group, attrib);
  if (!isKey(group, attrib.id)) {
    std::cout << open << " type=\"" << type << "\"/>\n";
    return;
  }
  std::cout << open << ">\n          <xs:complexType>\n            <xs:simpleContent>\n"
            << "              <xs:extension base=\"" << type << "\">\n"
            << "                <xs:attribute name=\"IsKey\" use=\"required\" fixed=\"1\"/>\n"
            << "              </xs:extension>\n            </xs:simpleContent>\n"
            << "          </xs:complexType>\n        </xs:element>\n";
}

void printGroup(const velGroupDef& group) {
  std::cout << "\n  <xs:element name=\"" << elementName(group.name) << "\">\n    <xs:complexType>\n"
            << "      <xs:all>\n";
  forEachAttribute(group, [&](const velAttribDef& attrib) { printAttribute(group, attrib); });
  std::cout << "      </xs:all>\n      <xs:attribute name=\"version\" type=\"xs:int\" "
               "use=\"required\"/>\n"
            << "    </xs:complexType>\n  </xs:element>\n";
}

int printSchema() {
  std::cout << kSchemaHead;
  forEachGroup([](const velGroupDef& group) {
    forEachAttribute(group, [&](const velAttribDef& attrib) {
      if (attrib.type == quenlor::VEL_ULONG && attrib.enumTable != nullptr) {
        printEnumeration(group, attrib);
      }
    });
  });
  forEachGroup(printGroup);
  std::cout << "\n  <xs:element name=\"Hardware\">\n    <xs:complexType>\n"
            << "      <xs:choice minOccurs=\"0\" maxOccurs=\"unbounded\">\n";
  forEachGroup([](const velGroupDef& group) {
    std::cout << "        <xs:element ref=\"" << elementName(group.name) << "\"/>\n";
  });
  std::cout << "      </xs:choice>\n    </xs:complexType>\n  </xs:element>\n</xs:schema>\n";
  return 0;
}

// --- field reference ---

struct FieldText {
  std::string unit;
  std::string source;
  std::string absent;
};

using FieldTexts = std::map<std::pair<std::string, std::string>, FieldText>;

FieldTexts readFieldTexts(const char* path) {
  FieldTexts texts;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> columns;
    std::istringstream split(line);
    for (std::string column; std::getline(split, column, '\t');) columns.push_back(column);
    columns.resize(5);
    texts[{columns[0], columns[1]}] = {columns[2], columns[3], columns[4]};
  }
  return texts;
}

std::string typeText(const velAttribDef& attrib) {
  std::string text;
  switch (attrib.type) {
    case quenlor::VEL_ULONG:
      text = "number";
      break;
    case quenlor::VEL_LONGLONG:
      text = "64-bit number";
      break;
    case quenlor::VEL_FLOAT:
      text = "decimal number";
      break;
    case quenlor::VEL_DATETIME:
      text = "date-time";
      break;
    default:
      text = "text of " + std::to_string(attrib.length);
      break;
  }
  if (attrib.enumTable != nullptr) text += ", enumerated";
  return text;
}

std::string cell(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    if (character == '|') escaped += '\\';
    escaped += character;
  }
  return escaped;
}

// Takes each text used out of texts, so that what remains has no attribute.
class TextTaker {
 public:
  explicit TextTaker(FieldTexts texts) : m_texts(std::move(texts)) {}

  // The group's own text stands under an empty attribute name.
  FieldText take(const std::string& group, const std::string& attribute) {
    const auto found = m_texts.extract({group, attribute});
    if (!found.empty()) return found.mapped();
    complain("no text", group, attribute);
    return {};
  }

  // Number of texts that were missing or left over.
  int problems() {
    for (const auto& [key, text] : m_texts) complain("no such attribute", key.first, key.second);
    m_texts.clear();
    return m_problems;
  }

 private:
  void complain(const char* what, const std::string& group, const std::string& attribute) {
    std::cerr << what << ": " << group << ": " << attribute << '\n';
    ++m_problems;
  }

  FieldTexts m_texts;
  int m_problems = 0;
};

int printFields(FieldTexts fieldTexts) {
  TextTaker texts(std::move(fieldTexts));
  std::cout
      << "<!-- Generated from the catalogue and data/fields.tsv by `cmake --build build/release "
         "--target fields`. -->\n# Fields of the inventory\n\n"
         "Elements of the XML document are named after these names without blanks and other "
         "punctuation.\nA key attribute tells the rows of its group apart. The length of a text "
         "is what a reader should provide for;\nlonger texts are not cut. \"Absent\" speaks of "
         "the rows that are there.\n";
  forEachGroup([&](const velGroupDef& group) {
    const FieldText rows = texts.take(group.name, "");
    std::cout << "\n## " << group.name << "\n\n"
              << rows.source << ". " << rows.absent << ".\n\n"
              << "| Id | Attribute | Type | Unit | Source | Absent |\n|---|---|---|---|---|---|\n";
    forEachAttribute(group, [&](const velAttribDef& attrib) {
      const FieldText text = texts.take(group.name, attrib.name);
      std::cout << "| " << attrib.id << " | " << attrib.name
                << (isKey(group, attrib.id) ? " (key)" : "") << " | " << typeText(attrib) << " | "
                << cell(text.unit) << " | " << cell(text.source) << " | " << cell(text.absent)
                << " |\n";
    });
  });
  return texts.problems() == 0 ? 0 : 1;
}

// Id, name and element name of every group, for tests.
int printGroups() {
  forEachGroup([](const velGroupDef& group) {
    std::cout << group.id << '\t' << group.name << '\t' << elementName(group.name) << '\n';
  });
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc == 2 && std::strcmp(argv[1], "schema") == 0) return printSchema();
  if (argc == 2 && std::strcmp(argv[1], "groups") == 0) return printGroups();
  if (argc == 3 && std::strcmp(argv[1], "fields") == 0) return printFields(readFieldTexts(argv[2]));
  std::fputs("usage: describe_catalogue schema | fields <fields.tsv> | groups\n", stderr);
  return 2;
}
