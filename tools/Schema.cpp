// The XML schema of the inventory document.
#include <iostream>
#include <set>
#include <sstream>

#include "tools/Describe.h"

namespace quenlor::describe {
namespace {

constexpr const char* kSchemaHead =
    R"xsd(<?xml version="1.0" encoding="UTF-8"?>
<!-- The inventory document of quenlor, of classic and of modern sources. Generated from the program's
     catalogue. -->
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

// Comma-separated, empty for an open list.
std::string wordsOf(const velGroupDef& group, const velAttribDef& attrib, const FieldTexts& texts) {
  const auto found = texts.find({group.name, attrib.name});
  return found == texts.end() ? std::string() : found->second.words;
}

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

std::string ownTypeName(const velGroupDef& group, const velAttribDef& attrib) {
  return elementName(group.name) + "." + elementName(attrib.name) + ".value";
}

std::string valueTypeName(const velGroupDef& group, const velAttribDef& attrib,
                          const FieldTexts& texts) {
  if (attrib.type == VEL_STRING && !wordsOf(group, attrib, texts).empty()) {
    return ownTypeName(group, attrib);
  }
  switch (attrib.type) {
    case VEL_ULONG:
      return attrib.enumTable == nullptr ? "number" : ownTypeName(group, attrib);
    case VEL_LONGLONG:
      return "xs:long";
    case VEL_FLOAT:
    case VEL_DOUBLE:
      return "float";
    case VEL_DATETIME:
      return "dateTime";
    default:
      return "xs:string";
  }
}

void printEnumeration(const velGroupDef& group, const velAttribDef& attrib) {
  std::cout
      << "\n  <!-- A number that has no text is written as it is. -->\n  <xs:simpleType name=\""
      << ownTypeName(group, attrib) << "\">\n    <xs:union memberTypes=\"number\">\n"
      << "      <xs:simpleType>\n        <xs:restriction base=\"xs:string\">\n";
  std::set<std::string> seen;  // different numbers may share a text
  for (const velEnumDef* pair = attrib.enumTable; pair->value != kCatalogueEnd; ++pair) {
    if (!seen.insert(pair->text).second) continue;
    std::cout << "          <xs:enumeration value=\"" << escapeXml(pair->text) << "\"/>\n";
  }
  std::cout << "        </xs:restriction>\n      </xs:simpleType>\n    </xs:union>\n"
            << "  </xs:simpleType>\n";
}

// A text that is one word of a closed list.
void printWords(const velGroupDef& group, const velAttribDef& attrib, const FieldTexts& texts) {
  std::cout << "\n  <xs:simpleType name=\"" << ownTypeName(group, attrib)
            << "\">\n    <xs:restriction base=\"xs:string\">\n";
  std::istringstream words(wordsOf(group, attrib, texts));
  for (std::string word; std::getline(words, word, ',');) {
    std::cout << "      <xs:enumeration value=\"" << escapeXml(word) << "\"/>\n";
  }
  std::cout << "    </xs:restriction>\n  </xs:simpleType>\n";
}

void printOwnType(const velGroupDef& group, const velAttribDef& attrib, const FieldTexts& texts) {
  if (attrib.type == VEL_ULONG && attrib.enumTable != nullptr) printEnumeration(group, attrib);
  if (attrib.type == VEL_STRING && !wordsOf(group, attrib, texts).empty()) {
    printWords(group, attrib, texts);
  }
}

void printAttribute(const velGroupDef& group, const velAttribDef& attrib, const FieldTexts& texts) {
  const std::string open =
      "        <xs:element name=\"" + elementName(attrib.name) + "\" minOccurs=\"0\"";
  const std::string type = valueTypeName(group, attrib, texts);
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

void printGroup(const velGroupDef& group, const FieldTexts& texts) {
  std::cout << "\n  <xs:element name=\"" << elementName(group.name) << "\">\n    <xs:complexType>\n"
            << "      <xs:all>\n";
  forEachAttribute(group,
                   [&](const velAttribDef& attrib) { printAttribute(group, attrib, texts); });
  std::cout << "      </xs:all>\n      <xs:attribute name=\"version\" type=\"xs:int\" "
               "use=\"required\"/>\n"
            << "    </xs:complexType>\n  </xs:element>\n";
}

}  // namespace

int printSchema(const FieldTexts& texts) {
  std::cout << kSchemaHead;
  forEachGroup([&](const velGroupDef& group) {
    forEachAttribute(group,
                     [&](const velAttribDef& attrib) { printOwnType(group, attrib, texts); });
  });
  forEachGroup([&](const velGroupDef& group) { printGroup(group, texts); });
  std::cout << "\n  <xs:element name=\"Hardware\">\n    <xs:complexType>\n"
            << "      <xs:choice minOccurs=\"0\" maxOccurs=\"unbounded\">\n";
  forEachGroup([](const velGroupDef& group) {
    std::cout << "        <xs:element ref=\"" << elementName(group.name) << "\"/>\n";
  });
  std::cout << "      </xs:choice>\n    </xs:complexType>\n  </xs:element>\n</xs:schema>\n";
  return 0;
}

}  // namespace quenlor::describe
