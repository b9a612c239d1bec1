// The plain listing of -l: a handful of well-known values gathered from a few groups.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/String.h"
#include "listing/Entry.h"

namespace quenlor {

// Attribute name and value text.
using NVPair = std::pair<std::string, std::string>;

class EntryBuilder {
 public:
  EntryBuilder() = default;
  EntryBuilder(const EntryBuilder&) = delete;
  EntryBuilder& operator=(const EntryBuilder&) = delete;
  virtual ~EntryBuilder() = default;

  // Builds all entries afresh; the number of entries, negative when they cannot be built.
  virtual int BuildAllEntries(int);
  // Prints the entries built; false when the file cannot be opened.
  virtual bool PrintEntries(const char* fileName);

  // Collects a group and appends every attribute whose catalogue name is one of names, row after
  // row, to result, which is emptied first. The number kept; 0 without arguments, group, table or
  // record.
  static int RetrieveAttributeValue(const String& groupName, const std::vector<std::string>* names,
                                    std::vector<NVPair>* result);
  // A value block as text: numbers in decimal, texts in the locale's encoding.
  static std::string GetVELAttributeAsString(const unsigned char* block);

 protected:
  // Collects a group; the attributes of these names, row after row.
  static std::vector<NVPair> retrieve(const char* group, const std::vector<std::string>& names);

  void clear();
  int count() const { return static_cast<int>(m_entries.size()); }
  SimpleEntry& addSimple(const char* id);
  // One value for each pair of the name.
  void addValues(const char* id, const std::vector<NVPair>& pairs, const char* attribute);
  void addOsVersion(const std::vector<NVPair>& system);
  void addHwPlatform(const std::vector<NVPair>& system);
  void addRam(const std::vector<NVPair>& memory);

 private:
  AttributeReplacingEntry& addReplacing(const char* id);
  void add(std::unique_ptr<IEntry> entry);

  void addOsType(const std::vector<NVPair>& system);
  void addDisks(const std::vector<NVPair>& partitions);

  std::vector<std::unique_ptr<IEntry>> m_owned;
  std::vector<IEntry*> m_entries;
};

// Sum in gigabytes of the sizes paired with local disks, in the order the pairs come; the second is
// false when there was no local disk. A size waits for the next media type 3, whichever row that is
// in.
std::pair<long long, bool> sumLocalDisks(const std::vector<NVPair>& pairs);

}  // namespace quenlor
