"""What machine.json may say about a machine, and the checks that keep it honest."""

import json
from dataclasses import dataclass, field
from pathlib import Path

DOCUMENTS = ("xml", "mif", "list")
DOCUMENT_OPTIONS = {"xml": [], "mif": ["-m"], "list": ["-l"]}


@dataclass
class Machine:
    """One fixture machine. Every field but `path` is a key of machine.json."""

    path: Path
    about: str = ""  # one sentence: what this machine is there to show
    like: str = ""  # machine whose root/ is laid down first, under this one's
    hostname: str = "node1"
    environment: dict = field(default_factory=dict)  # besides PATH, which is always set
    locales: list = field(default_factory=list)  # compiled locales to carry along, e.g. "C.utf8"
    groups: list | None = None  # scan configuration; None scans everything, without -c
    documents: list = field(default_factory=lambda: ["xml", "mif"])
    output: str = ""  # pass -o with this file instead of reading standard output
    settings: dict = field(default_factory=dict)  # keys of quenlor.conf that differ from the shipped
    utmp: list = field(default_factory=list)  # records: type, time, line, id, user
    loopback: bool = False  # lo up with 127.0.0.1
    interfaces: list = field(default_factory=list)  # name, mac, addresses, up
    firmware: str = ""  # image that stands in for /dev/mem
    mounts: list = field(default_factory=list)  # at, size, count: file systems of known size
    dead_mounts: list = field(default_factory=list)  # where a file system never answers
    generate: list = field(default_factory=list)  # path, count, text, before, after
    sparse: dict = field(default_factory=dict)  # path to size of files full of zeros
    # Document to scan once more with full tracing: it must not change, and golden.trace comes out.
    traced: str = ""
    # Commands that scripts of the machine and the scanner find in /bin, from busybox.
    commands: list = field(default_factory=lambda: ["cat", "rm", "sleep", "yes", "head", "kill"])
    host_files: list = field(default_factory=list)  # programs of the building machine to carry along
    cpus: int = 0  # bind the scan to so many CPUs; 0 leaves the affinity alone
    # Resource limits of the scan by their names in setrlimit(2), e.g. "RLIMIT_NOFILE"; not under a
    # sanitizer, whose runtime needs more.
    limits: dict = field(default_factory=dict)
    real: list = field(default_factory=list)  # facts that come from the real kernel, see facts.py
    leaves: list = field(default_factory=list)  # paths that a scan is meant to create
    status: int = 0
    stderr: str | dict = ""  # one text for every document, or a text by document
    seconds: float = 5.0  # longest a single scan may take

    @property
    def name(self):
        return self.path.name

    def golden(self, document):
        return self.path / f"golden.{document}"

    def expected_stderr(self, document):
        return self.stderr.get(document, "") if isinstance(self.stderr, dict) else self.stderr

    def roots(self):
        """Directories to lay over each other, lowest first."""
        below = [self.path.parent / self.like / "root"] if self.like else []
        return [root for root in [*below, self.path / "root"] if root.is_dir()]


def load_machine(path):
    path = Path(path).resolve()
    with open(path / "machine.json", encoding="utf-8") as stream:
        keys = json.load(stream)
    unknown = set(keys) - set(Machine.__dataclass_fields__) | {"path"} & set(keys)
    if unknown:
        raise ValueError(f"{path.name}/machine.json: unknown keys {sorted(unknown)}")
    machine = Machine(path=path, **keys)
    if not machine.about:
        raise ValueError(f"{path.name}/machine.json: say what the machine is about")
    if not machine.documents or not set(machine.documents) <= set(DOCUMENTS):
        raise ValueError(f"{path.name}/machine.json: documents are some of {DOCUMENTS}")
    if machine.traced and machine.traced not in machine.documents:
        raise ValueError(f"{path.name}/machine.json: traced is one of its documents")
    return machine
