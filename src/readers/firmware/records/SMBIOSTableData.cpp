#include "readers/firmware/records/SMBIOSTableData.h"

#include <cstdio>

namespace quenlor {
namespace {

bool isPrintable(char c) { return c >= ' ' && c <= '~'; }

}  // namespace

SMBIOSTableData::SMBIOSTableData(int revision, const char* sourcePath)
    : m_revision(revision), m_sourcePath(sourcePath) {}

int SMBIOSTableData::readBlock(const TableBytes& buf, int off) {
  m_type = IntelByteBuffer::readUCHAR(buf, off);
  m_formattedLength = IntelByteBuffer::readUCHAR(buf, off + 1);
  m_stringSetSize = 1;
  m_hasData = 1;
  m_strings.clear();
  return off + m_formattedLength;
}

// An empty string set, two zeros, is read as one empty string: its size then comes out as 2.
void SMBIOSTableData::getStrings(const TableBytes& buf, int p) {
  do {
    const std::string_view text = buf.textAt(p);
    if (m_strings.size() < kMaxStrings) m_strings.emplace_back(text);
    const int length = static_cast<int>(text.size()) + 1;
    m_stringSetSize += length;
    p += length;
  } while (buf[p] != 0);
}

int SMBIOSTableData::readStringSet(const TableBytes& buf, int off) {
  getStrings(buf, off + m_formattedLength);
  return off + m_formattedLength + m_stringSetSize;
}

const char* SMBIOSTableData::stringFromIndex(int n) const {
  if (n < 1 || static_cast<size_t>(n) > m_strings.size()) return nullptr;
  return m_strings[static_cast<size_t>(n) - 1].c_str();
}

char* SMBIOSTableData::removeInvalidChars(char* dst, const char* src) {
  if (src == nullptr) return nullptr;
  char* out = dst;
  for (; *src != '\0'; ++src) *out++ = isPrintable(*src) ? *src : '.';
  *out = '\0';
  return dst;
}

int SMBIOSTableData::readField(const TableBytes& buf, int off, uint8_t& field) {
  field = IntelByteBuffer::readUCHAR(buf, off);
  return off + 1;
}

int SMBIOSTableData::readField(const TableBytes& buf, int off, uint16_t& field) {
  field = IntelByteBuffer::readUSHORT(buf, off);
  return off + 2;
}

int SMBIOSTableData::readField(const TableBytes& buf, int off, uint32_t& field) {
  field = IntelByteBuffer::readULONG(buf, off);
  return off + 4;
}

int SMBIOSTableData::readField(const TableBytes& buf, int off, StringNumber& field) {
  return readField(buf, off, field.value);
}

int SMBIOSTableData::readField(const TableBytes& buf, int off, std::array<uint8_t, 16>& field) {
  IntelByteBuffer::readCHARArray(buf, off, field.data(), static_cast<int>(field.size()));
  return off + static_cast<int>(field.size());
}

void SMBIOSTableData::traceText(const char* label, const char* text, const TracePoint& at) {
  std::string clean(text == nullptr ? 0 : std::char_traits<char>::length(text), '\0');
  if (removeInvalidChars(clean.data(), text) == nullptr) clean = "-none-";
  getCcLogHw()->traceMAX(at, "hardware %s %s", label, clean.c_str());
}

void SMBIOSTableData::traceNumber(const char* label, uint32_t number, size_t digits,
                                  const TracePoint& at) {
  getCcLogHw()->traceMAX(at, "hardware %s %0*X", label, static_cast<int>(digits), number);
}

void SMBIOSTableData::dump() const {
  std::printf("\n\nSMBIOS Header -----------------------------------------------------------");
  std::printf("\n   Type  : %d", m_type);
  std::printf("\n   Length: x%04X", static_cast<unsigned>(m_formattedLength));
}

void SMBIOSTableData::print(const char* label, const char* text) {
  std::printf("\n   %-28s: %s", label, text == nullptr ? "" : text);
}

void SMBIOSTableData::print(const char* label, int64_t number) {
  std::printf("\n   %-28s: %lld", label, static_cast<long long>(number));
}

}  // namespace quenlor
