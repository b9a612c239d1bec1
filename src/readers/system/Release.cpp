#include "readers/system/Release.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "tables/VelTable.h"

namespace quenlor {
namespace {

uint32_t parseVersionField(const char* field) {
  if (field == nullptr) return 0;
  return saturateToUlong(static_cast<uint64_t>(std::max(0L, std::strtol(field, nullptr, 10))));
}

}  // namespace

KernelRelease parseKernelRelease(const std::string& release) {
  KernelRelease result;
  std::string scratch = release;
  char* rest = nullptr;
  result.majorVersion = parseVersionField(strtok_r(scratch.data(), ".", &rest));
  result.minorVersion = parseVersionField(strtok_r(nullptr, ".", &rest));

  const size_t first = release.find('.');
  const size_t second = first == std::string::npos ? first : release.find('.', first + 1);
  if (second != std::string::npos) result.subVersion = release.substr(second + 1);
  return result;
}

std::string foldControlCharacters(const std::string& text) {
  std::string folded;
  bool inRun = false;
  for (const char character : text) {
    if (character == '\0') break;
    const bool control = std::iscntrl(static_cast<unsigned char>(character)) != 0;
    if (!control) folded += character;
    if (control && !inRun) folded += ' ';
    inRun = control;
  }
  return folded;
}

}  // namespace quenlor
