// Trace records put together with <<.
#pragma once

#include <concepts>
#include <string>

#include "base/String.h"
#include "base/Tracer.h"

namespace quenlor {

// One record in the making, written at the end of the statement that began it.
class TraceRecord {
 public:
  template <typename Value>
  TraceRecord(const char* sourcePath, const char* function, unsigned line, const Value& first)
      : m_output(Tracer::installed()),
        m_sourcePath(sourcePath),
        m_function(function),
        m_line(line) {
    *this << first;
  }
  ~TraceRecord();
  TraceRecord(const TraceRecord&) = delete;
  TraceRecord& operator=(const TraceRecord&) = delete;

  TraceRecord& operator<<(const char* text);
  TraceRecord& operator<<(const String& text);
  TraceRecord& operator<<(std::integral auto number) {
    if (m_output != nullptr) m_text += std::to_string(number);
    return *this;
  }

 private:
  Tracer* m_output;  // null: nothing is collected
  const char* m_sourcePath;
  const char* m_function;
  unsigned m_line;
  std::string m_text;
};

// Named after the traced function; each statement is one record:
//   Trace trace("HWParseNodeSink::onNodeTree");
//   trace << "Node name is " << node->name();
// Does next to nothing while no Tracer is installed. A record carries the line of the Trace object.
class Trace {
 public:
  // Function and source path text must outlive the object; literals do.
  explicit Trace(const char* function, const char* sourcePath = "",
                 unsigned line = __builtin_LINE())
      : m_function(function), m_sourcePath(sourcePath), m_line(line) {}

  template <typename Value>
  TraceRecord operator<<(const Value& value) const {
    return TraceRecord(m_sourcePath, m_function, m_line, value);
  }

 private:
  const char* m_function;
  const char* m_sourcePath;
  unsigned m_line;
};

}  // namespace quenlor
