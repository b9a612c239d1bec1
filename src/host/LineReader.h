// Lines of a stream with the semantics of fgets and a stated buffer size.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace quenlor {

// Reads pieces of at most bufferSize - 1 characters, each ending after a newline, at the buffer's
// end or at the end of the stream: a line longer than the buffer arrives in several pieces, and
// text behind a NUL byte in a line is not seen. Does not own the stream; a null stream has no
// lines.
class LineReader {
 public:
  LineReader(FILE* stream, size_t bufferSize);

  // Reads the next piece; false at the end of the stream or on a read error.
  bool next();

  // The current piece, its newline included; writable, so that it can be split in place.
  char* line() { return m_buffer.data(); }
  const char* line() const { return m_buffer.c_str(); }

  // Cuts the last character of the current piece when it is a control character.
  void cutTrailingControl();

 private:
  FILE* m_stream;
  std::string m_buffer;
};

}  // namespace quenlor
