#include "quenlorctl/diff/RowMatch.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>

namespace quenlor::ctl {
namespace {

constexpr unsigned kRanks = 8;      // bits of Field::identity
constexpr unsigned kLast = kRanks;  // the rank of rows that no rank tells apart

// The identity attributes of a group, by rank.
class Identity {
 public:
  Identity(const Group& group, const DiffTerms& terms) {
    for (const Field& field : group.fields) {
      if (!isStableIdentity(group, field, terms)) continue;
      m_fields.emplace_back(field.id, field.identityIn(terms.common()));
      m_ranks |= m_fields.back().second;
    }
    // A digest tells people least.
    std::stable_partition(m_fields.begin(), m_fields.end(), [&](const auto& field) {
      return std::string_view(group.findId(field.first)->name) != "ID";
    });
  }

  // True when the row has all that is of this rank alone.
  bool isKnown(const PlacedRow& at, unsigned rank) const {
    if ((m_ranks & bit(rank)) == 0) return false;
    return std::all_of(m_fields.begin(), m_fields.end(), [&](const auto& field) {
      return field.second != bit(rank) || !at.document->textOf(*at.row, field.first).empty();
    });
  }

  // Texts of the rank's attributes; of kLast those of the last rank that there is.
  std::vector<std::string_view> texts(const PlacedRow& at, unsigned rank) const {
    const uint8_t wanted = rank == kLast ? lastBit() : bit(rank);
    std::vector<std::string_view> texts;
    for (const auto& [id, ranks] : m_fields) {
      if ((ranks & wanted) != 0) texts.push_back(at.document->textOf(*at.row, id));
    }
    return texts;
  }

 private:
  static uint8_t bit(unsigned rank) { return static_cast<uint8_t>(1U << rank); }
  uint8_t lastBit() const {
    uint8_t last = 0;
    for (unsigned rank = 0; rank < kRanks; ++rank) last = (m_ranks & bit(rank)) ? bit(rank) : last;
    return last;
  }

  std::vector<std::pair<uint32_t, uint8_t>> m_fields;  // id and ranks
  uint8_t m_ranks = 0;
};

using Key = std::pair<unsigned, std::vector<std::string_view>>;

// A row that is to be paired.
struct Candidate {
  PlacedRow at;
  std::string stable;  // all that is compared, for an order that is the rows' own
  std::string rest;
  unsigned known = 0;  // bits of the ranks that tell it apart
  bool isPaired = false;
};

void addContent(Candidate& candidate, const Group& group, const DiffTerms& terms) {
  const PlacedRow& at = candidate.at;
  std::string& stable = candidate.stable;
  const Document::Value* values = at.document->valuesOf(*at.row);
  for (uint32_t i = 0; i < at.row->valueCount; ++i) {
    const Field& field = *values[i].field;
    if (field.changeIn(terms.before) == Change::kOrder) continue;
    std::string& part = isCompared(group, field, at, at, terms) ? stable : candidate.rest;
    part += field.element;
    (part += '\0') += at.document->text(values[i].text);
    part += '\0';
  }
  const Document::Extra* extras = at.document->extrasOf(*at.row);
  for (uint32_t i = 0; i < at.row->extraCount; ++i) {
    stable += at.document->text(extras[i].name);
    (stable += '\0') += at.document->text(extras[i].text);
    stable += '\0';
  }
}

auto whole(const Candidate& candidate) { return std::tie(candidate.stable, candidate.rest); }
auto compared(const Candidate& candidate) { return std::tie(candidate.stable); }

std::vector<Candidate> candidatesOf(const Group& group, const std::vector<PlacedRow>& rows,
                                    const Identity& identity, const DiffTerms& terms) {
  std::vector<Candidate> candidates;
  for (const PlacedRow& row : rows) {
    Candidate candidate;
    candidate.at = row;
    addContent(candidate, group, terms);
    for (unsigned rank = 0; rank < kRanks; ++rank) {
      if (identity.isKnown(row, rank)) candidate.known |= 1U << rank;
    }
    candidates.push_back(std::move(candidate));
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return whole(a) < whole(b); });
  return candidates;
}

std::string shown(const Key& key) {
  std::string text;
  for (const std::string_view part : key.second) {
    if (part.empty()) continue;
    if (!text.empty()) text += ", ";
    text += part;
  }
  return text;
}

class Matcher {
 public:
  Matcher(const Group& group, const std::vector<PlacedRow>& before,
          const std::vector<PlacedRow>& after, const DiffTerms& terms)
      : m_identity(group, terms),
        m_before(candidatesOf(group, before, m_identity, terms)),
        m_after(candidatesOf(group, after, m_identity, terms)) {}

