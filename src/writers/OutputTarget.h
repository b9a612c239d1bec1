// Where a document is written until it is complete.
#pragma once

#include <string>

namespace quenlor {

// By rename, the document grows in a file beside its place and takes that place when it is
// complete, so that nobody ever reads half of one. A file that is there keeps owner and mode; a new
// one is 0600. What is no regular file with one name (a FIFO, a device, a link) and what has no
// room beside it is written in place.
class OutputTarget {
 public:
  // "stdout" is standard output.
  OutputTarget(std::string file, bool byRename);
  ~OutputTarget();  // an incomplete document does not take its place
  OutputTarget(const OutputTarget&) = delete;
  OutputTarget& operator=(const OutputTarget&) = delete;

  // The name to write to.
  const char* file() const { return m_written.c_str(); }

  // Puts the complete document in its place. 0, or kExitOutputClose when that cannot be done.
  int commit();

 private:
  std::string m_file;
  std::string m_written;  // m_file itself when written in place
};

// 0, or kExitOutputClose when something written to standard output was lost. errno tells why.
int finishStandardOutput();

}  // namespace quenlor
