#!/usr/bin/env python3
"""Compares `quorvex render` with what DCMTK's dcmj2pnm draws of the same files.

usage: compare_with_dcmj2pnm.py QUORVEX FILE... [--limit LEVELS] [--verbose]

Both draw frame 0 at the image's own size through one window: the file's own, or the range of its
values. Only native grey files with square pixels count; the others are skipped. A picture is
right when the mean difference is below the limit (2 grey levels).
"""
import argparse
import json
import os
import struct
import subprocess
import sys
import tempfile
import zlib

NATIVE = ('Implicit VR Little Endian', 'Explicit VR Little Endian', 'Explicit VR Big Endian',
          'Deflated Explicit VR Little Endian')


def main():
    options = argparse.ArgumentParser()
    options.add_argument('quorvex')
    options.add_argument('files', nargs='+')
    options.add_argument('--limit', type=float, default=2.0)
    options.add_argument('--verbose', action='store_true')
    options = options.parse_args()
    right, wrong, passed = 0, 0, 0
    for path in options.files:
        with tempfile.TemporaryDirectory() as folder:
            difference, why = compare(options.quorvex, path, folder)
        if difference is None:
            passed += 1
        elif difference < options.limit:
            right += 1
        else:
            wrong += 1
        if options.verbose or (difference is not None and difference >= options.limit):
            print(f'{os.path.basename(path)}: {why}')
    print(f'{right} pictures alike, {wrong} different, {passed} files skipped')
    return 0 if right and not wrong else 1


def compare(quorvex, path, folder):
    summary, elements = describe(quorvex, path)
    if summary is None:
        return None, 'cannot be read'
    if summary['transferSyntax'] not in NATIVE or summary.get('samplesPerPixel') != 1:
        return None, 'not native grey'
    if not summary.get('photometric', '').startswith('MONOCHROME') or not summary['frames']:
        return None, 'no grey image'
    if elements.get('PixelAspectRatio', '1\\1').split('\\')[0] != elements.get(
            'PixelAspectRatio', '1\\1').split('\\')[-1]:
        return None, 'pixels are not square'
    window = find_window(quorvex, path, folder, summary)
    if window is None:
        return None, 'no frame'
    theirs = os.path.join(folder, 'theirs.pgm')
    made = subprocess.run(['dcmj2pnm', '--write-raw-pnm', '--no-overlays', '+Ww', *map(str, window),
                           path, theirs], capture_output=True)
    if made.returncode or not os.path.exists(theirs):
        return None, 'dcmj2pnm refuses it'
    ours = os.path.join(folder, 'ours.png')
    made = subprocess.run([quorvex, 'render', path, '-o', ours, '--window', '%s,%s' % window],
                          capture_output=True)
    if made.returncode:
        return 255.0, made.stderr.decode(errors='replace').strip()
    difference = mean_difference(read_png(ours), read_pgm(theirs))
    return difference, f'window {window[0]} {window[1]}: mean difference {difference:.3f}'


def describe(quorvex, path):
    made = subprocess.run([quorvex, 'info', path, '--json'], capture_output=True)
    if made.returncode:
        return None, None
    described = json.loads(made.stdout)
    elements = {e['keyword']: e['value'] for e in described['elements'] if 'value' in e and 'keyword' in e}
    return described['summary'], elements


def find_window(quorvex, path, folder, summary):
    """Whole numbers, since the window of a viewer's mouse is one too."""
    if summary.get('windows') and summary['windows'][0]['width'] >= 2:
        return round(summary['windows'][0]['center']), round(summary['windows'][0]['width'])
    raw = os.path.join(folder, 'frame.raw')
    made = subprocess.run([quorvex, 'frame', path, '-o', raw], capture_output=True)
    if made.returncode:
        return None
    rescale = summary.get('rescale', {'slope': 1, 'intercept': 0})
    values = [v * rescale['slope'] + rescale['intercept'] for v in stored_values(raw, summary)]
    if not values:
        return None
    low, high = min(values), max(values)
    return round((low + high) / 2), max(2, round(high - low + 1))


def stored_values(raw, summary):
    data = open(raw, 'rb').read()
    width = summary['bitsAllocated'] // 8
    if width not in (1, 2):
        return []
    stored = summary['bitsStored']
    words = struct.unpack('<%d%s' % (len(data) // width, 'BH'[width - 1]), data)
    mask, sign = (1 << stored) - 1, 1 << (stored - 1)
    if summary['signed']:
        return [((w & mask) ^ sign) - sign for w in words]
    return [w & mask for w in words]


def mean_difference(ours, theirs):
    width, height, mine = ours
    other_width, other_height, other = theirs
    if (width, height) != (other_width, other_height):
        return 255.0
    shown = width // 4 * 4  # a rendered image is a multiple of 4 wide
    total = 0
    for row in range(height):
        start = row * width
        total += sum(abs(a - b) for a, b in zip(mine[start:start + shown], other[start:start + shown]))
    return total / max(1, shown * height)


def read_pgm(path):
    data = open(path, 'rb').read()
    fields, position = [], 0
    while len(fields) < 4:
        end = position
        while data[end:end + 1] not in b' \t\r\n':
            end += 1
        if data[position:position + 1] == b'#':
            position = data.index(b'\n', position) + 1
            continue
        if end > position:
            fields.append(data[position:end])
        position = end + 1
    width, height, highest = map(int, fields[1:4])
    assert fields[0] == b'P5' and highest == 255
    return width, height, data[position:position + width * height]


def read_png(path):
    """Grey PNG with the filters None and Sub."""
    data = open(path, 'rb').read()
    position, packed = 8, b''
    while position < len(data):
        length, kind = struct.unpack('>I4s', data[position:position + 8])
        body = data[position + 8:position + 8 + length]
        if kind == b'IHDR':
            width, height, depth, colour = struct.unpack('>IIBB', body[:10])
            assert depth == 8 and colour == 0
        if kind == b'IDAT':
            packed += body
        position += 12 + length
    rows, pixels = zlib.decompress(packed), bytearray()
    for row in range(height):
        start = row * (width + 1)
        line = bytearray(rows[start + 1:start + 1 + width])
        assert rows[start] in (0, 1)
        if rows[start] == 1:
            for i in range(1, width):
                line[i] = (line[i] + line[i - 1]) & 255
        pixels += line
    return width, height, bytes(pixels)


if __name__ == '__main__':
    sys.exit(main())
