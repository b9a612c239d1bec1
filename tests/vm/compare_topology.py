"""Scenario "topology": processors and caches of several layouts against lscpu, all online and with some offline."""

import compare_cpus
import dmidecode
from inventory import Inventory

MOMENTS = ("all", "thread", "package")


def compare(results, comparison):
    moments = [moment for moment in MOMENTS if f"{moment}.out" in results]
    comparison.scans_ended_well(results, dict.fromkeys(moments, ""))
    dmi = dmidecode.Dmi(results["dmidecode"])
    for moment in moments:
        print(f" {moment}:")
        cpus = compare_cpus.Cpus(results, f".{moment}")
        compare_cpus.compare(cpus, dmi, Inventory(results[f"{moment}.out"]), comparison)
