#include "limits/GetTableThread.h"

#include "limits/ConfiguredLimit.h"

namespace quenlor {
namespace {

constexpr int32_t kDefaultMilliseconds = 200000;

}  // namespace

GetTableThread::GetTableThread(VelGroup* group, Event* done) : m_group(group), m_done(done) {
  set_Time();
}

void GetTableThread::set_Time() { m_timeout = configuredLimit().value_or(kDefaultMilliseconds); }

void GetTableThread::run() {
  m_table = m_group->generateTable();
  m_done->signal();
}

}  // namespace quenlor
