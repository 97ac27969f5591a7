#!/usr/bin/env python3
"""Prints line and branch coverage per library folder from a gcovr JSON report.

Usage: coverage.py REPORT.json  (gcovr --json, paths relative to the source tree)
"""
import json
import sys

FOLDERS = ["platform", "shm", "log", "net", "session", "maint", "hw", "netstat", "vpn", "util"]


def folder_of(path):
    parts = path.split("/")
    return parts[0] if parts[0] in FOLDERS else None


def main():
    with open(sys.argv[1]) as f:
        report = json.load(f)
    totals = {name: [0, 0, 0, 0] for name in FOLDERS + ["total"]}
    for entry in report["files"]:
        folder = folder_of(entry["file"])
        if folder is None or entry["file"].endswith("_test.cc"):
            continue
        t = [0, 0, 0, 0]
        for line in entry["lines"]:
            if line.get("gcovr/noncode"):
                continue
            t[0] += 1
            t[1] += line["count"] > 0
            for branch in line["branches"]:
                t[2] += 1
                t[3] += branch["count"] > 0
        for key in (folder, "total"):
            totals[key] = [a + b for a, b in zip(totals[key], t)]
    print(f"{'folder':10} {'lines':>18} {'branches':>18}")
    for name, (lines, hit, branches, taken) in totals.items():
        pct = lambda part, whole: f"{100.0 * part / whole:5.1f}%" if whole else "    -"
        print(f"{name:10} {hit:6}/{lines:<6} {pct(hit, lines)} {taken:6}/{branches:<6} {pct(taken, branches)}")


if __name__ == "__main__":
    main()
