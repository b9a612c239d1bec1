#include "readers/mounts/FileSystems.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quenlor {
namespace {

std::vector<Mount> mountsOf(const std::string& text) {
  bool isConsistent = false;
  std::vector<Mount> mounts = parseMountInfo(text, isConsistent);
  EXPECT_TRUE(isConsistent) << text;
  markHidden(mounts);
  return mounts;
}

// Mount points with the number of further mounts behind them, where there are any.
std::string shown(const std::string& text) {
  const std::vector<Mount> mounts = mountsOf(text);
  std::string points;
  for (const MountedFileSystem& system : fileSystemsOf(mounts)) {
    if (!points.empty()) points += " ";
    points += system.mount->point;
    if (system.furtherMounts != 0) points += "+" + std::to_string(system.furtherMounts);
  }
  return points;
}

const char* const kRoot = "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n";

TEST(FileSystems, kernelsOwnAndAutomountersAreLeftOut) {
  EXPECT_EQ(
      shown(std::string(kRoot) + "21 20 0:5 / /proc rw - proc proc rw\n"
                                 "22 20 0:6 / /sys rw - sysfs sysfs rw\n"
                                 "23 20 0:7 / /dev rw - devtmpfs udev rw\n"
                                 "24 20 0:8 / /misc rw - autofs systemd-1 rw,direct\n"
                                 "25 20 0:9 / /home/a/.gvfs rw - fuse.gvfsd-fuse gvfsd-fuse rw\n"
                                 "26 20 0:10 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw\n"),
      "/");
}

TEST(FileSystems, whatIsMountedOverAnAutomountPointIsShown) {
  const auto mounts = mountsOf(std::string(kRoot) +
                               "24 20 0:8 / /net/box rw - autofs systemd-1 rw,direct\n"
                               "25 24 0:9 / /net/box rw - nfs4 box:/srv rw\n");
  const auto systems = fileSystemsOf(mounts);
  ASSERT_EQ(systems.size(), 2u);
  EXPECT_EQ(systems[1].mount->source, "box:/srv");
  EXPECT_FALSE(systems[1].mount->isHidden);
  EXPECT_EQ(systems[1].kind, FileSystemKind::kRemote);
}

TEST(FileSystems, bindMountsCountAsFurtherOnes) {
  EXPECT_EQ(shown(std::string(kRoot) + "21 20 8:2 /srv/web /var/www rw - xfs /dev/sda2 rw\n"
                                       "22 20 8:2 / /data rw - xfs /dev/sda2 rw\n"
                                       "23 20 8:2 /srv/ftp /ftp rw - xfs /dev/sda2 rw\n"),
            "/ /data+2");
}

// A bind mount of the whole may stand nearer to the root, and the kernel gives ids away again.
TEST(FileSystems, ofSeveralMountsOfTheWholeTheFirstInTheTableIsShown) {
  EXPECT_EQ(shown(std::string(kRoot) + "32 20 8:2 / /srv/data/web rw - xfs /dev/sda2 rw\n"
                                       "22 20 8:2 / /w rw - xfs /dev/sda2 rw\n"),
            "/ /srv/data/web+1");
}

TEST(FileSystems, whereOnlyBindMountsAreSeenTheShortestRootIsTaken) {
  EXPECT_EQ(shown(std::string(kRoot) + "21 20 8:2 /a/b/c /x rw - xfs /dev/sda2 rw\n"
                                       "22 20 8:2 /a /longer rw - xfs /dev/sda2 rw\n"),
            "/ /longer+1");
}

TEST(FileSystems, subvolumesOfBtrfsAreOneFileSystem) {
  EXPECT_EQ(shown("20 1 0:30 /@ / rw - btrfs /dev/sda2 rw,subvol=/@\n"
                  "21 20 0:31 /@home /home rw - btrfs /dev/sda2 rw,subvol=/@home\n"
                  "22 20 0:32 /@var/log /var/log rw - btrfs /dev/sda2 rw\n"
                  "23 20 0:33 / /mnt/other rw - btrfs /dev/sdb1 rw\n"),
            "/+2 /mnt/other");
}

TEST(FileSystems, hiddenMountIsTakenOnlyWithoutAnother) {
  EXPECT_EQ(shown(std::string(kRoot) + "21 20 8:2 / /mnt rw - xfs /dev/sda2 rw\n"
                                       "22 21 8:3 / /mnt rw - xfs /dev/sda3 rw\n"
                                       "23 20 8:2 / /srv/elsewhere rw - xfs /dev/sda2 rw\n"),
            "/ /srv/elsewhere+1 /mnt");
  const auto mounts = mountsOf(std::string(kRoot) +
                               "21 20 8:2 / /mnt rw - xfs /dev/sda2 rw\n"
                               "22 21 8:3 / /mnt rw - xfs /dev/sda3 rw\n");
  const auto systems = fileSystemsOf(mounts);
  ASSERT_EQ(systems.size(), 3u);
  EXPECT_TRUE(systems[1].mount->isHidden);
}

TEST(FileSystems, snapsAreLeftOut) {
  EXPECT_EQ(
      shown(std::string(kRoot) + "21 20 7:1 / /snap/core22/1380 ro - squashfs /dev/loop1 ro\n"
                                 "22 20 7:2 / /var/lib/snapd/snap/x/1 ro - squashfs /dev/loop2 ro\n"
                                 "23 20 7:3 / /mnt/image ro - squashfs /dev/loop3 ro\n"),
      "/ /mnt/image");
}

TEST(FileSystems, mountsOfContainersAreLeftOut) {
  EXPECT_EQ(
      shown(std::string(kRoot) +
            "21 20 0:50 / /var/lib/docker/overlay2/1/merged rw - overlay overlay rw\n"
            "22 20 0:51 / /var/lib/docker/containers/1/mounts/shm rw - tmpfs shm rw\n"
            "23 20 0:52 / /home/u/.local/share/containers/storage/overlay/2/merged rw - overlay "
            "overlay rw\n"
            "24 20 0:53 / /var/lib/kubelet/pods/1/volumes/x rw - tmpfs tmpfs rw\n"
            "25 20 0:54 / /var/lib/kubelet/pods/1/volumes/nfs rw - nfs4 box:/srv rw\n"),
      "/ /var/lib/kubelet/pods/1/volumes/nfs");
}

TEST(FileSystems, insideContainerTheRootIsShownAndTheFilesOfTheHostAreNot) {
  EXPECT_EQ(shown("20 1 0:50 / / rw - overlay overlay rw,lowerdir=/a,upperdir=/b\n"
                  "21 20 8:1 /var/lib/docker/containers/1/hosts /etc/hosts rw - ext4 /dev/sda1 rw\n"
                  "22 20 8:1 /var/lib/docker/containers/1/resolv.conf /etc/resolv.conf rw - ext4 "
                  "/dev/sda1 rw\n"
                  "23 20 8:2 /volumes/data /data rw - ext4 /dev/sda2 rw\n"),
            "/ /data");
}

TEST(FileSystems, memoryIsShownWhereUsersKeepSomething) {
  EXPECT_EQ(shown("20 1 0:20 / / rw - tmpfs rootfs rw\n"
                  "21 20 0:21 / /run rw - tmpfs tmpfs rw\n"
                  "22 20 0:22 / /run/user/1000 rw - tmpfs tmpfs rw\n"
                  "23 20 0:23 / /dev/shm rw - tmpfs tmpfs rw\n"
                  "24 20 0:24 / /sys/fs/cgroup rw - tmpfs tmpfs rw\n"
                  "25 20 0:25 / /tmp rw - tmpfs tmpfs rw\n"
                  "26 20 0:26 / /running rw - tmpfs tmpfs rw\n"),
            "/ /tmp /running");
}

TEST(FileSystems, memoryBelowTheRootIsLeftOut) {
  EXPECT_EQ(shown("1 1 0:2 / / rw - rootfs rootfs rw\n20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"), "/");
}

TEST(FileSystems, disksBelowRunAreShown) {
  EXPECT_EQ(shown(std::string(kRoot) + "21 20 8:17 / /run/media/u/STICK rw - vfat /dev/sdb1 rw\n"),
            "/ /run/media/u/STICK");
}

TEST(FileSystems, typesAreToldApart) {
  for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "ceph", "9p", "virtiofs", "lustre",
                           "fuse.sshfs", "fuse.glusterfs", "vboxsf", "fuse.vmhgfs-fuse"}) {
    EXPECT_EQ(fileSystemKindOf(type), FileSystemKind::kRemote) << type;
    EXPECT_TRUE(mayHang(fileSystemKindOf(type))) << type;
  }
  for (const char* type : {"ext4", "xfs", "btrfs", "zfs", "vfat", "fuseblk", "overlay", "iso9660",
                           "ubifs", "ecryptfs", "future"}) {
    EXPECT_EQ(fileSystemKindOf(type), FileSystemKind::kLocal) << type;
    EXPECT_FALSE(mayHang(fileSystemKindOf(type))) << type;
  }
  EXPECT_EQ(fileSystemKindOf("fuse.mine"), FileSystemKind::kUser);
  EXPECT_TRUE(mayHang(FileSystemKind::kUser));
  EXPECT_EQ(fileSystemKindOf("gfs2"), FileSystemKind::kCluster);
  EXPECT_EQ(fileSystemKindOf("autofs"), FileSystemKind::kKernel);
  EXPECT_EQ(fileSystemKindOf("fuse.lxcfs"), FileSystemKind::kKernel);
  EXPECT_EQ(fileSystemKindOf("fusectl"), FileSystemKind::kKernel);
  EXPECT_EQ(fileSystemKindOf("tmpfs"), FileSystemKind::kMemory);
}

}  // namespace
}  // namespace quenlor
