// The members of a tar, by libarchive.
#pragma once

#include <functional>
#include <string>

#include "quenlorctl/input/ByteSource.h"

namespace quenlor::ctl {

// Gives each regular file of the archive with its name; what is not read of it is skipped. Throws
// InputError when the archive is damaged, cut off or has too many members.
void readTar(
    std::unique_ptr<ByteSource> archive,
    const std::function<void(const std::string& name, std::unique_ptr<ByteSource>)>& member);

}  // namespace quenlor::ctl
