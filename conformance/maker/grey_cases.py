"""Windows, ranges, modality transforms and polarity."""
import numpy as np
from pydicom.sequence import Sequence

from . import objects as make
from .patterns import count

WINDOW = "PS3.3 C.11.2.1.2.1"
EXACT = "PS3.3 C.11.2.1.3.2"
SIGMOID = "PS3.3 C.11.2.1.3.1"
VOI = "PS3.3 C.11.2"
MODALITY = "PS3.3 C.11.1"


def linear_sum(x, centre, width):
    return f"min(max((({x})-({centre}-0.5))/({width}-1)+0.5,0),1)*255"


def exact_sum(x, centre, width):
    return f"min(max((({x})-{centre})/{width}+0.5,0),1)*255"


def sigmoid_sum(x, centre, width):
    return f"255/(1+exp(-4*(({x})-{centre})/{width}))"


SUMS = {"LINEAR": linear_sum, "LINEAR_EXACT": exact_sum, "SIGMOID": sigmoid_sum,
        "exact": exact_sum, "sigmoid": sigmoid_sum}

# Name, centre and width as written, function, first value, step, what the case is for.
FILE_WINDOWS = (
    ("full", "128", "256", None, 0, 1, "128/256 leaves 8 bits as they are: 255 stays 255"),
    ("even", "100", "80", None, 0, 1, "the centre lies half a value lower, the width is one less"),
    ("odd", "100", "81", None, 0, 1, "an odd width: both ends lie on whole values"),
    ("narrow", "100", "10", None, 0, 1, "ten grey values: half a value is 14 levels"),
    ("two", "100", "2", None, 0, 1, "width 2: the lower value is black, the upper white"),
    ("three", "100", "3", None, 0, 1, "width 3: one value between black and white"),
    ("one", "100", "1", None, 0, 1, "width 1: a threshold at centre - 0.5"),
    ("one_half", "100.5", "1", None, 0, 1, "a threshold that lies on a value: it is black"),
    ("fraction", "100.25", "20.5", None, 0, 1, "fractions of centre and width count"),
    ("fraction_below", "50.7", "1.5", None, 0, 1, "a width between 1 and 2"),
    ("exponent", "1.024E+03", "2.048E+03", None, 0, 16, "numbers with an exponent"),
    ("exponent_small", "1.0E2", "5.0e1", None, 0, 1, "an exponent without sign, in lower case"),
    ("plus", "+100", "+80.0", None, 0, 1, "numbers with a plus sign"),
    ("spaces", " 100", "80 ", None, 0, 1, "numbers with blanks, ahead and behind"),
    ("negative", "-40", "100", None, 0, 1, "a window below all values: all white"),
    ("beyond", "500", "100", None, 0, 1, "a window above all values: all black"),
    ("wider", "128", "1024", None, 0, 1, "wider than all values: neither black nor white"),
    ("named_linear", "100", "80", "LINEAR", 0, 1, "LINEAR by its name"),
    ("exact", "100", "80", "LINEAR_EXACT", 0, 1, "LINEAR_EXACT: no half value, no width - 1"),
    ("exact_256", "128", "256", "LINEAR_EXACT", 0, 1, "LINEAR_EXACT 128/256: 255 is not white"),
    ("exact_one", "100", "1", "LINEAR_EXACT", 0, 1, "LINEAR_EXACT of width 1: the centre is grey"),
    ("exact_fraction", "99.5", "2.5", "LINEAR_EXACT", 0, 1, "LINEAR_EXACT with fractions"),
    ("sigmoid", "128", "100", "SIGMOID", 0, 1, "SIGMOID about its centre"),
    ("sigmoid_narrow", "128", "8", "SIGMOID", 0, 1, "a steep SIGMOID"),
    ("sigmoid_wide", "2048", "4096", "SIGMOID", 0, 16, "SIGMOID over 12 bits"),
    ("seventeen_bits", "35000", "70000", None, 0, 256, "a width above 65535"),
    ("sixteen_bits", "32768", "65536", None, 0, 257, "a width of 65536"),
)


