// The description of a host's processors that its agent publishes to the guests:
// "packages:manufacturer:family:type:cores per package:threads per core:MHz", then perhaps ":bits".
#pragma once

#include <optional>
#include <string>

namespace quenlor {

// Like strtok with one separator that is never merged: two adjacent ones hold an empty token. A
// text starts on that text, which is cut in place; null continues. The rest comes last, then null.
// Not re-entrant within a thread.
char* gettoken(char* text, char separator);

struct PhysicalProcDescription {
  int packages = 0;
  std::string manufacturer;
  std::string family;
  std::string type;
  int coresPerPackage = 0;
  int threadsPerCore = 0;
  int clockMhz = 0;
  std::optional<bool> is64Bit;  // nothing without a bits field
};

// Nothing when a field up to the clock is missing, the package count is not positive, or
// manufacturer or family is empty.
std::optional<PhysicalProcDescription> parsePhysicalProc(const std::string& text);

// Leading decimal of the field behind that many colons; nothing when there is no such field.
std::optional<int> physicalProcNumber(const std::string& text, int colons);

}  // namespace quenlor
