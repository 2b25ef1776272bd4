#!/usr/bin/env python3
"""Regenerates one standard's definition source into a temporary folder and compares it with the
committed source, so that a generator change without its regenerated output (or a hand edit of a
generated file) is caught.

    check_generated.py x12 STANDARDS
    check_generated.py edifact STANDARDS
    check_generated.py hl7

STANDARDS is the shared standards folder (the one whose README describes x12/ and edifact/). What
a generator needs may be missing where the tests run (on CI there is neither the standards folder
nor the npm package hl7-dictionary): the check then says why and exits with SKIP, which CTest
reports as a skipped test. Exit 0: identical; 1: different or the generator failed.
"""

import difflib
import os
import subprocess
import sys
import tempfile

SKIP = 77
HERE = os.path.dirname(os.path.abspath(__file__))


def skip(reason):
    print(f"skipped: {reason}")
    return SKIP


def generated_command(kind, standards, output):
    """The command that writes the source of `kind` to `output`, and the committed source, or a
    reason to skip."""
    if kind in ("x12", "edifact"):
        if not standards or not os.path.isdir(os.path.join(standards, kind)):
            return None, None, f"no standards folder with {kind}/ at {standards!r}"
        if kind == "x12":
            return ([sys.executable, os.path.join(HERE, "x12", "generate.py"), standards, output],
                    os.path.join(HERE, "x12", "x12.yaml"), None)
        return ([sys.executable, os.path.join(HERE, "edifact", "generate.py"), standards, "D96A", output],
                os.path.join(HERE, "edifact", "edifact_d96a.yaml"), None)
    if kind == "hl7":
        try:
            found = subprocess.run(["node", "-e", "require.resolve('hl7-dictionary')"], capture_output=True)
        except FileNotFoundError:
            return None, None, "node is not installed"
        if found.returncode != 0:
            return None, None, "the npm package hl7-dictionary is not installed (standards/README.md tells how)"
        return ["node", os.path.join(HERE, "hl7", "generate.js"), "2.5"], os.path.join(HERE, "hl7", "hl7-v2.5.yaml"), None
    raise SystemExit(__doc__)


def main(argv):
    if len(argv) not in (2, 3):
        raise SystemExit(__doc__)
    kind = argv[1]
    standards = argv[2] if len(argv) == 3 else None
    with tempfile.TemporaryDirectory() as folder:
        output = os.path.join(folder, "generated.yaml")
        command, committed, reason = generated_command(kind, standards, output)
        if reason:
            return skip(reason)
        # The HL7 generator writes to standard output; the others to the path they are given.
        if kind == "hl7":
            with open(output, "wb") as out:
                run = subprocess.run(command, stdout=out, stderr=subprocess.PIPE)
        else:
            run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if run.returncode != 0:
            print(f"{' '.join(command)} failed ({run.returncode}):\n{run.stderr.decode(errors='replace')}")
            return 1
        with open(output, encoding="utf-8") as f:
            fresh = f.read()
    with open(committed, encoding="utf-8") as f:
        kept = f.read()
    if fresh == kept:
        print(f"{os.path.relpath(committed, HERE)}: regenerated source is identical")
        return 0
    diff = difflib.unified_diff(kept.splitlines(True), fresh.splitlines(True), committed, "regenerated", n=1)
    print("".join(list(diff)[:80]))
    print(f"{os.path.relpath(committed, HERE)} differs from what its generator writes now")
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
