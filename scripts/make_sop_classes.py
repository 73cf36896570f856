#!/usr/bin/python3
"""Writes tools/sop_class/sop_class_table.inc: the standard's storage classes by UID.

The list comes from the installed pydicom, which generates it from DICOM PS3.6 Annex A; those that the
standard has got since stand below. Run it by hand, and commit the result:

    scripts/make_sop_classes.py > tools/sop_class/sop_class_table.inc
"""

from pydicom._uid_dict import UID_dictionary

WIDTH = 100
ROOT = "1.2.840.10008.5.1.4.1.1."
LATER = {
    ROOT + "6.3": "Photoacoustic Image Storage",
    ROOT + "9.1.4": "General 32-bit ECG Waveform Storage",
    ROOT + "9.100.1": "Waveform Presentation State Storage",
    ROOT + "9.100.2": "Waveform Acquisition Presentation State Storage",
    ROOT + "11.12": "Variable Modality LUT Softcopy Presentation State Storage",
    ROOT + "66.7": "Label Map Segmentation Storage",
    ROOT + "66.8": "Height Map Segmentation Storage",
    ROOT + "77.1.8": "Confocal Microscopy Image Storage",
    ROOT + "77.1.9": "Confocal Microscopy Tiled Pyramidal Image Storage",
    ROOT + "88.77": "Waveform Annotation SR Storage",
}


def main():
    names = dict(LATER)
    for uid, (name, kind, *_) in UID_dictionary.items():
        if kind == "SOP Class" and "Storage" in name and "Commitment" not in name:
            names[uid] = name
    print("// Made by scripts/make_sop_classes.py; not for editing.")
    print("// clang-format off")
    print("constexpr SopClass kSopClasses[] = {")
    for uid, name in sorted(names.items()):
        row = f'    {{"{uid}", "{name}"}},'
        print(row if len(row) <= WIDTH else row.replace(", ", ",\n     ", 1))
    print("};")
    print("// clang-format on")


main()
