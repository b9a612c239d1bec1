// What a machine is told apart by across documents.
#pragma once

#include <optional>
#include <string>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

// The best that a document has, and how good it is, from 1: the system's UUID; maker, product and
// serial number; the smallest burnt-in address of an adapter; the host's name. Fillers of firmware
// and addresses that a system made up count as none.
struct HostKey {
  std::string key;
  int rank = 0;
};

std::optional<HostKey> hostKey(const Document& document);

}  // namespace quenlor::ctl
