#include "groups/firmware/FirmwareFacts.h"

#include "identity/FirmwareText.h"

namespace quenlor {

const DmiTable* firmwareTexts(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = scan.dmi(table.outcome());
  if (dmi == nullptr) return nullptr;
  table.outcome().merge(dmi->outcome);
  return dmi->source == DmiSource::kNone ? nullptr : dmi;
}

const DmiTable* firmwareStructures(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = scan.dmi(table.outcome());
  if (dmi == nullptr) return nullptr;
  table.outcome().merge(dmi->structureOutcome);
  return dmi->source == DmiSource::kTable ? dmi : nullptr;
}

std::optional<std::string> known(const DmiText& text) {
  return text ? word(knownFirmwareText(*text)) : std::nullopt;
}

std::optional<std::string> word(std::string_view name) {
  return name.empty() ? std::nullopt : std::optional<std::string>(name);
}

}  // namespace quenlor