  RowMatch match() {
    for (unsigned rank = 0; rank <= kLast; ++rank) matchRank(rank);
    collectSurplus();
    return std::move(m_match);
  }

 private:
  using Bucket = std::pair<std::vector<Candidate*>, std::vector<Candidate*>>;

  bool hasRank(const Candidate& candidate, unsigned rank) const {
    return rank == kLast ? candidate.known == 0 : (candidate.known >> rank & 1U) != 0;
  }

  void matchRank(unsigned rank) {
    std::map<Key, Bucket> buckets;
    const auto fill = [&](std::vector<Candidate>& from, auto side) {
      for (Candidate& candidate : from) {
        if (candidate.isPaired || !hasRank(candidate, rank)) continue;
        (buckets[{rank, m_identity.texts(candidate.at, rank)}].*side).push_back(&candidate);
      }
    };
    fill(m_before, &Bucket::first);
    fill(m_after, &Bucket::second);
    for (auto& [key, bucket] : buckets) matchBucket(key, bucket);
  }

  void matchBucket(const Key& key, Bucket& bucket) {
    const bool isAlone = bucket.first.size() <= 1 && bucket.second.size() <= 1;
    uint32_t number = 0;
    const auto pair = [&](Candidate& before, Candidate& after) {
      before.isPaired = after.isPaired = true;
      ++number;
      const std::string suffix = isAlone ? "" : " #" + std::to_string(number);
      m_match.pairs.push_back({before.at, after.at, shown(key) + suffix});
      ++m_pairs[keyOf(before)];
    };
    pairEqual(bucket, whole, pair);
    pairEqual(bucket, compared, pair);
    pairRest(key.first, bucket, pair);
  }

  // Both sides are in the order of their contents.
  template <class Content, class Pair>
  static void pairEqual(Bucket& bucket, Content content, const Pair& pair) {
    auto after = bucket.second.begin();
    for (Candidate* before : bucket.first) {
      if (before->isPaired) continue;
      while (after != bucket.second.end() &&
             ((*after)->isPaired || content(**after) < content(*before))) {
        ++after;
      }
      if (after == bucket.second.end()) return;
      if (content(**after) == content(*before)) pair(*before, **after++);
    }
  }

  // Rows that a better rank tells apart on both sides are different things.
  template <class Pair>
  static void pairRest(unsigned rank, Bucket& bucket, const Pair& pair) {
    const unsigned better = rank == kLast ? 0 : (1U << rank) - 1;
    std::map<unsigned, std::vector<Candidate*>> left;  // by better ranks, the first one last
    for (auto next = bucket.second.rbegin(); next != bucket.second.rend(); ++next) {
      if (!(*next)->isPaired) left[(*next)->known & better].push_back(*next);
    }
    for (Candidate* before : bucket.first) {
      if (before->isPaired) continue;
      for (auto& [known, candidates] : left) {
        if ((before->known & known) != 0 || candidates.empty()) continue;
        pair(*before, *candidates.back());
        candidates.pop_back();
        break;
      }
    }
  }

  // What a row is told apart by best.
  Key keyOf(const Candidate& candidate) const {
    unsigned rank = 0;
    while (rank < kLast && !hasRank(candidate, rank)) ++rank;
    return {rank, m_identity.texts(candidate.at, rank)};
  }

  void collectSurplus() {
    std::map<Key, RowSurplus> surplus;
    for (const Candidate& candidate : m_before) {
      if (!candidate.isPaired) ++surplus[keyOf(candidate)].before;
    }
    for (const Candidate& candidate : m_after) {
      if (!candidate.isPaired) ++surplus[keyOf(candidate)].after;
    }
    for (auto& [key, counts] : surplus) {
      const uint32_t pairs = m_pairs[key];
      m_match.surplus.push_back({shown(key), counts.before + pairs, counts.after + pairs});
    }
  }

  Identity m_identity;
  std::vector<Candidate> m_before;
  std::vector<Candidate> m_after;
  std::map<Key, uint32_t> m_pairs;  // of each identity
  RowMatch m_match;
};

}  // namespace

RowMatch matchRows(const Group& group, const std::vector<PlacedRow>& before,
                   const std::vector<PlacedRow>& after, const DiffTerms& terms) {
  return Matcher(group, before, after, terms).match();
}

}  // namespace quenlor::ctl
