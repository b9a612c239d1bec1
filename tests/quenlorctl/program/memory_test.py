#!/usr/bin/env python3
"""Reading takes 64 MiB at most, however many documents stand one after another.

Usage: memory_test.py <quenlorctl program> <source directory> <MiB of documents>
"""
import resource
import subprocess
import sys

sys.dont_write_bytecode = True
import documents  # noqa: E402

LIMIT = 64 << 10  # KiB


def main():
    program, source, size = sys.argv[1], sys.argv[2], int(sys.argv[3]) << 20
    text = "".join(documents.goldens(source).values()).encode()
    run = subprocess.Popen([program, "rows"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
    for _ in range(size // len(text) + 1):
        run.stdin.write(text)
    run.stdin.close()
    status = run.wait()
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    print(f"status {status}, {peak} KiB at most for {size >> 20} MiB of documents")
    return 0 if status == 0 and peak <= LIMIT else 1


if __name__ == "__main__":
    sys.exit(main())
