// Files, directories and links of a recorded machine.
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/mman.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include "tests/support/RecordedHost.h"

namespace quenlor::test {
namespace {

bool isNode(const RecordedPlace& place) {
  if (place.path.starts_with("/dev/")) return true;
  return place.node != nullptr && (S_ISCHR(place.node->type) || S_ISBLK(place.node->type));
}

mode_t modeOf(const RecordedNode& node) {
  const mode_t usual = S_ISDIR(node.type) ? 0755 : S_ISLNK(node.type) ? 0777 : 0644;
  return node.type | node.permissions.value_or(usual);
}

void fillStat(const RecordedNode& node, struct stat* out) {
  *out = {};
  out->st_mode = modeOf(node);
  out->st_size = static_cast<off_t>(node.bytes.size());
  out->st_ino = node.inode;
  out->st_dev = makedev(node.deviceMajor, node.deviceMinor);
  out->st_rdev = makedev(node.nodeMajor, node.nodeMinor);
  out->st_mtim.tv_sec = node.modified;
  out->st_nlink = 1;
}

void fillStatx(const RecordedNode& node, struct statx* out) {
  *out = {};
  out->stx_mask = STATX_BASIC_STATS;
  out->stx_mode = static_cast<uint16_t>(modeOf(node));
  out->stx_size = node.bytes.size();
  out->stx_ino = node.inode;
  out->stx_dev_major = node.deviceMajor;
  out->stx_dev_minor = node.deviceMinor;
  out->stx_rdev_major = node.nodeMajor;
  out->stx_rdev_minor = node.nodeMinor;
  out->stx_mtime.tv_sec = node.modified;
  out->stx_nlink = 1;
  if (!node.born) return;
  out->stx_mask |= STATX_BTIME;
  out->stx_btime.tv_sec = *node.born;
}

EntryType entryType(const RecordedNode& node) {
  if (S_ISDIR(node.type)) return EntryType::kDirectory;
  if (S_ISLNK(node.type)) return EntryType::kLink;
  return S_ISREG(node.type) ? EntryType::kRegular : EntryType::kOther;
}

}  // namespace

int RecordedHost::refusalOf(const std::string& asked, const std::string& resolved,
                            bool atRead) const {
  for (const Refusal& refusal : m_refusals) {
    const char* pattern = refusal.pattern.c_str();
    if (refusal.atRead == atRead && (::fnmatch(pattern, asked.c_str(), FNM_PATHNAME) == 0 ||
                                     ::fnmatch(pattern, resolved.c_str(), FNM_PATHNAME) == 0)) {
      return refusal.error;
    }
  }
  return 0;
}

int RecordedHost::open(const char* path, int flags, mode_t) {
  const RecordedPlace place = m_tree.find(path);
  if ((flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0) {
    return forbid("write " + place.path, EROFS);
  }
  if (isNode(place)) return forbid("node " + place.path, EACCES);
  const std::lock_guard lock(m_mutex);
  ++m_opens[place.path];
  if (place.node == nullptr) return fail(place.error);
  if (const int error = refusalOf(path, place.path, false)) return fail(error);
  m_open[m_nextDescriptor] = {place.node, place.path, 0};
  return m_nextDescriptor++;
}

int RecordedHost::close(int fd) {
  const std::lock_guard lock(m_mutex);
  return m_open.erase(fd) == 1 ? 0 : fail(EBADF);
}

ssize_t RecordedHost::read(int fd, void* buffer, size_t size) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end() || found->second.node == nullptr) return fail(EBADF);
  OpenFile& file = found->second;
  if (S_ISDIR(file.node->type)) return fail(EISDIR);
  if (const int error = refusalOf(file.path, file.path, true)) return fail(error);
  const size_t count = std::min(size, file.node->bytes.size() - file.position);
  std::memcpy(buffer, file.node->bytes.data() + file.position, count);
  file.position += count;
  return static_cast<ssize_t>(count);
}

ssize_t RecordedHost::write(int fd, const void*, size_t) {
  return forbid("write to descriptor " + std::to_string(fd), EBADF);
}

int RecordedHost::stat(const char* path, struct stat* out) {
  const RecordedPlace place = m_tree.find(path);
  if (place.node == nullptr) return fail(place.error);
  fillStat(*place.node, out);
  return 0;
}

