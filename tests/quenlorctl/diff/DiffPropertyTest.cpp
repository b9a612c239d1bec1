// What must hold for the differences between any two documents, shown on every golden document.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "quenlorctl/diff/Diff.h"
#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

// A document as lines: what stands before, between and behind its values can be changed by line.
using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) (text += line) += '\n';
  return text;
}

// A modern document with a row of every group and every attribute.
std::string everything(const std::string& mark) {
  std::string inside;
  const auto valueOf = [&](const Group& group, const Field& field) -> std::string {
    if (group.id == group::kScanInfo && field.id == 102) return "modern";
    if (group.id == group::kScanResult && field.id == 4) return "complete";
    switch (field.form) {
      case Form::kYesNo:
        return "N";
      case Form::kReal:
        return "1.000000";
      case Form::kDateTime:
        return "2026-11-22-01.02.03.000000";
      case Form::kText:
        return field.words.empty() ? "text" + mark : std::string(field.words.front());
      default:
        return "1000";
    }
  };
  for (const Group& group : groups()) {
    if (group.id == group::kScanResult) continue;
    Attributes attributes;
    for (const Field& field : group.fields) {
      attributes.emplace_back(field.element, valueOf(group, field));
    }
    inside += "\n" + row(group.element, attributes);
  }
  for (const Group& group : groups()) {
    inside += "\n" + row("ScanResult", {{"Group", group.name}, {"Status", "complete"}});
  }
  return hardware(inside);
}

std::vector<std::string> documents() {
  std::vector<std::string> texts;
  for (const std::string& path : goldenPaths(QUENLOR_SOURCE_DIR)) texts.push_back(goldenText(path));
  texts.push_back(everything("a"));
  return texts;
}

std::vector<Fact> factsBetween(const Document& before, const Document& after, bool isAll = false) {
  return diffDocuments(before, after, {isAll, {}});
}

TEST(DiffProperty, documentDoesNotDifferFromItself) {
  for (const std::string& text : documents()) {
    const Document first = documentOf(text);
    const Document second = documentOf(text);
    for (const bool isAll : {false, true}) {
      EXPECT_EQ("", diffText(factsBetween(first, second, isAll))) << text;
    }
  }
}

// Rows begin with a line of one tab and a start tag, and end with one tab and an end tag.
std::string withRowsShuffled(const std::string& text, unsigned seed) {
  const size_t first = text.find("\n\t<");
  const size_t end = text.rfind("\n\n</Hardware>");
  if (first == text.npos || end == text.npos) return text;
  Lines rows;
  for (size_t start = first; start < end;) {
    size_t next = text.find("\n\t</", start);
    next = text.find('\n', next + 1);
    rows.push_back(text.substr(start, next - start));
    start = next;
    while (start < end && text[start + 1] == '\n') ++start;
  }
  std::shuffle(rows.begin(), rows.end(), std::mt19937(seed));
  std::string shuffled = text.substr(0, first);
  for (const std::string& row : rows) shuffled += row;
  return shuffled + text.substr(end);
}

TEST(DiffProperty, orderOfTheRowsNeverCounts) {
  int shuffledDocuments = 0;
  for (const std::string& text : documents()) {
    const Document original = documentOf(text);
    for (unsigned seed = 1; seed <= 2; ++seed) {
      const std::string shuffled = withRowsShuffled(text, seed);
      if (shuffled != text) ++shuffledDocuments;
      const Document other = documentOf(shuffled);
      EXPECT_EQ(original.rows().size(), other.rows().size());
      EXPECT_EQ("", diffText(factsBetween(original, other))) << shuffled;
      EXPECT_EQ("", diffText(factsBetween(other, original)));
    }
  }
  EXPECT_GT(shuffledDocuments, 100);
}

// Another value of the same form; nothing where there is none.
std::string otherValue(const Field& field, const std::string& value) {
  switch (field.form) {
    case Form::kYesNo:
      return value == "Y" ? "N" : "Y";
    case Form::kReal:
      return value + "9.000000";  // no value: compared as a text
    case Form::kDateTime:
      return "2001-01-01-01.01.01.000000";
    case Form::kText:
      return value + "x";
    default:
      return "4294967295";
  }
}

struct Place {
  size_t start;
  size_t size;
};

// Where the values of the attributes stand in the text of `everything`.
Place placeOf(const std::string& text, const Group& group, const Field& field) {
  const size_t row = text.find("<" + std::string(group.element) + " version");
  const std::string tag = "<" + std::string(field.element) + (field.isKey ? " IsKey=\"1\">" : ">");
  const size_t start = text.find(tag, row) + tag.size();
  return {start, text.find('<', start) - start};
}

