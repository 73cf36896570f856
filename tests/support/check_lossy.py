#!/usr/bin/env python3
"""Compares frames of lossy files, as `quorvex frame --all` gives them, with a corpus manifest.

usage: check_lossy.py QUORVEX CORPUS [--syntax UID,UID...] [--verbose]

A frame is right when the mean of each channel and of its 8 x 8 parts is within the manifest's tolerance.
"""
import argparse
import array
import json
import os
import subprocess
import sys
import tempfile


def values(frame, header):
    """The stored values of a frame, signed where the header says so."""
    if header['bits_allocated'] == 16:
        words = array.array('H', frame)
        if sys.byteorder == 'big':
            words.byteswap()
    else:
        words = array.array('B', frame)
    stored = header.get('bits_stored') or header['bits_allocated']
    high = header.get('high_bit')
    shift = 0 if high is None else high + 1 - stored
    mask, sign = (1 << stored) - 1, 1 << (stored - 1)
    if header.get('pixel_representation') == 1:
        return [(((word >> shift) & mask) ^ sign) - sign for word in words]
    return [(word >> shift) & mask for word in words]


def grid(channel, rows, columns):
    """Means of 8 x 8 parts."""
    means = []
    for i in range(8):
        top, bottom = rows * i // 8, rows * (i + 1) // 8
        line = []
        for j in range(8):
            left, right = columns * j // 8, columns * (j + 1) // 8
            total = sum(sum(channel[y * columns + left:y * columns + right]) for y in range(top, bottom))
            count = (bottom - top) * (right - left)
            line.append(total / count if count else 0)
        means.append(line)
    return means


def worst_difference(frame, header, expected):
    rows, columns, samples = header['rows'], header['columns'], header['samples_per_pixel']
    pixels = values(frame, header)
    worst = 0
    for index, channel in enumerate(expected['channels']):
        mine = pixels[index::samples]
        worst = max(worst, abs(sum(mine) / len(mine) - channel['mean']))
        if rows < 8 or columns < 8:
            continue
        for ours, theirs in zip(grid(mine, rows, columns), channel['grid8']):
            worst = max([worst] + [abs(a - b) for a, b in zip(ours, theirs)])
    return worst


def frames_of(quorvex, path):
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, 'frames.raw')
        run = subprocess.run([quorvex, 'frame', path, '--all', '-o', out], capture_output=True, timeout=300)
        if run.returncode != 0 or not os.path.exists(out):
            return None, (run.stderr.decode(errors='replace').strip() or 'no output').splitlines()[-1]
        with open(out, 'rb') as file:
            return file.read(), ''


def trouble_with(quorvex, path, expect):
    """What is wrong with a file, or an empty text."""
    header, pixels = expect['header'], expect['pixels']
    data, reason = frames_of(quorvex, path)
    if data is None:
        return reason
    size = header['rows'] * header['columns'] * header['samples_per_pixel'] * header['bits_allocated'] // 8
    for expected in pixels['frames']:
        frame = data[expected['index'] * size:(expected['index'] + 1) * size]
        if len(frame) != size:
            return f"frame {expected['index']}: {len(frame)} of {size} bytes"
        worst = worst_difference(frame, header, expected)
        if worst > pixels['tolerance']:
            return f"frame {expected['index']}: off by {worst:.2f}, tolerance {pixels['tolerance']}"
    return ''


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('quorvex')
    parser.add_argument('corpus')
    parser.add_argument('--syntax', default='')
    parser.add_argument('--verbose', action='store_true')
    options = parser.parse_args()
    with open(os.path.join(options.corpus, 'MANIFEST.json'), encoding='utf-8') as file:
        files = json.load(file)['files']
    syntaxes = set(filter(None, options.syntax.split(',')))
    total = wrong = 0
    for entry in files:
        expect = entry['expect']
        if expect.get('load') != 'ok' or (expect.get('pixels') or {}).get('kind') != 'lossy':
            continue
        if syntaxes and expect['header'].get('transfer_syntax') not in syntaxes:
            continue
        total += 1
        trouble = trouble_with(options.quorvex, os.path.join(options.corpus, entry['file']), expect)
        wrong += bool(trouble)
        if trouble and options.verbose:
            print(f"  {entry['name']}: {trouble}")
    print(f'{total - wrong} of {total} lossy files right')
    return 0 if total and not wrong else 1


if __name__ == '__main__':
    sys.exit(main())
