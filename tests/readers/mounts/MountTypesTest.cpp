#include "readers/mounts/MountTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

namespace quenlor {
namespace {

const std::map<std::string, uint32_t> kCodes = {
    {"minux", 131}, {"ext", 131},      {"ext2", 131},    {"ext3", 131},  {"xiafs", 131},
    {"vxfs", 66},   {"hpfs", 7},       {"s5", 99},       {"ufs", 262},   {"swap", 130},
    {"msdos", 14},  {"tmpfs", 267},    {"iso9660", 264}, {"subfs", 281}, {"smbfs", 282},
    {"nfs", 260},   {"vfat", 11},      {"ntfs", 7},      {"jfs2", 285},  {"jfs", 258},
    {"afs", 261},   {"reiserfs", 280},
};

constexpr const char* kLocalTypes[] = {
    "s5",    "vxfs", "memfs", "ufs",  "bfs",      "ext", "ext2",  "ext3",  "minux", "hpfs",
    "xiafs", "swap", "msdos", "vfat", "reiserfs", "jfs", "tmpfs", "subfs", "ntfs"};

TEST(MountTypes, everyKnownTypeHasItsCode) {
  ASSERT_EQ(kCodes.size(), 22u);
  for (const auto& [name, code] : kCodes) EXPECT_EQ(get_fstype_enum(name.c_str()), code) << name;
}

TEST(MountTypes, anyOtherNameIsUnknown_minixToo) {
  for (const char* name : {"minix", "ext4", "xfs", "btrfs", "overlay", "nfs4", "cifs", "", "EXT3",
                           "ext3 ", "autofs", "squashfs"}) {
    EXPECT_EQ(get_fstype_enum(name), 65535u) << name;
  }
}

TEST(MountTypes, partitionTypesAreExactlyNineteen) {
  ASSERT_EQ(std::size(kLocalTypes), 19u);
  for (const char* name : kLocalTypes) EXPECT_TRUE(ValidPartitionFileSys(name)) << name;
  for (const auto& [name, code] : kCodes) {
    const bool isListed = std::find(std::begin(kLocalTypes), std::end(kLocalTypes),
                                    std::string_view(name)) != std::end(kLocalTypes);
    EXPECT_EQ(ValidPartitionFileSys(name.c_str()), isListed) << name;
  }
  for (const char* name : {"jfs2", "iso9660", "nfs", "ext4", "minix", "", "ext33"}) {
    EXPECT_FALSE(ValidPartitionFileSys(name)) << name;
  }
}

TEST(MountTypes, remoteTypesMatchExactly) {
  for (const char* name : {"nfs", "afs", "smbfs"}) EXPECT_TRUE(isRemote(name)) << name;
  for (const char* name : {"nfs4", "nfsd", "cifs", "fuse.sshfs", "smb", "", "ext3"}) {
    EXPECT_FALSE(isRemote(name)) << name;
  }
}

TEST(MountTypes, whatNeedsAnotherMachineOrProgramMayHang_unknownTypesToo) {
  for (const char* name : {"nfs", "nfs4", "cifs", "smb3", "fuse", "fuse.sshfs", "fuseblk", "9p",
                           "ceph", "afs", "autofs", "lustre", "gfs2", "", "ext5"}) {
    EXPECT_TRUE(mayHang(name)) << name;
  }
  for (const char* name : {"ext3", "ext4", "xfs", "btrfs", "vfat", "tmpfs", "overlay", "iso9660",
                           "squashfs", "zfs", "cgroup2", "devtmpfs"}) {
    EXPECT_FALSE(mayHang(name)) << name;
  }
}

TEST(MountTypes, onlyAutofsIsAutomountPoint) {
  EXPECT_TRUE(isAutomountPoint("autofs"));
  EXPECT_FALSE(isAutomountPoint("autofs4"));
}

TEST(MountTypes, firstMediaRuleThatAppliesCounts) {
  EXPECT_EQ(getMediaType("nfs", "remote"), 4u);
  EXPECT_EQ(getMediaType("smbfs", "/dev/fd0"), 4u);  // before the floppy rule
  EXPECT_EQ(getMediaType("iso9660", "/dev/hdc"), 5u);
  EXPECT_EQ(getMediaType("iso9660", "/dev/fd0"), 5u);  // before the floppy rule
  EXPECT_EQ(getMediaType("vfat", "/dev/fd0"), 2u);
  EXPECT_EQ(getMediaType("unheard-of", "/dev/fd1u1440"), 2u);
  EXPECT_EQ(getMediaType("subfs", "/dev/hdc"), 2u);  // before the partition types
  EXPECT_EQ(getMediaType("mysubfs2", "/dev/hdc"), 2u);
  for (const char* name : kLocalTypes) {
    if (std::string_view(name) == "subfs") continue;
    EXPECT_EQ(getMediaType(name, "/dev/hda1"), 3u) << name;
  }
  EXPECT_EQ(getMediaType("minix", "/dev/hda1"), 0u);
  EXPECT_EQ(getMediaType("jfs2", "/dev/hda1"), 0u);
  EXPECT_EQ(getMediaType("", ""), 0u);
}

TEST(MountTypes, eachLeaveOutRuleIsTestForSubstring) {
  EXPECT_FALSE(isLeftOutMount("/dev/hda1", "/", "ext3"));
  EXPECT_TRUE(isLeftOutMount("box:(pid1234)", "/net", "nfs"));
  EXPECT_TRUE(isLeftOutMount("none", "/dev/pts", "other"));
  EXPECT_TRUE(isLeftOutMount("none", "/chroot/dev/pts", "other"));
  EXPECT_TRUE(isLeftOutMount("none", "/pts", "devpts"));
  EXPECT_TRUE(isLeftOutMount("/dev/hda1", "/proc", "ext3"));
  EXPECT_TRUE(isLeftOutMount("/dev/hda1", "/srv/process", "ext3"));  // "/proc" stands in it: meant
  EXPECT_TRUE(isLeftOutMount("none", "/x", "proc"));
  EXPECT_TRUE(isLeftOutMount("none", "/x", "procfs"));
  EXPECT_TRUE(isLeftOutMount("amd", "/.amd_mnt/box", "nfs"));
  EXPECT_TRUE(isLeftOutMount("none", "/sys", "sysfs"));
  EXPECT_TRUE(isLeftOutMount("none", "/x", "rpc_pipefs"));
  EXPECT_TRUE(isLeftOutMount("none", "/x", "shm"));
  EXPECT_TRUE(isLeftOutMount("none", "/x", "shmfs"));
}

TEST(MountTypes, rulesLookOnlyAtTheTextTheyAreFor) {
  EXPECT_FALSE(isLeftOutMount("proc", "/x", "ext3"));
  EXPECT_FALSE(isLeftOutMount("/dev/pts", "/x", "ext3"));
  EXPECT_FALSE(isLeftOutMount("tmpfs", "/dev/shm", "tmpfs"));
  EXPECT_FALSE(isLeftOutMount("x", "/sysfs(pid", "ext3"));
}

}  // namespace
}  // namespace quenlor
