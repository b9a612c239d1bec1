// One inventory document in memory: groups, rows, typed values by catalogue id, and as texts what
// the catalogue does not know. Texts lie in one buffer, so that a document can be cleared and
// filled again without allocating. Pointers and views hold until the document is changed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "quenlorctl/document/Fields.h"
#include "quenlorctl/document/ValueForms.h"

namespace quenlor::ctl {

inline constexpr uint32_t kSourcesOfScan = 102;  // Scan Info: Sources

// A place in a file, line and column from 1; line 0 when none is known.
struct Place {
  uint64_t line = 0;
  uint64_t column = 0;
};

// What the schema of documents does not allow.
struct Finding {
  Place place;
  std::string text;
};

class Document {
 public:
  struct Text {
    uint32_t start = 0;
    uint32_t size = 0;
  };

  // A value of its attribute's form.
  struct Value {
    const Field* field;
    Text text;
    Number number;

    // True for a yes or no, or a time, that stands there empty: it says that nothing is known.
    bool isUnknown() const {
      return text.size == 0 && (field->form == Form::kYesNo || field->form == Form::kDateTime);
    }
  };

  // An element that the catalogue does not know, or a value that is not of its form.
  struct Extra {
    Text name;
    Text text;
  };

  struct Row {
    const Group* group = nullptr;  // null: the catalogue does not know it
    Text element;                  // the group's, when the catalogue does not know it
    uint32_t number = 0;           // within its group, from 1
    uint32_t firstValue = 0;
    uint32_t valueCount = 0;
    uint32_t firstExtra = 0;
    uint32_t extraCount = 0;
  };

  static constexpr size_t kMostFindings = 100;

  void clear();

  // Of the file or the member of an archive that it was read from.
  const std::string& file() const { return m_file; }
  void setFile(std::string_view file) { m_file = file; }

  const std::vector<Row>& rows() const { return m_rows; }
  const Value* valuesOf(const Row& row) const { return m_values.data() + row.firstValue; }
  const Extra* extrasOf(const Row& row) const { return m_extras.data() + row.firstExtra; }
  std::string_view text(Text text) const { return {m_texts.data() + text.start, text.size}; }
  std::string_view elementOf(const Row& row) const;

  // The first row of the group; null when there is none.
  const Row* firstRow(uint32_t groupId) const;
  // Null when the row has none.
  const Value* find(const Row& row, uint32_t id) const;
  // Of the group's first row, or of the given one; empty when there is none.
  std::string_view textOf(uint32_t groupId, uint32_t id) const;
  std::string_view textOf(const Row& row, uint32_t id) const;

  Sources sources() const;

  // What the schema does not allow, in the order of the document; at most kMostFindings.
  const std::vector<Finding>& findings() const { return m_findings; }

  // False when the root element is another than an inventory's.
  bool isInventory() const { return m_isInventory; }

  // For the reader.
  void setForeignRoot() { m_isInventory = false; }
  std::string& texts() { return m_texts; }
  void startRow(const Group* group, std::string_view element);
  bool hasValue(const Field& field) const;  // the last row
  // The text of either is what stands in texts() from start on.
  void addValue(const Field& field, size_t start, Number number);
  void addExtra(std::string_view name, size_t start);
  void addFinding(Place place, std::string text);

 private:
  Text append(std::string_view text);
  uint32_t& countOf(const Group* group, std::string_view element);

  std::string m_file;
  bool m_isInventory = true;
  std::string m_texts;
  std::vector<Row> m_rows;
  std::vector<Value> m_values;
  std::vector<Extra> m_extras;
  std::vector<Finding> m_findings;
  std::vector<uint32_t> m_counts = std::vector<uint32_t>(groups().size(), 0);  // rows by group
  std::unordered_map<std::string, uint32_t> m_unknownCounts;
};

}  // namespace quenlor::ctl
