#!/usr/bin/env python3
"""Convert a folder of EDIFACT files to NDJSON on a Dask cluster.

    python3 examples/dask_convert.py INPUT_FOLDER OUTPUT_FOLDER [--workers 2]
                                     [--keep-going] [--scheduler ADDRESS]

Each file is read by a worker with ediprot and written as
OUTPUT_FOLDER/NAME.ndjson, one row per message (file, number, reference,
type, tree as plain data), whole or not at all.  A file that fails leaves no
rows; OUTPUT_FOLDER/failures.ndjson names it with the reason.  The summary
line and exit status follow `edi read`: status 1 when any file failed.

Without --scheduler a LocalCluster of worker processes is started: libedi
lets one call at a time into the module of a process, so processes, not
threads, read in parallel (docs/scale-out.md).
"""

import argparse
import json
import logging
import os
import sys
from typing import Dict, List


def plain_files(folder: str) -> List[str]:
    """The plain files of a folder (not hidden ones, not below sub-folders),
    sorted by name, as `edi read FOLDER` takes them."""
    names = sorted(n for n in os.listdir(folder) if not n.startswith("."))
    return [os.path.join(folder, n) for n in names if os.path.isfile(os.path.join(folder, n))]


def convert(path: str, outdir: str, keep_going: bool = False) -> Dict[str, object]:
    """Worker task: one input to OUTDIR/NAME.ndjson; what became of it."""
    import ediprot

    target = os.path.join(outdir, os.path.basename(path) + ".ndjson")
    part = target + ".part"
    rows = 0
    try:
        with open(part, "w", encoding="utf-8") as out:
            for msg in ediprot.messages(path, keep_going=keep_going):
                row = {"file": path, "number": msg.number, "reference": msg.reference,
                       "type": msg.type, "tree": msg.tree.to_dict(skip_empty=True)}
                out.write(json.dumps(row) + "\n")  # ASCII: safe for any line reader
                rows += 1
        os.replace(part, target)
        return {"file": path, "messages": rows, "output": target}
    except ediprot.Error as e:
        os.unlink(part)
        return {"file": path, "failed": e.reason, "error": type(e).__name__}


def run(inputs: List[str], outdir: str, workers: int = 2, keep_going: bool = False,
        scheduler: str = "") -> List[Dict[str, object]]:
    """Convert `inputs` on the cluster; one result per input, in input order."""
    from dask.distributed import Client, LocalCluster

    os.makedirs(outdir, exist_ok=True)
    if scheduler:
        client, cluster = Client(scheduler), None
    else:
        cluster = LocalCluster(n_workers=workers, threads_per_worker=1, processes=True,
                               dashboard_address=None, silence_logs=logging.ERROR)
        client = Client(cluster)
    try:
        futures = client.map(convert, inputs, outdir=outdir, keep_going=keep_going, pure=False)
        results = []
        for path, fut in zip(inputs, futures):
            # A task that raised (a worker lost, a bug) is a failure of its file too.
            try:
                results.append(fut.result())
            except Exception as e:  # noqa: BLE001
                results.append({"file": path, "failed": f"{type(e).__name__}: {e}",
                                "error": "task"})
        return results
    finally:
        client.close()
        if cluster is not None:
            cluster.close()


def main(argv=None) -> int:
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("input", help="folder of EDIFACT files")
    ap.add_argument("output", help="folder for NAME.ndjson and failures.ndjson")
    ap.add_argument("--workers", type=int, default=2, help="worker processes (default 2)")
    ap.add_argument("--keep-going", action="store_true",
                    help="segments left out of a tree are findings, not a failure")
    ap.add_argument("--scheduler", default="", help="address of a running scheduler")
    args = ap.parse_args(argv)

    results = run(plain_files(args.input), args.output, args.workers, args.keep_going,
                  args.scheduler)
    failed = [r for r in results if "failed" in r]
    with open(os.path.join(args.output, "failures.ndjson"), "w", encoding="utf-8") as f:
        for r in failed:
            f.write(json.dumps(r) + "\n")
    for r in failed:
        print(f"{r['file']}: failed: {r['failed']}", file=sys.stderr)
    print(f"dask_convert: {len(results)} files: {len(results) - len(failed)} read, "
          f"{len(failed)} failed", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
