// Predictable file names in /tmp, for a program that runs as root.
#pragma once

namespace quenlor {

// Replaces whatever stands at the path by a new, empty file of ours (mode 0600), so that a command
// that writes there follows no link that somebody has planted. Only in a directory where nobody
// else can replace the file again: sticky, or not writable for group and others. False, and the
// caller must not use the name, when any of it fails. path is absolute.
bool secureTemporaryFile(const char* path);

}  // namespace quenlor
