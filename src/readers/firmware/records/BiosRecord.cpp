#include "readers/firmware/records/BiosRecord.h"

#include <cstring>

namespace quenlor {
namespace {

constexpr size_t kLongestDate = 15;
constexpr size_t kShortForm = 8;  // MM/DD/YY, or YY.MM.D.
constexpr size_t kLongForm = 10;  // MM/DD/YYYY

// Puts year, month and day together by position alone: separators differ from maker to maker. A
// date of unknown length stays as it is.
std::string isoDate(const std::string& date) {
  if (date.size() != kShortForm && date.size() != kLongForm) return date;
  const std::string monthAndDay = "-" + date.substr(0, 2) + "-" + date.substr(3, 2);
  if (date.size() == kLongForm) return date.substr(6, 4) + monthAndDay;
  if (date[7] == '.') {
    return "19" + date.substr(0, 2) + "-" + date.substr(3, 2) + "-0" + date.substr(6, 1);
  }
  // Only the years 00 to 09 are of this century: meant so, firmware of later years writes four
  // digits.
  return (date[6] == '0' ? "20" : "19") + date.substr(6, 2) + monthAndDay;
}

std::string normalisedDate(const char* text) {
  const std::string date(text, strnlen(text, kLongestDate));
  return isoDate(date.substr(0, date.find(' ')));
}

// Value of the decimal digits at a position; other characters and missing ones count as 0.
int digitsAt(const std::string& text, size_t position, size_t count) {
  int value = 0;
  for (size_t i = position; i < position + count; ++i) {
    const bool isDigit = i < text.size() && text[i] >= '0' && text[i] <= '9';
    value = value * 10 + (isDigit ? text[i] - '0' : 0);
  }
  return value;
}

}  // namespace

SMBIOSTable0Data::SMBIOSTable0Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable0Data.cpp") {}

int SMBIOSTable0Data::readBlock(const TableBytes& buf, int off) {
  SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_vendor, m_version, m_startAddrSeg, m_releaseDate, m_romSize, m_low,
             m_high, m_extension1);
  return readStringSet(buf, off);
}

int SMBIOSTable0Data::getROMSizeKB() const {
  const int size = (m_romSize + 1) * 64;
  const TraceFunction at = traceFunction("getROMSizeKB()");
  getCcLogHw()->traceMAX(at(), "hardware %s %d %s", "getROMSizeKB:", size, "KB");
  return size;
}

std::optional<std::string> SMBIOSTable0Data::releaseDate() const {
  const char* text = getReleaseDate();
  if (text == nullptr) return std::nullopt;
  return normalisedDate(text);
}

char* SMBIOSTable0Data::getReleaseDateAsYYYYMMDD() const {
  const std::optional<std::string> date = releaseDate();
  return date ? strdup(date->c_str()) : nullptr;
}

time_t SMBIOSTable0Data::getReleaseDateAsTimeT() const {
  const std::optional<std::string> date = releaseDate();
  if (!date) return 0;
  struct tm local {};
  local.tm_year = digitsAt(*date, 0, 4) - 1900;
  local.tm_mon = digitsAt(*date, 5, 2) - 1;
  local.tm_mday = digitsAt(*date, 8, 2);
  local.tm_isdst = -1;
  return mktime(&local);
}

void SMBIOSTable0Data::dump() const {
  SMBIOSTableData::dump();
  print("Vendor", getVendor());
  print("Version", getVersion());
  print("Start Addr Seg", getStartAddrSeg());
  print("Release Date", getReleaseDate());
  print("ROM Size KB", getROMSizeKB());
  print("Characteristics Low", getCharacteristicsLow());
  print("Characteristics High", getCharacteristicsHigh());
  print("Extension Byte 1", getExtensionByte1());
}

}  // namespace quenlor
