// What both network groups say of an interface in the same words.
#pragma once

#include <string>

#include "readers/interfaces/InterfaceReader.h"

namespace quenlor {

// The address in use: empty for tunnels, whose "hardware" address is an IP address.
std::string currentAddressText(const NetworkInterface& interface);

// The burnt-in address, else the one in use.
std::string permanentOrCurrentText(const NetworkInterface& interface);

}  // namespace quenlor
