// HostComponentID of the modern sources: the host of a VMware guest, which only its tools agent
// tells of. Elsewhere there is no such host, and no row.
#include "groups/capacity/AgentOutcome.h"
#include "groups/capacity/HostComponentIdAttributes.h"
#include "groups/modern/Collectors.h"
#include "groups/modern/GuestOfScan.h"
#include "identity/Identity.h"
#include "readers/virtualization/AgentAnswer.h"

namespace quenlor {
namespace {

using namespace host_component;

using Text = std::optional<std::string>;

Text unlessNone(const Text& text) { return text == agent_key::kNone ? Text() : text; }

Text typeOf(ToolsAgent& agent, const Text& manufacturer, const Text& product) {
  Text told = unlessNone(agent.ask(agent_key::kNodeType));
  if (manufacturer != kTypedMaker) return told;
  char type[5] = "";
  getTypeFromProd(product.value_or("").c_str(), type);
  return type;
}

}  // namespace

void collectHostComponentId(ModernScan& scan, ModernTable& table) {
  const std::optional<Guest> guest = guestOfScan(scan, table.outcome());
  if (!guest || !guest->isVmware) return;
  ToolsAgent& agent = scan.toolsAgent();
  const Text manufacturer = agent.ask(agent_key::kNodeManufacturer);
  const Text product = unlessNone(agent.ask(agent_key::kNodeProduct));
  table.addRow()
      .textAlways(kManufacturer, manufacturer)
      .textAlways(kProduct, product)
      .textAlways(kVersion, unlessNone(agent.ask(agent_key::kNodeVersion)))
      .textAlways(kSerialNumber, agent.ask(agent_key::kNodeId))
      .textAlways(kType, typeOf(agent, manufacturer, product));
  noteAgent(table.outcome(), agent, "identity of the host");
}

}  // namespace quenlor
