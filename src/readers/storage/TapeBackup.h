// Looks for a running backup that drives the tape: probing the SCSI bus would disturb it.
#pragma once

namespace quenlor {

// 1 when the line, from the first occurrence of word up to its newline, equals word; else 0.
int getExactMatch(const char* line, const char* word);

// 1 when the process list shows a backup program at work, else 0, also when ps cannot be run.
int isUltrium_tape_LT4772_running();

}  // namespace quenlor
