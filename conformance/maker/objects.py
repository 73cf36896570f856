"""Small DICOM objects, the same bytes each time they are made."""
import hashlib

import numpy as np
from pydicom.dataset import Dataset, FileDataset, FileMetaDataset
from pydicom.encaps import encapsulate
from pydicom.sequence import Sequence
from pydicom.uid import ExplicitVRBigEndian, ExplicitVRLittleEndian, RLELossless

SECONDARY_CAPTURE = "1.2.840.10008.5.1.4.1.1.7"
MULTI_FRAME_WORD = "1.2.840.10008.5.1.4.1.1.7.3"
ENHANCED_CT = "1.2.840.10008.5.1.4.1.1.2.1"
GREY_STATE = "1.2.840.10008.5.1.4.1.1.11.1"
BYTE_ORDERS = {1: "u1", 8: "u1", 16: "<u2", 32: "<u4"}


def uid(*words):
    digest = hashlib.sha256("/".join(words).encode()).digest()
    return "2.25." + str(int.from_bytes(digest[:15], "big"))


def new_object(name, sop_class, syntax=ExplicitVRLittleEndian):
    meta = FileMetaDataset()
    meta.MediaStorageSOPClassUID = sop_class
    meta.MediaStorageSOPInstanceUID = uid(name, sop_class)
    meta.TransferSyntaxUID = syntax
    meta.ImplementationClassUID = uid("display suite")
    meta.ImplementationVersionName = "DISPLAY_SUITE"
    made = FileDataset(None, {}, file_meta=meta, preamble=b"\0" * 128)
    made.is_little_endian, made.is_implicit_VR = syntax != ExplicitVRBigEndian, False
    made.SOPClassUID, made.SOPInstanceUID = sop_class, meta.MediaStorageSOPInstanceUID
    made.PatientName, made.PatientID = "Display^Suite", "SUITE"
    made.PatientBirthDate = made.PatientSex = ""
    made.StudyInstanceUID, made.SeriesInstanceUID = uid("study"), uid(name, sop_class, "series")
    made.StudyDate = made.StudyTime = made.StudyID = made.AccessionNumber = ""
    made.ReferringPhysicianName = ""
    made.SeriesNumber, made.InstanceNumber, made.Modality = 1, 1, "OT"
    return made


def packed(values, allocated, bits_stored):
    """Stored values as words; negative ones within Bits Stored."""
    if allocated == 1:
        return np.packbits(values.reshape(-1).astype(np.uint8), bitorder="little").tobytes()
    words = values.astype(np.int64) & ((1 << bits_stored) - 1)
    return words.astype(BYTE_ORDERS[allocated]).tobytes()


def even(data):
    return data + b"\0" * (len(data) % 2)


def image(name, values, allocated=None, stored=None, signed=False, photometric="MONOCHROME2",
          frames=None, sop_class=None, syntax=ExplicitVRLittleEndian, **attributes):
    """`values`: rows x columns, rows x columns x 3, or frames ahead of these with `frames`."""
    values = np.asarray(values)
    shape = values.shape[1:] if frames else values.shape
    allocated = allocated or 8
    stored = stored or allocated
    made = new_object(name, sop_class or (MULTI_FRAME_WORD if frames else SECONDARY_CAPTURE),
                      syntax)
    made.ConversionType = "WSD"
    made.SamplesPerPixel = shape[2] if len(shape) == 3 else 1
    made.PhotometricInterpretation = photometric
    made.Rows, made.Columns = shape[0], shape[1]
    made.BitsAllocated, made.BitsStored, made.HighBit = allocated, stored, stored - 1
    made.PixelRepresentation = int(signed)
    if frames:
        made.NumberOfFrames = frames
    if made.SamplesPerPixel > 1:
        made.PlanarConfiguration = 0
    for keyword, value in attributes.items():
        setattr(made, keyword, value)
    set_pixels(made, packed(values, allocated, stored))
    return made


def set_pixels(made, data):
    made.PixelData = even(data)
    made["PixelData"].VR = "OB" if made.BitsAllocated <= 8 else "OW"


def swap_to_big_endian(made):
    """8-bit samples lie two in a word, so that this turns them round too (PS3.5 A.3)."""
    words = np.frombuffer(made.PixelData, "<u2")
    made.PixelData = words.astype(">u2").tobytes()
    made["PixelData"].VR = "OW"
    made.is_little_endian = False
    made.file_meta.TransferSyntaxUID = ExplicitVRBigEndian


def packbits(line):
    """Runs of three or more, literals otherwise (PS3.5 G.3.1)."""
    result, at = bytearray(), 0
    while at < len(line):
        run = 1
        while at + run < len(line) and run < 128 and line[at + run] == line[at]:
            run += 1
        result += bytes([257 - run, line[at]]) if run > 1 else bytes([0, line[at]])
        at += run
    return bytes(result)


def compress_rle(made, values):
    """8-bit samples, a segment for each."""
    planes = values.reshape(made.Rows, made.Columns, -1).astype(np.uint8)
    segments = [even(b"".join(packbits(bytes(line)) for line in planes[:, :, i]))
                for i in range(planes.shape[2])]
    starts = [64 + sum(map(len, segments[:i])) for i in range(len(segments))]
    header = np.array([len(segments)] + starts + [0] * (15 - len(segments)), "<u4").tobytes()
    made.PixelData = encapsulate([header + b"".join(segments)])
    made["PixelData"].VR = "OB"
    made["PixelData"].is_undefined_length = True
    made.file_meta.TransferSyntaxUID = RLELossless


