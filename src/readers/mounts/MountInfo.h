// /proc/self/mountinfo (proc_pid_mountinfo(5)): the mounts of the scanner's own namespace, and
// which file systems they show.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/Outcome.h"

namespace quenlor {

// One line. Texts are as the kernel has them, its octal escapes decoded.
struct Mount {
  uint32_t id = 0;
  uint32_t parent = 0;
  uint32_t major = 0;  // of the file system: st_dev of its files, but for btrfs
  uint32_t minor = 0;
  std::string root;  // of the mount within its file system; not "/": a bind mount or a subvolume
  std::string point;
  std::string options;  // of this mount
  std::string type;     // "ext4", "fuse.sshfs"
  std::string source;   // "/dev/sda1", "server:/export"; may be empty
  std::string superOptions;
  bool isDeleted = false;  // the directory that is mounted has been removed
  bool isHidden = false;   // another mount stands over its mount point
};

struct MountTable {
  std::vector<Mount> mounts;  // each id once, in the kernel's order
  Outcome outcome;
};

// Reads the table, and once more if it changed meanwhile.
MountTable readMounts();

// Lines that are no mounts are left out, and an id counts where it comes first; `isConsistent` is
// false if there were any such.
std::vector<Mount> parseMountInfo(std::string_view text, bool& isConsistent);

// Marks the mounts that a path no longer leads to.
void markHidden(std::vector<Mount>& mounts);

// "\040" and its like, which the kernel writes for blanks, tabs, line ends, '#' and backslashes.
std::string decodeOctalEscapes(std::string_view text);

// True if the comma list has the word: "ro" in "ro,noatime".
bool hasOption(std::string_view options, std::string_view word);

}  // namespace quenlor
