// HostComponentID of the modern sources: the host of a VMware guest, which only its agent tells of.
// Elsewhere there is no such host, and no row.
#include "groups/modern/Collectors.h"
#include "groups/modern/GuestOfScan.h"

namespace quenlor {

void collectHostComponentId(ModernScan& scan, ModernTable& table) {
  const std::optional<Guest> guest = guestOfScan(scan, table.outcome());
  if (!guest || !guest->isVmware) return;
  constexpr uint32_t ATTRIBUTES[] = {1, 2, 3, 4, 7};
  ModernRow& row = table.addRow();
  for (const uint32_t id : ATTRIBUTES) row.textAlways(id, "");
  table.outcome().note(OutcomeStatus::kPartial, "identity of the host: its agent was not asked");
}

}  // namespace quenlor
