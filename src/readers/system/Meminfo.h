// Memory amounts of /proc/meminfo.
#pragma once

namespace quenlor {

// The number on a /proc/meminfo line, in its unit (kB); 0 when there is none. Splits the line in
// place.
long parseVal(char* line);

// Reads /proc/meminfo into the four amounts (kB), which the caller sets to 0 before. 1 when the
// file was read, 0 when it is missing or empty or says that there is no memory: then sysinfo has to
// serve.
int getFromMeminfo(unsigned long* totalPhys, unsigned long* freePhys, unsigned long* totalVirt,
                   unsigned long* freeVirt);

}  // namespace quenlor
