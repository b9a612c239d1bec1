// What an input is, by its first bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "quenlorctl/input/ByteSource.h"

namespace quenlor::ctl {

enum class InputKind : uint8_t { kXml, kGzip, kZstd, kTar };

// RFC 1952, section 2.3.1; RFC 8878, section 3.1; POSIX ustar. What is none of them is XML.
InputKind kindOf(std::string_view firstBytes);

// Expanded as often as it is packed once: XML or a tar is left. Throws InputError.
struct SniffedSource {
  InputKind kind;
  std::unique_ptr<ByteSource> bytes;
};
SniffedSource sniff(std::unique_ptr<ByteSource> source);

}  // namespace quenlor::ctl
