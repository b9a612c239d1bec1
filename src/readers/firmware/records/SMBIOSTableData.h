// Base of all SMBIOS structure records: header, string set, and the helpers that make a record
// class a list of fields.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "log/CcLogWrapper.h"
#include "readers/firmware/records/TableBytes.h"

namespace quenlor {

// A field that holds the number of a string in the structure's string set; 0: there is none.
struct StringNumber {
  uint8_t value = 0;
};

class SMBIOSTableData {
 public:
  // revision: the table's revision word, major version in the high byte, minor in the low one.
  // sourcePath: names the record class in the trace; must outlive the record.
  SMBIOSTableData(int revision, const char* sourcePath);
  SMBIOSTableData(const SMBIOSTableData&) = delete;
  SMBIOSTableData& operator=(const SMBIOSTableData&) = delete;
  virtual ~SMBIOSTableData() = default;
  // Debug print to standard output.
  virtual void dump() const;

  bool hasData() const { return m_hasData != 0; }
  int getRevision() const { return m_revision; }

  // Reads type and formatted length; the offset behind the formatted area.
  int readBlock(const TableBytes& buf, int off);
  // Reads the string set at p. Strings beyond the fifteenth are counted, but not kept.
  void getStrings(const TableBytes& buf, int p);
  // Text of a string number, owned by the record; null for 0 and for a string that is not there.
  const char* stringFromIndex(int n) const;
  // Copies src to dst (at least strlen(src) + 1 bytes) with "." for everything but printable ASCII.
  // Returns dst; null when src is null.
  static char* removeInvalidChars(char* dst, const char* src);

 protected:
  static constexpr size_t kMaxStrings = 15;

  int majorVersion() const { return m_revision >> 8 & 0xFF; }
  int minorVersion() const { return m_revision & 0xFF; }
  int formattedLength() const { return m_formattedLength; }
  int stringSetSize() const { return m_stringSetSize; }

  // Reads neighbouring fields, each as wide as its variable; the offset behind the last one. Fields
  // beyond the formatted length are read all the same: they yield bytes of what follows.
  template <class... Fields>
  static int readFields(const TableBytes& buf, int off, Fields&... fields) {
    ((off = readField(buf, off, fields)), ...);
    return off;
  }
  // Reads the string set behind the formatted area of a structure; the offset behind the structure.
  int readStringSet(const TableBytes& buf, int off);

  // Value of a field, traced under the label and the caller's name and line. (The built-ins are
  // what gcc and clang 14 have in common; clang's std::source_location is missing.)
  const char* traced(const char* label, StringNumber field,
                     const char* function = __builtin_FUNCTION(),
                     uint32_t line = __builtin_LINE()) const {
    const char* text = stringFromIndex(field.value);
    if (getCcLogHw()->isEnabled(TraceLevel::kMax))
      traceText(label, text, {m_sourcePath, calledName(function).c_str(), line});
    return text;
  }
  template <class Number>
  Number traced(const char* label, Number field, const char* function = __builtin_FUNCTION(),
                uint32_t line = __builtin_LINE()) const {
    if (getCcLogHw()->isEnabled(TraceLevel::kMax)) {
      const auto bits = static_cast<uint32_t>(static_cast<std::make_unsigned_t<Number>>(field));
      traceNumber(label, bits, 2 * sizeof field,
                  {m_sourcePath, calledName(function).c_str(), line});
    }
    return field;
  }
  // Single bit of a field, traced under the label.
  bool tracedBit(const char* label, uint32_t field, unsigned bit,
                 const char* function = __builtin_FUNCTION(),
                 uint32_t line = __builtin_LINE()) const {
    return traced(label, static_cast<uint8_t>(field >> bit & 1), function, line) != 0;
  }
  // For a function that traces more than a field.
  TraceFunction traceFunction(const char* function) const { return {m_sourcePath, function}; }

  static void print(const char* label, const char* text);
  static void print(const char* label, int64_t number);

 private:
  static int readField(const TableBytes& buf, int off, uint8_t& field);
  static int readField(const TableBytes& buf, int off, uint16_t& field);
  static int readField(const TableBytes& buf, int off, uint32_t& field);
  static int readField(const TableBytes& buf, int off, StringNumber& field);
  static int readField(const TableBytes& buf, int off, std::array<uint8_t, 16>& field);

  // Trace records name functions with their parentheses.
  static std::string calledName(const char* function) { return std::string(function) + "()"; }
  static void traceText(const char* label, const char* text, const TracePoint& at);
  static void traceNumber(const char* label, uint32_t number, size_t digits, const TracePoint& at);

  int32_t m_type = 0;
  int32_t m_revision;
  int32_t m_formattedLength = 0;
  int32_t m_stringSetSize = 0;  // bytes, final zero included
  int32_t m_hasData = 0;
  std::vector<std::string> m_strings;  // empty until the first string is read
  const char* m_sourcePath;
};

}  // namespace quenlor
