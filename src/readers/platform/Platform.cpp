#include "readers/platform/Platform.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr char kFirmware[] = "/sys/firmware";
constexpr char kSecureBoot[] =
    "/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c";
constexpr char kSetupMode[] =
    "/sys/firmware/efi/efivars/SetupMode-8be4df61-93ca-11d2-aa0d-00e098032b8c";
constexpr char kTpmClass[] = "/sys/class/tpm";
constexpr char kIommuGroups[] = "/sys/kernel/iommu_groups";
constexpr char kPlatformDevices[] = "/sys/devices/platform";
constexpr std::string_view kBmcDevice = "ipmi_bmc";
constexpr char kHypervisorUuid[] = "/sys/hypervisor/uuid";

using Entries = std::vector<DirectoryEntry>;

std::optional<Entries> entriesOf(const std::string& path) {
  Entries entries;
  if (!host().listEntries(path.c_str(), entries)) return {};
  return entries;
}

bool holds(const Entries& entries, std::string_view name) {
  return std::any_of(entries.begin(), entries.end(),
                     [name](const DirectoryEntry& entry) { return entry.name == name; });
}

// The first name, by its text, that begins so.
std::optional<std::string> firstWith(const std::string& path, std::string_view start) {
  std::optional<std::string> first;
  for (const DirectoryEntry& entry : entriesOf(path).value_or(Entries{})) {
    if (entry.name.starts_with(start) && (!first || entry.name < *first)) first = entry.name;
  }
  return first;
}

// Containers see an empty /sys/firmware in place of the machine's.
std::optional<BootMode> readBootMode() {
  const auto firmware = entriesOf(kFirmware);
  if (!firmware) return {};
  if (holds(*firmware, "efi")) return BootMode::kUefi;
  return holds(*firmware, "acpi") || holds(*firmware, "dmi") ? std::optional(BootMode::kBios)
                                                             : std::nullopt;
}

// One read only: efivarfs asks the firmware anew at each, and lets users without rights wait.
std::optional<bool> readEfiFlag(const char* path, Outcome& outcome) {
  FileStatus status = FileStatus::kAbsent;
  const auto bytes = readAttribute(path, status);
  if (status == FileStatus::kRefused) {
    outcome.note(OutcomeStatus::kPartial, "Secure Boot: refused");
  }
  return bytes ? parseEfiFlag(*bytes) : std::nullopt;
}

std::optional<bool> readSecureBoot(Outcome& outcome) {
  const auto secureBoot = readEfiFlag(kSecureBoot, outcome);
  if (!secureBoot.value_or(false)) return secureBoot;
  return isSecureBoot(secureBoot, readEfiFlag(kSetupMode, outcome));
}

// Kernels before 5.6 do not say the version; only the older kind of TPM has "caps".
void readTpm(Platform& platform) {
  const auto name = firstWith(kTpmClass, "tpm");
  if (!name) return;
  const std::string tpm = std::string(kTpmClass) + "/" + *name;
  const auto caps = readAttribute(tpm + "/device/caps");
  const auto major = readAttribute(tpm + "/tpm_version_major");
  if (major == "2") platform.tpmVersion = "2.0";
  if (major == "1" || (!major && caps)) platform.tpmVersion = "1.2";
  if (!major && !caps) {
    const auto description = readAttribute(tpm + "/device/description");
    if (description && description->find("2.0") != std::string::npos) platform.tpmVersion = "2.0";
  }
  if (caps) platform.tpmMaker = parseTpmCapsMaker(*caps);
}

// Machines have hundreds of groups; the first with a device answers the question.
std::optional<bool> readIommu() {
  const auto groups = entriesOf(kIommuGroups);
  if (!groups) return {};
  return std::any_of(groups->begin(), groups->end(), [](const DirectoryEntry& group) {
    const auto devices = entriesOf(std::string(kIommuGroups) + "/" + group.name + "/devices");
    return devices && !devices->empty();
  });
}

std::optional<std::string> readBmcFirmware() {
  const auto name = firstWith(kPlatformDevices, kBmcDevice);
  if (!name) return {};
  const auto revision =
      readAttribute(std::string(kPlatformDevices) + "/" + *name + "/firmware_revision");
  return revision && !revision->empty() ? revision : std::nullopt;
}

std::optional<std::string> readHypervisorUuid(Outcome& outcome) {
  WholeFile file = readWholeFile(kHypervisorUuid);
  if (file.status == FileStatus::kRefused) {
    outcome.note(OutcomeStatus::kPartial, "hypervisor UUID: not root");
  }
  if (file.status != FileStatus::kRead) return {};
  std::string& text = file.bytes;
  text.erase(text.find_last_not_of(" \n") + 1);
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  // Dom0 is the machine itself and has only zeros.
  const bool isUnset = text.find_first_not_of("0-") == text.npos;
  return isUnset ? std::nullopt : std::optional(text);
}

}  // namespace

Platform readPlatform() {
  Platform platform;
  platform.bootMode = readBootMode();
  if (platform.bootMode == BootMode::kUefi) platform.secureBoot = readSecureBoot(platform.outcome);
  readTpm(platform);
  platform.hasIommu = readIommu();
  platform.bmcFirmware = readBmcFirmware();
  platform.hypervisorUuid = readHypervisorUuid(platform.outcome);
  return platform;
}

}  // namespace quenlor
