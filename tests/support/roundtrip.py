#!/usr/bin/python3
"""Converts real files to every target and holds the results against their sources, by other tools' eyes.

For each file and target:
- the stored samples are equal as the command's own decoder gives them and, for coded targets, as the decoder of
  another toolkit gives them; of a lossy target they are near;
- every attribute is equal, as pydicom reads it, but for those that the coding demands;
- an object without pixels has all its attributes, or is the same file;
- the photometric label of a coded result is true to its codestream;
- dciodvfy finds no error that the source does not have.
Tools that are not installed are left out; their number is told.

Usage: roundtrip.py QUORVEX FILE_OR_FOLDER... [--share I/N] [--targets A,B] [--jobs N] [--table] [--verbose]
"""
import argparse
import collections
import math
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import warnings
import zlib
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pydicom

warnings.simplefilter("ignore")

LOSSLESS = ["implicit", "explicit", "deflated", "rle", "deflated-frames", "encapsulated", "jpeg-lossless",
            "j2k-lossless", "jpegls-lossless", "htj2k-lossless", "htj2k-rpcl", "jpegxl-lossless", "jpegxl-jpeg"]
LOSSY = ["jpeg", "jpeg12", "j2k", "jpegls", "htj2k", "jpegxl"]
# Other toolkits' decoders for each coding.
DECODERS = {"rle": [["dcmdrle"], ["gdcmconv", "--raw"]], "deflated-frames": [["python"]], "encapsulated": [["python"]],
            "jpeg-lossless": [["dcmdjpeg", "+cn"]], "j2k-lossless": [["gdcmconv", "--raw"]],
            "jpeg": [["dcmdjpeg"]], "jpeg12": [["dcmdjpeg"]], "j2k": [["gdcmconv", "--raw"]],
            "jpegls-lossless": [["dcmdjpls"]], "jpegls": [["dcmdjpls"]],
            "jpegxl-lossless": [["djxl"]], "jpegxl": [["djxl"]]}
DECODERS.update((target, [["opj_decompress"], ["ojph_expand"]]) for target in ("htj2k-lossless", "htj2k-rpcl", "htj2k"))
# What a coding may change.
DEMANDED = {"TransferSyntaxUID", "PhotometricInterpretation", "PlanarConfiguration",
            # a source that had lost something says so
            "LossyImageCompression", "LossyImageCompressionRatio", "LossyImageCompressionMethod"}
DEMANDED_BY_LOSS = {"DerivationDescription", "DerivationCodeSequence", "SourceImageSequence", "ImageType", "FrameType",
                    "SOPInstanceUID"}
DEMANDED_BY_TWELVE_BITS = {"BitsStored", "HighBit"}
META_OF_THE_WRITER = {"FileMetaInformationGroupLength", "FileMetaInformationVersion", "ImplementationClassUID",
                      "ImplementationVersionName", "MediaStorageSOPClassUID", "MediaStorageSOPInstanceUID",
                      "SourceApplicationEntityTitle"}
PIXELS = ("(7fe0, 0010)", "(7fe0, 0001)", "(7fe0, 0002)")
# What noise of a few pixels comes to at the default qualities; pictures are 15 dB above.
LOWEST_PSNR = 20.0
# What dciodvfy asks of single classes, and no conversion can give: colours of single codings, 16 Bits Stored; that
# derived frames forget how they were acquired; that a reference to the source says of which series it is.
CLASS_RULES = ("<Photometric Interpretation>", "<Planar Configuration>",
               "JPEG transfer syntax is required to have PhotometricInterpretation", "<Bits Stored>", "<High Bit>",
               "Attribute present when condition unsatisfied (which may not be present otherwise)",
               "Module=<CommonInstanceReference>",
               # the source's own UID, which the reference to it repeats
               "(0x0008,0x1155) UI Referenced SOP Instance UID", "(0x0008,0x1155) Referenced SOP Instance UID")