// Other sources leave much out, and the moment of one boot is one however it is computed.
bool hasItsOwnRule(const Group& group, const Field& field) {
  const bool isSources = group.id == group::kScanInfo && field.id == 102;
  return isSources ||
         (field.form == Form::kDateTime && field.changeIn(Sources::kModern) == Change::kBoot);
}

TEST(DiffProperty, everyAttributeChangedAloneShowsExactlyIt) {
  const std::string text = everything("a");
  const Document original = documentOf(text);
  for (const Group& group : groups()) {
    for (const Field& field : group.fields) {
      if (group.id == group::kScanResult || hasItsOwnRule(group, field)) continue;
      const Place place = placeOf(text, group, field);
      std::string changed = text;
      changed.replace(place.start, place.size,
                      otherValue(field, text.substr(place.start, place.size)));
      const Document other = documentOf(changed);
      const std::vector<Fact> facts = factsBetween(original, other);
      const Change change = field.changeIn(Sources::kModern);
      const std::string name = std::string(group.name) + ": " + field.name;
      if (change == Change::kVolatile || change == Change::kOrder) {
        EXPECT_EQ("", diffText(facts)) << name;
        continue;
      }
      ASSERT_FALSE(facts.empty()) << name;
      for (const Fact& fact : facts) EXPECT_EQ(group.name, fact.group) << name;
      // A row that is told apart by the value is another row; any other value is one fact.
      if (facts.front().attribute.empty()) {
        EXPECT_NE(0, field.identityIn(Sources::kModern)) << name;
        EXPECT_EQ(2U, facts.size()) << name;
      } else {
        EXPECT_EQ(field.name, facts.front().attribute);
        EXPECT_EQ(1U, facts.size()) << name << "\n" << diffText(facts);
      }
    }
  }
}

TEST(DiffProperty, everyAttributeLeftOutIsNotReported) {
  const std::string text = everything("a");
  const Document original = documentOf(text);
  for (const Group& group : groups()) {
    for (const Field& field : group.fields) {
      if (group.id == group::kScanResult || hasItsOwnRule(group, field)) continue;
      if (field.changeIn(Sources::kModern) != Change::kStable ||
          field.identityIn(Sources::kModern) != 0) {
        continue;
      }
      const Place place = placeOf(text, group, field);
      const size_t start = text.rfind('<', place.start - 1);
      const size_t end = text.find('>', place.start + place.size) + 1;
      std::string without = text;
      without.erase(start, end - start);
      const Document other = documentOf(without);
      const std::vector<Fact> facts = factsBetween(original, other);
      ASSERT_EQ(1U, facts.size()) << group.name << ": " << field.name;
      EXPECT_EQ(Fact::Kind::kNotReported, facts[0].kind);
      EXPECT_EQ(field.name, facts[0].attribute);
    }
  }
}

// Documents of another version: elements of other names, values of other forms.
TEST(DiffProperty, otherVersionsAreComparedToo) {
  size_t facts = 0;
  for (const std::string& text : documents()) {
    const Document original = documentOf(text);
    std::mt19937 random(7);
    Lines lines = linesOf(text);
    for (std::string& line : lines) {
      if (random() % 3 != 0 || !line.starts_with("\t\t<")) continue;
      line = random() % 2 == 0 ? "\t\t<New>text</New>"
                               : std::string(line).replace(line.find('>') + 1, 1, "?");
    }
    const ReadAll read = readAll(joined(lines));
    ASSERT_LE(read.documents.size(), 1U);
    if (read.documents.empty()) continue;
    for (const bool isAll : {false, true}) {
      const size_t there = factsBetween(original, read.documents[0], isAll).size();
      EXPECT_EQ(there, factsBetween(read.documents[0], original, isAll).size());
      facts += there;
    }
  }
  EXPECT_GT(facts, 1000U);
}

TEST(DiffProperty, differencesAreTheSameSeenFromTheOtherSide) {
  const std::vector<std::string> texts = documents();
  for (size_t i = 1; i < texts.size(); ++i) {
    const Document before = documentOf(texts[i - 1]);
    const Document after = documentOf(texts[i]);
    EXPECT_EQ(factsBetween(before, after).size(), factsBetween(after, before).size());
  }
}

}  // namespace
}  // namespace quenlor::ctl
