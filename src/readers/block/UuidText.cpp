#include "readers/block/UuidText.h"

namespace quenlor {

std::string uuidOfDigits(std::string digits) {
  for (const size_t position : {20U, 16U, 12U, 8U}) digits.insert(position, 1, '-');
  return digits;
}

}  // namespace quenlor
