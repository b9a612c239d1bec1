// SMBIOS: firmware, system, board and enclosure, from the firmware's table of any version.
#include <algorithm>

#include "groups/firmware/FirmwareFacts.h"
#include "groups/modern/Collectors.h"
#include "identity/FirmwareText.h"
#include "identity/Identity.h"
#include "readers/dmi/DmiFacts.h"
#include "readers/firmware/smbios/SMBIOSTable.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kBiosDate = 3;
constexpr uint32_t kBiosSize = 4;
constexpr uint32_t kSystemUuid = 9;
constexpr uint32_t kEnclosureType = 15;
constexpr uint32_t kId = 19;
constexpr uint32_t kPowerOnPassword = 20;
constexpr uint32_t kUuidText = 101;
constexpr uint32_t kSmbiosVersion = 107;
constexpr uint32_t kBiosSizeKb = 108;
constexpr uint32_t kEnclosureHeight = 111;

constexpr uint8_t kUnknownPassword = 3;

// What the digest counts of sizes and enclosure types, so that it is the one that a machine had
// before both lists grew.
constexpr uint32_t kLargestCountedRomKiB = 16384;
constexpr uint8_t kLastCountedEnclosure = 25;

template <class Record>
struct TextField {
  uint32_t id;
  DmiText Record::*text;
};

constexpr TextField<DmiBios> BIOS_FIELDS[] = {{1, &DmiBios::vendor},
                                              {2, &DmiBios::version},
                                              {105, &DmiBios::revision},
                                              {106, &DmiBios::controllerRevision}};
constexpr TextField<DmiSystem> SYSTEM_FIELDS[] = {
    {5, &DmiSystem::manufacturer}, {6, &DmiSystem::product}, {7, &DmiSystem::version},
    {8, &DmiSystem::serial},       {102, &DmiSystem::sku},   {103, &DmiSystem::family}};
constexpr TextField<DmiBoard> BOARD_FIELDS[] = {
    {10, &DmiBoard::manufacturer}, {11, &DmiBoard::product},   {12, &DmiBoard::version},
    {13, &DmiBoard::serial},       {104, &DmiBoard::assetTag}, {110, &DmiBoard::location}};
constexpr TextField<DmiEnclosure> ENCLOSURE_FIELDS[] = {{14, &DmiEnclosure::manufacturer},
                                                        {16, &DmiEnclosure::version},
                                                        {17, &DmiEnclosure::serial},
                                                        {18, &DmiEnclosure::assetTag},
                                                        {109, &DmiEnclosure::sku}};

template <class Record, size_t kCount>
void addTexts(ModernRow& row, const Record& record, const TextField<Record> (&fields)[kCount]) {
  for (const TextField<Record>& field : fields) row.text(field.id, known(record.*field.text));
}

// 32 upper-case hexadecimal digits in stored order.
std::optional<std::string> storedDigits(const std::optional<DmiUuid>& uuid) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  if (!uuid) return {};
  std::string text;
  for (const uint8_t byte : *uuid) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

// The text whose digest identifies the machine's hardware. A "|" stands for every text that is
// missing, so that it has the same shape on all machines.
class IdentityText {
 public:
  void add(const DmiText& text) {
    const bool isKnown = text && !isPlaceholder(*text);
    const std::string valid = isKnown ? SMBIOSTable::validText(text->c_str()) : "";
    m_text += valid.empty() ? "|" : valid;
  }
  void addNumber(uint32_t number, const char* unit = "") {
    m_text += std::to_string(number) + unit;
  }
  const std::string& text() const { return m_text; }

 private:
  std::string m_text;
};

void addEnclosure(IdentityText& identity, const DmiEnclosure& enclosure) {
  identity.add(enclosure.manufacturer);
  if (enclosure.kind && *enclosure.kind <= kLastCountedEnclosure) {
    identity.addNumber(*enclosure.kind);
  }
  identity.add(enclosure.version);
}

// Texts without date, serial numbers, UUID and asset tags.
std::string identityOf(const DmiBios* bios, const DmiSystem& system, const DmiBoard& board,
                       const DmiEnclosure& enclosure) {
  IdentityText identity;
  identity.add(bios == nullptr ? std::nullopt : bios->vendor);
  identity.add(bios == nullptr ? std::nullopt : bios->version);
  if (bios != nullptr) {
    identity.addNumber(
        std::min(bios->romKiB.value_or(kLargestCountedRomKiB), kLargestCountedRomKiB), "K");
  }
  for (const DmiText& text : {system.manufacturer, system.product, system.version}) {
    identity.add(text);
  }
  for (const DmiText& text : {board.manufacturer, board.product, board.version}) identity.add(text);
  addEnclosure(identity, enclosure);
  return identity.text();
}

void addBios(ModernRow& row, const DmiBios& bios) {
  addTexts(row, bios, BIOS_FIELDS);
  const auto date = known(bios.date);
  if (date) row.text(kBiosDate, dmiDate(*date));
  if (bios.romKiB) row.text(kBiosSize, std::to_string(*bios.romKiB) + "K");
  row.ulong(kBiosSizeKb, bios.romKiB);
}

void addSystem(ModernRow& row, const DmiSystem& system) {
  addTexts(row, system, SYSTEM_FIELDS);
  row.text(kSystemUuid, storedDigits(system.uuid)).text(kUuidText, system.uuidText);
}

void addEnclosure(ModernRow& row, const DmiEnclosure& enclosure) {
  addTexts(row, enclosure, ENCLOSURE_FIELDS);
  row.ulong(kEnclosureType, enclosure.kind).ulong(kEnclosureHeight, enclosure.heightUnits);
}

std::optional<std::string> versionText(const std::optional<DmiVersion>& version) {
  if (!version) return {};
  return std::to_string(version->major) + "." + std::to_string(version->minor);
}

uint32_t powerOnPassword(const DmiTable& dmi) {
  return dmi.hardwareSecurity ? *dmi.hardwareSecurity >> 6 : kUnknownPassword;
}

// Without the structures the digest would lack the firmware's size: a scan without rights would
// tell another one than a scan with them.
std::optional<std::string> identityDigest(const DmiTable& dmi) {
  const bool hasMachine = dmi.bios || dmi.system || dmi.enclosure || !dmi.boards.empty();
  if (dmi.source != DmiSource::kTable || !hasMachine) return {};
  const DmiBoard* board = dmi.mainBoard();
  return md5Text(identityOf(dmi.bios ? &*dmi.bios : nullptr, dmi.system.value_or(DmiSystem{}),
                            board == nullptr ? DmiBoard{} : *board,
                            dmi.enclosure.value_or(DmiEnclosure{})));
}

}  // namespace

void collectSmbios(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = firmwareTexts(scan, table);
  if (dmi == nullptr) return;
  ModernRow& row = table.addRow();
  if (dmi->bios) addBios(row, *dmi->bios);
  if (dmi->system) addSystem(row, *dmi->system);
  if (const DmiBoard* board = dmi->mainBoard()) addTexts(row, *board, BOARD_FIELDS);
  if (dmi->enclosure) addEnclosure(row, *dmi->enclosure);
  row.text(kId, identityDigest(*dmi))
      .text(kSmbiosVersion, versionText(dmi->version))
      .ulong(kPowerOnPassword, powerOnPassword(*dmi));
}

}  // namespace quenlor
