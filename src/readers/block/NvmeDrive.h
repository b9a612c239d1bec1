// The identity of NVMe namespaces: their own identifiers, and what their controller tells.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "readers/block/BlockTree.h"
#include "readers/block/Drive.h"

namespace quenlor {

// One controller, or the subsystem that stands for several.
struct NvmeController {
  std::string name;  // "nvme0"
  std::string pciAddress;
  std::string model;
  std::string serial;
  std::string firmware;
  std::string state;
  std::string driver;
};

// Of "nvme0c1n2" the head "nvme0n2"; empty for a name of another form.
std::string nvmeHeadOf(std::string_view hiddenPath);

class NvmeDrives {
 public:
  // Finds the hidden paths behind the heads. The tree must outlive this.
  explicit NvmeDrives(const BlockTree& tree);

  // Each controller's attributes are read once, however many namespaces it has.
  Drive read(const BlockDevice& device);

 private:
  const NvmeController& controllerAt(const std::string& directory);
  // Of the controller that speaks for the device; the state is set if one of several works.
  std::string directoryOf(const BlockDevice& device, std::string& state);

  std::map<std::string, std::vector<const BlockDevice*>> m_paths;  // by the head's name
  std::map<std::string, NvmeController> m_controllers;             // by directory
};

}  // namespace quenlor