def add_file_windows(book):
    for name, centre, width, function, start, step, reason in FILE_WINDOWS:
        pixels = count(start=start, step=step)
        deep = {"allocated": 16, "stored": 12 if step < 20 else 16} if step > 1 else {}
        made = make.image(name, pixels, WindowCenter=centre, WindowWidth=width, **deep)
        if function:
            made.VOILUTFunction = function
        add = SUMS[function or "LINEAR"]
        spots = ((6, 4), (0, 0), (15, 15))
        sums = [(r, c, add(pixels[r, c], float(centre), float(width)))
                for r, c in spots if float(width) > 1 or function]
        standard = {None: WINDOW, "LINEAR": WINDOW, "LINEAR_EXACT": EXACT, "SIGMOID": SIGMOID}
        if width == "1" and not function:
            edge = 100 if centre == "100" else 101
            sums = [(edge // 16, edge % 16, "255"), ((edge - 1) // 16, (edge - 1) % 16, "0")]
        book.add(f"window/{name}", made, reason, standard[function], sums=sums)


def add_chosen_windows(book):
    pixels = count()
    several = make.image("several", pixels, WindowCenter=["60", "160", "128"],
                         WindowWidth=["40", "100", "256"],
                         WindowCenterWidthExplanation=["DARK", "BRIGHT", "ALL"])
    rows = ((1, 60, 40, 3, 12), (2, 160, 100, 10, 0), (3, 128, 256, 15, 15))
    for voi, centre, width, row, column in rows:
        chosen = {"voi": voi} if voi > 1 else {}
        book.add(f"window/choice_{voi}", several, f"window {voi} of three", VOI,
                 sums=[(row, column, linear_sum(pixels[row, column], centre, width))], **chosen)
    plain = make.image("asked", pixels, WindowCenter="128", WindowWidth="256")
    for name, window, function in (("asked", [80, 50], None),
                                   ("asked_fraction", [80.5, 33.25], None),
                                   ("asked_one", [80, 1], None), ("asked_two", [80, 2], None),
                                   ("asked_exact", [80, 50], "exact"),
                                   ("asked_exact_half", [80, 0.5], "exact"),
                                   ("asked_exact_tiny", [80.01, 0.04], "exact"),
                                   ("asked_sigmoid", [80, 50], "sigmoid")):
        extra = {"function": function} if function else {}
        width = window[1]
        add = SUMS[function or "LINEAR"]
        sums = [(5, 3, add(83, *window)), (4, 8, add(72, *window))] if width != 1 else [
            (5, 0, "255"), (4, 15, "0")]
        book.add(f"window/{name}", plain, "a window that the user sets replaces the file's",
                 {"exact": EXACT, "sigmoid": SIGMOID, None: WINDOW}[function],
                 sums=sums, window=window, **extra)


def with_voi_table(name, pixels, **more):
    made = make.image(name, pixels, **more)
    made.VOILUTSequence = Sequence([make.table(0, 8, np.arange(256)[::-1] // 2)])
    return made


def add_table_and_window(book):
    made = with_voi_table("table_first", count(), WindowCenter="100", WindowWidth="80")
    book.add("window/table_first", made, "a VOI LUT comes ahead of the windows beside it", VOI,
             sums=[(0, 0, "255//2"), (15, 15, "0"), (6, 4, "155//2")])
    book.add("window/window_after_table", made, "the window as the second choice", VOI, voi=2,
             sums=[(6, 4, linear_sum(100, 100, 80))])
    book.add("window/asked_over_table", made, "a window that the user sets replaces a VOI LUT",
             VOI, window=[100, 80], sums=[(6, 4, linear_sum(100, 100, 80))])


# Name, first value, step, bits stored, signed, slope, intercept, attributes, reason, sums
def add_ranges(book):
    pixels = count()
    book.add("range/8_bits", make.image("r8", np.minimum(pixels, 200)),
             "8 bits without a window are shown as stored, not stretched", VOI,
             sums=[(0, 7, "7"), (15, 15, "200")])
    book.add("range/7_bits", make.image("r7", count(8, 16), stored=7),
             "7 bits: 0 .. 127 over the whole grey scale", VOI,
             sums=[(0, 1, "1*255/127"), (7, 15, "127*255/127")])
    book.add("range/4_bits", make.image("r4", count(4, 4), stored=4), "4 bits: steps of 17", VOI,
             sums=[(0, 1, "1*255/15"), (3, 3, "255")])
    book.add("range/1_bit", make.image("r1", count() % 3 == 0, allocated=1),
             "1 bit: black and white", VOI, sums=[(0, 0, "255"), (0, 1, "0")])
    book.add("range/1_bit_of_8", make.image("r18", (count() % 3 == 0) * 1, stored=1),
             "1 bit stored in 8", VOI, sums=[(0, 0, "255"), (0, 1, "0")])
    book.add("range/8_bits_signed", make.image("r8s", count(start=-128), signed=True),
             "8 signed bits: -128 is black, 127 white", VOI, sums=[(0, 0, "0"), (8, 0, "128")])
    book.add("range/8_of_16", make.image("r816", np.minimum(pixels, 99), allocated=16, stored=8),
             "8 bits stored in 16 are 8 bits: 99 is no white", VOI, sums=[(15, 15, "99")])
    book.add("range/8_bits_rescaled",
             make.image("r8r", np.minimum(pixels, 100), RescaleSlope="2", RescaleIntercept="-50"),
             "8 bits with a rescale: all that can be stored, not all that is there", VOI,
             sums=[(15, 15, "((2*100-50)-(-50))/((2*255-50)-(-50))*255")])
    add_deep_ranges(book)


def add_deep_ranges(book):
    deep = {"allocated": 16, "stored": 12}
    rows = (
        ("12_bits", count(start=100, step=3), {}, "12 bits without a window: smallest to largest",
         [(0, 0, "0"), (15, 15, "255"), (8, 0, "128*3/(255*3)*255")]),
        ("no_zero", count(start=1000), {}, "the range does not begin at 0 unless 0 is there",
         [(0, 0, "0"), (0, 5, "5")]),
        ("all_zero", count(step=0), {}, "a frame of zeros alone is black", [(3, 3, "0")]),
        ("0_and_1", count() % 2, {}, "two values: black and white", [(0, 0, "0"), (0, 1, "255")]),
        ("0_to_2", count() % 3, {}, "three values", [(0, 1, "127.5"), (0, 2, "255")]),
        ("0_to_3", count() % 4, {}, "four values", [(0, 1, "85"), (0, 2, "170")]),
        ("negative_slope", count(), {"RescaleSlope": "-1", "RescaleIntercept": "1000"},
         "a slope below 0: the smallest stored value is the largest modality value",
         [(0, 0, "255"), (15, 15, "0")]),
        ("empty_window", count(start=5, step=2), {"WindowCenter": "", "WindowWidth": ""},
         "window attributes without a value are no window", [(0, 0, "0"), (0, 1, "1")]),
    )
    for name, pixels, more, reason, sums in rows:
        made = make.image("deep " + name, pixels, **deep, **more)
        book.add(f"range/{name}", made, reason, VOI, sums=sums)
    signed = make.image("signed16", count(start=-1000, step=9), 16, 16, True)
    book.add("range/signed", signed, "signed values from the smallest", VOI,
             sums=[(0, 0, "0"), (15, 15, "255")])
    add_padding(book)


def add_padding(book):
    padded = count(start=500, step=2)
    padded[:, :3] = -2000
    made = make.image("padded", padded, 16, 16, True)
    made.add_new(0x00280120, "SS", -2000)
    book.add("range/padding", made,
             "padding is left out of the range; its pixels are clamped like any value",
             "PS3.3 C.7.5.1.1.2", sums=[(0, 0, "0"), (0, 3, "0"), (15, 15, "255"),
                                        (8, 8, "(136-3)*2/(252*2)*255")])
    ranged = count(start=500, step=2)
    ranged[:, :3], ranged[:, 3:5] = 4000, 4090
    made = make.image("padding range", ranged, 16, 12)
    made.add_new(0x00280120, "US", 4095)
    made.add_new(0x00280121, "US", 4000)
    book.add("range/padding_range", made,
             "padding by a range, its limit below its value; its pixels are white like any value "
             "above the range", "PS3.3 C.7.5.1.1.2",
             sums=[(0, 0, "255"), (0, 3, "255"), (0, 5, "0"), (15, 15, "255")])
    windowed = make.image("padding in a window", ranged, 16, 12, WindowCenter="2000",
                          WindowWidth="4000")
    windowed.add_new(0x00280120, "US", 4000)
    book.add("range/padding_in_window", windowed,
             "with a window, padding goes through the pipeline like any value",
             "PS3.3 C.7.5.1.1.2", sums=[(0, 5, linear_sum(510, 2000, 4000))])


# Name, pixels, bits, signed, slope, intercept, centre, width, reason
RESCALED = (
    ("ct", count(start=0, step=12), 12, False, "1", "-1024", "40", "400", "CT units"),
    ("ct_signed", count(start=-1024, step=12), 16, True, "1", "0", "40", "400",
     "signed CT without intercept"),
    ("12_of_16_signed", count(start=-2048, step=16), 12, True, "1", "0", "0", "4096",
     "12 signed bits in a word: sign-extended from Bits Stored"),
    ("pet", count(step=100), 16, False, "9.12", "0", "100000", "200000",
     "a slope above 1: values beyond 16 bits"),
    ("pet_signed", count(start=-32768, step=257), 16, True, "3.5", "10", "0", "200000",
     "16 signed bits and a slope above 1"),
    ("slope_0_0001", count(step=257), 16, False, "0.0001", "0", "3", "6",
     "a small slope: the window is narrower than one stored value is wide"),
    ("slope_0_005", count(step=20), 16, False, "0.005", "0", "10", "20", "slope 0.005"),
    ("slope_small_values", count() % 61, 16, False, "0.1", "0", "3", "6",
     "more than 32 values of a small slope stay apart"),
    ("slope_exponent", count(step=16), 12, False, "1.0E-03", "-1.0E+00", "1", "5",
     "slope and intercept with exponents"),
    ("slope_negative", count(step=16), 12, False, "-1", "4095", "1000", "2000",
     "a slope below 0 inverts"),
    ("intercept_fraction", count(), 8, False, "0.5", "0.25", "64", "100", "a broken intercept"),
    ("suv", count(step=100), 16, False, "0.00038147", "0", "2.5", "5",
     "uptake values of 0 to 10: the window lies within ten modality values"),
)


def add_rescaled(book):
    for name, pixels, bits, signed, slope, intercept, centre, width, reason in RESCALED:
        made = make.image("rescaled " + name, pixels, 8 if bits == 8 else 16, bits, signed,
                          RescaleSlope=slope, RescaleIntercept=intercept, WindowCenter=centre,
                          WindowWidth=width)
        sums = [(row, column, linear_sum(f"{slope}*({pixels[row, column]})+({intercept})",
                                         centre, width))
                for row, column in ((4, 7), (9, 2), (12, 13))]
        book.add(f"modality/{name}", made, reason, MODALITY + ", " + WINDOW, sums=sums)
    asked = make.image("small slope asked", count(step=20), 16, 16, RescaleSlope="0.005",
                       RescaleIntercept="0")
    book.add("modality/slope_asked", asked, "a window that the user sets is in modality units",
             MODALITY, window=[10, 20], sums=[(8, 0, linear_sum("0.005*2560", 10, 20))])
    book.add("modality/slope_no_window", asked, "a small slope without a window", MODALITY,
             sums=[(8, 0, "2560/5100*255")])


def add_32_bits(book):
    pixels = count(step=10_000_000)
    made = make.image("32 bits", pixels, 32, 32, WindowCenter="1000000000",
                      WindowWidth="2000000000")
    book.add("modality/32_bits", made, "32 bits and a window", MODALITY,
             sums=[(8, 0, linear_sum(1280000000, 1000000000, 2000000000)), (0, 0, "0")])
    signed = make.image("32 signed", count(start=-1280000000, step=10_000_000), 32, 32, True)
    book.add("modality/32_bits_signed", signed, "32 signed bits, smallest to largest", MODALITY,
             sums=[(0, 1, "1"), (15, 15, "255")])
    narrow = make.image("32 narrow", count(start=2_000_000_000), 32, 32,
                        WindowCenter="2000000128", WindowWidth="256")
    book.add("modality/32_bits_narrow", narrow, "a narrow window high up in 32 bits", MODALITY,
             sums=[(8, 0, "128"), (15, 15, "255")])


def add_polarity(book):
    pixels, truth = count(), []
    for photometric in ("MONOCHROME1", "MONOCHROME2"):
        one = photometric == "MONOCHROME1"
        right = "INVERSE" if one else "IDENTITY"
        for shape in (None, right):
            truth += [(photometric, shape, None, invert, one != invert) for invert in (0, 1)]
        for shape in ("IDENTITY", "INVERSE"):
            truth += [(photometric, right, shape, invert, (shape == "INVERSE") != invert)
                      for invert in (0, 1)]
    for photometric, own, shape, invert, white in truth:
        name = "_".join([photometric[-1]] + (["shape"] if own and not shape else []) +
                        (["state", shape.lower()] if shape else []) + ["invert"] * invert)
        made = make.image("polarity " + name, pixels, photometric=photometric)
        if own:
            made.PresentationLUTShape = own
        reason = ", ".join([photometric, f"shape {own}" if own else "no shape"] + (
            [f"a state with {shape}"] if shape else []) + ["inverted by the user"] * invert)
        extra = {"invert": True} if invert else {}
        book.add(f"polarity/mono{name}", made, reason,
                 "PS3.3 C.7.6.3.1.2, C.11.6; PS3.4 N.2.1.4" if shape else
                 "PS3.3 C.7.6.3.1.2, C.8.11.3", state=make.state(made, shape=shape)
                 if shape else None, sums=[(0, 3, "255-3" if white else "3")], **extra)
    made = make.image("mono1 window", pixels, photometric="MONOCHROME1", WindowCenter="100",
                      WindowWidth="80")
    book.add("polarity/mono1_window", made, "MONOCHROME1 inverts after the window",
             "PS3.3 C.7.6.3.1.2", sums=[(6, 4, "255-(" + linear_sum(100, 100, 80) + ")")])
    deep = make.image("mono1 range", count(start=50, step=5), 16, 12, photometric="MONOCHROME1")
    book.add("polarity/mono1_range", deep, "MONOCHROME1 without a window: smallest is white",
             "PS3.3 C.7.6.3.1.2", sums=[(0, 0, "255"), (15, 15, "0")])


def add_cases(book):
    for add in (add_file_windows, add_chosen_windows, add_table_and_window, add_ranges,
                add_rescaled, add_32_bits, add_polarity):
        add(book)
