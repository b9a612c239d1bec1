// The documents of files, of what is packed in them and of what comes in by standard input.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quenlorctl/input/DocumentParser.h"

namespace quenlor::ctl {

inline constexpr size_t kMostMembers = 1'000'000;  // of an archive

// Every document of the files in their order; "-" is standard input, and no file means that too. A
// file is XML (documents one after another), gzip or Zstandard of that, or a tar (packed or not) of
// all these. Troubles end the document, the member or the file that they are of, and nothing else.
void readInputs(const std::vector<std::string>& files, const InputSinks& sinks);

// The same of bytes in memory.
void readBytes(std::string_view bytes, const std::string& file, const InputSinks& sinks);

}  // namespace quenlor::ctl
