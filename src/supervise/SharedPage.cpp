#include "supervise/SharedPage.h"

#include <sys/mman.h>

#include <new>

namespace quenlor {

SharedPage::SharedPage() {
  void* const memory =
      ::mmap(nullptr, sizeof(ScanState), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory != MAP_FAILED) m_state = new (memory) ScanState;
}

}  // namespace quenlor
