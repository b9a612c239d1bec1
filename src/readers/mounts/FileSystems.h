// The file systems that a machine has, out of its mounts: those that store something and those that
// come from another machine, each once.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "readers/mounts/MountInfo.h"

namespace quenlor {

// What a file-system type is, by its name alone: asking the file system may block for ever.
enum class FileSystemKind : uint8_t {
  kKernel,   // the kernel's own, an automounter's, a view of something else
  kMemory,   // tmpfs, ramfs
  kLocal,    // on a device of this machine
  kCluster,  // on a device, but other machines have a say in it
  kUser,     // a program's (fuse): what is behind it is not told
  kRemote,   // another machine's, or the host's of a guest
};

FileSystemKind fileSystemKindOf(std::string_view type);

// True for what can keep a call waiting for ever: measured after all others, and beside them.
bool mayHang(FileSystemKind kind);

struct MountedFileSystem {
  const Mount* mount = nullptr;  // the first one, into the list that was given
  FileSystemKind kind = FileSystemKind::kLocal;
  uint32_t furtherMounts = 0;
};

// In the order of their mount points in the table. Left out: the kernel's own, what package and
// container managers mount for themselves, and memory that only running programs use.
std::vector<MountedFileSystem> fileSystemsOf(const std::vector<Mount>& mounts);

}  // namespace quenlor
