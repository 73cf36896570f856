"""Palettes, colour samples and how photometric interpretations are spelt."""
import numpy as np

from . import objects as make
from .patterns import count

PALETTE = "PS3.3 C.7.6.3.1.5, C.7.6.3.1.6"
SEGMENTED = "PS3.3 C.7.9.2"
SUPPLEMENT = "PS3.3 C.7.6.19, C.8.16.2.1.1.1"
YBR = "PS3.3 C.7.6.3.1.2"


def add_palettes(book):
    pixels, steps = count(), np.arange(256)
    red, green, blue = steps, steps[::-1], (steps * 5) % 256
    for name, bits, factor in (("16_bits", 16, 257), ("8_bits", 8, 1)):
        made = make.image("palette " + name, pixels, photometric="PALETTE COLOR")
        make.add_palette(made, 0, bits, (red * factor, green * factor, blue * factor))
        book.add(f"palette/{name}", made, "the highest entry is 255, white is white", PALETTE,
                 sums=[(0, 0, ("0", "255", "0")), (0, 3, ("3", "252", "15")),
                       (15, 15, ("255", "0", "251"))])
    loose = make.image("palette 8 bits in words", pixels, photometric="PALETTE COLOR")
    make.add_palette(loose, 0, 8, (red, green, blue), layout="words")
    book.add("palette/8_bits_in_words", loose, "8-bit entries, one a word", PALETTE,
             sums=[(0, 3, ("3", "252", "15"))])
    odd = make.image("palette odd", pixels % 31, photometric="PALETTE COLOR")
    make.add_palette(odd, 0, 8, (red[:31] * 8, green[:31], blue[:31]))
    book.add("palette/8_bits_odd_count", odd, "31 entries of 8 bits", PALETTE,
             sums=[(1, 14, (str(30 * 8), "225", "150"))])
    first = make.image("palette first", pixels, photometric="PALETTE COLOR")
    make.add_palette(first, 100, 16, (red[:50] * 257 * 5, green[:50] * 257, blue[:50] * 257))
    book.add("palette/first_100", first, "indices below and above the table take its ends",
             PALETTE, sums=[(0, 0, ("0", "255", "0")), (6, 9, ("25", "250", "25")),
                            (15, 15, ("245", "206", "245"))])
    signed = make.image("palette signed", count(start=-128), signed=True,
                        photometric="PALETTE COLOR")
    make.add_palette(signed, -128, 16, (red * 257, green * 257, blue * 257), signed=True)
    book.add("palette/first_signed", signed, "a first value mapped below 0", PALETTE,
             sums=[(0, 0, ("0", "255", "0")), (0, 3, ("3", "252", "15"))])
    deep = make.image("palette deep", count(step=257), 16, 16, photometric="PALETTE COLOR")
    whole = np.arange(65536)
    make.add_palette(deep, 0, 16, (whole, whole[::-1], (whole // 257) * 257))
    book.add("palette/65536_entries", deep, "65536 entries, counted as 0", PALETTE,
             sums=[(0, 3, ("3", "252", "3")), (15, 15, ("255", "0", "255"))])
    fine = make.image("palette fine", pixels, photometric="PALETTE COLOR")
    make.add_palette(fine, 0, 16, (steps * 200, steps * 256, steps * 100 + 7))
    book.add("palette/16_bits_any", fine, "entries between the 8-bit levels", PALETTE,
             sums=[(8, 0, ("128*200*255/65535", "128*256*255/65535", "12807*255/65535"))])


def add_segmented(book):
    made = make.image("segmented", count(), photometric="PALETTE COLOR")
    rise = [0, 1, 0, 1, 255, 255 * 257]
    make.add_segmented_palette(made, 256, (
        rise, [0, 1, 65535, 1, 255, 0], [0, 2, 0, 257, 1, 254, 255 * 257]))
    book.add("palette/segmented_linear", made, "discrete and linear segments", SEGMENTED,
             sums=[(0, 3, ("3", "252", "3")), (15, 15, ("255", "0", "255"))])
    # Two discrete segments, at bytes 0 and 12, drawn again by indirect ones.
    four = [0, 4, 0, 65535, 0, 32896, 0, 2, 257, 514]
    again = four + [2, 1, 0, 0, 2, 1, 12, 0]
    indirect = make.image("indirect", count(4, 4) % 12, photometric="PALETTE COLOR")
    make.add_segmented_palette(indirect, 12, (again, again, again))
    book.add("palette/segmented_indirect", indirect, "indirect segments repeat earlier ones",
             SEGMENTED, sums=[(0, 1, "255"), (0, 3, "128"), (1, 0, "1"), (1, 3, "255"),
                              (2, 2, "1"), (2, 3, "2")])


def add_supplement(book):
    pixels = count()
    made = make.image("supplemental", pixels, 16, 16, WindowCenter="100", WindowWidth="200",
                      PixelPresentation="COLOR")
    make.add_palette(made, 200, 16, ((np.arange(56) * 257), np.full(56, 65535), np.zeros(56)))
    book.add("palette/supplemental", made, "values from 200 up are coloured, those below are grey",
             SUPPLEMENT, sums=[(6, 4, "((100-99.5)/199+0.5)*255"), (12, 8, ("0", "255", "0")),
                               (12, 18 - 8, ("2", "255", "0"))])
    book.add("palette/supplemental_windowed", made, "a window changes the grey values alone",
             SUPPLEMENT, window=[50, 40], sums=[(3, 2, "((50-49.5)/39+0.5)*255"),
                                                (13, 0, ("8", "255", "0"))])


def ybr_sum(y, cb, cr):
    return (f"min(max({y}+1.402*({cr}-128),0),255)",
            f"min(max({y}-0.344136*({cb}-128)-0.714136*({cr}-128),0),255)",
            f"min(max({y}+1.772*({cb}-128),0),255)")


def partial_sum(y, cb, cr):
    return (f"min(max(1.164384*({y}-16)+1.596027*({cr}-128),0),255)",
            f"min(max(1.164384*({y}-16)-0.391762*({cb}-128)-0.812968*({cr}-128),0),255)",
            f"min(max(1.164384*({y}-16)+2.017232*({cb}-128),0),255)")


def extremes():
    """Each of Y, Cb and Cr at its ends and about its middle, in pairs of equal chroma."""
    levels = (0, 16, 128, 235, 252, 255)
    chroma = (0, 16, 128, 130, 240, 255)
    made = [(y, cb, cr) for cb in chroma for cr in chroma for y in levels]
    return np.array(made).reshape(12, 18, 3)


def pack_422(made, samples):
    pairs = samples.reshape(-1, 2, 3)
    words = np.stack([pairs[:, 0, 0], pairs[:, 1, 0], pairs[:, 0, 1], pairs[:, 0, 2]], axis=1)
    make.set_pixels(made, words.astype(np.uint8).tobytes())
    return made


def add_ybr(book):
    samples = extremes()
    spots = ((0, 0), (0, 5), (4, 3), (6, 10), (11, 17), (5, 12))

    def sums(by):
        return [(r, c, by(*(int(value) for value in samples[r, c]))) for r, c in spots]

    full = make.image("ybr full", samples, photometric="YBR_FULL")
    book.add("colour/ybr_full", full, "colours outside R, G, B are clamped, not wrapped", YBR,
             sums=sums(ybr_sum))
    planes = make.image("ybr planes", samples, photometric="YBR_FULL", PlanarConfiguration=1)
    make.set_pixels(planes, samples.transpose(2, 0, 1).astype(np.uint8).tobytes())
    book.add("colour/ybr_full_planes", planes, "the same by planes", YBR, sums=sums(ybr_sum))
    run_length = make.image("ybr rle", samples, photometric="YBR_FULL")
    make.compress_rle(run_length, samples)
    book.add("colour/ybr_full_rle", run_length, "the same by RLE", YBR + "; PS3.5 G",
             sums=sums(ybr_sum))
    for name, photometric, by in (("422", "YBR_FULL_422", ybr_sum),
                                  ("partial_422", "YBR_PARTIAL_422", partial_sum)):
        made = pack_422(make.image("ybr " + name, samples, photometric=photometric), samples)
        book.add(f"colour/ybr_{name}", made, "two pixels share Cb and Cr; extremes are clamped",
                 YBR, sums=sums(by))
    bright = np.stack([np.full((16, 16), 252), np.full((16, 16), 130), count()], axis=2)
    book.add("colour/ybr_bright", make.image("ybr bright", bright, photometric="YBR_FULL"),
             "white with a little colour stays white", YBR,
             sums=[(8, 2, ybr_sum(252, 130, 130))])


def add_rgb(book):
    pixels = np.stack([count(), count()[::-1], (count() * 3) % 256], axis=2)
    rgb = [(0, 0, ("0", "240", "0")), (6, 4, ("100", "148", "44"))]
    made = make.image("rgb", pixels, photometric="RGB")
    book.add("colour/rgb", made, "R, G, B as stored", YBR, sums=rgb)
    planes = make.image("rgb planes", pixels, photometric="RGB", PlanarConfiguration=1)
    make.set_pixels(planes, pixels.transpose(2, 0, 1).astype(np.uint8).tobytes())
    book.add("colour/rgb_planes", planes, "R, G, B by planes", "PS3.3 C.7.6.3.1.3", sums=rgb)
    run_length = make.image("rgb rle", pixels, photometric="RGB")
    make.compress_rle(run_length, pixels)
    book.add("colour/rgb_rle", run_length, "R, G, B by RLE", "PS3.5 G", sums=rgb)
    windowed = make.image("rgb window", pixels, photometric="RGB", WindowCenter="100",
                          WindowWidth="20")
    book.add("colour/rgb_window", windowed, "a window does not apply to colour",
             "PS3.3 C.11.2.1.2", sums=rgb)
    grey = make.image("grey rle", count())
    make.compress_rle(grey, count())
    book.add("colour/grey_rle", grey, "grey by RLE", "PS3.5 G", sums=[(6, 4, "100")])
    big = make.image("big endian", count(step=16), 16, 12, WindowCenter="2048",
                     WindowWidth="4096")
    make.swap_to_big_endian(big)
    book.add("colour/grey_big_endian", big, "words of the other byte order", "PS3.5 A.3",
             sums=[(6, 4, "((1600-2047.5)/4095+0.5)*255")])
    for name, stored, factor in (("16_bits", 16, 257), ("12_of_16_bits", 12, 16)):
        deep = make.image("rgb " + name, pixels * factor, 16, stored, photometric="RGB")
        top = (1 << stored) - 1
        book.add(f"colour/rgb_{name}", deep, "deeper colour, over all that the bits can hold", YBR,
                 sums=[(6, 4, tuple(f"{level}*{factor}*255/{top}" for level in (100, 148, 44)))])
    frames = np.stack([pixels, 255 - pixels])
    several = make.image("rgb frames", frames, frames=2, photometric="RGB")
    book.add("colour/rgb_frame_2", several, "the second frame of a colour image", "PS3.3 C.7.6.6",
             frame=1, sums=[(6, 4, ("155", "107", "211"))])


def add_spellings(book):
    """The values are in capitals by the standard; writers are not always."""
    pixels = count()
    colours = np.stack([pixels, pixels[::-1], pixels], axis=2)
    rows = (("monochrome2", pixels, (0, 3, "3")), ("Monochrome1", pixels, (0, 3, "252")),
            ("rgb", colours, (0, 3, ("3", "243", "3"))),
            (" RGB ", colours, (0, 3, ("3", "243", "3"))),
            ("ybr_full", colours, (8, 8, ybr_sum(136, 120, 136))))
    for word, values, spot in rows:
        made = make.image("spelling " + word, values, photometric=word)
        name = word.strip().lower() + ("_blanks" if word != word.strip() else "")
        book.add(f"spelling/{name}", made, f"Photometric Interpretation '{word}'",
                 "PS3.5 6.2 (CS: capitals, blanks do not count)", sums=[spot])
    palette = make.image("spelling palette", pixels, photometric="palette color")
    make.add_palette(palette, 0, 16, [np.arange(256) * 257] * 3)
    book.add("spelling/palette_color", palette, "Photometric Interpretation 'palette color'",
             "PS3.5 6.2 (CS: capitals, blanks do not count)", sums=[(0, 3, "3")])


def add_cases(book):
    for add in (add_palettes, add_segmented, add_supplement, add_ybr, add_rgb, add_spellings):
        add(book)
