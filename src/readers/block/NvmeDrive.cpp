#include "readers/block/NvmeDrive.h"

#include <algorithm>
#include <iterator>

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

// Controllers have no attribute for their maker, but many put it in front of the model.
constexpr std::string_view MAKERS[] = {
    "ADATA",   "Amazon",  "Corsair",  "Crucial", "Dell",     "HGST",    "HP",
    "INTEL",   "Intel",   "KINGSTON", "KIOXIA",  "Lexar",    "Micron",  "Microsoft",
    "PNY",     "QEMU",    "SAMSUNG",  "SKHynix", "SOLIDIGM", "SanDisk", "Samsung",
    "Seagate", "TOSHIBA", "VMware",   "WD",      "WDC",
};

std::string makerOf(const std::string& model) {
  const std::string word = model.substr(0, model.find_first_of(" _"));
  const bool isMaker = std::find(std::begin(MAKERS), std::end(MAKERS), word) != std::end(MAKERS);
  return isMaker && word != model ? word : std::string();
}

void addController(Drive& drive, const NvmeController& controller) {
  drive.vendor = makerOf(controller.model);
  drive.model = controller.model;
  drive.serial = controller.serial;
  drive.firmware = controller.firmware;
  drive.state = controller.state;
  drive.driver = controller.driver;
  drive.namespaceOf = controller.name;
}

void addPlace(Drive& drive, const BlockPath& path, const std::string& pciAddress,
              const std::string& identifier) {
  if (!pciAddress.empty()) drive.location = pciAddress + "/" + identifier;
  drive.place = drive.location.empty() ? path.stablePart() + "/" + identifier : drive.location;
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

// A head stands in no controller's directory; its paths do. The first one on the PCI bus speaks for
// it whichever works at the moment, so that nothing moves but the state.
std::string NvmeDrives::directoryOf(const BlockDevice& device, std::string& state) {
  std::string best = device.path.deviceDirectory();
  const std::vector<const BlockDevice*>& paths = m_paths[device.name];
  for (const BlockDevice* path : paths) {
    const std::string directory = path->path.deviceDirectory();
    const NvmeController& controller = controllerAt(directory);
    if (controller.state == kLive) state = kLive;
    const bool isFirst = path == paths.front();
    if (isFirst || controller.pciAddress < controllerAt(best).pciAddress) best = directory;
  }
  return best;
}

Drive NvmeDrives::read(const BlockDevice& device) {
  const SysfsAttributes unit(device.directory);
  const size_t paths = m_paths[device.name].size();
  std::string state;
  const NvmeController& controller = controllerAt(directoryOf(device, state));
  Drive drive;
  drive.bus = "nvme";
  addController(drive, controller);
  if (!state.empty()) drive.state = state;
  if (paths == 0 && device.path.isVirtual()) drive.namespaceOf.clear();
  drive.worldWideName = worldWideName(unit.text("wwid"));
  addPlace(drive, device.path, controller.pciAddress, unit.text("nsid"));
  if (paths != 0) drive.paths = static_cast<uint32_t>(paths);
  return drive;
}

}  // namespace quenlor