def is_beyond(decoder, dataset, target):
    """Whether another decoder does not take such an image, though the standard has it."""
    allocated, stored = dataset.get("BitsAllocated", 8), dataset.get("BitsStored", 8)
    if decoder == "python":
        return allocated == 1
    if decoder == "dcmdrle":
        return allocated > 16 or allocated == 1
    if decoder == "ojph_expand":
        return allocated == 1 or dataset.get("PixelRepresentation", 0) == 1  # the files that it writes have no sign
    if decoder != "gdcmconv":
        return False
    is_deep_colour = allocated == 16 and dataset.get("SamplesPerPixel", 1) == 3
    if target == "rle" and (is_deep_colour or stored < 8):
        return True
    has_embedded_overlay = any(dataset.get((group, 0x0010)) and not dataset.get((group, 0x3000))
                               for group in range(0x6000, 0x6020, 2))
    is_deep_loop = is_deep_colour and dataset.get("NumberOfFrames", 1) != 1
    gives_bytes = stored <= 8 < allocated
    return has_embedded_overlay or is_deep_loop or gives_bytes or allocated not in (8, 16)


def run(*command):
    return subprocess.run([str(part) for part in command], capture_output=True, check=False, timeout=300)


def flat(dataset, path=""):
    """Every element's place, VR and value; items by number."""
    for element in dataset:
        place = f"{path}{element.tag}"
        if element.VR == "SQ":
            yield place, "SQ", len(element.value)
            for number, item in enumerate(element.value):
                yield from flat(item, f"{place}[{number}]/")
        else:
            yield place, element.VR, element.value


def attributes(path):
    dataset = pydicom.dcmread(path, force=True)
    is_big = not dataset.is_little_endian
    return {place: (vr, swapped(value) if is_big and vr == "OW" else value) for place, vr, value in flat(dataset)
            if place not in PIXELS}


def swapped(value):
    """Words of the other byte order, which pydicom leaves as they are stored."""
    return np.frombuffer(value, ">u2").astype("<u2").tobytes() if len(value) % 2 == 0 else value


def words(vr, value):
    """What a VR that depends on other attributes was read from; None for other VRs."""
    if isinstance(value, bytes):
        return value
    if not {vr} <= {"US", "SS", "US or SS"} or value is None:
        return None
    numbers = value if isinstance(value, (list, pydicom.multival.MultiValue)) else [value]
    return b"".join((int(number) & 0xFFFF).to_bytes(2, "little") for number in numbers)


def same(place, target, one, other):
    if place.endswith("(7fe0, 0010)") and one[1].startswith(b"\xfe\xff\x00\xe0"):
        return True  # an icon that cannot stay coded
    if target == "implicit" and int(re.findall(r"\(([0-9a-f]{4}),", place)[-1], 16) % 2:
        return True  # what a private element is depends on pydicom's list of them
    if one == other or (one[1] in (None, "", b"") and other[1] in (None, "", b"")):
        return True
    if isinstance(one[1], bytes) and isinstance(other[1], bytes):
        return one[1].rstrip(b"\0 ") == other[1].rstrip(b"\0 ")
    if words(*one) is not None and words(*one) == words(*other):
        return True
    if "UN" in (one[0], other[0]):  # a private element has no VR in an implicit file
        return True
    # A VR that only a dictionary knows, or that depends on other attributes.
    return one[1] == other[1] and {one[0], other[0]} <= {"US", "SS", "OB", "OW", "UN", "US or SS", "OB or OW"}


def keyword(place):
    group, element = re.findall(r"[0-9a-f]{4}", place.rsplit("/", 1)[-1])[:2]
    return pydicom.datadict.keyword_for_tag(int(group + element, 16))


def changed_attributes(source, result, target):
    """(place, keyword of the outermost attribute that may have changed, value before, value now)"""
    before, after = attributes(source), attributes(result)
    if not any(place.startswith("(0008") for place in before):
        return  # pydicom does not read it
    for place in sorted(set(before) | set(after)):
        if re.search(r"\([0-9a-f]{4}, 0000\)$", place):
            continue  # group lengths are made anew
        if place not in before or place not in after or not same(place, target, before[place], after[place]):
            yield place, {keyword(place), keyword(place.split("[")[0])}, before.get(place), after.get(place)


def demanded(target, source):
    names = DEMANDED | META_OF_THE_WRITER
    if target in LOSSY:
        names |= DEMANDED_BY_LOSS
    if target == "jpeg12":
        names |= DEMANDED_BY_TWELVE_BITS
    return names


def frames(quorvex, path, folder):
    raw = pathlib.Path(folder) / (path.name + ".raw")
    done = run(quorvex, "frame", path, "--all", "-o", raw)
    if done.returncode != 0 or b"warning" in done.stderr.lower():
        return None
    data = raw.read_bytes()
    raw.unlink()
    return data


