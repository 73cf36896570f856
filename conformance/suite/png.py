"""PNG files by zlib alone: written with 8 bits, grey or R, G, B; read in every form."""
import struct
import zlib

import numpy as np

SIGNATURE = b"\x89PNG\r\n\x1a\n"
SAMPLES = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}  # by colour type


def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def encode(picture):
    """A picture of rows x columns or rows x columns x 3 bytes."""
    rows, columns = picture.shape[:2]
    colour_type = 2 if picture.ndim == 3 else 0
    lines = picture.astype(np.uint8).reshape(rows, -1)
    raw = b"".join(b"\0" + line.tobytes() for line in lines)
    head = struct.pack(">IIBBBBB", columns, rows, 8, colour_type, 0, 0, 0)
    return (SIGNATURE + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(raw, 9)) +
            chunk(b"IEND", b""))


def chunks(data):
    at = len(SIGNATURE)
    while at + 8 <= len(data):
        size, name = struct.unpack(">I4s", data[at:at + 8])
        yield name, data[at + 8:at + 8 + size]
        at += 12 + size


def paeth(left, above, corner):
    estimate = left + above - corner
    to_left, to_above, to_corner = (abs(estimate - x) for x in (left, above, corner))
    if to_left <= to_above and to_left <= to_corner:
        return left
    return above if to_above <= to_corner else corner


def unfilter(raw, rows, stride, step):
    result = np.zeros((rows, stride), np.uint8)
    above = [0] * stride
    for row in range(rows):
        start = row * (stride + 1)
        kind, line = raw[start], list(raw[start + 1:start + 1 + stride])
        for i in range(stride if kind else 0):
            left = line[i - step] if i >= step else 0
            corner = above[i - step] if i >= step else 0
            guess = (0, left, above[i], (left + above[i]) // 2, None)[kind]
            line[i] = (line[i] + (paeth(left, above[i], corner) if guess is None else guess)) & 255
        result[row] = above = line
    return result


PASSES = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2),
          (0, 1, 1, 2))  # of an interlaced file: first column and row, step across and down


def samples_of(raw, rows, columns, depth, count):
    """Rows x columns x count samples from filtered lines, and the bytes that they took."""
    stride = (columns * count * depth + 7) // 8
    lines = unfilter(raw, rows, stride, max(1, count * depth // 8))
    if depth == 16:
        lines = lines[:, ::2]
    elif depth < 8:
        bits = np.unpackbits(lines, axis=1).reshape(rows, -1, depth)
        lines = bits.dot(1 << np.arange(depth)[::-1])[:, :columns * count]
    return lines.reshape(rows, columns, count), rows * (stride + 1)


def decode(data):
    """Rows x columns x 3 bytes; alpha is left out."""
    if not data.startswith(SIGNATURE):
        raise ValueError("no PNG file")
    parts = list(chunks(data))
    columns, rows, depth, colour_type, _, _, interlace = struct.unpack(">IIBBBBB", parts[0][1])
    raw = zlib.decompress(b"".join(body for name, body in parts if name == b"IDAT"))
    count = SAMPLES[colour_type]
    picture = np.zeros((rows, columns, count), np.uint8)
    for left, top, across, down in (PASSES if interlace else ((0, 0, 1, 1),)):
        place = picture[top::down, left::across]
        if place.size:
            lines, used = samples_of(raw, place.shape[0], place.shape[1], depth, count)
            place[:], raw = lines, raw[used:]
    if colour_type == 3:
        palette = next(body for name, body in parts if name == b"PLTE")
        return np.frombuffer(palette, np.uint8).reshape(-1, 3)[picture[:, :, 0]]
    if depth < 8:
        picture = picture * (255 // ((1 << depth) - 1))
    return picture[:, :, :3] if count >= 3 else np.repeat(picture[:, :, :1], 3, axis=2)


def read(path):
    with open(path, "rb") as file:
        return decode(file.read())


def write(path, picture):
    with open(path, "wb") as file:
        file.write(encode(picture))
