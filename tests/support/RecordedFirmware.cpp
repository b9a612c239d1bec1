#include "tests/support/RecordedFirmware.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "tests/firmware/Structures.h"
#include "tests/support/RecordedTree.h"

namespace quenlor::test {
namespace {

constexpr size_t kHeader = 4;
constexpr uint32_t kTableAddress = 0x000E0000;

[[noreturn]] void refuse(const std::string& why, const std::string& line) {
  throw std::runtime_error("firmware.txt, " + why + ": " + line);
}

std::string little(uint64_t value, size_t size) {
  std::string bytes;
  for (size_t at = 0; at < size; ++at) bytes += static_cast<char>(value >> 8 * at);
  return bytes;
}

void setChecksum(std::string& bytes, size_t at, size_t first) {
  unsigned sum = 0;
  for (size_t i = first; i < bytes.size(); ++i) sum += static_cast<uint8_t>(bytes[i]);
  bytes[at] = static_cast<char>(256 - sum % 256);
}

// DMTF SMBIOS 3.0, 5.2.2.
std::string entryPoint64(Version version, size_t size) {
  std::string bytes = "_SM3_";
  bytes += '\0';
  bytes += '\x18';
  bytes += static_cast<char>(version.major);
  bytes += static_cast<char>(version.minor);
  bytes += std::string("\0\x01\0", 3) + little(size, 4) + little(kTableAddress, 8);
  setChecksum(bytes, 5, 0);
  return bytes;
}

// DMTF SMBIOS 2.1, 5.2.1.
std::string entryPoint32(Version version, size_t size, size_t count) {
  std::string bytes = "_SM_";
  bytes += std::string("\0\x1F", 2);
  bytes += static_cast<char>(version.major);
  bytes += static_cast<char>(version.minor);
  bytes += std::string(8, '\0') + "_DMI_" + '\0' + little(size, 2) + little(kTableAddress, 4) +
           little(count, 2) + static_cast<char>(version.major << 4 | version.minor);
  setChecksum(bytes, 21, 16);
  setChecksum(bytes, 4, 0);
  return bytes;
}

std::string replaced(std::string line, const std::string& what, const std::string& with) {
  for (size_t at = line.find(what); at != line.npos; at = line.find(what, at + with.size())) {
    line.replace(at, what.size(), with);
  }
  return line;
}

std::string hexText(uint32_t number, int digits) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%0*x", digits, number);
  return text.data();
}

// Calls `take` with each line; those between "repeat 0-15" and "end" once for each number, which
// stands for "{}", as two hexadecimal digits for "{x}", as four for "{xx}".
void eachLine(const std::string& text, const std::function<void(const std::string&)>& take) {
  constexpr std::string_view kRepeat = "repeat ";
  std::vector<uint32_t> numbers;
  std::vector<std::string> block;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (line.starts_with(kRepeat)) {
      numbers = recordedNumbers(line.substr(kRepeat.size()));
    } else if (line == "end") {
      for (const uint32_t number : numbers) {
        for (const std::string& one : block) {
          const std::string hex = replaced(one, "{xx}", hexText(number & 0xFFFF, 4));
          take(replaced(replaced(hex, "{x}", hexText(number & 0xFF, 2)), "{}",
                        std::to_string(number)));
        }
      }
      numbers.clear();
      block.clear();
    } else if (numbers.empty()) {
      take(line);
    } else {
      block.push_back(line);
    }
  }
  if (!numbers.empty()) refuse("no end", "repeat");
}

class Builder {
 public:
  void take(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word == "version" || word == "version32") return takeVersion(word, words, line);
    if (word == "structure") return takeStructure(words, line);
    takeField(word, words, line);
  }

  RecordedFirmware finish() {
    endStructure();
    const std::string entryPoint = m_is64Bit ? entryPoint64(m_version, m_table.size())
                                             : entryPoint32(m_version, m_table.size(), m_count);
    return {entryPoint, m_table};
  }

 private:
  void takeVersion(const std::string& word, std::istringstream& words, const std::string& line) {
    unsigned major = 0;
    unsigned minor = 0;
    char dot = 0;
    if (!(words >> major >> dot >> minor) || dot != '.') refuse("no version", line);
    m_version = {static_cast<uint8_t>(major), static_cast<uint8_t>(minor)};
    m_is64Bit = word == "version";
  }

  void takeStructure(std::istringstream& words, const std::string& line) {
    unsigned type = 0;
    if (!(words >> type) || type > 255) refuse("no type", line);
    endStructure();
    m_handle = m_count++;
    if (std::string key; words >> key && !(key == "handle" && words >> std::hex >> m_handle)) {
      refuse("no handle", line);
    }
    m_structure.emplace(static_cast<uint8_t>(type));
    m_at = kHeader;
  }

  void takeField(const std::string& where, std::istringstream& words, const std::string& line) {
    if (!m_structure) refuse("a field of no structure", line);
    if (where == "string") {
      m_structure->strings({restOf(words)});
      return;
    }
    if (std::stoul(where, nullptr, 16) != m_at) refuse("the field stands elsewhere", line);
    std::string kind;
    words >> kind;
    if (kind == "text") {
      m_structure->text(restOf(words));
      ++m_at;
    } else {
      takeNumbers(sizeOf(kind, line), words, line);
    }
  }

  // Hexadecimal numbers; what stands behind a semicolon is for the reader.
  void takeNumbers(size_t size, std::istringstream& words, const std::string& line) {
    size_t count = 0;
    for (std::string word; words >> word && word != ";"; ++count) {
      if (word.find_first_not_of("0123456789abcdef") != word.npos) refuse("no number", line);
      m_structure->raw(little(std::stoull(word, nullptr, 16), size));
      m_at += size;
    }
    if (count == 0) refuse("no number", line);
  }

  static size_t sizeOf(const std::string& kind, const std::string& line) {
    if (kind == "byte") return 1;
    if (kind == "word") return 2;
    if (kind == "dword") return 4;
    if (kind == "qword") return 8;
    refuse("unknown kind of field", line);
  }

  static std::string restOf(std::istringstream& words) {
    std::string rest;
    if (words.peek() == ' ') words.get();
    std::getline(words, rest);
    return rest;
  }

  void endStructure() {
    if (m_structure) m_table += m_structure->encode(static_cast<uint16_t>(m_handle));
    m_structure.reset();
  }

  Version m_version{3, 3};
  bool m_is64Bit = true;
  std::string m_table;
  std::optional<Structure> m_structure;
  unsigned m_handle = 0;
  unsigned m_count = 0;
  size_t m_at = 0;
};

}  // namespace

RecordedFirmware parseRecordedFirmware(const std::string& text) {
  Builder builder;
  eachLine(text, [&](const std::string& line) { builder.take(line); });
  return builder.finish();
}

}  // namespace quenlor::test
