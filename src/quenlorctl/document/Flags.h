// What the field catalogue says of an attribute beside its type.
#pragma once

#include <cstdint>

namespace quenlor::ctl {

// The sources of the scan that wrote a document.
enum class Sources : uint8_t { kClassic, kModern };

// When a value changes on an unchanged machine: never, with a reboot, any time; or a row number.
enum class Change : uint8_t { kStable, kBoot, kVolatile, kOrder };

// What kind of private value it is; kDerived is a digest of one.
enum class Privacy : uint8_t { kNone, kSerial, kUuid, kMac, kIp, kHost, kPath, kText, kDerived };

// "classic" or "modern".
inline const char* sourcesWord(Sources sources) {
  return sources == Sources::kModern ? "modern" : "classic";
}

}  // namespace quenlor::ctl
