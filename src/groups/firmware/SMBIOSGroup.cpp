#include "groups/firmware/SMBIOSGroup.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "catalogue/Catalogue.h"
#include "identity/Identity.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "readers/firmware/smbios/SM_HWSecurity.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/SMBIOS/SMBIOSGroup.cpp";
constexpr TraceFunction at{kSourcePath, "getTableLeg()"};

constexpr uint32_t kBiosDate = 3;
constexpr uint32_t kBiosSize = 4;
constexpr uint32_t kEnclosureType = 15;
constexpr uint32_t kId = 19;
constexpr uint32_t kPowerOnPassword = 20;

constexpr unsigned kChassisLock = 0x80;
constexpr unsigned kFirstUnnamedEnclosure = 26;
constexpr unsigned short kLastPasswordStatus = 3;
constexpr unsigned short kNotImplemented = 2;

enum class Identity : bool { kNo, kYes };

// An attribute that is the text of one record.
template <class Record>
struct TextField {
  uint32_t id;
  Identity identity;
  const char* label;
  const char* (Record::*get)() const;
};

constexpr TextField<SMBIOSTable0Data> BIOS_FIELDS[] = {
    {1, Identity::kYes, "BIOS Vendor:", &SMBIOSTable0Data::getVendor},
    {2, Identity::kYes, "BIOS Version:", &SMBIOSTable0Data::getVersion},
};

constexpr TextField<SMBIOSTable1Data> SYSTEM_FIELDS[] = {
    {5, Identity::kYes, "System Manufacturer:", &SMBIOSTable1Data::getManufacturer},
    {6, Identity::kYes, "System Product Name:", &SMBIOSTable1Data::getProduct},
    {7, Identity::kYes, "System Version:", &SMBIOSTable1Data::getVersion},
    {8, Identity::kNo, "System Serial Number:", &SMBIOSTable1Data::getSerialNumber},
    {9, Identity::kNo, "System UUID:", &SMBIOSTable1Data::getUUIDAsString},
};

constexpr TextField<SMBIOSTable2Data> BOARD_FIELDS[] = {
    {10, Identity::kYes, "Board Manufacturer:", &SMBIOSTable2Data::getManufacturer},
    {11, Identity::kYes, "Board Product:", &SMBIOSTable2Data::getProduct},
    {12, Identity::kYes, "Board Version:", &SMBIOSTable2Data::getVersion},
    {13, Identity::kNo, "Board Serial Number:", &SMBIOSTable2Data::getSerialNumber},
};

// The enclosure's type stands between its manufacturer and the rest.
constexpr TextField<SMBIOSTable3Data> ENCLOSURE_MAKER_FIELDS[] = {
    {14, Identity::kYes, "Enclosure Manufacturer:", &SMBIOSTable3Data::getManufacturer},
};
constexpr TextField<SMBIOSTable3Data> ENCLOSURE_FIELDS[] = {
    {16, Identity::kYes, "Enclosure Version:", &SMBIOSTable3Data::getVersion},
    {17, Identity::kNo, "Enclosure Serial Number:", &SMBIOSTable3Data::getSerialNumber},
    {18, Identity::kNo, "Enclosure Asset Tag:", &SMBIOSTable3Data::getAssetTag},
};

// The row being built, and the text whose digest identifies the machine's hardware: there a "|"
// stands for every text that is missing, so that it has the same shape on all machines.
class SmbiosRow {
 public:
  SmbiosRow() : m_row(std::make_unique<VelTableRow>()) {}

  template <class Record, size_t kCount>
  void addTexts(const Record* record, const TextField<Record> (&fields)[kCount]) {
    for (const TextField<Record>& field : fields) {
      const char* text = record == nullptr ? nullptr : (record->*field.get)();
      addValid(field.id, field.label, text, field.identity);
    }
  }

  void addValid(uint32_t id, const char* label, const char* text, Identity identity) {
    const std::string valid = SMBIOSTable::validText(text);
    getCcLogHw()->traceMAX(at(), "hardware %s %s", label, valid.empty() ? "-none-" : valid.c_str());
    if (identity == Identity::kYes) m_identity += valid.empty() ? "|" : valid;
    if (!valid.empty()) addText(*m_row, counted(id), valid);
  }

