// The output document during one writing step. Header, every table and footer open and close it
// anew, so that what is complete is on disk whatever happens to the step after it.
#pragma once

#include <cstdio>
#include <memory>

#include "host/Handles.h"
#include "log/CcLogWrapper.h"

namespace quenlor {

class OutputFile {
 public:
  // "stdout" is standard output: it is never opened or closed, and reports no error.
  explicit OutputFile(const char* fileName);

  // Starts a new document in place of an older one. 0; kExitOutputOpen when the file cannot be
  // written although it can be read (a directory, no permission); else kExitOutputClose.
  int create();
  // Continues the document. 0 or kExitOutputOpen, errno tells why.
  int append();
  // As append, with a second attempt a second later. Failures are traced from the function given,
  // under the names of the writer's source and of its document.
  int appendPatiently(const TraceFunction& at, const char* writer, const char* document);
  // Flushes and closes. 0, or kExitOutputClose when anything written did not reach the file.
  int finish();

  FILE* stream() const { return m_toStandardOutput ? stdout : m_file.get(); }

 private:
  bool open(const char* mode);

  const char* m_fileName;
  bool m_toStandardOutput;
  FileStream m_file;
};

}  // namespace quenlor
