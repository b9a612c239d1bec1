#include "readers/firmware/machine/smbiosinfo.h"

#include <string>

#include "identity/Identity.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/memory/EntryPoint.h"
#include "readers/firmware/memory/PhysicalMemory.h"
#include "readers/firmware/smbios/SMBIOSTable.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/com/smbiosinfo.cpp";
constexpr TraceFunction at{kSourcePath, "getSmbiosInfo()"};

constexpr char kDefaultName[] =
    "Linux";  // manufacturer and product of a machine that names neither
constexpr char kMakerWithMachineTypes[] = "ZUM";
constexpr size_t kLongestNumber = 32;  // serial number and version
constexpr size_t kLongestName = 255;   // manufacturer and product

// The system information structure found through the checked "_SM_" entry point; no strings when
// there is none.
smbios_sysinfo_table_entry findSystemInformation() {
  CcLogWrapper* log = getCcLogHw();
  smbios_sysinfo_table_entry found;
  smbios_table_entry_point entryPoint;
  if (find_table_ep(&entryPoint) != 0) {
    log->traceMIN(at(), "hardware Cannot find table entry point");
    return found;
  }
  log->traceMAX(at(), "hardware Find table entry point");
  const uint64_t start = entryPoint.tableAddress();
  slm_handle handle = nullptr;
  void* mapped = slm_phys_mmap(start, start + entryPoint.tableLength(), kPageAligned, &handle);
  if (mapped == kMapFailed) return found;
  find_entry(static_cast<const unsigned char*>(mapped) + slm_page_off(start), &entryPoint, &found);
  slm_phys_munmap(&handle);
  return found;
}

String stringOf(const smbios_sysinfo_table_entry& info, unsigned number, size_t longest,
                const String& absent) {
  return number == 0 ? absent : String(info.strings[number - 1].substr(0, longest));
}

// Replaces a field by the shared table's text where that is a valid one.
void replaceByValid(String& field, const char* text) {
  std::string valid = SMBIOSTable::validText(text);
  if (!valid.empty()) field = String(std::move(valid));
}

const SMBIOSTable1Data* sharedSystemRecord() {
  const bool available = globalSMBIOSTable != nullptr && globalSMBIOSTable->isAvailable();
  return available ? globalSMBIOSTable->getTable1() : nullptr;
}

}  // namespace

smbiosinfo::smbiosinfo() : m_manufacturer(kDefaultName), m_product(kDefaultName) {
  getSmbiosInfo();
}

void smbiosinfo::getSmbiosInfo() {
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "smbiosinfo");
  readEntryPointStrings();
  readSharedTable();
  if (m_manufacturer == kMakerWithMachineTypes) {
    char type[5] = "";
    getTypeFromProd(m_product.c_str(), type);
    m_type = type;
  }
  log->traceMidExit(at(), "hardware %s", "smbiosinfo");
}

void smbiosinfo::readEntryPointStrings() {
  const smbios_sysinfo_table_entry info = findSystemInformation();
  if (info.strings.empty()) return;
  CcLogWrapper* log = getCcLogHw();
  m_serialNumber = stringOf(info, info.serialNumber(), kLongestNumber, "");
  log->traceMAX(at(), "hardware %s%s", "-->SerialNumber=", m_serialNumber.c_str());
  // The version string is where this structure carries the machine type.
  m_type = stringOf(info, info.version(), kLongestNumber, "");
  log->traceMAX(at(), "hardware %s%s", "-->Type=", m_type.c_str());
  m_manufacturer = stringOf(info, info.manufacturer(), kLongestName, kDefaultName);
  log->traceMAX(at(), "hardware %s%s", "-->Manufacturer=", m_manufacturer.c_str());
  m_product = stringOf(info, info.product(), kLongestName, m_manufacturer);
  log->traceMAX(at(), "hardware %s%s", "Product retrieved for linux intel=", m_product.c_str());
}

void smbiosinfo::readSharedTable() {
  CcLogWrapper* log = getCcLogHw();
  const SMBIOSTable1Data* record = sharedSystemRecord();
  if (record == nullptr) {
    log->traceMAX(at(), "hardware %s", "SMBIOS TABLE 1 IS NOT AVAILABLE!");
    return;
  }
  log->traceMAX(at(), "hardware use SMBIOSTable1Data");
  replaceByValid(m_manufacturer, record->getManufacturer());
  replaceByValid(m_product, record->getProduct());
  replaceByValid(m_serialNumber, record->getSerialNumber());
  replaceByValid(m_version, record->getVersion());
  log->traceMAX(at(), "hardware %s", "SMBIOS TABLE 1 IS AVAILABLE!");
}

}  // namespace quenlor
