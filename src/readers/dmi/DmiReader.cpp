#include "readers/dmi/DmiReader.h"

#include <charconv>
#include <string>
#include <utility>

#include "host/WholeFile.h"
#include "readers/dmi/DmiMemory.h"

namespace quenlor {
namespace {

constexpr char kEntryPointPath[] = "/sys/firmware/dmi/tables/smbios_entry_point";
constexpr char kTablePath[] = "/sys/firmware/dmi/tables/DMI";
constexpr size_t kTableLimit = 16u << 20;  // bytes; the largest servers have a few hundred KiB

constexpr char kTextsPath[] = "/sys/class/dmi/id/";

// The kernel's texts of one machine; counts what is there and what only root may read.
class KernelTexts {
 public:
  // A file's text without its line end; nothing when the kernel has none or does not show it.
  DmiText text(const char* name) {
    WholeFile file = readWholeFile(std::string(kTextsPath) + name);
    if (file.status == FileStatus::kRefused) m_wasRefused = true;
    if (file.status != FileStatus::kRead) return {};
    m_found = true;
    if (file.bytes.ends_with('\n')) file.bytes.pop_back();
    return std::move(file.bytes);
  }

  std::optional<uint8_t> number(const char* name) {
    const DmiText digits = text(name);
    uint8_t value = 0;
    if (!digits) return {};
    const char* end = digits->data() + digits->size();
    const auto parsed = std::from_chars(digits->data(), end, value);
    return parsed.ec == std::errc() ? std::optional(value) : std::nullopt;
  }

  bool found() const { return m_found; }
  bool wasRefused() const { return m_wasRefused; }

 private:
  bool m_found = false;
  bool m_wasRefused = false;
};

DmiBios biosOf(KernelTexts& texts) {
  return {.vendor = texts.text("bios_vendor"),
          .version = texts.text("bios_version"),
          .date = texts.text("bios_date"),
          .romKiB = {},
          .revision = texts.text("bios_release"),
          .controllerRevision = texts.text("ec_firmware_release"),
          .isVirtualMachine = {}};
}

DmiSystem systemOf(KernelTexts& texts) {
  DmiSystem system{.manufacturer = texts.text("sys_vendor"),
                   .product = texts.text("product_name"),
                   .version = texts.text("product_version"),
                   .serial = texts.text("product_serial"),
                   .sku = texts.text("product_sku"),
                   .family = texts.text("product_family"),
                   .uuid = {},
                   .uuidText = texts.text("product_uuid")};
  if (system.uuidText) system.uuidText = dmiUuidText(*system.uuidText);
  return system;
}

DmiBoard boardOf(KernelTexts& texts) {
  return {.manufacturer = texts.text("board_vendor"),
          .product = texts.text("board_name"),
          .version = texts.text("board_version"),
          .serial = texts.text("board_serial"),
          .assetTag = texts.text("board_asset_tag"),
          .location = {},
          .isHosting = false,
          .kind = {}};
}

DmiEnclosure enclosureOf(KernelTexts& texts) {
  return {.manufacturer = texts.text("chassis_vendor"),
          .version = texts.text("chassis_version"),
          .serial = texts.text("chassis_serial"),
          .assetTag = texts.text("chassis_asset_tag"),
          .sku = {},
          .kind = texts.number("chassis_type"),
          .heightUnits = {}};
}

// Nothing when the kernel offers no table; a table without source when it refuses it.
std::optional<DmiTable> readDmiFiles() {
  const WholeFile entryPoint = readWholeFile(kEntryPointPath);
  if (entryPoint.status == FileStatus::kAbsent) return {};
  const WholeFile table =
      entryPoint.status == FileStatus::kRead ? readWholeFile(kTablePath, kTableLimit) : entryPoint;
  if (table.status == FileStatus::kRead) return decodeDmi(entryPoint.bytes, table.bytes);
  DmiTable none;
  if (table.status == FileStatus::kRefused) {
    none.outcome.note(OutcomeStatus::kRefused, "firmware table: not root");
  } else {
    none.outcome.note(OutcomeStatus::kFailed, "firmware table: unreadable");
  }
  return none;
}

}  // namespace

DmiTable readDmiTexts() {
  KernelTexts texts;
  DmiTable table;
  table.bios = biosOf(texts);
  table.system = systemOf(texts);
  table.boards.push_back(boardOf(texts));
  table.enclosure = enclosureOf(texts);
  if (texts.wasRefused()) {
    table.outcome.note(OutcomeStatus::kPartial, "serial numbers: not root");
  }
  if (texts.found()) {
    table.source = DmiSource::kKernelTexts;
    return table;
  }
  DmiTable none;
  none.outcome.note(texts.wasRefused() ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                    "firmware table: none");
  return none;
}

DmiTable readDmi(bool isLockedDown) {
  std::optional<DmiTable> table = readDmiFiles();
  if (!table && !isLockedDown) table = readDmiFromMemory();
  if (table && table->source != DmiSource::kNone) return std::move(*table);
  DmiTable texts = readDmiTexts();
  if (table) {
    const bool hasTexts = texts.source == DmiSource::kKernelTexts;
    texts.outcome.note(hasTexts ? OutcomeStatus::kPartial : table->outcome.status(),
                       table->outcome.reason());
    texts.structureOutcome = table->outcome;
  } else {
    texts.structureOutcome.note(OutcomeStatus::kNoSource, "firmware table: none");
  }
  return texts;
}

}  // namespace quenlor
