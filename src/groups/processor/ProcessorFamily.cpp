#include "groups/processor/ProcessorFamily.h"

#include <cstring>

#include "base/Text.h"
#include "log/CcLogWrapper.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/ProcessorGroup.cpp";
constexpr const char* kUnknown = "Unknown";

// What of Intel's model numbers the three classes of a description's "PCX" tell apart.
enum ModelClass : int { kPlain = 0, kCeleron = 1, kXeon = 2 };

struct Maker {
  const char* vendorText;    // occurs in the kernel's vendor text
  const char* manufacturer;  // "Manufactor" of its descriptions
  bool hasClasses;
};

constexpr Maker MAKERS[] = {
    {"GenuineIntel", "INTEL", true}, {"AMD", "AMD", false}, {"Cyrix", "CYRIX", false}};

bool contains(const char* text, const char* part) { return std::strstr(text, part) != nullptr; }

const Maker* makerOf(const char* vendor) {
  for (const Maker& maker : MAKERS) {
    if (contains(vendor, maker.vendorText)) return &maker;
  }
  return nullptr;
}

ModelClass classOf(const char* modelName) {
  if (contains(modelName, "Celeron")) return kCeleron;
  return contains(modelName, "Xeon") ? kXeon : kPlain;
}

bool equals(const String& number, int value) { return decimalValue(number.c_str()) == value; }

}  // namespace

String familyNameIn(const std::vector<std::unique_ptr<ProcessorInfo>>& descriptions,
                    const char* vendor, int chipFamily, int chipModel, const char* modelName) {
  const Maker* maker = makerOf(vendor);
  if (maker == nullptr) return kUnknown;
  const ModelClass modelClass = classOf(modelName);
  for (const auto& description : descriptions) {
    if (description->manufacturer == maker->manufacturer &&
        equals(description->family, chipFamily) && equals(description->model, chipModel) &&
        (!maker->hasClasses ||
         (description->type == "0" && equals(description->pcx, modelClass)))) {
      return description->typeEnum;
    }
  }
  return kUnknown;
}

String getEnum(const char* vendor, int chipFamily, int chipModel, const char* modelName) {
  const TraceFunction at{kSourcePath, "getEnum()"};
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "getEnum()");
  String name = familyNameIn(GroupFactory::getInstance().processors(), vendor, chipFamily,
                             chipModel, modelName);
  getCcLogHw()->traceMidExit(at(), "hardware return = %s", name.c_str());
  return name;
}

}  // namespace quenlor
