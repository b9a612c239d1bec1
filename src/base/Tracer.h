// Where Trace objects write to.
#pragma once

namespace quenlor {

// The process-wide output of Trace objects. The logging library installs itself as one, so that
// this library does not depend on it. write() may be called from any thread.
class Tracer {
 public:
  // One record: class's source path text ("" when unknown), traced function, line, text.
  virtual void write(const char* sourcePath, const char* function, unsigned line,
                     const char* text) = 0;

  // Sets the output, which must stay valid for good; null for none.
  static void install(Tracer* output);
  // The output; null, as at the start, when nothing is to be traced.
  static Tracer* installed();

 protected:
  ~Tracer() = default;  // outputs live until the process ends
};

}  // namespace quenlor
