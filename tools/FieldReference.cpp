// The field reference in Markdown.
#include <iostream>

#include "tools/Describe.h"

namespace quenlor::describe {
namespace {

std::string typeText(const velAttribDef& attrib) {
  std::string text;
  switch (attrib.type) {
    case VEL_ULONG:
      text = "number";
      break;
    case VEL_LONGLONG:
      text = "64-bit number";
      break;
    case VEL_FLOAT:
      text = "decimal number";
      break;
    case VEL_DATETIME:
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

std::string marked(const velGroupDef& group, const velAttribDef& attrib) {
  std::string name = attrib.name;
  if (isKey(group, attrib.id)) name += " (key)";
  if (isModern(group, attrib) && !isModernGroup(group)) name += " (modern)";
  return name;
}

void printAttribute(const velGroupDef& group, const velAttribDef& attrib, const FieldText& text) {
  std::cout << "| " << attrib.id << " | " << marked(group, attrib) << " | " << typeText(attrib)
            << " | " << cell(text.unit) << " | " << cell(text.source) << " | " << cell(text.absent)
            << " | " << text.change << " | " << text.privateKind << " |\n";
}

}  // namespace

int printFields(FieldTexts fieldTexts) {
  TextTaker texts(std::move(fieldTexts));
  std::cout
      << "<!-- Generated from the catalogue and data/fields.tsv by `cmake --build build/release "
         "--target fields`. -->\n# Fields of the inventory\n\n"
         "Elements of the XML document are named after these names without blanks and other "
         "punctuation.\nA key attribute tells the rows of its group apart. The length of a text "
         "is what a reader should provide for;\nlonger texts are not cut. \"Absent\" speaks of "
         "the rows that are there. What is marked \"modern\" stands\nonly in documents of scans "
         "with modern sources. \"Change\" says when a value changes on an unchanged machine:\n"
         "stable (never), boot (with a reboot), volatile (any time), order (row numbers). "
         "\"Private\" says what kind of\nprivate value it is. Where classic and modern documents "
         "differ, both are given, classic/modern.\n";
  forEachGroup([&](const velGroupDef& group) {
    const FieldText rows = texts.take(group.name, "");
    std::cout << "\n## " << group.name << (isModernGroup(group) ? " (modern)" : "") << "\n\n"
              << rows.source << ". " << rows.absent << ".\n\n"
              << "| Id | Attribute | Type | Unit | Source | Absent | Change | Private |\n"
                 "|---|---|---|---|---|---|---|---|\n";
    forEachAttribute(group, [&](const velAttribDef& attrib) {
      printAttribute(group, attrib, texts.take(group.name, attrib.name));
    });
  });
  return texts.problems() == 0 ? 0 : 1;
}

}  // namespace quenlor::describe
