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
    "FastFloatingPointSaveRestore": "fxsr", "StreamingSIMDExtensions": "sse", "AMD3DNowtmTechnology": "3dnow",
}


class Cpus:
    """What lscpu says of one machine; `suffix` names the moment."""

    def __init__(self, results, suffix=""):
        self.facts = {entry["field"].rstrip(":"): entry["data"]
                      for entry in json.loads(results[f"lscpu{suffix}"])["lscpu"]}
        self.online = [cpu for cpu in json.loads(results[f"cpus{suffix}"])["cpus"] if cpu["online"]]
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


def compare(results, inventory, comparison):
    cpus = Cpus(results)
    dmi = dmidecode.Dmi(results["dmidecode"])
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
            "ExternalClockSpeed": megahertz(firmware["External Clock"]),
            "Manufacturer": cpus.facts["Vendor ID"], "ChipFamily": cpus.facts["CPU family"],
            "ChipModel": cpus.facts["Model"], "ChipStepping": cpus.facts["Stepping"], "CPUEnabled": "H",
            "PhysicalPackageCount": len(cpus.sockets), "CorePerPackageCount": len(cpus.cores(socket)),
            "LogicalProcPerCoreCount": cpus.threads_per_core(),
            **{name: "Y" if flag in flags else "N" for name, flag in FLAGS.items()}})
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
        expected.append(expected_package(cpus, socket, number) | expected_firmware(firmware, number - 1))
    rows = [{**row, "Index": row["Id"]} for row in inventory.rows("PhysicalProcessor")]
    # Family, Type and Signature are words and the number of CPUID's first leaf, which no tool prints.
    comparison.whole_rows("PhysicalProcessor", rows, expected, unchecked=("Family", "Type", "Signature"))


def expected_package(cpus, socket, number):
    return {
        "Id": number, "Manufacturer": MAKERS[cpus.facts["Vendor ID"]], "Brandname": cpus.facts["Model name"],
        "CorePerPackageCount": len(cpus.cores(socket)), "LogicalProcPerCore": cpus.threads_per_core(),
        "Cores": len(cpus.cores(socket)), "Threads": len(cpus.threads(socket)),
        "OnlineThreads": len(cpus.threads(socket)), "Is64BitSupported": "Y",
        "L1DataCacheKB": cpus.cache_kilobytes(1, "data", socket) or None,
        "L1InstructionCacheKB": cpus.cache_kilobytes(1, "instruction", socket) or None,
        "L2CacheSize": largest(cpus, 2), "L3CacheSize": largest(cpus, 3),
        "Microcode": cpus.microcode and cpus.microcode[1], "InstructionSet": cpus.level(),
        "NUMANodes": len({cpu["node"] for cpu in cpus.threads(socket)}),
        "VirtualizationExtension": VIRTUALIZATION.get(cpus.facts.get("Virtualization")),
    }


def largest(cpus, level):
    return max((cache[2] for cache in cpus.distinct_caches() if cache[0] == level), default=0)


def expected_firmware(sockets, index):
    if index >= len(sockets):
        return {}
    speed = megahertz(sockets[index]["Current Speed"])
    return {"CpuFreq": speed, "BaseMHz": speed, "Socket": sockets[index]["Socket Designation"],
            "SerialNumber": dmidecode.known(sockets[index]["Serial Number"]),
            "SocketType": (dmidecode.known(sockets[index]["Upgrade"]) or "").removeprefix("Socket ") or None}


def compare_caches(cpus, inventory, comparison):
    """The kernel's files are held against lscpu -C where lscpu counts the same."""
    kinds = {}
    for level, kind, kilobytes, ways, line, sharing in cpus.distinct_caches():
        kinds.setdefault((level, kind, kilobytes, ways, line, len(sharing)), []).append(sharing)
    expected = [{"Level": level, "Kind": kind, "SizeKB": kilobytes, "Count": len(instances), "Ways": ways,
                 "LineBytes": line, "SharedBy": sharing}
                for (level, kind, kilobytes, ways, line, sharing), instances in sorted(kinds.items())]
    comparison.whole_rows("Cache", inventory.rows("Cache"), expected)
    for row, cache in zip(inventory.rows("Cache"), cpus.caches):
        comparison.row(f"Cache {cache['name']}", row, {
            "Level": cache["level"], "Kind": KINDS[cache["type"]], "SizeKB": int(cache["one-size"]) // 1024,
            "Ways": cache["ways"], "LineBytes": cache["coherency-size"]})


def compare_capacity(cpus, dmi, inventory, comparison):
    comparison.whole_row("Lpar", inventory.row("Lpar"), {
        "LparID": "", "SharedPoolID": "", "NodeCapacity": f"{len(cpus.sockets)}.000000",
        "NodeCapacityInCores": f"{sum(len(cpus.cores(socket)) for socket in cpus.sockets)}.000000",
        "LparCapacity": "-1.000000", "LparCapacityInCores": f"{len(cpus.online)}.000000",
        "SharedPoolCapacity": "-1.000000", "SharedPoolCapacityInCores": "-1.000000",
        "SerialNumber": dmidecode.known(dmi.first(1)["Serial Number"]) or ""})
    comparison.equal("HostComponentID", inventory.rows("HostComponentID"), [])
