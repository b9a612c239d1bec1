"""Processors and their caches against lscpu, the kernel's files and dmidecode."""

import json
import re

import dmidecode

MAKERS = {"AuthenticAMD": "AMD", "GenuineIntel": "Intel"}
VIRTUALIZATION = {"AMD-V": "svm", "VT-x": "vmx"}
KINDS = {"Data": "data", "Instruction": "instruction", "Unified": "unified"}
# Levels of the x86-64 ABI by the flags that the level adds, as /proc/cpuinfo has them.
LEVELS = {
    "x86-64-v2": "cx16 lahf_lm popcnt pni sse4_1 sse4_2 ssse3",
    "x86-64-v3": "avx avx2 bmi1 bmi2 f16c fma abm movbe xsave",
    "x86-64-v4": "avx512f avx512bw avx512cd avx512dq avx512vl",
}
# Attributes of a Processor row and the flag that each stands for; the sources call fxsr and sse so.
FLAGS = {
    "FloatingPointUnitPresent": "fpu", "VirtualModeExtensions": "vme", "DebugExtensionPresent": "de",
    "PageSizeExtensions": "pse", "TimeStampCounter": "tsc", "ModelSpecificRegisters": "msr",
    "PhysicalAddressExtensions": "pae", "MachineCheckExceptions": "mce", "CMPXCHG8BInstructionSupport": "cx8",
    "OnchipAPIC": "apic", "FastSystemCall": "sep", "MemoryTypeRangeRegisters": "mtrr", "PageGlobalEnable": "pge",
    "MachineCheckArchitecture": "mca", "ConditionalMoveInstruction": "cmov", "PageAttributeTable": "pat",
    "_36-bitPageSizeExtension": "pse36", "ProcessSerialNumberEnabled": "pn", "MMXtmTechonlogy": "mmx",
    "FastFloatingPointSaveRestore": "fxsr", "StreamingSIMDExtensions": "sse",
}


class Cpus:
    """What lscpu says of one machine; `suffix` names the moment."""

    def __init__(self, results, suffix=""):
        self.facts = {entry["field"].rstrip(":"): entry["data"]
                      for entry in json.loads(results[f"lscpu{suffix}"])["lscpu"]}
        self.online = [dict(zip(("cpu", "core", "socket", "node"), map(int, line.split(","))))
                       for line in results[f"cpus{suffix}"].splitlines() if line[0] != "#"]
        self.present = int(self.facts["CPU(s)"])
        self.caches = json.loads(results[f"caches{suffix}"])["caches"]
        self.files = cache_files(results[f"cachefiles{suffix}"])
        self.microcode = re.search(r"^microcode\s*: (\S+)", results[f"cpuinfo{suffix}"], re.MULTILINE)
        self.sockets = sorted({cpu["socket"] for cpu in self.online})

    def threads(self, socket):
        return [cpu for cpu in self.online if cpu["socket"] == socket]

    def cores(self, socket):
        return {cpu["core"] for cpu in self.threads(socket)}

    def threads_per_core(self):
        cores = [(cpu["socket"], cpu["core"]) for cpu in self.online]
        return max(cores.count(core) for core in cores)

    def flags(self):
        return set(self.facts["Flags"].split())

    def level(self):
        level = "x86-64-v1"
        for name, flags in LEVELS.items():
            if not set(flags.split()) <= self.flags():
                break
            level = name
        return level

    def distinct_caches(self):
        """(level, kind, kilobytes, ways, line bytes, processors that share it) of each cache that there is."""
        return sorted({cache: None for cache in self.files.values()})

    def cache_kilobytes(self, level, kind, socket):
        numbers = {cpu["cpu"] for cpu in self.threads(socket)}
        return sum(cache[2] for cache in self.distinct_caches()
                   if cache[:2] == (level, kind) and set(cache[5]) & numbers)


