"""Small images and presentation states of the kinds that real files for seeds lack."""
import io
import struct

import pydicom


def item(**attributes):
    made = pydicom.Dataset()
    for keyword, value in attributes.items():
        setattr(made, keyword, value)
    return made


def lut(first=0, bits=16):
    table = item(LUTData=struct.pack("<8H", *range(0, 800, 100)))
    table.add_new("LUTDescriptor", "US", [8, first, bits])
    table["LUTData"].VR = "OW"
    return table


def palette(target, segmented):
    for colour in ("Red", "Green", "Blue"):
        name = f"{colour}PaletteColorLookupTable"
        target.add_new(f"{name}Descriptor", "US", [8, 0, 16])
        words = (0, 4, 0, 9, 8, 7, 1, 4, 900) if segmented else range(0, 800, 100)
        keyword = f"Segmented{name}Data" if segmented else f"{name}Data"
        target.add_new(keyword, "OW", struct.pack(f"<{len(words)}H", *words))
    target.PhotometricInterpretation = "PALETTE COLOR"


def overlay(target):
    target.add_new(0x60000010, "US", 16)
    target.add_new(0x60000011, "US", 16)
    target.add_new(0x60000050, "SS", [1, -3])
    target.add_new(0x60000100, "US", 1)
    target.add_new(0x60000102, "US", 0)
    target.add_new(0x60003000, "OW", bytes(range(32)))


def groups(target):
    target.SharedFunctionalGroupsSequence = [item(
        PixelValueTransformationSequence=[item(RescaleSlope="2", RescaleIntercept="-9")],
        PixelMeasuresSequence=[item(PixelSpacing=["1", "2"])])]
    target.PerFrameFunctionalGroupsSequence = [item(
        FrameVOILUTSequence=[item(WindowCenter="40", WindowWidth="80")])]


SHUTTERS = [
    {"ShutterShape": "RECTANGULAR", "ShutterLeftVerticalEdge": 2, "ShutterRightVerticalEdge": 12,
     "ShutterUpperHorizontalEdge": 3, "ShutterLowerHorizontalEdge": 9},
    {"ShutterShape": "CIRCULAR", "CenterOfCircularShutter": [8, 8], "RadiusOfCircularShutter": 5},
    {"ShutterShape": "POLYGONAL", "VerticesOfThePolygonalShutter": [1, 1, 1, 12, 12, 7]},
    {"ShutterShape": "BITMAP", "ShutterOverlayGroup": 0x6000}]
ANNOTATIONS = [
    {"GraphicObjectSequence": [item(GraphicAnnotationUnits="PIXEL", GraphicDimensions=2,
                                    NumberOfGraphicPoints=3, GraphicData=[1, 1, 9, 2, 5, 8],
                                    GraphicType=kind, GraphicFilled="Y")]}
    for kind in ("POINT", "POLYLINE", "INTERPOLATED", "CIRCLE", "ELLIPSE")]
ANNOTATIONS.append({"TextObjectSequence": [item(
    UnformattedTextValue="text", AnchorPoint=[3, 4], AnchorPointAnnotationUnits="PIXEL",
    AnchorPointVisibility="Y")]})


PLAIN_IMAGE = {
    "Rows": 16, "Columns": 16, "SamplesPerPixel": 1, "BitsAllocated": 8, "BitsStored": 8,
    "HighBit": 7, "PixelRepresentation": 0, "PhotometricInterpretation": "MONOCHROME2",
    "PixelData": bytes(range(256))}


def set_all(target, values):
    for keyword, value in values.items():
        setattr(target, keyword, value)


def presented():
    """What a state or an image may carry to say how it is shown: one thing at a time."""
    yield lambda ds: setattr(ds, "ModalityLUTSequence", [lut()])
    yield lambda ds: setattr(ds, "VOILUTSequence", [lut(2, 12)])
    yield lambda ds: setattr(ds, "SoftcopyVOILUTSequence", [item(VOILUTSequence=[lut()])])
    yield lambda ds: setattr(ds, "PresentationLUTSequence", [lut()])
    yield lambda ds: setattr(ds, "MaskSubtractionSequence", [item(
        MaskOperation="AVG_SUB", ApplicableFrameRange=[1, 2], MaskFrameNumbers=[1],
        MaskSubPixelShift=[0.5, 1])])
    for values in SHUTTERS:
        yield lambda ds, values=values: (set_all(ds, values), overlay(ds))
    for values in ANNOTATIONS:
        yield lambda ds, values=values: setattr(ds, "GraphicAnnotationSequence", [item(**values)])
    for mode in ("MAGNIFY", "TRUE SIZE"):
        yield lambda ds, mode=mode: setattr(ds, "DisplayedAreaSelectionSequence", [item(
            DisplayedAreaTopLeftHandCorner=[1, 1], DisplayedAreaBottomRightHandCorner=[9, 9],
            PresentationSizeMode=mode, PresentationPixelMagnificationRatio=2.0,
            PresentationPixelSpacing=[1, 1])])


def odd_bits(ds):
    """Frames of one bit a pixel that do not end with a byte."""
    pixels_of(1, 1, 3)(ds)
    ds.Rows = 5
    ds.Columns = 7


def pixels_of(bits, samples=1, frames=1):
    def change(ds):
        ds.BitsAllocated = bits
        ds.BitsStored = bits
        ds.SamplesPerPixel = samples
        ds.NumberOfFrames = frames
        ds.PixelData = bytes(range(256)) * max(1, bits * samples * frames // 8)
        if samples == 3:
            ds.PhotometricInterpretation = "RGB"
            ds.PlanarConfiguration = 1
    return change


def images():
    yield from presented()
    yield from (overlay, groups, odd_bits)
    yield from (lambda ds: palette(ds, False), lambda ds: palette(ds, True))
    for shape in ((1, 1, 2), (8, 3, 1), (16, 1, 2), (16, 3, 1), (32, 1, 1), (12, 1, 1)):
        yield pixels_of(*shape)


def write(change, **values):
    ds = item(SOPClassUID="1.2.840.10008.5.1.4.1.1.7", SOPInstanceUID="1.2.3.4", **values)
    ds.file_meta = pydicom.dataset.FileMetaDataset()
    ds.file_meta.TransferSyntaxUID = "1.2.840.10008.1.2.1"
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID
    ds.preamble = bytes(128)
    ds.is_little_endian = True
    ds.is_implicit_VR = False
    change(ds)
    stream = io.BytesIO()
    ds.save_as(stream, write_like_original=False)
    return stream.getvalue()
