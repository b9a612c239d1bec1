// The memory that the process that scans shares with the one that outlives it.
#pragma once

#include "host/ScanState.h"

namespace quenlor {

// One anonymous shared mapping with a ScanState in it; both processes see it after a fork. It stays
// mapped until the process ends: threads that were given up may still write to it.
class SharedPage {
 public:
  SharedPage();
  SharedPage(const SharedPage&) = delete;
  SharedPage& operator=(const SharedPage&) = delete;

  ScanState* state() const { return m_state; }  // null when no memory could be had

 private:
  ScanState* m_state = nullptr;
};

}  // namespace quenlor
