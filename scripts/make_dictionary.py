#!/usr/bin/python3
"""Writes foundation/dicom/model/dictionary_table.inc: the standard's data elements, sorted by tag.

The list comes from the installed pydicom, which generates it from DICOM PS3.6 and PS3.7. Run it by
hand when that list has grown, and commit the result:

    scripts/make_dictionary.py > foundation/dicom/model/dictionary_table.inc
"""

from pydicom._dicom_dict import DicomDictionary, RepeatersDictionary

OPEN_VRS = {
    "US or SS": ("US", "kUsOrSs"),
    "US or OW": ("US", "kUsOrOw"),
    "US or SS or OW": ("US", "kUsOrSsOrOw"),
    "OB or OW": ("OW", "kObOrOw"),
}


def fields(vr, vm, keyword):
    vr, choice = OPEN_VRS.get(vr, (vr, "kFixed"))
    return f'MC_VR_{vr}, VrChoice::{choice}, "{vm}", "{keyword}"'


def is_data(entry):
    return entry[0] != "NONE"  # item and delimiter tags have no VR


def main():
    print("// Made by scripts/make_dictionary.py; not for editing.")
    print("// clang-format off")
    print("constexpr DictionaryEntry kEntries[] = {")
    for tag, entry in sorted(DicomDictionary.items()):
        if is_data(entry):
            print(f"{{0x{tag:08X}, {fields(entry[0], entry[1], entry[4])}}},")
    print("};")
    print("constexpr RepeatingEntry kRepeating[] = {")
    for pattern, entry in sorted(RepeatersDictionary.items()):
        mask = "".join("0" if c == "x" else "F" for c in pattern)
        tag = pattern.replace("x", "0")
        print(f"{{0x{mask}, {{0x{tag}, {fields(entry[0], entry[1], entry[4])}}}}},")
    print("};")
    print("// clang-format on")


main()
