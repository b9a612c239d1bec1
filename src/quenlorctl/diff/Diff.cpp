#include "quenlorctl/diff/Diff.h"

#include <algorithm>
#include <map>
#include <utility>

#include "quenlorctl/diff/RowMatch.h"

namespace quenlor::ctl {
namespace {

class Comparison {
 public:
  Comparison(const Document& before, const Document& after, const DiffOptions& options)
      : m_before(before),
        m_after(after),
        m_options(options),
        m_terms{before.sources(), after.sources(), options.isAll} {}

  std::vector<Fact> run() {
    if (m_terms.isAcross()) addSources();
    for (const Group& group : groups()) {
      if (isWanted(group)) compareTables(group, rowsOf(m_before, group), rowsOf(m_after, group));
    }
    if (m_options.groups.empty()) compareUnknownGroups();
    std::stable_partition(m_facts.begin(), m_facts.end(),
                          [](const Fact& fact) { return fact.isOfScanner; });
    return std::move(m_facts);
  }

 private:
  using Rows = std::vector<PlacedRow>;

  bool isWanted(const Group& group) const {
    if (m_terms.isAcross() && group.isModern) return false;
    return isAmong(m_options.groups, group);
  }

  Rows rowsOf(const Document& document, const Group& group) const {
    return comparedRows(document, group, m_terms);
  }

  void addSources() {
    Fact fact;
    fact.group = findGroupId(group::kScanInfo)->name;
    fact.attribute = findGroupId(group::kScanInfo)->findId(kSourcesOfScan)->name;
    fact.before.text = sourcesWord(m_terms.before);
    fact.after.text = sourcesWord(m_terms.after);
    fact.isOfScanner = true;
    m_facts.push_back(std::move(fact));
  }

  void compareTables(const Group& group, const Rows& before, const Rows& after) {
    const bool isMissing = before.empty() != after.empty();
    const bool isKnown = isComplete(before.empty() ? m_before : m_after, group);
    if (isMissing && !isKnown) {
      addTable(group, before, after);
      return;
    }
    RowMatch match = matchRows(group, before, after, m_terms);
    for (const RowPair& pair : match.pairs) compareRows(group, pair);
    if (hasOtherRows(group, m_terms)) return;
    for (const RowSurplus& surplus : match.surplus) addSurplus(group, surplus);
  }

  // Nobody knows whether the rows of a table that is missing are gone.
  void addTable(const Group& group, const Rows& before, const Rows& after) {
    Fact fact;
    fact.kind = Fact::Kind::kNotReported;
    fact.group = group.name;
    fact.before.rows = static_cast<uint32_t>(before.size());
    fact.after.rows = static_cast<uint32_t>(after.size());
    m_facts.push_back(std::move(fact));
  }

  // What the side with fewer rows lacks is gone only where that side's table is complete.
  void addSurplus(const Group& group, const RowSurplus& surplus) {
    const bool isGone = surplus.before > surplus.after;
    Fact fact;
    fact.group = group.name;
    fact.identity = surplus.identity;
    fact.before.rows = surplus.before;
    fact.after.rows = surplus.after;
    if (!isComplete(isGone ? m_after : m_before, group)) {
      fact.kind = Fact::Kind::kNotReported;
    } else if (surplus.before != 0 && surplus.after != 0) {
      fact.kind = Fact::Kind::kChanged;
    } else {
      fact.kind = isGone ? Fact::Kind::kRemoved : Fact::Kind::kAdded;
    }
    m_facts.push_back(std::move(fact));
  }

  void compareRows(const Group& group, const RowPair& pair) {
    for (const Field& field : group.fields) {
      if (isCompared(group, field, pair.before, pair.after, m_terms)) {
        compareField(group, field, pair);
      }
    }
    if (!m_terms.isAcross()) compareExtras(group, pair);
  }

  void compareField(const Group& group, const Field& field, const RowPair& pair) {
    Fact::Side before = sideOf(pair.before, field);
    Fact::Side after = sideOf(pair.after, field);
    if (isSame(before, after)) return;
    const bool hasBoth = before.value != nullptr && after.value != nullptr;
    if (hasBoth && !m_options.isAll &&
        isAlike(group, pair.before, *before.value, pair.after, *after.value)) {
      return;
    }
    Fact& fact = addValue(group, pair, field.name, std::move(before), std::move(after));
    fact.isOfScanner = quenlor::ctl::isOfScanner(group, field);
  }

