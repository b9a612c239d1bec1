// Texts of typed values: what both writers share, and the debug dump.
#include "tables/Render.h"

#include <cinttypes>
#include <climits>
#include <clocale>
#include <cwchar>
#include <memory>
#include <string>

#include "base/Text.h"
#include "tables/ValueBlock.h"

namespace quenlor {
namespace {

constexpr const char* kTypeTags[] = {
    "VEL_UCHAR",  "VEL_USHORT",      "VEL_ULONG",    "VEL_UQUAD",     "VEL_FLOAT",    "VEL_DOUBLE",
    "VEL_STRING", "VEL_OCTETSTRING", "VEL_DATETIME", "VEL_ULONGLONG", "VEL_LONGLONG",
};

// A "%f" locale for the life of the process: the thread's locale is switched, never the global one.
locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

void printOctetsOfBlock(FILE* file, const unsigned char* value) {
  const auto length = readNumber<uint32_t>(value);
  if (length != 0) PrintOctetStringToFile(file, value + sizeof length, length);
}

// The value alone, as the debug dump and the writers agree on it; false for the types on which they
// do not.
bool printCommonValue(FILE* file, uint32_t type, const unsigned char* value) {
  switch (type) {
    case VEL_UCHAR:
      std::fprintf(file, "0x%02X", *value);
      return true;
    case VEL_UQUAD:  // the first word only, and signed: receivers know it so
      std::fprintf(file, "%" PRId32, readNumber<int32_t>(value));
      return true;
    case VEL_FLOAT:
      PrintVelFloat(file, static_cast<double>(readNumber<float>(value)));
      return true;
    case VEL_DOUBLE:
      PrintVelFloat(file, readNumber<double>(value));
      return true;
    case VEL_STRING:
      PrintVelStringToFile(file, value);
      return true;
    case VEL_OCTETSTRING:
      printOctetsOfBlock(file, value);
      return true;
    case VEL_DATETIME:
      PrintVelTimeBlockToFile(file, reinterpret_cast<const char*>(value));
      return true;
    default:
      return false;
  }
}

// A stored string, escaped for MIF.
std::wstring escapedText(const unsigned char* velString) {
  const std::wstring text = readText(velString);
  const wchar_t* escaped = dmtf_escape(text.c_str());
  std::wstring result(escaped);
  if (escaped != text.c_str()) delete[] escaped;
  return result;
}

}  // namespace

std::string toLocale(const wchar_t* text) {
  std::string bytes;
  std::mbstate_t state{};
  const auto append = [&](wchar_t character) {
    char converted[MB_LEN_MAX];
    const size_t length = std::wcrtomb(converted, character, &state);
    if (length == static_cast<size_t>(-1)) return false;
    bytes.append(converted, length);
    return true;
  };
  // Some encodings hold a character back until they know whether the next one joins it; the
  // terminator, which is not ours to write, sets it free.
  const auto release = [&] {
    if (append(L'\0')) bytes.pop_back();
    state = {};
  };
  for (; *text != L'\0'; ++text) {
    const std::mbstate_t before = state;
    if (append(*text)) continue;
    state = before;
    release();
    bytes += '?';
  }
  release();
  return bytes;
}

const char* getVelAttribTypeAsString(uint32_t code) {
  if (code < VEL_UCHAR || code > VEL_LONGLONG) return "Undefined Attrib Type";
  return kTypeTags[code - VEL_UCHAR];
}

void PrintVelAttribValueToFile(FILE* file, const unsigned char* block) {
  const uint32_t type = blockType(block);
  const unsigned char* value = blockValue(block);
  if (printCommonValue(file, type, value)) return;
  switch (type) {
    case VEL_USHORT:
      std::fprintf(file, "%d", readNumber<uint16_t>(value));
      break;
    case VEL_ULONG:
      std::fprintf(file, "%" PRIu32, readNumber<uint32_t>(value));
      break;
    case VEL_ULONGLONG:
      std::fprintf(file, "%" PRIu64, readNumber<uint64_t>(value));
      break;
    case VEL_LONGLONG:
      std::fprintf(file, "%" PRId64, readNumber<int64_t>(value));
      break;
    default:
      break;
  }
}

void PrintVelAttribValue(const unsigned char* block) {
  const uint32_t type = blockType(block);
  const unsigned char* value = blockValue(block);
  std::printf("\n\t\t---len      : %" PRIu32, blockLength(block));
  std::printf("\n\t\t   attribId : x%08" PRIX32, blockAttribId(block));
  std::printf("\n\t\t   vel_type : %" PRIu32 " (%s)", type, getVelAttribTypeAsString(type));
  std::printf("\n\t\t   value    : ");
  if (printCommonValue(stdout, type, value)) return;
  switch (type) {
    case VEL_USHORT:
      std::printf("%d (0x%04X)", readNumber<uint16_t>(value), readNumber<uint16_t>(value));
      break;
    case VEL_ULONG:
      std::printf("%" PRIu32 " (0x%08" PRIX32 ")", readNumber<uint32_t>(value),
                  readNumber<uint32_t>(value));
      break;
    // The hexadecimal column of 8-byte values shows their low 32 bits, padded with blanks.
    case VEL_ULONGLONG:
      std::printf("%" PRIu64 " (0x%16" PRIX32 ")", readNumber<uint64_t>(value),
                  static_cast<uint32_t>(readNumber<uint64_t>(value)));
      break;
    case VEL_LONGLONG:
      std::printf("%" PRId64 " (0x%16" PRIX32 ")", readNumber<int64_t>(value),
                  static_cast<uint32_t>(readNumber<uint64_t>(value)));
      break;
    default:
      std::printf("Unknown attrib value type");
      break;
  }
}

void PrintVelFloat(FILE* file, double value) {
  const locale_t previous = uselocale(cLocale());
  std::fprintf(file == nullptr ? stdout : file, "%f", value);
  uselocale(previous);
}

void PrintOctetStringToFile(FILE* file, const unsigned char* bytes, uint32_t length) {
  std::fputc('"', file);
  for (uint32_t i = 0; i < length; ++i) std::fprintf(file, "%02X", bytes[i]);
  std::fputc('"', file);
}

// Stops at the first zero: a time that the calendar cannot express is stored as zeros, and a zero
// byte would make a document unreadable.
void PrintVelTimeBlockToFile(FILE* file, const char* characters) {
  std::fprintf(file, "%.*s", static_cast<int>(kDateTimeSize), characters);
}

void PrintVelStringToFile(FILE* file, const unsigned char* velString) {
  const std::string bytes = toLocale(escapedText(velString).c_str());
  std::fwrite(bytes.data(), 1, bytes.size(), file);
}

void PrintVelStringAsUtf8(FILE* file, const unsigned char* velString) {
  std::string bytes;
  for (const wchar_t character : escapedText(velString)) {
    if (character != L'\0') appendUtf8(bytes, static_cast<uint32_t>(character));
  }
  std::fwrite(bytes.data(), 1, bytes.size(), file);
}

void PrintVelEnumToFile(FILE* file, const velAttribDef* attrib) {
  if (attrib == nullptr || attrib->enumTable == nullptr) return;
  for (const velEnumDef* pair = attrib->enumTable; pair->value != kCatalogueEnd; ++pair) {
    std::fprintf(file, "\n\t\t%" PRId32 " = \"%s\"", static_cast<int32_t>(pair->value), pair->text);
  }
}

const wchar_t* dmtf_escape(const wchar_t* text) {
  if (*text == L'\0') return text;
  constexpr wchar_t kHexDigits[] = L"0123456789abcdef";
  std::wstring escaped;
  for (const wchar_t* next = text; *next != L'\0'; ++next) {
    if (*next > 0 && *next < 32) {
      escaped += L"\\x";
      escaped += kHexDigits[*next / 16];
      escaped += kHexDigits[*next % 16];
      continue;
    }
    if (*next == L'\\' || *next == L'"') escaped += L'\\';
    escaped += *next;
  }
  auto* copy = new wchar_t[escaped.size() + 1];
  std::wmemcpy(copy, escaped.c_str(), escaped.size() + 1);
  return copy;
}

}  // namespace quenlor