int RecordedHost::fstat(int fd, struct stat* out) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end()) return fail(EBADF);
  *out = {};
  out->st_mode = S_IFSOCK | 0777;
  if (found->second.node != nullptr) fillStat(*found->second.node, out);
  return 0;
}

int RecordedHost::unlink(const char* path) { return forbid(std::string("write ") + path, EROFS); }

void* RecordedHost::mmap(size_t, int, int, int, off_t) {
  forbid("map", EPERM);
  return MAP_FAILED;
}

int RecordedHost::munmap(void*, size_t) { return fail(EINVAL); }

FILE* RecordedHost::fopen(const char* path, const char* mode) {
  const int fd =
      open(path, mode[0] == 'r' && std::strchr(mode, '+') == nullptr ? O_RDONLY : O_RDWR, 0);
  if (fd < 0) return nullptr;
  struct Cookie {
    RecordedHost* host;
    int fd;
  };
  cookie_io_functions_t functions{};
  functions.read = [](void* cookie, char* buffer, size_t size) {
    const auto* self = static_cast<Cookie*>(cookie);
    return self->host->read(self->fd, buffer, size);
  };
  functions.close = [](void* cookie) {
    const std::unique_ptr<Cookie> self(static_cast<Cookie*>(cookie));
    return self->host->close(self->fd);
  };
  return ::fopencookie(new Cookie{this, fd}, "r", functions);
}

bool RecordedHost::listEntries(const char* path, std::vector<DirectoryEntry>& entries) {
  entries.clear();
  const RecordedPlace place = m_tree.find(path);
  const std::lock_guard lock(m_mutex);
  ++m_listings[place.path];
  int error = place.error;
  if (place.node != nullptr && !S_ISDIR(place.node->type)) error = ENOTDIR;
  if (error == 0) error = refusalOf(path, place.path, false);
  if (place.node == nullptr || error != 0) return fail(error) == 0;
  for (const auto& [name, node] : place.node->children) entries.push_back({name, entryType(*node)});
  return true;
}

bool RecordedHost::listDirectory(const char* path, std::vector<std::string>& names) {
  std::vector<DirectoryEntry> entries;
  names.clear();
  if (!listEntries(path, entries)) return false;
  names = {".", ".."};
  for (const DirectoryEntry& entry : entries) names.push_back(entry.name);
  return true;
}

bool RecordedHost::readLink(const char* path, std::string& target) {
  const RecordedPlace place = m_tree.find(path, false);
  int error = place.error;
  if (place.node != nullptr && !S_ISLNK(place.node->type)) error = EINVAL;
  if (error == 0) error = refusalOf(path, place.path, false);
  if (place.node == nullptr || error != 0) return fail(error) == 0;
  target = place.node->bytes;
  return true;
}

int RecordedHost::statx(const char* path, int flags, unsigned, struct statx* out) {
  const RecordedPlace place = m_tree.find(path, (flags & AT_SYMLINK_NOFOLLOW) == 0);
  if (place.node == nullptr) return fail(place.error);
  fillStatx(*place.node, out);
  return 0;
}

int RecordedHost::statvfs(const char* path, struct statvfs* out) {
  *out = {};
  const auto found = m_fileSystems.find(path);
  if (found == m_fileSystems.end()) return fail(ENOENT);
  const auto number = [&](const char* key) -> unsigned long {
    const auto value = found->second.find(key);
    return value == found->second.end() ? 0 : std::stoul(value->second);
  };
  std::this_thread::sleep_for(std::chrono::milliseconds(number("wait_ms")));
  if (const auto error = found->second.find("error"); error != found->second.end()) {
    return fail(recordedErrno(error->second));
  }
  out->f_bsize = number("bsize");
  out->f_frsize = number("frsize");
  out->f_blocks = number("blocks");
  out->f_bfree = number("bfree");
  out->f_bavail = number("bavail");
  out->f_files = number("files");
  out->f_ffree = number("ffree");
  out->f_favail = number("favail");
  out->f_fsid = number("fsid");
  out->f_flag = number("flag");
  out->f_namemax = number("namemax");
  return 0;
}

int RecordedHost::fstatvfs(int fd, struct statvfs* out) {
  std::string path;
  {
    const std::lock_guard lock(m_mutex);
    const auto found = m_open.find(fd);
    if (found == m_open.end()) return fail(EBADF);
    path = found->second.path;
  }
  return statvfs(path.c_str(), out);
}

}  // namespace quenlor::test
