"""Scenario "vmware": what a guest tells of its host, with the played tools agent of guest/opt."""

from inventory import Inventory

SCANS = ("alone", "told", "hanging")
UNKNOWN = "-1.000000"
LIMIT = 3000  # milliseconds that the guest's configuration gives a group


def compare(results, comparison):
    comparison.scans_ended_well(results, dict.fromkeys(SCANS, ""))
    inventories = {name: Inventory(results[f"{name}.out"]) for name in SCANS}
    for scan, inventory in inventories.items():
        comparison.row(f"{scan} Machine", inventory.row("Machine"), {
            "Virtualization": "vm", "Hypervisor": "vmware", "Evidence": "cpuid:VMwareVMware"})
        comparison.row(f"{scan} PhysicalProcessor", inventory.row("PhysicalProcessor"),
                       {"CorePerPackageCount": 4, "LogicalProcPerCore": 1})
    compare_told(inventories["told"], comparison)
    for scan, status in (("alone", "no source"), ("hanging", "timed out")):
        compare_untold(scan, inventories[scan], status, comparison)
    milliseconds = int(results["hanging.milliseconds"])
    comparison.equal(f"the agent that hangs is waited for once ({milliseconds} ms)", milliseconds < 2 * LIMIT, True)
    comparison.equal("nothing of the agent is left", "sleep" in results["processes"], False)


def compare_told(inventory, comparison):
    """The agent tells of 4 packages of 6 cores. Its count of this guest's packages is replaced by the guest's own
    processors, as the guest library that would tell their limit is not there."""
    comparison.row("told Lpar", inventory.row("Lpar"), {
        "LparID": "guest-7", "NodeCapacity": "4.000000", "NodeCapacityInCores": "24.000000",
        "LparCapacity": "1.000000", "LparCapacityInCores": "4.000000", "SerialNumber": "HOST-0042"})
    comparison.row("told HostComponentID", inventory.row("HostComponentID"), {
        "Manufacturer": "ACME Hosts", "Product": "BladeHost 5", "Version": "", "SerialNumber": "HOST-0042",
        "Type": "8670"})
    comparison.equal("told: all is complete", statuses(inventory), ["complete", "complete"])


def compare_untold(scan, inventory, status, comparison):
    comparison.row(f"{scan} Lpar", inventory.row("Lpar"), {
        "LparID": "", "NodeCapacity": UNKNOWN, "NodeCapacityInCores": UNKNOWN, "SerialNumber": ""})
    comparison.equal(f"{scan}: what the scan says of it", statuses(inventory), [status, status])


def statuses(inventory):
    told = {row["Group"]: row["Status"] for row in inventory.rows("ScanResult")}
    return [told["Lpar"], told["HostComponentID"]]
