// Labels and identifiers that udev has read from the devices: from its database, or from the links
// that it has made below /dev/disk where the database cannot be seen. The devices are not asked.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "readers/block/BlockTree.h"

namespace quenlor {

// Reads the list of records when it is made, and the links only where there are no records.
class OnDiskNameSource {
 public:
  OnDiskNameSource();

  // Empty when there is none. Opens the record: to be asked once for each device.
  UdevRecord recordOf(const std::optional<DeviceNumber>& number) const;
  OnDiskNames namesOf(const std::string& device, const UdevRecord& record) const;

 private:
  void readLinks();
  void readLinks(const char* directory, std::string OnDiskNames::*name);

  std::unordered_set<std::string> m_records;              // "b8:0"
  std::unordered_map<std::string, OnDiskNames> m_linked;  // by kernel name
};

}  // namespace quenlor
