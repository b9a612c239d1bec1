"""Scenario "network": addresses, gateways and adapters against ip, ethtool and lspci."""

import re

import compare_buses
import compare_links
from inventory import Inventory

RESOLVER = {"Hostname": "vm-node", "Domain": "example.com"}
CONNECTORS = {"Twisted Pair": "Twisted Pair"}
PHYSICAL = ("eth0", "eth1", "eth2")


def compare(results, comparison):
    comparison.scans_ended_well(results, {"first": "", "second": ""})
    inventory = Inventory(results["first.out"])
    compare_links.compare_addresses(results, inventory, comparison, RESOLVER)
    compare_links.compare_adapters(results, inventory, comparison, told_adapters(results))
    compare_gateways(inventory, comparison)
    kinds = {row["Kind"] for row in inventory.rows("NetworkAdapter")}
    comparison.equal("kinds of interfaces", kinds, {"physical", "bond", "vlan", "bridge", "veth", "macvlan", "dummy",
                                                    "loopback"})
    comparison.equal("dummies", len([row for row in inventory.rows("NetworkAdapter") if row["Kind"] == "dummy"]), 300)


def told_adapters(results):
    """What only ethtool knows, and of the cards lspci."""
    devices = {device["Slot"]: compare_links.told_by_device(device)
               for device in compare_buses.pci_devices(results["lspci"])}
    told = {}
    for name in (file.removesuffix(".driver") for file in results if file.endswith(".driver")):
        driver = dict(re.findall(r"^([\w-]+): *(.*)$", results[f"{name}.driver"], re.MULTILINE))
        told[name] = settings(results[f"{name}.ethtool"])
        # Of an interface without a device ethtool has the module, which Kind says, that one's version, and the
        # first of its words for connectors.
        if name in PHYSICAL:
            told[name] |= {
                **devices[driver["bus-info"]], "Driver": driver["driver"],
                "Firmware": driver["firmware-version"] or None,
                "ConnectorType": CONNECTORS.get(port(results[f"{name}.ethtool"]))}
    return told


def settings(listing):
    facts = dict(re.findall(r"^\t([\w ]+): (.*)$", listing, re.MULTILINE))
    speed = re.fullmatch(r"(\d+)Mb/s", facts.get("Speed", ""))
    duplex = facts.get("Duplex", "").lower()
    return {"SpeedMbs": speed and speed[1], "Duplex": duplex if duplex in ("full", "half") else None}


def port(listing):
    return (re.search(r"^\tPort: (.*)$", listing, re.MULTILINE) or [None, None])[1]


def compare_gateways(inventory, comparison):
    """A table that a rule with a selector looks up holds nobody's gateway."""
    gateways = {row["Address"]: row.get("Gateway") for row in inventory.rows("IPAddress")}
    comparison.row("gateway of", gateways, {
        "192.0.2.10": "192.0.2.1", "198.51.100.5": "198.51.100.1", "203.0.113.1": None, "192.0.2.77": "192.0.2.9",
        "2001:db8:1::10": "2001:db8:1::1"})
    origins = {row["Address"]: row.get("Origin") for row in inventory.rows("IPAddress")}
    advertised = [address for address in origins if address.startswith("2001:db8:5:")]
    # Both ends have heard it.
    comparison.equal("addresses of the router's prefix", len(advertised), 2)
    comparison.row("origin of", origins, {**dict.fromkeys(advertised, "ra"), "192.0.2.10": "static",
                                          "192.0.2.77": "dhcp"})
