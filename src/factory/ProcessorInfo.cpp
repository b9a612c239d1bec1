#include <cstdlib>

#include "factory/GroupFactory.h"
#include "xmltree/Node.h"

namespace quenlor {
namespace {

constexpr const char* kDefaultCoresPerPackage = "1";

uint32_t parseCores(const String& text) {
  const String& value = text.empty() ? kDefaultCoresPerPackage : text;
  return saturateToUlong(std::strtoull(value.c_str(), nullptr, 0));
}

}  // namespace

ProcessorInfo::ProcessorInfo(const Node& element)
    : manufacturer(element.attribute("Manufactor")),
      brandId(element.attribute("BrandID")),
      signature(element.attribute("Signature")),
      type(element.attribute("Type")),
      family(element.attribute("Family")),
      model(element.attribute("Model")),
      pcx(element.attribute("PCX")),
      description(element.attribute("Description")),
      typeEnum(element.attribute("TypeEnum")) {}

QCMInfo::QCMInfo(const Node& element)
    : family(element.attribute("Family")),
      cc(element.attribute("CC")),
      newFamily(element.attribute("NewFamily")),
      coresPerPackage(parseCores(element.attribute("CoresPerPackage"))) {}

}  // namespace quenlor
