// Which container the scanner runs in, judged from facts. Marks that an image carries into a
// virtual machine, or that a host leaks, count only where namespaces confirm them.
#pragma once

#include <string>

#include "readers/guest/GuestFacts.h"

namespace quenlor {

struct ContainerVerdict {
  // "docker", "podman", "lxc", "lxd", "incus", "nspawn", "openvz", "wsl", "kubernetes", "gvisor",
  // "proot" or "other"; empty outside a container.
  std::string container;
  std::string evidence;  // "file:/run/.containerenv"; empty outside a container
};

ContainerVerdict judgeContainer(const ContainerFacts& facts);

}  // namespace quenlor
