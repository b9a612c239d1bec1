// Tells whether the machine is a VMware guest, by asking the hypervisor's backdoor port.
#pragma once

namespace quenlor {

// 1 inside a VMware guest of a known product, else 0; always 0 on other processors than x86.
// Replaces the process-wide SIGSEGV action while it probes: not for two threads at once.
int check_virtual();

// The probe's SIGSEGV handler: jumps back into a probe of this thread; any other SIGSEGV gets its
// default action.
void sigsegvhandler(int signalNumber);

}  // namespace quenlor