  void addSize(uint32_t id, int sizeKB) {
    const std::string size = std::to_string(sizeKB) + "K";
    m_identity += size;
    addText(*m_row, counted(id), size);
  }

  void addCode(uint32_t id, uint32_t code) {
    m_identity += std::to_string(code);
    addUlong(*m_row, counted(id), code);
  }

  void addId() {
    if (!m_hasIdentity) return;
    getCcLogHw()->traceMAX(at(), "hardware %s %zu", "MD5 PK input len:", m_identity.size());
    addText(*m_row, kId, md5Text(m_identity));
  }

  void addPowerOnPassword() {
    unsigned short status = 0;
    unsigned short unused = 0;
    SM_HWSecurity(&status, &unused);
    addUlong(*m_row, kPowerOnPassword, status > kLastPasswordStatus ? kNotImplemented : status);
  }

  VelTableRow* release() { return m_row.release(); }

 private:
  // Vendor, version and date of the firmware alone identify no machine.
  uint32_t counted(uint32_t id) {
    m_hasIdentity = m_hasIdentity || id >= kBiosSize;
    return id;
  }

  std::unique_ptr<VelTableRow> m_row;
  std::string m_identity;
  bool m_hasIdentity = false;
};

void addBios(SmbiosRow& row, const SMBIOSTable0Data* bios) {
  row.addTexts(bios, BIOS_FIELDS);
  const std::optional<std::string> date = bios == nullptr ? std::nullopt : bios->releaseDate();
  row.addValid(kBiosDate, "BIOS Date:", date ? date->c_str() : nullptr, Identity::kNo);
  if (bios != nullptr) row.addSize(kBiosSize, bios->getROMSizeKB());
}

void addEnclosure(SmbiosRow& row, const SMBIOSTable3Data* enclosure) {
  row.addTexts(enclosure, ENCLOSURE_MAKER_FIELDS);
  const unsigned type = enclosure == nullptr ? 0 : enclosure->getType() & ~kChassisLock;
  if (type != 0 && type < kFirstUnnamedEnclosure) row.addCode(kEnclosureType, type);
  row.addTexts(enclosure, ENCLOSURE_FIELDS);
}

void tracePresent(const void* record, const char* text) {
  if (record != nullptr) getCcLogHw()->traceMAX(at(), "hardware %s", text);
}

}  // namespace

SMBIOSGroup::SMBIOSGroup() : VelGroup(group::kSmbios, 1) {}

VelTable* SMBIOSGroup::getTable() {
  const TraceFunction function{kSourcePath, "getTable()"};
  getCcLogHw()->traceMidEntry(function(), "hardware %s", "SMBIOSGroup Group");
  VelTable* table = getTableLeg();
  getCcLogHw()->traceMidExit(function(), "hardware %s", "SMBIOSGroup Group");
  return table;
}

VelTable* SMBIOSGroup::getTableLeg() {
  const SMBIOSTable* smbios = globalSMBIOSTable;
  if (smbios == nullptr || !smbios->isAvailable()) return nullptr;
  tracePresent(smbios->getTable0(), "SMBIOS TABLE 0 IS AVAILABLE");
  tracePresent(smbios->getTable1(), "SMBIOS TABLE 1 IS AVAILABLE");
  tracePresent(smbios->getTable2(), "SMBIOS TABLE 2 IS AVAILABLE");
  tracePresent(smbios->getTable3(), "SMBIOS TABLE 3 IS AVAILABLE");
  SmbiosRow row;
  addBios(row, smbios->getTable0());
  row.addTexts(smbios->getTable1(), SYSTEM_FIELDS);
  row.addTexts(smbios->getTable2(), BOARD_FIELDS);
  addEnclosure(row, smbios->getTable3());
  row.addId();
  row.addPowerOnPassword();
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  return table.release();
}

}  // namespace quenlor
