#include "readers/system/InstallDate.h"

#include <array>

#include "host/Host.h"

namespace quenlor {
namespace {

constexpr time_t kFirstPlausible = 946684800;  // 2000-01-01T00:00:00Z

// Written once, by the first boot or by the installer; key names are those of OpenSSH.
constexpr std::array kEvidence = {
    "/etc/machine-id",
    "/etc/ssh/ssh_host_rsa_key",
    "/etc/ssh/ssh_host_ecdsa_key",
    "/etc/ssh/ssh_host_ed25519_key",
    "/etc/ssh/ssh_host_dsa_key",
    "/var/log/installer",
    "/var/log/anaconda",
    "/root/anaconda-ks.cfg",
    "/var/log/YaST2",
};

void addModification(const char* path, std::vector<time_t>& dates) {
  struct statx facts {};
  if (host().statx(path, 0, STATX_MTIME, &facts) != 0) return;
  if ((facts.stx_mask & STATX_MTIME) != 0) dates.push_back(facts.stx_mtime.tv_sec);
}

void addBirth(const char* path, std::vector<time_t>& dates) {
  struct statx facts {};
  if (host().statx(path, 0, STATX_BTIME, &facts) != 0) return;
  if ((facts.stx_mask & STATX_BTIME) != 0) dates.push_back(facts.stx_btime.tv_sec);
}

}  // namespace

std::optional<time_t> oldestPlausible(const std::vector<time_t>& dates, time_t now) {
  std::optional<time_t> oldest;
  for (const time_t date : dates) {
    if (date < kFirstPlausible || date > now) continue;
    if (!oldest || date < *oldest) oldest = date;
  }
  return oldest;
}

std::optional<time_t> readInstallDate(time_t now) {
  std::vector<time_t> dates;
  addBirth("/", dates);
  for (const char* path : kEvidence) addModification(path, dates);
  return oldestPlausible(dates, now);
}

}  // namespace quenlor
