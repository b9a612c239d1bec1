#include "readers/block/NvmeDrive.h"

#include "readers/block/SysfsAttributes.h"

namespace quenlor {
namespace {

constexpr std::string_view kLive = "live";

NvmeController readController(const std::string& directory) {
  const SysfsAttributes attributes(directory);
  NvmeController controller;
  controller.name = directory.substr(directory.rfind('/') + 1);
  controller.pciAddress = BlockPath(directory).pciAddress();
  controller.model = attributes.text("model");
  controller.serial = attributes.text("serial");
  controller.firmware = attributes.text("firmware_rev");
  controller.state = attributes.text("state");
  controller.driver = attributes.linkName("device/driver");
  return controller;
}

void addController(Drive& drive, const NvmeController& controller) {
  drive.model = controller.model;
  drive.serial = controller.serial;
  drive.firmware = controller.firmware;
  drive.state = controller.state;
  drive.driver = controller.driver;
  drive.namespaceOf = controller.name;
}

}  // namespace

std::string nvmeHeadOf(std::string_view hiddenPath) {
  const size_t controller = hiddenPath.find('c');
  const size_t unit = hiddenPath.rfind('n');
  const bool isPath =
      hiddenPath.starts_with("nvme") && controller != std::string_view::npos && unit > controller;
  if (!isPath) return {};
  return std::string(hiddenPath.substr(0, controller)) + std::string(hiddenPath.substr(unit));
}

NvmeDrives::NvmeDrives(const BlockTree& tree) {
  for (const BlockDevice& device : tree.devices()) {
    if (device.kind != BlockKind::kHiddenPath) continue;
    m_paths[nvmeHeadOf(device.name)].push_back(&device);
  }
}

const NvmeController& NvmeDrives::controllerAt(const std::string& directory) {
  const auto found = m_controllers.find(directory);
  if (found != m_controllers.end()) return found->second;
  return m_controllers.emplace(directory, readController(directory)).first->second;
}

// A head stands in no controller's directory; its paths do, and one that works speaks for it.
Drive NvmeDrives::read(const BlockDevice& device) {
  const SysfsAttributes unit(device.directory);
  const std::vector<const BlockDevice*>& paths = m_paths[device.name];
  std::string directory = device.path.deviceDirectory();
  for (const BlockDevice* path : paths) {
    const std::string candidate = path->path.deviceDirectory();
    const bool isLive = controllerAt(candidate).state == kLive;
    if (isLive || path == paths.front()) directory = candidate;
    if (isLive) break;
  }
  const NvmeController& controller = controllerAt(directory);
  Drive drive;
  drive.bus = "nvme";
  addController(drive, controller);
  if (paths.empty() && device.path.isVirtual()) drive.namespaceOf.clear();
  drive.worldWideName = worldWideName(unit.text("wwid"));
  const std::string identifier = unit.text("nsid");
  if (!controller.pciAddress.empty()) drive.location = controller.pciAddress + "/" + identifier;
  drive.place =
      drive.location.empty() ? device.path.stablePart() + "/" + identifier : drive.location;
  if (!paths.empty()) drive.paths = static_cast<uint32_t>(paths.size());
  return drive;
}

}  // namespace quenlor
