#include "readers/processor/PhysicalProcDescription.h"

#include <cstring>
#include <utility>

#include "base/Text.h"
#include "log/CcLogWrapper.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/PhysicalProcessorGroup.cpp";
constexpr char kSeparator = ':';
constexpr const char* k64Bits = "64";

// Fields one after the other, each traced under its name.
class FieldReader {
 public:
  explicit FieldReader(const std::string& text) : m_text(text), m_first(m_text.data()) {}

  const char* next() { return gettoken(std::exchange(m_first, nullptr), kSeparator); }

  bool read(const char* name, int& value) {
    const char* field = next();
    if (field == nullptr) return false;
    value = decimalValue(field);
    getCcLogHw()->traceMAX(m_at(), "hardware PHYSICAL_PROCESSOR.%s=%d", name, value);
    return true;
  }

  bool read(const char* name, std::string& value) {
    const char* field = next();
    if (field == nullptr) return false;
    value = field;
    getCcLogHw()->traceMAX(m_at(), "hardware PHYSICAL_PROCESSOR.%s='%s'", name, field);
    return true;
  }

 private:
  const TraceFunction m_at{kSourcePath, "getTable()"};
  std::string m_text;
  char* m_first;
};

bool readUpToClock(FieldReader& fields, PhysicalProcDescription& found) {
  return fields.read("packageCount", found.packages) &&
         fields.read("Manufacturer", found.manufacturer) && fields.read("Family", found.family) &&
         fields.read("Type", found.type) &&
         fields.read("corePerPackageCount", found.coresPerPackage) &&
         fields.read("threadPerCoreCount", found.threadsPerCore) &&
         fields.read("cpuClockMHz", found.clockMhz);
}

}  // namespace

char* gettoken(char* text, char separator) {
  thread_local char* cursor = nullptr;
  char* token = text != nullptr ? text : cursor;
  if (token == nullptr) return nullptr;
  char* end = std::strchr(token, separator);
  cursor = end == nullptr ? nullptr : end + 1;
  if (end != nullptr) *end = '\0';
  return token;
}

std::optional<PhysicalProcDescription> parsePhysicalProc(const std::string& text) {
  FieldReader fields(text);
  PhysicalProcDescription found;
  if (!readUpToClock(fields, found)) return std::nullopt;
  if (const char* bits = fields.next()) {
    const TraceFunction at{kSourcePath, "getTable()"};
    getCcLogHw()->traceMAX(at(), "hardware PHYSICAL_PROCESSOR.bits=%d", decimalValue(bits));
    found.is64Bit = std::strncmp(bits, k64Bits, std::strlen(k64Bits)) == 0;
  }
  if (found.packages <= 0 || found.manufacturer.empty() || found.family.empty()) {
    return std::nullopt;
  }
  return found;
}

std::optional<int> physicalProcNumber(const std::string& text, int colons) {
  size_t start = 0;
  for (; colons > 0; --colons) {
    const size_t colon = text.find(kSeparator, start);
    if (colon == std::string::npos) return std::nullopt;
    start = colon + 1;
  }
  return decimalValue(text.c_str() + start);
}

}  // namespace quenlor
