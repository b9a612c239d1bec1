// The system's own time zone and locale, whatever the environment of the scanner says.
#pragma once

#include <string>
#include <string_view>

namespace quenlor {

// The zone in a path below zoneinfo ("/usr/share/zoneinfo/posix/Europe/Berlin"); empty when the
// path leads elsewhere.
std::string zoneOfPath(std::string_view path);

// The link /etc/localtime; where that is a copy, /etc/timezone; without either UTC.
std::string readZone();

struct SystemLocale {
  std::string lang;  // empty: none is set
};

// LANG of /etc/locale.conf, /etc/default/locale, /etc/sysconfig/i18n, the first that sets it.
SystemLocale readSystemLocale();

}  // namespace quenlor
