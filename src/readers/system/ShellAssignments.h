// Files of assignments as shells read them: os-release(5), locale.conf(5), /etc/default/locale,
// /etc/sysconfig files.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quenlor {

// NAME=value lines; the last assignment of a name wins. A value is bare, in double quotes (where a
// backslash stands before ", $, ` and \) or in single quotes. Nothing is expanded. Blank lines,
// comments and lines without a name are passed over.
std::map<std::string, std::string> parseAssignments(std::string_view text);

}  // namespace quenlor