def by_pixel(path):
    """Native samples, interleaved, little endian."""
    dataset = pydicom.dcmread(path, force=True)
    data = bytes(dataset.PixelData)
    if dataset.get("SamplesPerPixel", 1) == 3 and dataset.get("PlanarConfiguration", 0) == 1:
        frames_in_file = int(dataset.get("NumberOfFrames") or 1)
        bytes_of_sample = dataset.BitsAllocated // 8
        pixels = dataset.Rows * dataset.Columns
        samples = np.frombuffer(data[:3 * frames_in_file * pixels * bytes_of_sample], f"<u{bytes_of_sample}")
        data = samples.reshape(frames_in_file, 3, pixels).transpose(0, 2, 1).tobytes()
    return data


def codestreams_of(dataset):
    """The frames of a file of ours, which has a fragment a frame."""
    data = dataset.PixelData
    at = 8 + int.from_bytes(data[4:8], "little")  # behind the offset table
    while data[at:at + 4] == b"\xfe\xff\x00\xe0":
        size = int.from_bytes(data[at + 4:at + 8], "little")
        yield data[at + 8:at + 8 + size]
        at += 8 + size


def component_of(path, header):
    """The samples of a PGX file, whose header tells sign, bits and size."""
    data = path.read_bytes()
    line, samples = data.split(b"\n", 1)
    is_signed, bits = b"-" in line.split()[2], int(re.findall(rb"[0-9]+", line)[0])
    values = np.frombuffer(samples, f">{'i' if is_signed else 'u'}{1 if bits <= 8 else 2}")
    width = 1 if header.BitsAllocated <= 8 else 2
    return values.astype(np.int32).astype(f"<u{width}")


def decoded_by_openjpeg(path, folder):
    """Samples by pixel, as the codestreams have them: PGX files, one a component, keep signs."""
    dataset = pydicom.dcmread(path, force=True)
    stream, picture = pathlib.Path(folder) / "frame.j2k", pathlib.Path(folder) / "frame.pgx"
    frames_of_file = []
    for codestream in codestreams_of(dataset):
        stream.write_bytes(codestream)
        if run("opj_decompress", "-i", stream, "-o", picture).returncode != 0:
            return None
        parts = sorted(pathlib.Path(folder).glob("frame*.pgx"))
        frames_of_file.append(np.stack([component_of(part, dataset) for part in parts], axis=-1).tobytes())
        for part in parts:
            part.unlink()
    return b"".join(frames_of_file)


def decoded_by_openjph(path, folder):
    """Samples by pixel, of unsigned ones."""
    dataset = pydicom.dcmread(path, force=True)
    stream, picture = pathlib.Path(folder) / "frame.j2c", pathlib.Path(folder) / "frame.ppm"
    picture = picture if dataset.SamplesPerPixel == 3 else picture.with_suffix(".pgm")
    frames_of_file = []
    for codestream in codestreams_of(dataset):
        stream.write_bytes(codestream)
        if run("ojph_expand", "-i", stream, "-o", picture).returncode != 0:
            return None
        samples, _ = samples_of_pnm(picture)
        frames_of_file.append(samples.astype("u1" if dataset.BitsAllocated <= 8 else "<u2").tobytes())
    return b"".join(frames_of_file)


def samples_of_pnm(path):
    """Samples by pixel of a PGM or PPM file, and the greatest value of djxl's: whatever that says, it is all bits."""
    kind, size, most, data = path.read_bytes().split(b"\n", 3)
    columns, rows = map(int, size.split())
    samples = np.frombuffer(data, ">u2" if int(most) > 255 else "u1")
    return samples[:columns * rows * (3 if kind == b"P6" else 1)].astype(np.int64), 0xFFFF if int(most) > 255 else 255


