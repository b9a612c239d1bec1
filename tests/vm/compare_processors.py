"""Scenario "processors": counts against lscpu; the VMware path through QEMU's own backdoor port."""

import re

from inventory import Inventory

SCANS = ["plain", "offline", "unanswered", "guest", "unprivileged", "modern"]
HOST_ROWS = 4  # packages that the played agent announces


def compare(results, comparison):
    comparison.scans_ended_well(results, dict.fromkeys(SCANS, ""))
    inventories = {name: Inventory(results[f"{name}.out"]) for name in SCANS}
    compare_counts(results, inventories, comparison)
    compare_guest(inventories["guest"], comparison)
    compare_unanswered(inventories["unanswered"], results, comparison)
    comparison.equal("without I/O privilege the port does not answer",
                     inventories["unprivileged"].rows("HostComponentID"), [])
    compare_modern(inventories["modern"], comparison)


def topology(listing):
    """Packages, cores per package and threads per core of lscpu's parsable output."""
    cpus = [line.split(",") for line in listing.splitlines() if line[:1].isdigit()]
    packages = {socket for _, _, socket in cpus}
    cores = {(socket, core) for _, core, socket in cpus}
    return len(packages), len(cores) // len(packages), len(cpus) // len(cores)


def compare_counts(results, inventories, comparison):
    packages, cores, threads = topology(results["lscpu"])
    comparison.equal("packages, cores, threads of lscpu", (packages, cores, threads), (2, 2, 2))
    brand = re.search(r"model name\s*: (.*)", results["cpuinfo"])[1]
    for scan in ("plain", "offline", "unprivileged"):
        expected = [{"Id": i, "CorePerPackageCount": cores, "LogicalProcPerCore": threads,
                     "Manufacturer": "Intel", "Brandname": brand, "Is64BitSupported": "Y",
                     "L3CacheSize": 0} for i in range(1, packages + 1)]
        comparison.rows(f"{scan} PhysicalProcessor", inventories[scan].rows("PhysicalProcessor"),
                        expected)
        comparison.row(f"{scan} Lpar", inventories[scan].row("Lpar"), {
            "LparID": "", "NodeCapacity": "2.000000", "NodeCapacityInCores": "4.000000",
            "LparCapacity": "-1.000000", "LparCapacityInCores": "-1.000000"})
        comparison.equal(f"{scan} HostComponentID", inventories[scan].rows("HostComponentID"), [])
    # Eight CPUs, four siblings per package.
    comparison.equal("plain Processor rows", len(inventories["plain"].rows("Processor")), 2)


def compare_guest(inventory, comparison):
    """What the agent tells: 4 packages of 6 cores with 2 threads; the guest's own CPUs say nothing."""
    expected = [{"Id": i, "Manufacturer": "GenuineIntel", "Family": "Xeon", "Type": "MP",
                 "CorePerPackageCount": 6, "LogicalProcPerCore": 2, "CpuFreq": 2933,
                 "L2CacheSize": 0, "Brandname": "", "Signature": "", "Is64BitSupported": "Y"}
                for i in range(1, HOST_ROWS + 1)]
    comparison.rows("guest PhysicalProcessor", inventory.rows("PhysicalProcessor"), expected)
    # The agent's VM capacity is replaced, as no guest library is there: 4 active cores of CPUID
    # over 2 cores per package.
    comparison.row("guest Lpar", inventory.row("Lpar"), {
        "LparID": "guest-7", "SharedPoolID": "", "NodeCapacity": "4.000000",
        "NodeCapacityInCores": "24.000000", "LparCapacity": "2.000000",
        "LparCapacityInCores": "4.000000", "SharedPoolCapacity": "-1.000000",
        "SharedPoolCapacityInCores": "-1.000000", "SerialNumber": "HOST-0042"})
    comparison.row("guest HostComponentID", inventory.row("HostComponentID"), {
        "Manufacturer": "ACME Hosts", "Product": "BladeHost 5", "Version": "",
        "SerialNumber": "HOST-0042", "Type": "8670"})


def compare_unanswered(inventory, results, comparison):
    """A guest without an agent: one row of defaults, capacities unknown, an empty host identity."""
    comparison.rows("unanswered PhysicalProcessor", inventory.rows("PhysicalProcessor"), [{
        "Id": 1, "CorePerPackageCount": 0, "LogicalProcPerCore": 0, "Manufacturer": "Unknown",
        "Family": "Unknown", "Type": "", "CpuFreq": 0, "Is64BitSupported": ""}])
    comparison.row("unanswered Lpar", inventory.row("Lpar"), {
        "LparID": "", "NodeCapacity": "-1.000000", "NodeCapacityInCores": "-1.000000",
        "LparCapacity": "-1.000000", "LparCapacityInCores": "-1.000000", "SerialNumber": ""})
    comparison.row("unanswered HostComponentID", inventory.row("HostComponentID"), {
        "Manufacturer": "", "Product": "", "Version": "", "SerialNumber": "", "Type": ""})


def compare_modern(inventory, comparison):
    """What the agent would say of its host is not in the document."""
    comparison.equal("modern HostComponentID", inventory.rows("HostComponentID"), [])
    comparison.row("modern Lpar", inventory.row("Lpar"), {
        "LparID": "", "NodeCapacity": "2.000000", "NodeCapacityInCores": "4.000000", "LparCapacityInCores": "8.000000",
        "SerialNumber": ""})
    told = {row["Group"]: row["Status"] for row in inventory.rows("ScanResult")}
    comparison.equal("modern Lpar and HostComponentID are complete",
                     (told["Lpar"], told["HostComponentID"]), ("complete", "complete"))
