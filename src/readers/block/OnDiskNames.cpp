#include "readers/block/OnDiskNames.h"

#include <vector>

#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kRecords = "/run/udev/data";

struct LinkDirectory {
  const char* path;
  std::string OnDiskNames::*name;
};
constexpr LinkDirectory LINK_DIRECTORIES[] = {
    {"/dev/disk/by-uuid", &OnDiskNames::uuid},
    {"/dev/disk/by-label", &OnDiskNames::label},
    {"/dev/disk/by-partuuid", &OnDiskNames::partitionUuid},
    {"/dev/disk/by-partlabel", &OnDiskNames::partitionLabel},
};

}  // namespace

OnDiskNameSource::OnDiskNameSource() {
  std::vector<DirectoryEntry> entries;
  host().listEntries(kRecords, entries);
  for (DirectoryEntry& entry : entries) {
    if (entry.name.starts_with('b')) m_records.insert(std::move(entry.name));
  }
  if (m_records.empty()) readLinks();
}

void OnDiskNameSource::readLinks() {
  for (const LinkDirectory& directory : LINK_DIRECTORIES) {
    readLinks(directory.path, directory.name);
  }
}

void OnDiskNameSource::readLinks(const char* directory, std::string OnDiskNames::*name) {
  std::vector<DirectoryEntry> entries;
  host().listEntries(directory, entries);
  for (const DirectoryEntry& entry : entries) {
    const std::string path = std::string(directory) + "/" + entry.name;
    std::string target;
    if (!host().readLink(path.c_str(), target)) continue;
    const std::string device = resolveLink(directory, target);
    constexpr std::string_view kNodes = "/dev/";
    if (!device.starts_with(kNodes)) continue;
    m_linked[device.substr(kNodes.size())].*name = trimmed(decodeUdevEscapes(entry.name));
  }
}

UdevRecord OnDiskNameSource::recordOf(const std::optional<DeviceNumber>& number) const {
  if (!number) return {};
  const std::string name =
      "b" + std::to_string(number->major) + ":" + std::to_string(number->minor);
  if (!m_records.contains(name)) return {};
  return parseUdevRecord(readWholeFile(std::string(kRecords) + "/" + name).bytes);
}

OnDiskNames OnDiskNameSource::namesOf(const std::string& device, const UdevRecord& record) const {
  const auto linked = m_linked.find(device);
  if (linked != m_linked.end()) return linked->second;
  OnDiskNames names;
  names.fileSystem = record.text("ID_FS_TYPE");
  names.label = record.text("ID_FS_LABEL_ENC");
  names.uuid = record.text("ID_FS_UUID_ENC");
  if (names.uuid.empty()) names.uuid = record.text("ID_FS_UUID");
  names.partitionUuid = record.text("ID_PART_ENTRY_UUID");
  names.partitionLabel = record.text("ID_PART_ENTRY_NAME");
  return names;
}

}  // namespace quenlor
