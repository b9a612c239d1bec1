#include "readers/mounts/FileSystems.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>

namespace quenlor {
namespace {

constexpr std::string_view KERNEL_TYPES[] = {
    "anon_inodefs",
    "apparmorfs",
    "autofs",
    "bdev",
    "binder",
    "binfmt_misc",
    "bpf",
    "cgroup",
    "cgroup2",
    "configfs",
    "cpuset",
    "debugfs",
    "devfs",
    "devpts",
    "devtmpfs",
    "dlmfs",
    "dmabuf",
    "drm",
    "efivarfs",
    "functionfs",
    "fuse",

    "fuse.gvfsd-fuse",
    "fuse.lxcfs",
    "fuse.portal",
    "fuse.snapfuse",
    "fusectl",
    "guest_memfd",
    "hugetlbfs",
    "ipathfs",
    "mqueue",
    "nfsd",
    "none",
    "nsfs",
    "openpromfs",
    "pidfs",
    "pipefs",
    "proc",
    "pstore",
    "resctrl",
    "rpc_pipefs",
    "secretmem",
    "securityfs",
    "selinuxfs",
    "smackfs",
    "sockfs",
    "spufs",
    "sysfs",
    "tracefs",
    "usbfs",
    "usbdevfs",
    "xenfs",
};

constexpr std::string_view MEMORY_TYPES[] = {"ramfs", "rootfs", "tmpfs"};

constexpr std::string_view CLUSTER_TYPES[] = {"acfs", "gfs", "gfs2", "ocfs2"};

constexpr std::string_view REMOTE_TYPES[] = {
    "9p",        "afs",      "auristorfs", "beegfs",   "ceph",   "cifs",   "coda",  "davfs",
    "glusterfs", "gpfs",     "kafs",       "lustre",   "mfs",    "ncp",    "ncpfs", "nfs",
    "nfs4",      "orangefs", "panfs",      "prl_fs",   "pvfs2",  "shfs",   "smb2",  "smb3",
    "smbfs",     "sshfs",    "vboxsf",     "virtiofs", "vmhgfs", "wekafs",
};

// Programs behind fuse that speak to another machine, or to the host of a guest.
constexpr std::string_view REMOTE_PROGRAMS[] = {
    "afp",       "afpfs",    "azure",     "blobfuse",    "blobfuse2", "ceph",
    "ceph-fuse", "cephfs",   "curlftpfs", "davfs",       "davfs2",    "gcsfuse",
    "glusterfs", "goofys",   "httpfs",    "juicefs",     "mfs",       "moosefs",
    "mount-s3",  "prl_fsd",  "quobyte",   "rclone",      "s3fs",      "s3ql",
    "seaweedfs", "smbnetfs", "sshfs",     "vmhgfs-fuse", "xrootdfs",
};

constexpr std::string_view kFuse = "fuse.";

// Where runtimes mount for themselves what they have elsewhere already.
constexpr std::string_view RUNTIME_DIRECTORIES[] = {
    "/dev",
    "/proc",
    "/run",
    "/snap",
    "/sys",
    "/var/lib/containerd",
    "/var/lib/containers",
    "/var/lib/docker",
    "/var/lib/kubelet",
    "/var/lib/snapd",
    "/var/run",
    "/var/snap",
};

// Types that such a runtime makes of layers, archives and memory. A file system of a device or of
// another machine that stands there is one all the same.
constexpr std::string_view RUNTIME_TYPES[] = {
    "aufs", "erofs", "fuse.fuse-overlayfs", "overlay", "squashfs", "ramfs", "rootfs", "tmpfs"};

bool isOneOf(std::string_view name, const auto& names) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool isBelow(std::string_view path, std::string_view directory) {
  return path.starts_with(directory) &&
         (path.size() == directory.size() || path[directory.size()] == '/');
}

// What a runtime gives a container of the machine's own files.
constexpr std::string_view CONTAINER_FILES[] = {"/dev/termination-log", "/etc/hostname",
                                                "/etc/hosts", "/etc/resolv.conf"};

// Where runtimes of users, with directories of their own, put a container's layers together.
constexpr std::string_view kMerged = "/merged";

bool isOfRuntime(const Mount& mount) {
  if (isOneOf(mount.point, CONTAINER_FILES)) return true;
  if (!isOneOf(mount.type, RUNTIME_TYPES)) return false;
  if (mount.point.ends_with(kMerged)) return true;
  return std::any_of(std::begin(RUNTIME_DIRECTORIES), std::end(RUNTIME_DIRECTORIES),
                     [&](std::string_view directory) { return isBelow(mount.point, directory); });
}

// btrfs shows each subvolume with a number of its own, ZFS each view; a source names the one file
// system behind them.
std::string identityOf(const Mount& mount) {
  if (mount.type == "btrfs" || mount.type == "zfs") return mount.type + " " + mount.source;
  return std::to_string(mount.major) + ":" + std::to_string(mount.minor);
}

// True if a later mount shows the file system better than an earlier one: a path leads to it, or it
// shows more of the whole. Among equals the first stays: the kernel's table is in the order of
// mounting, while ids are given away again.
bool isBetter(const Mount& later, const Mount& earlier) {
  if (later.isHidden != earlier.isHidden) return earlier.isHidden;
  return later.root.size() < earlier.root.size();
}

}  // namespace

FileSystemKind fileSystemKindOf(std::string_view type) {
  if (isOneOf(type, KERNEL_TYPES)) return FileSystemKind::kKernel;
  if (isOneOf(type, MEMORY_TYPES)) return FileSystemKind::kMemory;
  if (isOneOf(type, REMOTE_TYPES)) return FileSystemKind::kRemote;
  if (isOneOf(type, CLUSTER_TYPES)) return FileSystemKind::kCluster;
  if (!type.starts_with(kFuse)) return FileSystemKind::kLocal;
  return isOneOf(type.substr(kFuse.size()), REMOTE_PROGRAMS) ? FileSystemKind::kRemote
                                                             : FileSystemKind::kUser;
}

bool mayHang(FileSystemKind kind) {
  return kind == FileSystemKind::kRemote || kind == FileSystemKind::kUser ||
         kind == FileSystemKind::kCluster;
}

std::vector<MountedFileSystem> fileSystemsOf(const std::vector<Mount>& mounts) {
  std::vector<MountedFileSystem> systems;
  std::unordered_map<std::string, size_t> indexOf;
  for (const Mount& mount : mounts) {
    const FileSystemKind kind = fileSystemKindOf(mount.type);
    if (kind == FileSystemKind::kKernel || isOfRuntime(mount)) continue;
    // The memory from which the machine started, below the root that it has now.
    if (kind == FileSystemKind::kMemory && mount.isHidden) continue;
    const auto [found, isNew] = indexOf.try_emplace(identityOf(mount), systems.size());
    if (isNew) {
      systems.push_back({&mount, kind, 0});
      continue;
    }
    MountedFileSystem& known = systems[found->second];
    ++known.furtherMounts;
    if (isBetter(mount, *known.mount)) known.mount = &mount;
  }
  return systems;
}

}  // namespace quenlor
