// Texts that name the running kernel and the distribution.
#pragma once

#include <cstdint>
#include <string>

namespace quenlor {

// A kernel release such as 2.4.21-4.ELsmp.
struct KernelRelease {
  uint32_t majorVersion = 0;
  uint32_t minorVersion = 0;
  std::string subVersion;  // everything behind the second full stop
};

// Fields of a uname release; a missing number is 0, a missing rest is empty.
KernelRelease parseKernelRelease(const std::string& release);

// Replaces every run of control characters by one blank; ends at the first NUL byte. Blanks stay as
// they are, so a release file's final newline becomes a trailing blank: inventories compare equal
// with those of all earlier scans only because of it.
std::string foldControlCharacters(const std::string& text);

}  // namespace quenlor
