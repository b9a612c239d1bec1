#include "base/Trace.h"

#include <atomic>

namespace quenlor {
namespace {

std::atomic<Tracer*> installedTracer{nullptr};

}  // namespace

void Tracer::install(Tracer* output) { installedTracer.store(output, std::memory_order_release); }

Tracer* Tracer::installed() { return installedTracer.load(std::memory_order_acquire); }

TraceRecord::~TraceRecord() {
  if (m_output != nullptr) m_output->write(m_sourcePath, m_function, m_line, m_text.c_str());
}

TraceRecord& TraceRecord::operator<<(const char* text) {
  if (m_output != nullptr) m_text += text == nullptr ? "(null)" : text;
  return *this;
}

TraceRecord& TraceRecord::operator<<(const String& text) {
  if (m_output != nullptr) m_text += text.str();
  return *this;
}

}  // namespace quenlor