def narrowed(samples, most, dataset):
    """Values as they are stored, of samples that were spread over 8 or 16 bits."""
    for bits in (dataset.BitsStored, dataset.BitsAllocated):
        highest = (1 << bits) - 1
        stored = (samples * highest + most // 2) // most
        is_lossy = dataset.file_meta.TransferSyntaxUID == "1.2.840.10008.1.2.4.112"  # never beyond Bits Stored
        if is_lossy or np.all(np.abs((stored * most + highest // 2) // highest - samples) <= 1):
            break
    return stored.astype("u1" if dataset.BitsAllocated <= 8 else "<u2").tobytes()


def decoded_by_djxl(path, folder):
    """Samples by pixel; a stream that is told as XYB comes out as RGB."""
    dataset = pydicom.dcmread(path, force=True)
    stream, picture = pathlib.Path(folder) / "frame.jxl", pathlib.Path(folder) / "frame.ppm"
    picture = picture if dataset.SamplesPerPixel == 3 else picture.with_suffix(".pgm")
    frames_of_file = []
    for codestream in codestreams_of(dataset):
        stream.write_bytes(codestream)
        if run("djxl", stream, picture).returncode != 0:
            return None
        frames_of_file.append(narrowed(*samples_of_pnm(picture), dataset))
    return b"".join(frames_of_file)


def without_pad(stream):
    return stream[:stream.rfind(b"\xff\xd9") + 2]


def jpeg_streams(path):
    """The frames' streams as pydicom finds them, without what makes them even."""
    dataset = pydicom.dcmread(path, force=True)
    count = int(dataset.get("NumberOfFrames") or 1)
    return [without_pad(one)
            for one in pydicom.encaps.generate_pixel_data_frame(dataset.PixelData, count)]


def given_back(quorvex, source, result, tools, folder):
    """Complaints about JPEG streams that do not come out of JPEG XL to the byte."""
    before = jpeg_streams(source)
    back, stream = pathlib.Path(folder) / "back.dcm", pathlib.Path(folder) / "frame.jxl"
    if run(quorvex, "convert", result, "-o", back, "--to", "jpeg-original").returncode != 0:
        yield "jpeg-original refuses it"
    elif jpeg_streams(back) != before:
        yield "jpeg-original gives other streams"
    if "djxl" not in tools:
        return
    for codestream, wanted in zip(codestreams_of(pydicom.dcmread(result, force=True)), before):
        stream.write_bytes(codestream)
        jpeg = stream.with_suffix(".jpg")
        if run("djxl", stream, jpeg).returncode != 0 or without_pad(jpeg.read_bytes()) != wanted:
            yield "djxl gives another JPEG stream"


def out_of_fragments(path):
    """Frames of whole bytes that lie plain or deflated in their fragments."""
    dataset = pydicom.dcmread(path, force=True)
    size = dataset.Rows * dataset.Columns * dataset.get("SamplesPerPixel", 1) * dataset.BitsAllocated // 8
    is_deflated = dataset.file_meta.TransferSyntaxUID == "1.2.840.10008.1.2.8.1"
    buffer = pydicom.filebase.DicomBytesIO(first_fragment(dataset))
    buffer.is_little_endian = True
    fragments = pydicom.encaps.generate_pixel_data_fragment(buffer)
    return b"".join((zlib.decompress(one, -15) if is_deflated else one)[:size] for one in fragments)


def first_fragment(dataset):
    """Pixel Data behind the offset table."""
    return dataset.PixelData[8 + int.from_bytes(dataset.PixelData[4:8], "little"):]


def decoded_by_another(path, decoder, folder):
    if decoder == ["python"]:
        return out_of_fragments(path)
    if decoder == ["opj_decompress"]:
        return decoded_by_openjpeg(path, folder)
    if decoder == ["ojph_expand"]:
        return decoded_by_openjph(path, folder)
    if decoder == ["djxl"]:
        return decoded_by_djxl(path, folder)
    plain = pathlib.Path(folder) / "plain.dcm"
    plain.unlink(missing_ok=True)
    if run(*decoder, path, plain).returncode != 0:
        return None
    try:
        return by_pixel(plain)
    except (AttributeError, OSError, ValueError, KeyError):
        return None


def native_samples(quorvex, path, folder):
    """The file as this command decodes it to a native one, which pydicom reads."""
    plain = pathlib.Path(folder) / "native.dcm"
    if run(quorvex, "convert", path, "-o", plain, "--to", "explicit").returncode != 0:
        return None
    try:
        return by_pixel(plain)
    except AttributeError:  # its pixels are fractions, an attribute like any other
        return b""


def values(data, dataset):
    """Stored values as numbers, without the bits above them."""
    allocated = 8 if dataset.BitsAllocated <= 8 else 16 if dataset.BitsAllocated <= 16 else 32
    stored = int(dataset.get("BitsStored", allocated) or allocated)
    samples = np.frombuffer(data[:len(data) // (allocated // 8) * (allocated // 8)], f"<u{allocated // 8}")
    samples = samples.astype(np.int64) & ((1 << stored) - 1)
    if dataset.get("PixelRepresentation", 0) == 1:
        samples = np.where(samples >= 1 << (stored - 1), samples - (1 << stored), samples)
    return samples


def psnr(source, result, before, after):
    one, other = (values(data, pydicom.dcmread(path, force=True, stop_before_pixels=True))
                  for data, path in ((before, source), (after, result)))
    if len(one) != len(other):
        return 0.0
    error = float(np.mean((one - other) ** 2.0))
    peak = max(1.0, float(one.max() - one.min()))
    return math.inf if error == 0 else 10 * math.log10(peak * peak / error)


def true_label(path):
    """Complaints about a Photometric Interpretation that is not what the codestream has."""
    dataset = pydicom.dcmread(path, force=True)
    label, syntax = dataset.get("PhotometricInterpretation"), dataset.file_meta.TransferSyntaxUID
    if dataset.get("SamplesPerPixel", 1) != 3 or not syntax.startswith("1.2.840.10008.1.2.4."):
        return []
    data = dataset.PixelData
    first = 16 + int.from_bytes(data[4:8], "little")  # behind the offset table
    stream = data[first:first + int.from_bytes(data[first - 4:first], "little")]
    if syntax.startswith(("1.2.840.10008.1.2.4.9", "1.2.840.10008.1.2.4.20")):
        at = stream.find(b"\xff\x52")
        has_transform = stream[at + 8] == 1
        wanted = {True: "YBR_RCT" if syntax.endswith(("90", "201", "202")) else "YBR_ICT", False: label}[has_transform]
        good = label == wanted and (has_transform or label not in ("YBR_RCT", "YBR_ICT"))
    elif syntax.startswith("1.2.840.10008.1.2.4."):
        identifiers = stream[stream.find(b"\xff\xc0") + 10::3][:3]
        adobe = stream.find(b"Adobe\0")
        is_ybr = stream[adobe + 11] == 1 if 0 <= adobe < 100 else b"JFIF\0" in stream[:30]
        good = label.startswith("YBR") if is_ybr else label == "RGB" or identifiers != b"RGB"
    else:
        return []
    return [] if good else [f"{label} is not what the codestream has"]


def errors_of(path):
    """What dciodvfy finds wrong, the meta information aside, which is made anew; None for what it cannot read."""
    done = run("dciodvfy", path)
    lines = done.stderr.decode("latin-1").splitlines()
    if done.returncode < 0 or any("read failed" in line or "Object Not found" in line for line in lines):
        return None
    summary = "Dicom dataset contains invalid data values"
    return {line for line in lines if line.startswith("Error") and "(0x0002" not in line and summary not in line}


def has_same_frames(source, result):
    one, other = (pydicom.dcmread(path, force=True) for path in (source, result))
    return "PixelData" in one and "PixelData" in other and one.PixelData == other.PixelData


def compare_pixels(quorvex, source, result, target, tools, folder):
    header = pydicom.dcmread(source, force=True, stop_before_pixels=True)
    if "BitsAllocated" not in header:
        return  # pydicom does not read it
    is_lossy = target in LOSSY
    if is_lossy:
        before, after = frames(quorvex, source, folder), frames(quorvex, result, folder)
        ratio = psnr(source, result, before, after) if before and after else 0.0
        is_small = header.Rows * header.Columns < 1024  # headers of a codestream are all that a ratio leaves there
        if ratio < LOWEST_PSNR and before is not None and not is_small:
            yield f"PSNR {ratio:.1f} dB"
    else:
        before, after = (native_samples(quorvex, path, folder) for path in (source, result))
        if before is None or after is None or before.rstrip(b"\0") != after.rstrip(b"\0"):
            yield "samples differ"
    if has_same_frames(source, result):
        return  # what the source says of them stands
    if target == "jpegxl-jpeg":
        yield from given_back(quorvex, source, result, tools, folder)
        return
    yield from true_label(result)
    for decoder in DECODERS.get(target, []):
        if decoder[0] in tools and not is_beyond(decoder[0], header, target):
            yield from compare_with(decoder, quorvex, result, is_lossy and target != "jpeg12", is_lossy, folder)


def compare_with(decoder, quorvex, result, is_near, is_lossy, folder):
    one = native_samples(quorvex, result, folder)
    other = decoded_by_another(result, decoder, folder)
    if other is None:
        yield f"{decoder[0]} does not decode it"
    elif is_lossy:
        shift = np.abs(np.frombuffer(one[:len(other)], np.uint8).astype(int) -
                       np.frombuffer(other[:len(one)], np.uint8).astype(int))
        if is_near and len(shift) and shift.mean() > 2:
            yield f"{decoder[0]} differs by {shift.mean():.1f}"
    elif one.rstrip(b"\0") != other.rstrip(b"\0"):
        yield f"{decoder[0]} differs"


def compare(quorvex, source, result, target, tools, folder, is_carried):
    if is_carried and source.read_bytes() == result.read_bytes():
        return
    known_names = demanded(target, source)
    for place, names, one, other in changed_attributes(source, result, target):
        if not names & known_names:
            yield f"{place} {'/'.join(names)}: {str(one)[:60]} is {str(other)[:60]}"
    if not is_carried:
        yield from compare_pixels(quorvex, source, result, target, tools, folder)
    known = errors_of(source) if "dciodvfy" in tools else None
    if known is not None:
        new = sorted((errors_of(result) or known) - known)
        yield from ("dciodvfy: " + error for error in new[:3] if not any(rule in error for rule in CLASS_RULES))


def check(quorvex, source, target, tools):
    """What became of one file: (outcome, list of complaints)."""
    with tempfile.TemporaryDirectory() as folder:
        result = pathlib.Path(folder) / "result.dcm"
        done = run(quorvex, "convert", source, "-o", result, "--to", target)
        if done.returncode != 0:
            why = done.stderr.decode("utf-8", "replace").strip().splitlines()
            return "refused", [why[-1].split(": ", 2)[-1] if why else "no reason"]
        is_carried = b"carried" in done.stdout
        complaints = list(compare(quorvex, source, result, target, tools, folder, is_carried))
        return ("different" if complaints else "carried" if is_carried else "good"), complaints


def report(files, counts, reasons, tools, as_table):
    print(f"{len(files)} files; checked also with: {', '.join(sorted(tools)) or 'nothing else'}")
    outcomes = ["good", "carried", "refused", "different"]
    row = "| {} | {} | {} | {} | {} |" if as_table else "  {:14} {:>8} {:>8} {:>8} {:>9}"
    print(row.format("target", *outcomes))
    for target, found in counts.items():
        print(row.format(target, *(found[outcome] for outcome in outcomes)))
    for reason, count in reasons.most_common():
        print(f"  refused {count:4}: {reason}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("quorvex", type=pathlib.Path)
    parser.add_argument("inputs", nargs="+", type=pathlib.Path)
    parser.add_argument("--share", default="1/1")
    parser.add_argument("--targets", default=",".join(LOSSLESS + LOSSY))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--table", action="store_true")
    parser.add_argument("--verbose", action="store_true")
    options = parser.parse_args()
    others = ("dcmdjpls", "dcmdrle", "dcmdjpeg", "gdcmconv", "opj_decompress", "ojph_expand", "djxl", "dciodvfy")
    tools = {"python"} | {tool for tool in others if shutil.which(tool)}
    files = []
    for path in options.inputs:
        files += sorted(p for p in path.rglob("*") if p.is_file()) if path.is_dir() else [path]
    share, shares = map(int, options.share.split("/"))
    files = files[share - 1::shares]
    counts = collections.defaultdict(collections.Counter)
    reasons = collections.Counter()
    quorvex = options.quorvex.resolve()
    with ThreadPoolExecutor(options.jobs) as pool:
        jobs = [(file, target, pool.submit(check, quorvex, file, target, tools))
                for target in options.targets.split(",") for file in files]
        for file, target, job in jobs:
            outcome, complaints = job.result()
            counts[target][outcome] += 1
            if outcome == "refused":
                reasons[complaints[0]] += 1
            if outcome == "different" or options.verbose:
                print(f"{file} to {target}: {outcome}", flush=True)
                for complaint in complaints[:8]:
                    print("    " + complaint)
    report(files, counts, reasons, tools, options.table)
    return 1 if any(outcomes["different"] for outcomes in counts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
