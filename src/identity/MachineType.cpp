// Machine type (four characters) hidden in the product texts of one maker's machines:
// "...-[867041X]-" or the bare seven-character type and model number.
#include <cstring>

#include "identity/Identity.h"

namespace quenlor {
namespace {

constexpr size_t kTypeLength = 4;
constexpr size_t kTypeAndModelLength = 7;

void copyType(const char* from, char* out) {
  std::memcpy(out, from, kTypeLength);
  out[kTypeLength] = '\0';
}

}  // namespace

void getTypeFromProd(const char* product, char* out) {
  const char* bracket = std::strchr(product, '[');
  if (bracket == nullptr) {
    if (std::strlen(product) == kTypeAndModelLength) copyType(product, out);
    return;
  }
  const char* type = bracket + 1;
  if (std::strlen(type) < kTypeLength) {
    *out = '\0';
  } else {
    copyType(type, out);
  }
}

}  // namespace quenlor
