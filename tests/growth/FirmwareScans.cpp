// The groups of the firmware's table, collected on a recorded machine so many times.
// instructions.py counts what one of them costs.
#include <cstdio>
#include <cstdlib>

#include "tests/support/FirmwareGroups.h"
#include "tests/support/RecordedHost.h"

// Arguments: the recorded machine's directory, the number of scans.
int main(int count, char** arguments) {
  if (count != 3) return 2;
  const quenlor::test::RecordedHost machine(arguments[1]);
  const long scans = std::strtol(arguments[2], nullptr, 10);
  size_t rows = 0;
  for (long i = 0; i < scans; ++i) rows = quenlor::test::collectFirmwareGroups();
  std::printf("%zu rows\n", rows);
  return rows > 0 ? 0 : 1;
}
