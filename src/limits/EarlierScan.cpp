#include "limits/EarlierScan.h"

#include <sys/vfs.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <mutex>

#include "host/FileLock.h"

namespace quenlor {
namespace {

// Another scan that starts holds the lock for an instant as well.
constexpr std::chrono::milliseconds kPatience{50};

// f_type of file systems that come from another machine or another process (linux/magic.h, and for
// the last ones the file systems' own sources).
constexpr uint32_t kMayHang[] = {
    0x00006969,  // NFS
    0x0000517B,  // SMB
    0xFE534D42,  // SMB 2
    0xFF534D42,  // CIFS
    0x65735546,  // FUSE, virtiofs
    0x01021997,  // 9P
    0x00C36400,  // Ceph
    0x5346414F,  // AFS
    0x6B414653,  // AFS, the kernel's
    0x73757245,  // Coda
    0x0000564C,  // NCP
    0x01161970,  // GFS2
    0x7461636F,  // OCFS2
    0x0BD00BD0,  // Lustre
    0x47504653,  // GPFS
};

bool liesWhereItMayHang(int file) {
  struct statfs system {};
  if (::fstatfs(file, &system) != 0) return true;
  return EarlierScan::mayHang(static_cast<uint32_t>(system.f_type));
}

std::unique_ptr<FileLock> openLock(const char* program) {
  auto lock = std::make_unique<FileLock>(program);
  if (!*lock || liesWhereItMayHang(lock->descriptor())) return nullptr;
  return lock;
}

std::mutex g_mutex;

// Never destroyed: it is the process's end that takes the mark away.
std::unique_ptr<FileLock>& currentMark() {
  static auto& mark = *new std::unique_ptr<FileLock>;
  return mark;
}

}  // namespace

bool EarlierScan::mayHang(uint32_t fileSystemType) {
  return std::find(std::begin(kMayHang), std::end(kMayHang), fileSystemType) != std::end(kMayHang);
}

bool EarlierScan::isStillWaiting() const {
  const std::unique_ptr<FileLock> lock = openLock(m_program);
  return lock != nullptr && !lock->takeAlone(kPatience);
}

void EarlierScan::mark() const {
  const std::lock_guard guard(g_mutex);
  if (currentMark() != nullptr) return;
  std::unique_ptr<FileLock> lock = openLock(m_program);
  if (lock != nullptr && lock->share(kPatience)) currentMark() = std::move(lock);
}

int EarlierScan::markDescriptor() {
  const std::lock_guard guard(g_mutex);
  return currentMark() == nullptr ? -1 : currentMark()->descriptor();
}

void EarlierScan::forgetMark() {
  const std::lock_guard guard(g_mutex);
  currentMark().reset();
}

}  // namespace quenlor
