#include "quenlorctl/diff/DiffRules.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iterator>
#include <optional>
#include <set>
#include <string>

namespace quenlor::ctl {
namespace {

constexpr uint32_t kFirstModernAttribute = 101;

struct FieldId {
  uint32_t group;
  uint32_t field;
};

// Attributes whose meaning is another with the other kind of sources.
constexpr FieldId OTHER_MEANING[] = {
    {group::kProcessor, 2},         // ID
    {group::kStorage, 2},           // ID
    {group::kNetworkAdapter, 2},    // ID
    {group::kNetworkAdapter, 6},    // Model
    {group::kNetworkAdapter, 7},    // Manufacturer
    {group::kIpAddress, 3},         // Hostname
    {group::kIpAddress, 4},         // Domain
    {group::kUnixSystemParams, 4},  // Computer Alias
};

constexpr uint32_t OTHER_ROWS[] = {group::kProcessor, group::kPhysicalProcessor,
                                   group::kIpAddress, group::kNetworkAdapter,
                                   group::kPartition, group::kStorage};

// The kernel reserves some megabytes more or less with each start.
constexpr FieldId MEMORY_TOTALS[] = {{group::kMemory, 1},     // Total Physical
                                     {group::kMemory, 3},     // Total Virtual
                                     {group::kMemory, 5},     // Total Page
                                     {group::kMemory, 104}};  // Total Physical Bytes
constexpr double kMemoryTolerance = 0.02;

// The moment is computed from a clock and an uptime, and moves when the clock is set.
constexpr FieldId BOOT_TIMES[] = {{group::kUnixSystemParams, 1}, {group::kOperatingSystem, 16}};
constexpr double kBootTolerance = 120;  // s
constexpr uint32_t kBootId = 103;       // UNIX System Params

// What a scan tells of itself: versions, build.
constexpr FieldId OF_SCANNER[] = {
    {group::kScanInfo, 2}, {group::kScanInfo, 3}, {group::kScanInfo, 7}, {group::kScanInfo, 5}};

constexpr uint32_t kStorageSizeBytes = 103;
constexpr uint32_t kStorageRemovable = 109;

constexpr uint32_t kAdapterId = 2;
constexpr uint32_t kAdapterAddress = 3;
constexpr uint32_t kAdapterCurrentAddress = 4;
constexpr uint32_t kAdapterModel = 6;
constexpr uint32_t kInterface = 101;  // of adapters and of addresses
constexpr uint32_t kAdapterKind = 102;
constexpr std::string_view CONTAINER_KINDS[] = {"veth", "tun", "tap", "ifb", "dummy"};

constexpr uint32_t kResultGroup = 1;  // Scan Result
constexpr uint32_t kResultStatus = 4;

template <size_t size>
bool isAmong(const FieldId (&list)[size], const Group& group, const Field& field) {
  return std::any_of(std::begin(list), std::end(list), [&](const FieldId& id) {
    return id.group == group.id && id.field == field.id;
  });
}

bool isWithin(double before, double after, double part) {
  return std::abs(before - after) <= part * std::max(std::abs(before), std::abs(after));
}

double asNumber(const Document::Value& value) {
  return value.field->form == Form::kInteger ? static_cast<double>(value.number.integer)
                                             : static_cast<double>(value.number.number);
}

// Seconds since some moment, as if the machine stood in UTC.
std::optional<double> seconds(std::string_view dateTime) {
  const auto iso = isoDateTime(dateTime);
  if (!iso) return {};
  std::tm fields{};
  if (strptime(iso->c_str(), "%Y-%m-%dT%H:%M:%S", &fields) == nullptr) return {};
  return static_cast<double>(timegm(&fields));
}

bool isSameStart(const PlacedRow& before, const Document::Value& valueBefore,
                 const PlacedRow& after, const Document::Value& valueAfter) {
  const auto bootId = [](const PlacedRow& at) {
    return at.document->textOf(group::kUnixSystemParams, kBootId);
  };
  if (!bootId(before).empty() && bootId(before) == bootId(after)) return true;
  const auto then = seconds(before.document->text(valueBefore.text));
  const auto now = seconds(after.document->text(valueAfter.text));
  return then && now && std::abs(*then - *now) <= kBootTolerance;
}

bool isRemovable(const PlacedRow& row) {
  return row.document->textOf(*row.row, kStorageRemovable) == "Y";
}

// Of a drive whose medium can be changed.
bool isSizeOfMedium(const Group& group, const Field& field, const PlacedRow& before,
                    const PlacedRow& after) {
  return group.id == group::kStorage && field.id == kStorageSizeBytes &&
         (isRemovable(before) || isRemovable(after));
}

std::vector<PlacedRow> rowsOf(const Document& document, const Group& group) {
  std::vector<PlacedRow> rows;
  for (const Document::Row& row : document.rows()) {
    if (row.group == &group) rows.push_back({&document, &row});
  }
  return rows;
}

std::set<std::string_view> containerInterfaces(const Document& document) {
  std::set<std::string_view> names;
  for (const Document::Row& row : document.rows()) {
    if (row.group == nullptr || row.group->id != group::kNetworkAdapter) continue;
    const std::string_view kind = document.textOf(row, kAdapterKind);
    if (std::find(std::begin(CONTAINER_KINDS), std::end(CONTAINER_KINDS), kind) !=
        std::end(CONTAINER_KINDS)) {
      names.insert(document.textOf(row, kInterface));
    }
  }
  return names;
}

void dropContainers(const Document& document, std::vector<PlacedRow>& rows) {
  const std::set<std::string_view> names = containerInterfaces(document);
  std::erase_if(rows, [&](const PlacedRow& at) {
    return names.contains(document.textOf(*at.row, kInterface));
  });
}

// Which of its rows stands for an adapter must not depend on their order.
void foldAdapters(const Document& document, std::vector<PlacedRow>& rows) {
  const auto rest = [&](const PlacedRow& at) {
    return std::pair(document.textOf(*at.row, kAdapterId),
                     document.textOf(*at.row, kAdapterCurrentAddress));
  };
  std::stable_sort(rows.begin(), rows.end(),
                   [&](const auto& a, const auto& b) { return rest(a) < rest(b); });
  std::set<std::pair<std::string_view, std::string_view>> seen;
  std::erase_if(rows, [&](const PlacedRow& at) {
    return !seen.insert({document.textOf(*at.row, kAdapterAddress),
                         document.textOf(*at.row, kAdapterModel)})
                .second;
  });
}

}  // namespace

bool isCompared(const Group& group, const Field& field, const PlacedRow& before,
                const PlacedRow& after, const DiffTerms& terms) {
  const auto is = [&](Change change) {
    return field.changeIn(terms.before) == change || field.changeIn(terms.after) == change;
  };
  if (is(Change::kOrder)) return false;
  if (terms.isAcross() &&
      (field.id >= kFirstModernAttribute || isAmong(OTHER_MEANING, group, field))) {
    return false;
  }
  if (terms.isAll) return true;
  return !is(Change::kVolatile) && !isSizeOfMedium(group, field, before, after);
}

bool isStableIdentity(const Group& group, const Field& field, const DiffTerms& terms) {
  return field.identityIn(terms.common()) != 0 &&
         !(terms.isAcross() && isAmong(OTHER_MEANING, group, field));
}

bool hasOtherRows(const Group& group, const DiffTerms& terms) {
  return terms.isAcross() &&
         std::find(std::begin(OTHER_ROWS), std::end(OTHER_ROWS), group.id) != std::end(OTHER_ROWS);
}

bool isAlike(const Group& group, const PlacedRow& before, const Document::Value& valueBefore,
             const PlacedRow& after, const Document::Value& valueAfter) {
  const Field& field = *valueBefore.field;
  if (isAmong(MEMORY_TOTALS, group, field)) {
    return isWithin(asNumber(valueBefore), asNumber(valueAfter), kMemoryTolerance);
  }
  return isAmong(BOOT_TIMES, group, field) && isSameStart(before, valueBefore, after, valueAfter);
}

bool isOfScanner(const Group& group, const Field& field) {
  return isAmong(OF_SCANNER, group, field);
}

std::vector<PlacedRow> comparedRows(const Document& document, const Group& group,
                                    const DiffTerms& terms) {
  std::vector<PlacedRow> rows = rowsOf(document, group);
  const bool isAdapter = group.id == group::kNetworkAdapter;
  const bool isModern = document.sources() == Sources::kModern;
  if (isModern && !terms.isAll && (isAdapter || group.id == group::kIpAddress)) {
    dropContainers(document, rows);
  }
  if (!isModern && isAdapter) foldAdapters(document, rows);
  return rows;
}

bool isComplete(const Document& document, const Group& group) {
  const bool isModern = document.sources() == Sources::kModern;
  bool hasRows = false;
  for (const Document::Row& row : document.rows()) {
    hasRows = hasRows || row.group == &group;
    if (!isModern || row.group == nullptr || row.group->id != group::kScanResult) continue;
    if (document.textOf(row, kResultGroup) == group.name) {
      return document.textOf(row, kResultStatus) == "complete";
    }
  }
  // A document does not say of the table of results how complete it is; and a classic one of none.
  return hasRows && (!isModern || group.id == group::kScanResult);
}

}  // namespace quenlor::ctl