def item(**attributes):
    made = Dataset()
    for keyword, value in attributes.items():
        setattr(made, keyword, value)
    return made


def sequence(**attributes):
    return Sequence([item(**attributes)])


def table(first, bits, entries, layout="words", signed=False, **attributes):
    """An item with a look-up table; 8-bit entries one a word ("words") or two ("bytes")."""
    made = item(**attributes)
    made.add_new(0x00283002, "SS" if signed else "US", [len(entries) & 0xFFFF, first, bits])
    stored = np.asarray(entries)
    data = stored.astype("<u2" if layout == "words" else "u1").tobytes()
    made.add_new(0x00283006, "OW", even(data))
    return made


def add_palette(made, first, bits, colours, signed=False, layout=None):
    """`colours`: entries of red, of green and of blue."""
    layout = layout or ("bytes" if bits == 8 else "words")
    for i, entries in enumerate(colours):
        made.add_new(0x00281101 + i, "SS" if signed else "US",
                     [len(entries) & 0xFFFF, first, bits])
        data = np.asarray(entries).astype("<u2" if layout == "words" else "u1").tobytes()
        made.add_new(0x00281201 + i, "OW", even(data))


def add_segmented_palette(made, count, segments):
    for i, words in enumerate(segments):
        made.add_new(0x00281101 + i, "US", [count & 0xFFFF, 0, 16])
        made.add_new(0x00281221 + i, "OW", np.asarray(words).astype("<u2").tobytes())


def add_overlay(made, bits, origin=(1, 1), group=0x6000, frames=None, first_frame=None,
                layer=None):
    """`bits`: rows x columns, with frames ahead where there are several."""
    bits = np.asarray(bits, np.uint8)
    made.add_new((group, 0x0010), "US", bits.shape[-2])
    made.add_new((group, 0x0011), "US", bits.shape[-1])
    if frames:
        made.add_new((group, 0x0015), "IS", frames)
        made.add_new((group, 0x0051), "US", first_frame or 1)
    made.add_new((group, 0x0040), "CS", "G")
    made.add_new((group, 0x0050), "SS", list(origin))
    made.add_new((group, 0x0100), "US", 1)
    made.add_new((group, 0x0102), "US", 0)
    made.add_new((group, 0x3000), "OW",
                 even(np.packbits(bits.reshape(-1), bitorder="little").tobytes()))
    if layer:
        made.add_new((group, 0x1001), "CS", layer)


def embed_overlay(made, bits, position, group=0x6000):
    """Puts an overlay into a bit of the pixels that the samples leave free (retired)."""
    words = np.frombuffer(made.PixelData, "<u2").reshape(bits.shape)
    made.PixelData = (words | bits.astype("<u2") << position).astype("<u2").tobytes()
    for element, vr, value in ((0x0010, "US", bits.shape[0]), (0x0011, "US", bits.shape[1]),
                               (0x0040, "CS", "G"), (0x0050, "SS", [1, 1]), (0x0100, "US", 16),
                               (0x0102, "US", position)):
        made.add_new((group, element), vr, value)


def reference(made, frames=None):
    one = item(ReferencedSOPClassUID=made.SOPClassUID,
               ReferencedSOPInstanceUID=made.SOPInstanceUID)
    if frames:
        one.ReferencedFrameNumber = frames
    return one


def area(made, corners=None, mode="SCALE TO FIT", aspect=(1, 1), **attributes):
    left, top, right, bottom = corners or (1, 1, made.Columns, made.Rows)
    return item(DisplayedAreaTopLeftHandCorner=[left, top],
                DisplayedAreaBottomRightHandCorner=[right, bottom],
                PresentationSizeMode=mode, PresentationPixelAspectRatio=list(aspect), **attributes)


def corners_on_screen(made, quarters, flip):
    """Upper left and lower right as they lie after the turn and the flip (PS3.3 C.10.4)."""
    left, top, right, bottom = 1, 1, made.Columns, made.Rows
    clockwise = [(left, top), (right, top), (right, bottom), (left, bottom)] * 2
    upper_left, upper_right, lower_right, lower_left = clockwise[4 - quarters:8 - quarters]
    pair = (upper_right, lower_left) if flip else (upper_left, lower_right)
    return pair[0] + pair[1]


def state(made, frames=None, shape="IDENTITY", window=None, areas=None, **attributes):
    """A greyscale presentation state for an image; `areas` of [] leaves the displayed area out."""
    one = new_object("state of " + made.SOPInstanceUID, GREY_STATE)
    one.Modality, one.ContentLabel, one.ContentDescription = "PR", "CASE", ""
    one.ContentCreatorName = ""
    one.PresentationCreationDate, one.PresentationCreationTime = "20240101", "000000"
    one.Manufacturer = ""
    one.ReferencedSeriesSequence = sequence(
        SeriesInstanceUID=made.SeriesInstanceUID,
        ReferencedImageSequence=Sequence([reference(made, frames)]))
    if areas != []:
        corners = corners_on_screen(made, attributes.get("ImageRotation", 0) // 90,
                                    attributes.get("ImageHorizontalFlip") == "Y")
        one.DisplayedAreaSelectionSequence = Sequence(areas or [area(made, corners)])
    if window:
        one.SoftcopyVOILUTSequence = sequence(WindowCenter=window[0], WindowWidth=window[1])
    if shape:
        one.PresentationLUTShape = shape
    for keyword, value in attributes.items():
        setattr(one, keyword, value)
    return one


def layer(name, order, grey=None):
    one = item(GraphicLayer=name, GraphicLayerOrder=order)
    if grey is not None:
        one.GraphicLayerRecommendedDisplayGrayscaleValue = grey
    return one
