"""Look-up tables of the grey scale, presentation states and functional groups."""
import numpy as np
from pydicom.sequence import Sequence

from . import objects as make
from .grey_cases import exact_sum, linear_sum, sigmoid_sum
from .patterns import corners, count

LUT = "PS3.3 C.11.1.1"
VOI_LUT = "PS3.3 C.11.2.1.1"
STATE = "PS3.4 N.2"


def add_modality_tables(book):
    pixels = count() % 40
    entries = (np.arange(32) * 7) % 256
    for name, bits, layout, first, values in (
            ("8_bits_bytes", 8, "bytes", 4, entries), ("8_bits_words", 8, "words", 4, entries),
            ("8_bits_bytes_odd", 8, "bytes", 4, entries[:31]),
            ("16_bits", 16, "words", 4, entries * 100), ("12_bits", 12, "words", 0, entries * 16)):
        top = int(values.max())
        made = make.image("modality " + name, pixels, WindowCenter=str(top / 2 + 0.5),
                          WindowWidth=str(top + 1))
        made.ModalityLUTSequence = Sequence([make.table(first, bits, values, layout,
                                                        ModalityLUTType="US")])
        last = int(values[-1])
        book.add(f"table/modality_{name}", made,
                 "a modality LUT; values below and above its range take its first and last entry",
                 LUT, sums=[(0, 0, f"{values[0]}*255/{top}"),
                            (0, 9, f"{values[9 - first]}*255/{top}"),
                            (2, 7, f"{last}*255/{top}")])
    signed = make.image("modality signed", count(start=-128), 16, 12, True, WindowCenter="128",
                        WindowWidth="256")
    signed.ModalityLUTSequence = Sequence([make.table(-100, 16, np.arange(200) + 20, signed=True,
                                                      ModalityLUTType="US")])
    book.add("table/modality_signed", signed,
             "12 signed bits are sign-extended ahead of a modality LUT; its first value is signed",
             LUT, sums=[(0, 0, "20"), (8, 0, "100+20"), (15, 15, "199+20")])


