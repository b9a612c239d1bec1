// Identities as kernel and devices give them: 32 hexadecimal digits.
#pragma once

#include <string>

namespace quenlor {

// The usual form, in groups of 8, 4, 4, 4 and 12. At least 20 digits.
std::string uuidOfDigits(std::string digits);

}  // namespace quenlor
