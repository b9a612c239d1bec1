// Which cloud a machine, virtual or real, belongs to, and which of its instances it is: by texts of
// the firmware and what cloud-init has written, without a question over the network.
#pragma once

#include <optional>
#include <string>

#include "readers/guest/GuestFacts.h"

namespace quenlor {

struct CloudVerdict {
  std::string cloud;       // "ec2", "gce", "azure", ...; empty where none is told
  std::string instanceId;  // empty where none is told
};

CloudVerdict judgeCloud(const GuestFacts& facts, const MachineTexts& texts);

// A UUID text whose first three groups are in the other byte order; nothing for any other text.
std::optional<std::string> swappedUuid(const std::string& uuid);

}  // namespace quenlor
