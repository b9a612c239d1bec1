"""Addresses and network adapters against ip, and against lspci and the kernel for the devices behind them."""

import ipaddress
import json
import re


class Links:
    """What ip says; the tables that a rule without a selector looks up."""

    def __init__(self, results):
        self.links = json.loads(results["addresses"])
        self.routes = {family: json.loads(results[f"routes{family}"] or "[]") for family in (4, 6)}
        rules = json.loads(results["rules"])
        self.tables = {rule["table"] for rule in rules if rule.get("src") == "all" and len(rule) == 3} | {"main"}

    def named(self, name):
        return next(link for link in self.links if link["ifname"] == name)

    def gateway(self, name, family):
        """(address, metric) of the default route with the lowest metric."""
        routes = [route for route in self.routes[family]
                  if route["dst"] == "default" and route["dev"] == name and "gateway" in route
                  and route.get("table", "main") in self.tables]
        best = min(routes, key=lambda route: route.get("metric", 0), default=None)
        return (best["gateway"], best.get("metric", 0)) if best else (None, None)

    def reported_addresses(self, link):
        addresses = [address for address in link["addr_info"] if not any(
            address.get(flag) for flag in ("temporary", "deprecated", "tentative", "dadfailed"))]
        others = any(address["family"] == "inet6" and address["scope"] != "link" for address in addresses)
        return [address for address in addresses
                if not (others and address["family"] == "inet6" and address["scope"] == "link")]


def natural(name):
    return [(0, int(part), "") if part.isdigit() else (1, 0, part) for part in re.findall(r"\d+|\D+", name)]


def compare_addresses(results, inventory, comparison, resolver):
    """`resolver`: what every row has of this machine's names and name servers."""
    links = Links(results)
    expected = []
    for link in sorted(links.links, key=lambda link: natural(link["ifname"])):
        if link["link_type"] == "loopback":
            continue
        for address in links.reported_addresses(link):
            expected.append(expected_address(links, link, address) | resolver)
    order = {(row["Interface"], row["Address"]): row for row in expected}
    rows = inventory.rows("IPAddress")
    comparison.equal("addresses", sorted((row["Interface"], row["Address"]) for row in rows), sorted(order))
    interfaces = [row["Interface"] for row in rows]
    comparison.equal("addresses stand in the order of their interfaces", interfaces, sorted(interfaces, key=natural))
    comparison.whole_rows("IPAddress", rows, [order[row["Interface"], row["Address"]] for row in rows
                                              if (row["Interface"], row["Address"]) in order])


def expected_address(links, link, address):
    family = 6 if address["family"] == "inet6" else 4
    network = ipaddress.ip_network(f"{address['local']}/{address['prefixlen']}", strict=False)
    gateway, metric = links.gateway(link["ifname"], family)
    return {
        "Address": address["local"], "Subnet": str(network.netmask), "PrefixLength": address["prefixlen"],
        "Interface": link["ifname"], "Scope": address["scope"], "Family": f"ipv{family}",
        "Gateway": gateway, "GatewayMetric": metric,
        "PermanentMacAddress": permanent_address(link), "IPV6Address": first_global(link) if family == 4 else None,
        **origin(address),
    }


def permanent_address(link):
    return link.get("permaddr", link["address"]).upper()


def first_global(link):
    return next((address["local"] for address in link["addr_info"]
                 if address["family"] == "inet6" and address["scope"] == "global"), "")


def origin(address):
    """ip does not print the kernel's note of who made an IPv6 address; of the link it is the kernel itself, and
    what a command sets has none."""
    is_forever = address["valid_life_time"] == 0xFFFFFFFF
    if address["family"] == "inet":
        return {"Origin": "static" if is_forever else "dhcp", "DHCPEnabled": "N" if is_forever else "Y"}
    if address["scope"] == "link":
        return {"Origin": "kernel", "DHCPEnabled": "N"}
    return {} if is_forever else {"Origin": "ra", "DHCPEnabled": "N"}


def compare_adapters(results, inventory, comparison, told):
    """`told`: by interface what ip does not say."""
    links = Links(results)
    expected = [expected_adapter(link) | told.get(link["ifname"], {}) for link in links.links]
    expected.sort(key=lambda row: (row["Kind"] != "physical", natural(row["Interface"])))
    rows = inventory.rows("NetworkAdapter")
    comparison.whole_rows("NetworkAdapter", rows, expected, unchecked=("ID",))
    comparison.equal("NetworkAdapter IDs differ", len({row["ID"] for row in rows}), len(rows))


def expected_adapter(link):
    is_ethernet = link["link_type"] == "ether"
    address = link["address"].upper() if is_ethernet else ""
    # Only a card has an address burnt in.
    permanent = permanent_address(link) if kind_of(link) == "physical" else ""
    return {
        "Interface": link["ifname"], "Type": "Ethernet Adapter" if is_ethernet else "Other",
        "PermanentAddress": permanent, "CurrentAddress": address,
        "Kind": kind_of(link), "MTU": link["mtu"], "State": link["operstate"].lower(), "Master": link.get("master"),
        "Model": "",
    }


def kind_of(link):
    """A card in a bond has the bond's kind of port, but none of its own."""
    if link["link_type"] == "loopback":
        return "loopback"
    return link.get("linkinfo", {}).get("info_kind", "physical")


def told_by_device(device):
    """What a network interface has of its PCI device."""
    return {"Location": device["Slot"], "Model": device["Device"], "Manufacturer": device["Vendor"],
            "VendorId": device["VendorId"], "DeviceId": device["DeviceId"]}
