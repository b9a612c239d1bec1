#include "readers/mounts/MountTypes.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace quenlor {
namespace {

constexpr uint32_t kUnknownType = 65535;

constexpr uint32_t kMediaUnknown = 0;
constexpr uint32_t kMediaFloppy = 2;
constexpr uint32_t kMediaFixed = 3;
constexpr uint32_t kMediaRemote = 4;
constexpr uint32_t kMediaCd = 5;

struct TypeCode {
  std::string_view name;
  uint32_t code;
};

// "minux" is meant: inventories have always shown minix mounts as 65535 and must not change.
constexpr TypeCode TYPE_CODES[] = {
    {"minux", 131},   {"ext", 131},      {"ext2", 131},  {"ext3", 131},  {"xiafs", 131},
    {"vxfs", 66},     {"hpfs", 7},       {"s5", 99},     {"ufs", 262},   {"swap", 130},
    {"iso9660", 264}, {"msdos", 14},     {"tmpfs", 267}, {"subfs", 281}, {"smbfs", 282},
    {"nfs", 260},     {"vfat", 11},      {"ntfs", 7},    {"jfs2", 285},  {"jfs", 258},
    {"afs", 261},     {"reiserfs", 280},
};
static_assert(std::size(TYPE_CODES) == 22);

constexpr std::string_view PARTITION_TYPES[] = {
    "s5",    "vxfs", "memfs", "ufs",  "bfs",      "ext", "ext2",  "ext3",  "minux", "hpfs",
    "xiafs", "swap", "msdos", "vfat", "reiserfs", "jfs", "tmpfs", "subfs", "ntfs",
};
static_assert(std::size(PARTITION_TYPES) == 19);

constexpr std::string_view REMOTE_TYPES[] = {"nfs", "afs", "smbfs"};

// On a device of this machine, in its memory, or made by its kernel.
constexpr std::string_view LOCAL_TYPES[] = {
    "bcachefs", "befs",       "bfs",      "binder",     "binfmt_misc", "bpf",      "btrfs",
    "cgroup",   "cgroup2",    "configfs", "cramfs",     "debugfs",     "devpts",   "devtmpfs",
    "efivarfs", "efs",        "erofs",    "exfat",      "ext",         "ext2",     "ext3",
    "ext4",     "f2fs",       "fusectl",  "hfs",        "hfsplus",     "hpfs",     "hugetlbfs",
    "iso9660",  "jffs2",      "jfs",      "jfs2",       "memfs",       "minix",    "minux",
    "mqueue",   "msdos",      "nilfs2",   "nsfs",       "ntfs",        "ntfs3",    "overlay",
    "proc",     "pstore",     "qnx4",     "qnx6",       "ramfs",       "reiserfs", "resctrl",
    "romfs",    "rpc_pipefs", "s5",       "securityfs", "selinuxfs",   "smackfs",  "squashfs",
    "subfs",    "sysfs",      "sysv",     "tmpfs",      "tracefs",     "ubifs",    "udf",
    "ufs",      "usbfs",      "vfat",     "vxfs",       "xenfs",       "xfs",      "xiafs",
    "zfs",      "zonefs",
};

constexpr std::string_view LEFT_OUT_DIRECTORIES[] = {"/dev/pts", "/proc", "/.amd"};
constexpr std::string_view LEFT_OUT_TYPES[] = {"devpts", "proc", "sysfs", "rpc_pipefs", "shm"};
constexpr std::string_view kAutomounterDevice = "(pid";  // "host:(pid1234)"

bool isOneOf(const auto& names, std::string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool containsAny(std::string_view text, const auto& parts) {
  return std::any_of(std::begin(parts), std::end(parts),
                     [text](std::string_view part) { return contains(text, part); });
}

}  // namespace

uint32_t get_fstype_enum(const char* name) {
  const auto* found = std::find_if(std::begin(TYPE_CODES), std::end(TYPE_CODES),
                                   [name](const TypeCode& type) { return type.name == name; });
  return found == std::end(TYPE_CODES) ? kUnknownType : found->code;
}

bool ValidPartitionFileSys(const char* name) { return isOneOf(PARTITION_TYPES, name); }

bool isRemote(const char* fstype) { return isOneOf(REMOTE_TYPES, fstype); }

bool mayHang(const char* fstype) { return !isOneOf(LOCAL_TYPES, fstype); }

bool isAutomountPoint(const char* fstype) { return std::string_view(fstype) == "autofs"; }

uint32_t getMediaType(const char* fstype, const char* device) {
  if (isRemote(fstype)) return kMediaRemote;
  if (std::string_view(fstype) == "iso9660") return kMediaCd;
  if (contains(device, "/dev/fd")) return kMediaFloppy;
  if (contains(fstype, "subfs")) return kMediaFloppy;
  return ValidPartitionFileSys(fstype) ? kMediaFixed : kMediaUnknown;
}

bool isLeftOutMount(const char* device, const char* mountDir, const char* fstype) {
  return contains(device, kAutomounterDevice) || containsAny(mountDir, LEFT_OUT_DIRECTORIES) ||
         containsAny(fstype, LEFT_OUT_TYPES);
}

}  // namespace quenlor