def add_voi_tables(book):
    pixels, entries = count(), (np.arange(200) * 3) % 256
    rows = (("8_bits_bytes", 8, "bytes", entries), ("8_bits_words", 8, "words", entries),
            ("16_bits", 16, "words", entries * 257), ("12_bits", 12, "words", entries * 16),
            ("10_bits", 10, "words", entries * 4))
    for name, bits, layout, values in rows:
        made = make.image("voi " + name, pixels)
        made.VOILUTSequence = Sequence([make.table(20, bits, values, layout)])
        top = (1 << bits) - 1
        book.add(f"table/voi_{name}", made, "a VOI LUT of this depth and layout", VOI_LUT,
                 sums=[(0, 0, f"{values[0]}*255/{top}"), (3, 2, f"{values[30]}*255/{top}"),
                       (15, 0, f"{values[199]}*255/{top}")])
    falling = make.image("voi falling", pixels)
    falling.VOILUTSequence = Sequence([make.table(0, 8, np.arange(256)[::-1])])
    book.add("table/voi_falling", falling, "the last entry need not be the highest", VOI_LUT,
             sums=[(0, 0, "255"), (15, 15, "0")])
    low = make.image("voi low", pixels)
    low.VOILUTSequence = Sequence([make.table(0, 8, np.arange(256) // 2)])
    book.add("table/voi_low", low, "entries that do not reach white stay below it", VOI_LUT,
             sums=[(15, 15, "127")])
    add_choices(book, pixels)
    add_signed_voi(book)


def add_choices(book, pixels):
    made = make.image("voi choices", pixels)
    made.VOILUTSequence = Sequence([
        make.table(0, 8, np.arange(256) // 2, LUTExplanation="HALF"),
        make.table(0, 8, 255 - np.arange(256), LUTExplanation="INVERSE")])
    book.add("table/voi_first", made, "the first of two VOI LUTs", VOI_LUT, sums=[(6, 4, "50")])
    book.add("table/voi_second", made, "the second of two VOI LUTs", VOI_LUT, voi=2,
             sums=[(6, 4, "155")])


def add_signed_voi(book):
    entries = np.arange(256)
    words = make.image("voi signed ct", count(step=4), 16, 12, RescaleSlope="1",
                       RescaleIntercept="-1024")
    words.VOILUTSequence = Sequence([make.table(65536 - 700, 8, entries)])
    book.add("table/voi_first_signed_word", words,
             "unsigned pixels of negative modality values: the first value mapped is signed, "
             "though its word is not", VOI_LUT,
             sums=[(0, 0, "0"), (6, 4, "100*4-1024+700"), (15, 15, "255")])
    for name, stored in (("ct", {"RescaleSlope": "1", "RescaleIntercept": "-1024"}), ("plain", {})):
        signed = not stored
        made = make.image("voi signed " + name, count(start=-512 if signed else 512, step=4), 16,
                          12, signed, **stored)
        made.VOILUTSequence = Sequence([make.table(-300, 8, entries, signed=True)])
        book.add(f"table/voi_first_signed_{name}", made, "a first value mapped below 0", VOI_LUT,
                 sums=[(0, 0, "0"), (6, 4, "100*4-512+300"), (15, 15, "255")])
    slope = make.image("voi slope 2", count(start=-32768, step=257), 16, 16, True,
                       RescaleSlope="2", RescaleIntercept="0")
    slope.VOILUTSequence = Sequence([make.table(-500, 8, np.arange(1000) // 4, signed=True)])
    book.add("table/voi_slope_2", slope,
             "modality values that span more than 16 bits ahead of a VOI LUT", VOI_LUT,
             sums=[(0, 0, "0"), (7, 15, "(2*(-32768+127*257)+500)//4"), (15, 15, "249")])
    rescaled = make.image("voi slope 3", count(), RescaleSlope="3", RescaleIntercept="10")
    rescaled.VOILUTSequence = Sequence([make.table(0, 12, np.arange(1024) * 4)])
    book.add("table/voi_after_rescale", rescaled, "a VOI LUT takes modality values", VOI_LUT,
             sums=[(6, 4, "4*(3*100+10)*255/4095")])


def add_presentation_tables(book):
    pixels = count()
    square = (np.arange(256) ** 2) // 255
    for name, bits, layout, values in (
            ("8_bits_words", 8, "words", square), ("8_bits_bytes", 8, "bytes", square),
            ("16_bits", 16, "words", square * 257), ("12_bits", 12, "words", square * 16),
            ("falling", 8, "words", square[::-1]), ("low", 8, "words", square // 2)):
        made = make.image("presentation " + name, pixels)
        state = make.state(made, shape=None, window=("128", "256"),
                           PresentationLUTSequence=Sequence([make.table(0, bits, values, layout)]))
        book.add(f"state/lut_{name}", made, "a state's presentation LUT", "PS3.3 C.11.6.1.1",
                 state=state, sums=[(6, 4, f"{values[100]}*255/{(1 << bits) - 1}"),
                                    (15, 15, f"{values[255]}*255/{(1 << bits) - 1}")])
    ct = make.image("presentation ct", count(step=16), 16, 12, RescaleSlope="1",
                    RescaleIntercept="-1024")
    state = make.state(ct, shape=None, RescaleSlope="1", RescaleIntercept="-1024",
                       RescaleType="HU", PresentationLUTSequence=Sequence(
                           [make.table(0, 8, np.arange(4096) // 16)]))
    book.add("state/lut_below_0", ct,
             "a presentation LUT takes all that the modality stage can give, from -1024",
             "PS3.3 C.11.6.1.1", state=state, sums=[(0, 0, "0"), (6, 4, "1600//16"),
                                                    (15, 15, "4080//16")])


def add_state_stages(book):
    ct = make.image("state ct", count(start=800, step=4), 16, 12, RescaleSlope="1",
                    RescaleIntercept="-1024", WindowCenter="40", WindowWidth="400")
    own = {"RescaleSlope": "1", "RescaleIntercept": "-1024", "RescaleType": "HU"}
    book.add("state/window", ct, "a state's window replaces the image's", STATE,
             state=make.state(ct, window=("100", "600"), **own),
             sums=[(8, 0, linear_sum("128*4+800-1024", 100, 600))])
    book.add("state/no_modality", ct, "a state without modality transform means an identity",
             STATE + ".1.1", state=make.state(ct, window=("1300", "600")),
             sums=[(8, 0, linear_sum("128*4+800", 1300, 600))])
    doubled = dict(own, RescaleSlope="2")
    book.add("state/own_modality", ct, "a state's modality transform replaces the image's",
             STATE + ".1.1", state=make.state(ct, window=("1600", "2000"), **doubled),
             sums=[(8, 0, linear_sum("2*(128*4+800)-1024", 1600, 2000))])
    table = Sequence([make.table(800, 12, np.arange(1024)[::-1] * 4, ModalityLUTType="US")])
    book.add("state/modality_table", ct, "a state's modality LUT", STATE + ".1.1",
             state=make.state(ct, window=("2048", "4096"), ModalityLUTSequence=table),
             sums=[(8, 0, linear_sum("(1023-128*4)*4", 2048, 4096))])
    voi = Sequence([make.item(VOILUTSequence=Sequence([make.table(
        65536 - 200, 8, np.arange(256), signed=False)]))])
    book.add("state/voi_table", ct, "a state's VOI LUT, its first value below 0", STATE + ".1.3",
             state=make.state(ct, SoftcopyVOILUTSequence=voi, **own),
             sums=[(8, 0, "min(max(128*4+800-1024+200,0),255)"), (0, 0, "0"),
                   (4, 0, "64*4+800-1024+200")])
    book.add("state/exponents", ct, "numbers with exponents in a state", STATE,
             state=make.state(ct, window=("1.0E+02", "6.0E+02"), **own),
             sums=[(8, 0, linear_sum("128*4+800-1024", 100, 600))])
    book.add("state/width_70000", ct, "a state's width above 65535", STATE,
             state=make.state(ct, window=("0", "70000"), **own),
             sums=[(8, 0, linear_sum("128*4+800-1024", 0, 70000))])
    for name, function, add in (("exact", "LINEAR_EXACT", exact_sum),
                                ("sigmoid", "SIGMOID", sigmoid_sum)):
        state = make.state(ct, window=("288", "20"), **own)
        state.SoftcopyVOILUTSequence[0].VOILUTFunction = function
        book.add(f"state/{name}", ct, f"a state's window of {function}", "PS3.3 C.11.2.1.3",
                 state=state, sums=[(8, 0, add("128*4+800-1024", 288, 20))])
    book.add("state/asked_window", ct, "a window that the user sets over a state is in the "
             "state's modality units", STATE, state=make.state(ct, window=("100", "600"), **own),
             window=[200, 300], sums=[(8, 0, linear_sum("128*4+800-1024", 200, 300))])
    add_state_rest(book)


def add_state_rest(book):
    plain = make.image("state 8 bits", count(), WindowCenter="100", WindowWidth="20")
    book.add("state/no_window", plain, "a state without window shows 8 bits as stored",
             STATE + ".1.3", state=make.state(plain), sums=[(6, 4, "100"), (15, 15, "255")])
    deep = make.image("state 12 bits", count(start=200, step=8), 16, 12)
    book.add("state/no_window_deep", deep,
             "a state without window: the whole range that the modality stage can give",
             STATE + ".1.3; PS3.3 C.11.6.1", state=make.state(deep),
             sums=[(8, 0, "(200+128*8)*255/4095")])
    small = make.image("state small slope", count(step=257), 16, 16)
    book.add("state/small_slope", small, "a state's small slope and narrow window", STATE,
             state=make.state(small, window=("3", "6"), RescaleSlope="0.0001",
                              RescaleIntercept="0", RescaleType="US"),
             sums=[(8, 0, linear_sum("0.0001*128*257", 3, 6))])
    bits = make.image("state 1 bit", (count() % 3 == 0) * 1, allocated=1)
    book.add("state/1_bit", bits, "a state over a 1-bit image", STATE, state=make.state(bits),
             sums=[(0, 0, "255"), (0, 1, "0")])
    book.add("state/1_bit_inverse", bits, "an inverse state over a 1-bit image", STATE,
             state=make.state(bits, shape="INVERSE"), sums=[(0, 0, "0"), (0, 1, "255")])
    turned = make.image("state 1 bit turned", corners() > 99, allocated=1)
    book.add("state/1_bit_turned", turned, "a state with a turn over a 1-bit image", STATE,
             state=make.state(turned, ImageRotation=90, ImageHorizontalFlip="N"),
             sums=[(0, 15, "255"), (0, 8, "0"), (15, 0, "0"), (12, 4, "255")])
    wide = make.image("state 32 bits", count(step=10_000_000), 32, 32)
    book.add("state/32_bits", wide, "a state's window over 32 bits", STATE,
             state=make.state(wide, window=("1000000000", "2000000000")),
             sums=[(8, 0, linear_sum(1280000000, 1000000000, 2000000000))])


def add_state_frames(book):
    frames = np.stack([np.full((16, 16), 40), count(), count()[::-1]])
    made = make.image("state frames", frames, frames=3)
    listed = make.state(made, frames=[2], window=("100", "80"))
    listed.DisplayedAreaSelectionSequence[0].ReferencedImageSequence = Sequence(
        [make.reference(made, [2])])
    book.add("state/frame_listed", made, "a state that lists frame 2, on frame 2", STATE,
             state=listed, frame=1, sums=[(6, 4, linear_sum(100, 100, 80))])
    book.add("state/frame_not_listed", made, "the same on frame 3: it does not apply", STATE,
             state=listed, frame=2, sums=[(9, 4, "100")])
    two = make.state(made)
    items = [make.item(ReferencedImageSequence=Sequence([make.reference(made, [number])]),
                       WindowCenter=centre, WindowWidth="50")
             for number, centre in ((2, "60"), (3, "200"))]
    two.SoftcopyVOILUTSequence = Sequence(items)
    for frame, centre, row in ((1, 60, 4), (2, 200, 3)):
        value = int(frames[frame][row, 0])
        book.add(f"state/window_of_frame_{frame + 1}", made,
                 "a state with a window for each of two frames", STATE, state=two, frame=frame,
                 sums=[(row, 0, linear_sum(value, centre, 50))])


def groups_of(slope, intercept, centre, width):
    made = make.item()
    if slope:
        made.PixelValueTransformationSequence = make.sequence(
            RescaleIntercept=intercept, RescaleSlope=slope, RescaleType="US")
    if centre:
        made.FrameVOILUTSequence = make.sequence(WindowCenter=centre, WindowWidth=width)
    return made


def add_functional_groups(book):
    pixels = np.stack([count(), count(), count()])
    own = (("1", "0", "100", "80"), ("2", "-100", "150", "200"), ("0.5", "10", "60", "40"))

    def enhanced(name, shared, each, **more):
        made = make.image(name, pixels, 16, 12, frames=3, sop_class=make.ENHANCED_CT, **more)
        made.SharedFunctionalGroupsSequence = Sequence([groups_of(*shared)])
        made.PerFrameFunctionalGroupsSequence = Sequence([groups_of(*one) for one in each])
        return made

    nothing = (None, None, None, None)
    each = enhanced("groups of frames", nothing, own)
    shared = enhanced("shared groups", own[1], [nothing] * 3)
    mixed = enhanced("mixed groups", ("2", "-100", None, None),
                     [(None, None) + one[2:] for one in own])
    for name, made, reason, settings in (
            ("own", each, "each frame by its own slope and window", own),
            ("shared", shared, "all frames by the shared groups", [own[1]] * 3),
            ("mixed", mixed, "a shared slope, a window for each frame",
             [own[1][:2] + one[2:] for one in own])):
        for frame in (0, 1, 2) if name == "own" else (2,):
            slope, intercept, centre, width = settings[frame]
            book.add(f"frames/{name}_{frame + 1}", made, reason,
                     "PS3.3 C.7.6.16.2.9, C.7.6.16.2.10", frame=frame,
                     sums=[(6, 4, linear_sum(f"{slope}*100+({intercept})", centre, width))])
    add_frames(book)


def add_frames(book):
    frames = np.stack([count(start=0), count(start=1000, step=2), count(start=3000, step=4)])
    made = make.image("frames of other ranges", frames, 16, 12, frames=3)
    for frame in (0, 2):
        book.add(f"frames/range_{frame + 1}", made, "without a window each frame has its own range",
                 "PS3.3 C.11.2", frame=frame, sums=[(0, 0, "0"), (15, 15, "255"), (0, 5, "5")])
    bits = np.stack([(count(5, 7) % 2), (count(5, 7) % 3 == 0) * 1, (count(5, 7) % 5 == 0) * 1])
    one_bit = make.image("1-bit frames", bits, 1, frames=3)
    for frame, step in ((1, 3), (2, 5)):
        book.add(f"frames/1_bit_inside_byte_{frame + 1}", one_bit,
                 "1-bit frames follow each other without gaps: this one begins inside a byte",
                 "PS3.5 8.2, D", frame=frame,
                 sums=[(0, 0, "255"), (0, 1, "0"), (0, step, "255")])
    bytes_ = make.image("frames of bytes", np.stack([count(5, 5), count(5, 5) + 50]), frames=2)
    book.add("frames/odd_length", bytes_, "frames of an odd number of bytes", "PS3.5 8.1.1",
             frame=1, sums=[(0, 0, "50"), (4, 4, "24+50")])


def add_cases(book):
    for add in (add_modality_tables, add_voi_tables, add_presentation_tables, add_state_stages,
                add_state_frames, add_functional_groups):
        add(book)
