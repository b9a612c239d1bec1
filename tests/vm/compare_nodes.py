"""Scenario "nodes": what six times as many SCSI drives cost."""

from inventory import Inventory

FEW, MANY = 51, 306
WALK_END = 255  # the walk over generic nodes ends there


def compare(results, comparison):
    comparison.scans_ended_well(results, dict.fromkeys(("few", "many"), ""))
    comparison.equal("nodes", len(results["nodes"].split()), MANY)
    for scan, drives in (("few", FEW), ("many", WALK_END)):
        rows = Inventory(results[f"{scan}.out"]).rows("Storage")
        comparison.equal(f"rows of scan '{scan}'", len(rows), drives)
        unknown = [row["Index"] for row in rows if row["TotalSize"] != "8"]
        comparison.equal(f"drives without their size in scan '{scan}'", unknown, [])
    few, many = (int(results[f"{scan}.milliseconds"]) for scan in ("few", "many"))
    comparison.equal(f"{MANY} nodes cost at most 6 times {FEW} ({many} ms, {few} ms)",
                     many <= 6 * few, True)
