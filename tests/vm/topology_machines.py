"""Machines of scenario "topology": packages, dies, cores and threads in several layouts."""


def single(_work):
    return ["-m", "512", "-smp", "1"]


def laptop(_work):
    """A package of two cores with two threads each."""
    return ["-m", "512", "-smp", "sockets=1,cores=2,threads=2"]


def server(_work):
    """Two packages of two dies with two cores of two threads; a package's memory is a node of its own."""
    nodes = [argument for node in (0, 1) for argument in (
        "-object", f"memory-backend-ram,id=memory{node},size=384M", "-numa", f"node,nodeid={node},memdev=memory{node}",
        "-numa", f"cpu,node-id={node},socket-id={node}")]
    return ["-m", "768", "-machine", "q35", "-smp", "sockets=2,dies=2,cores=2,threads=2", *nodes]


def amd(_work):
    """Two packages whose caches CPUID tells in AMD's way: threads of a core share the first two levels."""
    return ["-m", "768", "-machine", "q35", "-cpu", "EPYC-Rome,xsave=off", "-smp", "sockets=2,cores=4,threads=2"]


TOPOLOGIES = {"1": single, "4": laptop, "16": server, "amd": amd}