  // The catalogue's value, or what stands in its place and is none.
  static Fact::Side sideOf(const PlacedRow& at, const Field& field) {
    Fact::Side side;
    side.document = at.document;
    side.value = at.document->find(*at.row, field.id);
    if (side.value == nullptr) {
      const auto texts = extrasOf(at);
      const auto found = texts.find(field.element);
      if (found != texts.end()) side.text = found->second;
    }
    return side;
  }

  static bool isSame(const Fact::Side& before, const Fact::Side& after) {
    if ((before.value == nullptr) != (after.value == nullptr)) return false;
    if (before.value == nullptr) return before.text == after.text;
    return before.document->text(before.value->text) == after.document->text(after.value->text);
  }

  // An element that stands twice counts as both texts.
  static std::map<std::string_view, std::string> extrasOf(const PlacedRow& at) {
    std::map<std::string_view, std::string> texts;
    const Document::Extra* extras = at.document->extrasOf(*at.row);
    for (uint32_t i = 0; i < at.row->extraCount; ++i) {
      const auto [entry, isNew] = texts.try_emplace(at.document->text(extras[i].name));
      if (!isNew) entry->second += '\n';
      entry->second += at.document->text(extras[i].text);
    }
    return texts;
  }

  void compareExtras(const Group& group, const RowPair& pair) {
    if (pair.before.row->extraCount + pair.after.row->extraCount == 0) return;
    const auto before = extrasOf(pair.before);
    const auto after = extrasOf(pair.after);
    for (const auto& [name, text] : before) {
      const auto found = after.find(name);
      const std::string other = found == after.end() ? "" : found->second;
      if (text != other) addExtra(group, pair, name, text, other);
    }
    for (const auto& [name, text] : after) {
      if (!before.contains(name)) addExtra(group, pair, name, "", text);
    }
  }

  void addExtra(const Group& group, const RowPair& pair, std::string_view name,
                const std::string& before, const std::string& after) {
    if (group.findElement(name) != nullptr) return;  // compared as what the catalogue knows
    Fact::Side old;
    old.text = before;
    Fact::Side now;
    now.text = after;
    addValue(group, pair, std::string(name), std::move(old), std::move(now));
  }

  Fact& addValue(const Group& group, const RowPair& pair, std::string attribute, Fact::Side before,
                 Fact::Side after) {
    Fact fact;
    fact.group = group.name;
    fact.identity = pair.identity;
    fact.attribute = std::move(attribute);
    fact.kind = Fact::Kind::kChanged;
    if (before.isEmpty()) fact.kind = Fact::Kind::kAdded;
    if (after.isEmpty()) fact.kind = Fact::Kind::kNotReported;
    fact.before = std::move(before);
    fact.after = std::move(after);
    m_facts.push_back(std::move(fact));
    return m_facts.back();
  }

  // Groups of another version of the program have neither identities nor a word on completeness.
  void compareUnknownGroups() {
    if (m_terms.isAcross()) return;
    std::map<std::string, std::pair<Rows, Rows>> tables;
    for (const Document::Row& row : m_before.rows()) {
      if (row.group == nullptr) tables[elementOf(m_before, row)].first.push_back({&m_before, &row});
    }
    for (const Document::Row& row : m_after.rows()) {
      if (row.group == nullptr) tables[elementOf(m_after, row)].second.push_back({&m_after, &row});
    }
    for (const auto& [element, rows] : tables) {
      Group group;
      group.name = element.c_str();
      group.element = element;
      compareUnknown(group, rows.first, rows.second);
    }
  }

  static std::string elementOf(const Document& document, const Document::Row& row) {
    return std::string(document.elementOf(row));
  }

  void compareUnknown(const Group& group, const Rows& before, const Rows& after) {
    if (before.empty() || after.empty()) return addTable(group, before, after);
    const RowMatch match = matchRows(group, before, after, m_terms);
    for (const RowPair& pair : match.pairs) compareRows(group, pair);
    for (const RowSurplus& surplus : match.surplus) {
      addSurplus(group, surplus);
      m_facts.back().kind = Fact::Kind::kNotReported;
    }
  }

  const Document& m_before;
  const Document& m_after;
  const DiffOptions& m_options;
  DiffTerms m_terms;
  std::vector<Fact> m_facts;
};

}  // namespace

std::vector<Fact> diffDocuments(const Document& before, const Document& after,
                                const DiffOptions& options) {
  return Comparison(before, after, options).run();
}

}  // namespace quenlor::ctl
