#include "readers/firmware/smbios/DumpFile.h"

#include <algorithm>
#include <charconv>
#include <climits>

namespace quenlor {
namespace {

constexpr int kFormatNumber = 1;
constexpr int kBytesPerLine = 16;
constexpr size_t kLongestText = size_t{6} * TableBytes::kMaxSize + 4096;

constexpr std::string_view kBlanks = " \t\n\v\f\r";

// Takes labels and hexadecimal numbers off the front of a text, blanks ahead of them skipped.
class DumpScanner {
 public:
  explicit DumpScanner(std::string_view text) : m_rest(text) {}

  // Value of "label" followed by a number; nothing when the text goes on differently.
  std::optional<int> field(std::string_view label) { return take(label) ? number() : std::nullopt; }

  bool take(std::string_view label) {
    skipBlanks();
    if (!m_rest.starts_with(label)) return false;
    m_rest.remove_prefix(label.size());
    return true;
  }

  // Saturated at the largest int.
  std::optional<int> number() {
    const std::optional<std::string_view> digits = takeDigits();
    if (!digits) return std::nullopt;
    int value = 0;
    const auto [last, error] =
        std::from_chars(digits->data(), digits->data() + digits->size(), value, 16);
    return error == std::errc::result_out_of_range ? INT_MAX : value;
  }

  // Low byte of a number of any size.
  std::optional<unsigned char> lowByte() {
    const std::optional<std::string_view> digits = takeDigits();
    if (!digits) return std::nullopt;
    const std::string_view last =
        digits->substr(digits->size() - std::min<size_t>(digits->size(), 2));
    unsigned char value = 0;
    std::from_chars(last.data(), last.data() + last.size(), value, 16);
    return value;
  }

 private:
  // The hexadecimal digits of the number ahead, without its prefix; nothing when there is none.
  std::optional<std::string_view> takeDigits() {
    skipBlanks();
    if (m_rest.starts_with("0x") || m_rest.starts_with("0X")) m_rest.remove_prefix(2);
    const size_t count =
        std::min(m_rest.find_first_not_of("0123456789abcdefABCDEF"), m_rest.size());
    if (count == 0) return std::nullopt;
    const std::string_view digits = m_rest.substr(0, count);
    m_rest.remove_prefix(count);
    return digits;
  }

  void skipBlanks() {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(kBlanks), m_rest.size()));
  }

  std::string_view m_rest;
};

void readBytes(DumpScanner& scanner, TableBytes& bytes) {
  for (int i = 0; i < bytes.size(); ++i) {
    const std::optional<unsigned char> value = scanner.lowByte();
    if (!value) return;
    bytes.data()[i] = *value;
  }
}

}  // namespace

void writeDump(FILE* file, const TableBytes& bytes, int numTables, int revision) {
  std::fprintf(file, "SMBIOS File Format=0x%04X\n", unsigned{kFormatNumber});
  std::fprintf(file, "SMBIOS Length=0x%04X\n", static_cast<unsigned>(bytes.size()));
  std::fprintf(file, "SMBIOS NumTables=0x%04X\n", static_cast<unsigned>(numTables));
  std::fprintf(file, "SMBIOS Revision=0x%02X\n", static_cast<unsigned>(revision));
  std::fprintf(file, "SMBIOS Data=");
  for (int i = 0; i < bytes.size(); ++i) {
    if (i % kBytesPerLine == 0) std::fputc('\n', file);
    std::fprintf(file, "0x%02X ", unsigned{bytes[i]});
  }
  std::fputc('\n', file);
}

std::string readDumpText(FILE* file) {
  std::string text;
  char piece[4096];
  size_t count = 0;
  while (text.size() < kLongestText && (count = std::fread(piece, 1, sizeof piece, file)) > 0) {
    text.append(piece, count);
  }
  return text;
}

std::optional<TableDump> parseDump(std::string_view text) {
  DumpScanner scanner(text);
  if (scanner.field("SMBIOS File Format=") != kFormatNumber) return std::nullopt;
  TableDump dump;
  dump.bytes = TableBytes(scanner.field("SMBIOS Length=").value_or(0));
  dump.numTables = scanner.field("SMBIOS NumTables=").value_or(0);
  dump.revision = scanner.field("SMBIOS Revision=").value_or(0);
  if (scanner.take("SMBIOS Data=")) readBytes(scanner, dump.bytes);
  return dump;
}

}  // namespace quenlor
