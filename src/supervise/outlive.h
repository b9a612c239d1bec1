// Runs a scan so that whoever waits for this process never waits for ever.
#pragma once

#include <functional>

namespace quenlor {

// Runs the scan in a child process and gives its exit status. Returns in both processes: in the
// child once the scan is over, and in the parent when the child has ended or can be waited for no
// longer. Where no child can be made the scan runs in this process. The document must be written,
// flushed and checked when the scan returns.
int outlive(const std::function<int()>& scan);

}  // namespace quenlor
