"""Scenario "pvscsi": drives of the paravirtual adapter against sg_inq, with a node that is free and
with one that another process holds exclusively."""

from compare_devices import inquiry_text, sg_nodes
from inventory import Inventory

HELD = "sg1"


def compare(results, comparison):
    message = f"quenlor: /dev/{HELD} is held exclusively by another process and is left out\n"
    comparison.scans_ended_well(results, {"free": "", "held": message})
    comparison.equal("holder", results["holder"].strip(), "held")
    nodes = sg_nodes(results)
    comparison.equal("nodes", len(nodes), 3)
    compare_drives(results, "free", nodes, comparison)
    compare_drives(results, "held", [node for node in nodes if node != HELD], comparison)
    milliseconds = int(results["held.milliseconds"])
    comparison.equal(f"scan beside the held node took less than 30 s ({milliseconds} ms)",
                     milliseconds < 30000, True)


def compare_drives(results, scan, nodes, comparison):
    expected = [{"Index": i,
                 "Manufacturer": inquiry_text(results[f"{node}.inquiry"], "Vendor identification"),
                 "Model": inquiry_text(results[f"{node}.inquiry"], "Product identification"),
                 "SerialNumber": inquiry_text(results[f"{node}.serial"], "Unit serial number")}
                for i, node in enumerate(nodes, 1)]
    comparison.rows(f"Storage of scan '{scan}'", Inventory(results[f"{scan}.out"]).rows("Storage"),
                    expected)