def cache_files(listing):
    """(processor, index): cache, of lines like .../cpu0/cache/index0/level:1."""
    files = {}
    for cpu, index, name, value in re.findall(r"/cpu(\d+)/cache/index(\d+)/(\w+):(.*)", listing):
        files.setdefault((int(cpu), int(index)), {})[name] = value
    return {place: (int(texts["level"]), KINDS[texts["type"]], int(texts["size"].removesuffix("K")),
                    int(texts["ways_of_associativity"]), int(texts["coherency_line_size"]),
                    members(texts["shared_cpu_list"]))
            for place, texts in files.items()}


def members(listing):
    """The numbers of a list like 0-2,5."""
    numbers = []
    for part in listing.split(","):
        first, _, last = part.partition("-")
        numbers += range(int(first), int(last or first) + 1)
    return tuple(numbers)


def compare(cpus, dmi, inventory, comparison):
    compare_processors(cpus, dmi, inventory, comparison)
    compare_packages(cpus, dmi, inventory, comparison)
    compare_caches(cpus, inventory, comparison)
    compare_capacity(cpus, dmi, inventory, comparison)


def compare_processors(cpus, dmi, inventory, comparison):
    sockets = dmi.all(4)
    flags = cpus.flags()
    expected = []
    for socket in cpus.sockets:
        firmware = sockets[cpus.sockets.index(socket)]
        expected.append({
            "MaxClockSpeed": megahertz(firmware["Current Speed"]),
            "CurrentClockSpeed": megahertz(firmware["Current Speed"]),
            "ExternalClockSpeed": dmidecode.number(firmware["External Clock"], " MHz"),
            # The enumeration ends before the sockets of this century; QEMU's own structures say "Other".
            "Interface": "Other" if firmware["Upgrade"] == "Other" else None,
            "Manufacturer": cpus.facts["Vendor ID"], "ChipFamily": cpus.facts["CPU family"],
            "ChipModel": cpus.facts["Model"], "ChipStepping": cpus.facts["Stepping"],
            "CPUEnabled": "H" if "ht" in flags and len(cpus.threads(socket)) > 1 else None,
            "PhysicalPackageCount": len(cpus.sockets), "CorePerPackageCount": len(cpus.cores(socket)),
            "LogicalProcPerCoreCount": cpus.threads_per_core(),
            **{name: "Y" if flag in flags else "N" for name, flag in FLAGS.items()},
            # As ever, the prefetch instruction counts for the whole.
            "AMD3DNowtmTechnology": "Y" if any("3dnow" in flag for flag in flags) else "N"})
    # Family is the catalogue's name, ID and ChipFeatures are of values that stand here already.
    rows = inventory.rows("Processor")
    comparison.whole_rows("Processor", rows, expected, unchecked=("ID", "Family", "ChipFeatures"))
    comparison.equal("Processor IDs differ", len({row["ID"] for row in rows}), len(rows))


def megahertz(text):
    return text.removesuffix(" MHz")


def compare_packages(cpus, dmi, inventory, comparison):
    firmware = dmi.all(4)
    expected = []
    for number, socket in enumerate(cpus.sockets, 1):
        expected.append(expected_package(cpus, socket, number) | {"Threads": threads(cpus, socket, firmware)}
                        | expected_firmware(cpus, firmware, number - 1))
    rows = [{**row, "Index": row["Id"]} for row in inventory.rows("PhysicalProcessor")]
    # Family, Type and Signature are words and the number of CPUID's first leaf, which no tool prints.
    comparison.whole_rows("PhysicalProcessor", rows, expected, unchecked=("Family", "Type", "Signature"))


