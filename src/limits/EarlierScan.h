// The trace of a scan that ended but whose process could not: it waits for a mount for ever.
#pragma once

#include <cstdint>

namespace quenlor {

// A process that is stuck in a dead mount keeps a shared lock on the program's own file. A scan
// that sees it leaves alone what may hang, so that a dead server costs one stuck process and not
// one a day. Anybody who may read the program can hold that lock too; the worst that comes of it is
// that remote file systems are not measured.
class EarlierScan {
 public:
  // program: the file that all scans share.
  explicit EarlierScan(const char* program = "/proc/self/exe") : m_program(program) {}

  // True when such a process is still there. To be asked at a scan's start. False as well where the
  // program lies on a file system that may hang itself, or cannot be read.
  bool isStillWaiting() const;

  // To be called when a mount is given up: from now on isStillWaiting() is true elsewhere, until
  // this process has gone or forgetMark() is called.
  void mark() const;

  // For an f_type of statfs(2): a file system that comes from another machine or another process.
  static bool mayHang(uint32_t fileSystemType);

  // The descriptor that holds the mark, which is to stay open; -1: there is none.
  static int markDescriptor();
  // For a mount that has answered after all.
  static void forgetMark();

 private:
  const char* m_program;
};

}  // namespace quenlor
