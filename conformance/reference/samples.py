"""Stored values of a frame (DICOM PS3.3 C.7.6.3, PS3.5 section 8, PS3.5 Annex G)."""
import numpy as np

from .attributes import words

RLE = "1.2.840.10008.1.2.5"
BIG_ENDIAN = "1.2.840.10008.1.2.2"


def unpack_bits(data):
    """PackBits of one RLE segment (PS3.5 G.3.2)."""
    result, at = bytearray(), 0
    while at < len(data):
        count = data[at]
        if count < 128:
            result += data[at + 1:at + 2 + count]
            at += 2 + count
        elif count > 128:
            result += data[at + 1:at + 2] * (257 - count)
            at += 2
        else:
            at += 1
    return bytes(result)


def rle_frame(fragment, pixels, samples, width):
    """Planes of bytes, the most significant byte of each sample first (PS3.5 G.2)."""
    header = np.frombuffer(fragment[:64], "<u4")
    ends = list(header[2:1 + header[0]]) + [len(fragment)]
    planes = np.zeros((pixels, samples, width), np.uint8)
    for i, (start, end) in enumerate(zip(header[1:1 + header[0]], ends)):
        plane = np.frombuffer(unpack_bits(fragment[start:end]), np.uint8)[:pixels]
        planes[:, i // width, width - 1 - i % width] = plane
    return planes.reshape(-1)


def fragments(data):
    """Items of encapsulated pixel data without the offset table (PS3.5 A.4)."""
    at, result = 0, []
    while at + 8 <= len(data) and data[at:at + 4] == b"\xfe\xff\x00\xe0":
        size = int.from_bytes(data[at + 4:at + 8], "little")
        result.append(data[at + 8:at + 8 + size])
        at += 8 + size
    return result[1:]


def spread_422(frame, rows, columns):
    """Y1 Y2 Cb Cr for each two pixels of a row (PS3.3 C.7.6.3.1.2)."""
    pairs = frame.reshape(rows, columns // 2, 4)
    result = np.zeros((rows, columns, 3), frame.dtype)
    result[:, 0::2, 0], result[:, 1::2, 0] = pairs[:, :, 0], pairs[:, :, 1]
    for plane in (1, 2):
        result[:, 0::2, plane] = result[:, 1::2, plane] = pairs[:, :, 1 + plane]
    return result


def raw_frame(dataset, frame):
    """The frame's samples as unsigned words, one after the other, as they are stored."""
    rows, columns, samples = dataset.Rows, dataset.Columns, dataset.SamplesPerPixel
    allocated, syntax = dataset.BitsAllocated, dataset.file_meta.TransferSyntaxUID
    if syntax == RLE:
        data = rle_frame(fragments(dataset.PixelData)[frame], rows * columns, samples,
                         allocated // 8)
        return np.frombuffer(data.tobytes(), f"<u{allocated // 8}")
    count = rows * columns * samples
    if "_422" in words(dataset.PhotometricInterpretation)[0]:
        count = rows * columns * 2
    if allocated == 1:
        bits = np.unpackbits(np.frombuffer(dataset.PixelData, np.uint8), bitorder="little")
        return bits[frame * count:(frame + 1) * count]
    order = ">" if syntax == BIG_ENDIAN else "<"
    stored = np.frombuffer(dataset.PixelData, f"{order}u{allocated // 8}",
                           count=len(dataset.PixelData) // (allocated // 8))
    return stored[frame * count:(frame + 1) * count]


def unused_bits(dataset, frame):
    """The whole words, for overlays that lie in bits above or below the samples."""
    return raw_frame(dataset, frame).reshape(dataset.Rows, dataset.Columns)


def stored_values(dataset, frame):
    """Rows x columns, or rows x columns x 3, as signed 64-bit numbers."""
    rows, columns, samples = dataset.Rows, dataset.Columns, dataset.SamplesPerPixel
    words_ = raw_frame(dataset, frame).astype(np.int64)
    stored = dataset.BitsStored
    words_ = (words_ >> (dataset.HighBit + 1 - stored)) & ((1 << stored) - 1)
    if dataset.PixelRepresentation == 1:
        words_ = np.where(words_ >= 1 << (stored - 1), words_ - (1 << stored), words_)
    if samples == 1:
        return words_.reshape(rows, columns)
    if "_422" in words(dataset.PhotometricInterpretation)[0]:
        return spread_422(words_, rows, columns)
    if dataset.get("PlanarConfiguration", 0) == 1 and (
            dataset.file_meta.TransferSyntaxUID != RLE):
        return words_.reshape(samples, rows, columns).transpose(1, 2, 0)
    return words_.reshape(rows, columns, samples)


def stored_range(dataset):
    """The smallest and the largest number that the stored bits can hold."""
    bits = dataset.BitsStored
    if dataset.PixelRepresentation == 1:
        return -(1 << (bits - 1)), (1 << (bits - 1)) - 1
    return 0, (1 << bits) - 1
