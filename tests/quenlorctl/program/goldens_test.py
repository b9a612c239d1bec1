#!/usr/bin/env python3
"""Compares what every subcommand makes of every golden document with what is committed: whole texts of some
documents in golden/, digests of all in golden/digests. QUENLOR_UPDATE_GOLDEN=1 rewrites them.

Usage: goldens_test.py <quenlorctl program> <source directory>
"""
import difflib
import hashlib
import os
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
import documents  # noqa: E402

COMMANDS = {
    "json": ["json"],
    "pretty": ["json", "--pretty"],
    "raw": ["json", "--raw"],
    "rows": ["rows"],
    "csv": ["rows", "--format", "csv", "--group", "storage"],
    "validate": ["validate"],
    "diff": ["diff", "base.xml"],
    "diff-all": ["diff", "--all", "base.xml"],
    "diff-json": ["diff", "--json", "base.xml"],
    "diff-across": ["diff", "across.xml"],
}
# What a document is compared with: one of its kind, and one of the other kind of sources.
BASES = {"machines": "machines/full-server", "recorded": "recorded/kvm-guest"}
# Whole texts: what people read and what programs are written against, on few machines.
WHOLE = {
    "machines/full-server": ["pretty", "rows", "csv", "validate"],
    "machines/plain-server": ["diff", "diff-json"],
    "machines/container": ["json", "diff"],
    "machines/storage-ide": ["csv", "diff-all"],
    "machines/rubbish": ["raw", "diff"],
    "machines/utf8": ["json"],
    "machines/processors-hyper-threaded": ["diff"],
    "recorded/kvm-guest": ["json", "diff-across"],
    "recorded/drives-nvme-laptop": ["rows", "diff"],
    "recorded/docker-in-kvm": ["diff"],
    "recorded/drives-md-lvm-luks": ["diff"],
}


def output_of(program, command, name, folder):
    run = subprocess.run([program, *COMMANDS[command], name], cwd=folder, capture_output=True, timeout=60)
    return f"status {run.returncode}\n".encode() + run.stderr + run.stdout


def write(folder, name, text):
    pathlib.Path(folder, name).write_text(text, encoding="utf-8")


def outputs_of(program, texts):
    """{(document, command): output}"""
    outputs = {}
    with tempfile.TemporaryDirectory() as folder:
        for document, text in texts.items():
            name = document.replace("/", "-") + ".xml"
            write(folder, name, text)
            for kind, base in BASES.items():
                write(folder, "base.xml" if document.startswith(kind) else "across.xml", texts[base])
            for command in COMMANDS:
                outputs[document, command] = output_of(program, command, name, folder)
    return outputs


def whole_path(folder, document, command):
    return folder / f"{document.split('/')[1]}.{command}"


def digest_lines(outputs):
    return [f"{hashlib.sha256(output).hexdigest()[:16]} {document} {command}"
            for (document, command), output in outputs.items()]


def update(folder, outputs):
    folder.mkdir(exist_ok=True)
    (folder / "digests").write_text("\n".join(digest_lines(outputs)) + "\n")
    for document, commands in WHOLE.items():
        for command in commands:
            whole_path(folder, document, command).write_bytes(outputs[document, command])


def problems_of(folder, outputs):
    for document, commands in WHOLE.items():
        for command in commands:
            path = whole_path(folder, document, command)
            wanted, found = path.read_bytes().decode(), outputs[document, command].decode()
            yield from difflib.unified_diff(wanted.splitlines(), found.splitlines(), str(path), "now", lineterm="")
    committed = (folder / "digests").read_text().splitlines()
    yield from difflib.unified_diff(committed, digest_lines(outputs), "digests", "now", n=0, lineterm="")


def main():
    program, source = sys.argv[1:]
    folder = pathlib.Path(source, "tests/quenlorctl/program/golden")
    outputs = outputs_of(program, documents.goldens(source))
    if os.environ.get("QUENLOR_UPDATE_GOLDEN"):
        update(folder, outputs)
    problems = list(problems_of(folder, outputs))
    print("\n".join(problems) or f"{len(outputs)} outputs are as committed")
    return 1 if problems or len(outputs) < 10 * 50 else 0


if __name__ == "__main__":
    sys.exit(main())
