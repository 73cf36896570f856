"""Prints the display expectations of a corpus, one line each, for the display test.

file|transfer syntax|method|center|width|tolerance|mean|64 block means
"""
import json
import sys

manifest = json.load(open(sys.argv[1]))
for entry in manifest["files"]:
    expect = entry["expect"]
    for display in expect.get("display", []):
        if display["frame"] != 0 or len(display["channels"]) != 1:
            continue
        channel = display["channels"][0]
        grid = " ".join(str(value) for row in channel["grid8"] for value in row)
        header = expect["header"]
        print(entry["file"], header.get("transfer_syntax", ""), display["method"],
              display.get("center", 0), display.get("width", 0), display["tolerance"],
              channel["mean"], grid, sep="|")
