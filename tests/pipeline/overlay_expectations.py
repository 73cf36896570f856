"""Prints the overlay expectations of a corpus, one line a plane, for the overlay test.

file|group|set bits|SHA-256 of the plane with one byte, 0 or 1, a bit
"""
import json
import sys

manifest = json.load(open(sys.argv[1]))
for entry in manifest["files"]:
    for overlay in entry["expect"].get("overlays", []):
        print(entry["file"], overlay["group"], overlay["set_bits"], overlay["sha256_unpacked"],
              sep="|")
