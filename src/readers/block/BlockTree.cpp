#include "readers/block/BlockTree.h"

#include <set>
#include <utility>

#include "readers/block/DeviceMapper.h"
#include "readers/block/SysfsAttributes.h"

namespace quenlor {
namespace {

constexpr std::string_view kNodeDirectory = "/dev/";

std::optional<uint32_t> parseNumber32(std::string_view text) {
  const std::optional<uint64_t> value = parseDecimal(text);
  if (!value || *value > UINT32_MAX) return {};
  return static_cast<uint32_t>(*value);
}

}  // namespace

std::optional<DeviceNumber> parseDeviceNumber(std::string_view text) {
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos) return {};
  const auto major = parseNumber32(text.substr(0, colon));
  const auto minor = parseNumber32(text.substr(colon + 1));
  if (!major || !minor) return {};
  return DeviceNumber{*major, *minor};
}

std::string BlockDevice::deviceName() const {
  return "/dev/" + (mapperName.empty() ? name : "mapper/" + mapperName);
}

std::string BlockReference::deviceName() const {
  return partition == nullptr ? device->deviceName() : "/dev/" + partition->name;
}

const OnDiskNames& BlockReference::names() const {
  return partition == nullptr ? device->names : partition->names;
}

std::optional<uint64_t> BlockReference::sizeBytes() const {
  return partition == nullptr ? device->sizeBytes : partition->sizeBytes;
}

BlockTree::BlockTree(std::vector<BlockDevice> devices) : m_devices(std::move(devices)) {
  for (const BlockDevice& device : m_devices) {
    add({&device, nullptr}, device.name, device.number);
    if (!device.mapperName.empty()) m_byDeviceName[device.deviceName()] = {&device, nullptr};
    for (const Partition& partition : device.partitions) {
      add({&device, &partition}, partition.name, partition.number);
    }
  }
}

void BlockTree::add(const BlockReference& reference, const std::string& name,
                    const std::optional<DeviceNumber>& number) {
  m_byName[name] = reference;
  if (number) m_byNumber[*number] = reference;
}

BlockReference BlockTree::byName(std::string_view name) const {
  const auto found = m_byName.find(std::string(name));
  return found == m_byName.end() ? BlockReference() : found->second;
}

BlockReference BlockTree::byNumber(DeviceNumber number) const {
  const auto found = m_byNumber.find(number);
  return found == m_byNumber.end() ? BlockReference() : found->second;
}

BlockReference BlockTree::byDeviceName(std::string_view path) const {
  const auto found = m_byDeviceName.find(std::string(path));
  if (found != m_byDeviceName.end()) return found->second;
  if (!path.starts_with(kNodeDirectory)) return {};
  return byName(path.substr(kNodeDirectory.size()));
}

// Each device is looked at once: what lies below may branch and meet again.
bool BlockTree::isEncrypted(const BlockReference& reference) const {
  std::vector<const BlockDevice*> pending;
  std::set<const BlockDevice*> seen;
  const auto visit = [&](const BlockDevice* device) {
    if (device != nullptr && seen.insert(device).second) pending.push_back(device);
  };
  visit(reference.device);
  while (!pending.empty()) {
    const BlockDevice* device = pending.back();
    pending.pop_back();
    if (isEncryption(device->mapperUuid)) return true;
    for (const std::string& slave : device->slaves) visit(byName(slave).device);
  }
  return false;
}

}  // namespace quenlor