def expected_package(cpus, socket, number):
    return {
        "Id": number, "Manufacturer": MAKERS[cpus.facts["Vendor ID"]], "Brandname": cpus.facts["Model name"],
        "CorePerPackageCount": len(cpus.cores(socket)), "LogicalProcPerCore": cpus.threads_per_core(),
        "Cores": len(cpus.cores(socket)), "OnlineThreads": len(cpus.threads(socket)), "Is64BitSupported": "Y",
        "L1DataCacheKB": cpus.cache_kilobytes(1, "data", socket) or None,
        "L1InstructionCacheKB": cpus.cache_kilobytes(1, "instruction", socket) or None,
        "L2CacheSize": largest(cpus, 2), "L3CacheSize": largest(cpus, 3),
        "Microcode": cpus.microcode and cpus.microcode[1], "InstructionSet": cpus.level(),
        "NUMANodes": len({cpu["node"] for cpu in cpus.threads(socket)}),
        "VirtualizationExtension": VIRTUALIZATION.get(cpus.facts.get("Virtualization")),
    }


def threads(cpus, socket, firmware):
    """Those that are offline belong to the only package there is, else the firmware must know; of a package
    whose neighbour is offline nobody does."""
    offline = cpus.present - len(cpus.online)
    if offline == 0:
        return len(cpus.threads(socket))
    if len(firmware) > len(cpus.sockets):
        return None
    return int(firmware[0]["Thread Count"]) if len(cpus.sockets) > 1 else cpus.present


def largest(cpus, level):
    return max((cache[2] for cache in cpus.distinct_caches() if cache[0] == level), default=0)


def expected_firmware(cpus, sockets, index):
    """A socket without a processor that is online shifts all behind it, so none is taken for a package's."""
    if len(sockets) != len(cpus.sockets):
        speed = megahertz(sockets[0]["Current Speed"])
        return {"CpuFreq": speed, "BaseMHz": speed, "SocketType": socket_type(sockets[0]["Upgrade"])}
    speed = megahertz(sockets[index]["Current Speed"])
    return {"CpuFreq": speed, "BaseMHz": speed, "Socket": sockets[index]["Socket Designation"],
            "SerialNumber": dmidecode.known(sockets[index]["Serial Number"]),
            "SocketType": socket_type(sockets[index]["Upgrade"])}


def socket_type(upgrade):
    return None if upgrade in ("Other", "Unknown", "None") else upgrade.removeprefix("Socket ")


def compare_caches(cpus, inventory, comparison):
    """The kernel's files are held against lscpu -C where lscpu counts the same. What differs among caches of
    one size, as where a thread is offline, is absent."""
    sizes = {}
    for level, kind, kilobytes, *shape, sharing in cpus.distinct_caches():
        sizes.setdefault((level, kind, kilobytes), []).append((*shape, len(sharing)))
    expected = [{"Level": level, "Kind": kind, "SizeKB": kilobytes, "Count": len(shapes),
                 **{name: common(values) for name, values in zip(("Ways", "LineBytes", "SharedBy"), zip(*shapes))}}
                for (level, kind, kilobytes), shapes in sorted(sizes.items())]
    comparison.whole_rows("Cache", inventory.rows("Cache"), expected)
    for row, cache in zip(inventory.rows("Cache"), cpus.caches):
        comparison.row(f"Cache {cache['name']}", row, {
            "Level": cache["level"], "Kind": KINDS[cache["type"]], "SizeKB": int(cache["one-size"]) // 1024,
            "Ways": cache["ways"], "LineBytes": cache["coherency-size"]})


def common(values):
    return values[0] if len(set(values)) == 1 else None


def compare_capacity(cpus, dmi, inventory, comparison):
    comparison.whole_row("Lpar", inventory.row("Lpar"), {
        "LparID": "", "SharedPoolID": "", "NodeCapacity": f"{len(cpus.sockets)}.000000",
        "NodeCapacityInCores": f"{sum(len(cpus.cores(socket)) for socket in cpus.sockets)}.000000",
        "LparCapacity": "-1.000000", "LparCapacityInCores": f"{len(cpus.online)}.000000",
        "SharedPoolCapacity": "-1.000000", "SharedPoolCapacityInCores": "-1.000000",
        "SerialNumber": dmidecode.known(dmi.first(1)["Serial Number"]) or ""})
    comparison.equal("HostComponentID", inventory.rows("HostComponentID"), [])
