// Collection of a whole group on a worker thread that the caller can stop waiting for.
#pragma once

#include <cstdint>

#include "base/Event.h"
#include "base/Thread.h"
#include "limits/AbandonedWorkers.h"
#include "tables/VelTable.h"

namespace quenlor {

// Runs a group's generateTable(). Group and event are not owned and must outlive the thread, also
// when it is abandoned after a time-out: whoever abandons it leaves all three behind for good and
// says so with reportAbandonedWorker().
class GetTableThread : public Thread {
 public:
  GetTableThread(VelGroup* group, Event* done);

  void run() override;
  VelTable* get_table() const { return m_table; }  // null until done; owned by the caller then
  int32_t get_Time() const { return m_timeout; }   // milliseconds

 private:
  void set_Time();

  VelGroup* m_group;
  VelTable* m_table = nullptr;
  Event* m_done;
  int32_t m_timeout = 0;
};

}  // namespace quenlor
