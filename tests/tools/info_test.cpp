// What `quorvex info` says of files, as text and as JSON of both kinds.
#include "tests/support/corpus.h"
#include "tests/support/dicom_builder.h"
#include "tests/tools/run_command.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

TEST(InfoCommand, ShowsElementsAndSummary) {
    const auto shown = OutputOf({"info", kSlice, kState});
    for (const auto* part :
         {"512 x 512, 1 frame", "12 bits in 16, unsigned", "MONOCHROME2", "centre 40, width 400",
          "value x 1 + -1024", "Explicit VR Little Endian", "(0010,0010) PN PatientName",
          "[Phantom^Quorvex]", "[Nodule, 12 mm]", "    item 1\n",
          "Nodule, 12 mm, anchorUnits PIXEL",
          "CIRCLE, units PIXEL, points 2, filled N, data 123 289 123 303"})
        EXPECT_TRUE(Has(shown, part)) << part;
}

// A strict reader of JSON, so that nothing of ours judges itself.
TEST(InfoCommand, GivesValidJsonWhateverTheBytes) {
    const ScratchFolder folder;
    std::string evil;
    for (int c = 0; c < 256; ++c) evil += static_cast<char>(c);
    auto file = DicomBuilder::Part10(kExplicitUid);
    file.Add(tag::kSpecificCharacterSet, "CS", "ISO_IR 100")
        .Sequence(tag::kReferencedImageSequence);
    for (const bool isFull : {false, true, false, true, false}) {
        file.Item();
        if (isFull) file.Add(tag::kPatientName, "PN", evil);
        file.EndItem();
    }
    file.EndSequence().Add(0x00090010, "LO", evil).Add(0x00091001, "FD", evil);
    file.Add(0x00091002, "UN", evil).Add(0x00091003, "AT", evil);
    const auto path = folder.Write("evil.dcm", file.Bytes());
    const auto shown =
        ExpectStatus(3, {"info", path, kState, folder.Path("missing"), "--json"}).output;
    EXPECT_EQ(std::ranges::count(shown, '\n'), 3);
    const auto check =
        "python3 -c 'import json, sys\n"
        "read = [json.loads(l) for l in open(sys.argv[1], encoding=\"utf-8\")]\n"
        "items = [e for e in read[0][\"elements\"] if e[\"tag\"] == \"00081140\"]\n"
        "assert [len(i) for i in items[0][\"items\"]] == [0, 1, 0, 1, 0]\n"
        "assert read[2][\"error\"][\"code\"] == 10' " +
        folder.Write("shown.json", shown);
    EXPECT_EQ(std::system(check.c_str()), 0);
}

TEST(InfoCommand, OpensWithWhatTheObjectIs) {
    struct {
        std::string file;
        std::vector<const char*> parts;
    } const kCases[] = {
        {kSlice,
         {"object          CT Image Storage (1.2.840.10008.5.1.4.1.1.2)\n", "modality        CT\n",
          "patient         Phantom^Quorvex, QX0001\n", "study           2026-01-05\n",
          "to show it      this file alone\n"}},
        {kState, {"Grayscale Softcopy Presentation State Storage", "the images that it refers to"}},
    };
    for (const auto& c : kCases)
        for (const auto* part : c.parts) EXPECT_TRUE(Has(InfoOf(c.file), part)) << part;
    const ScratchFolder folder;
    const ImageFacts palette{.photometric = "PALETTE COLOR"};
    const auto path = folder.Write(
        "coded.dcm", EncapsulatedFile("1.2.840.10008.1.2.4.102", palette, {Bytes(8, 'x')}));
    EXPECT_TRUE(Has(
        InfoOf(path),
        "a decoder for MPEG-4 AVC/H.264 High Profile / Level 4.1, which this build does not have; "
        "a palette, which it does not carry\n"));
}

TEST(InfoCommand, ShowsWantedElementsOnlyAndReadsStandardInput) {
    const auto expected = "(0028,0010) US Rows                                 512\n\n";
    for (const auto* tag : {"rows", "Rows", "0028,0010", "(0028,0010)", "00280010"})
        EXPECT_EQ(OutputOf({"info", kSlice, "--tag", tag}), kSlice + '\n' + expected) << tag;
    const auto nested = OutputOf({"info", kState, "--tag", "UnformattedTextValue"});
    for (const auto* part : {"GraphicAnnotationSequence", "        item 1\n", "Nodule, 12 mm"})
        EXPECT_TRUE(Has(nested, part)) << nested;
    EXPECT_EQ(std::ranges::count(nested, '\n'), 7) << nested;
    EXPECT_TRUE(Has(OutputOf({"info", kSlice, "--tag", "Nothing"}), "(none of these elements)"));
    ExpectStatus(2, {"info", kSlice, "--tag", "0028.0010"});
    const ScratchFolder folder;
    const auto line = kCommand + " info - --tag Rows <" + kSlice + " >" + folder.Path("said");
    EXPECT_EQ(std::system(line.c_str()), 0);
    EXPECT_EQ(ReadAll(folder.Path("said")), std::string("standard input\n") + expected);
    EXPECT_EQ(std::ranges::count(OutputOf({"info", kSamples, "--json", "--tag", "Rows"}), '\n'), 4);
}

// Implicit little endian in UN, whatever the data set is (PS3.5 6.2.2).
TEST(InfoCommand, ReadsWhatWasStoredAsUnknown) {
    const ScratchFolder folder;
    auto file = DicomBuilder::Part10(kExplicitUid);
    file.Add(tag::kPatientName, "UN", "Doe^Jane ").Add(tag::kRows, "UN", "\2\1");
    const auto path = folder.Write("unknown.dcm", file.Bytes());
    const auto shown = InfoOf(path);
    for (const auto* part : {"UN PatientName                          [Doe^Jane]\n",
                             "UN Rows                                 258\n"})
        EXPECT_TRUE(Has(shown, part)) << shown;
}

// Values by hand, from PS3.18 Annex F.
TEST(InfoCommand, WritesTheStandardsJson) {
    struct {
        std::uint32_t tag;
        const char* vr;
        std::string value;
        const char* json;
    } const kCases[] = {
        {tag::kPatientName, "PN", "A^B=C=D\\=E",
         R"("PN","Value":[{"Alphabetic":"A^B","Ideographic":"C","Phonetic":"D"},)"
         R"({"Ideographic":"E"}])"},
        {tag::kPatientID, "LO", {}, R"("LO")"},
        {tag::kImageType, "CS", "A\\\\B ", R"("CS","Value":["A",null,"B"])"},
        {tag::kWindowCenter, "DS", "+1.50\\.5\\007\\1e3\\x ",
         R"("DS","Value":[1.50,0.5,7,1e3,"x"])"},
        {tag::kPatientComments, "LT", "a\\b\r\n", R"("LT","Value":["a\\b\u000d\u000a"])"},
        {0x00280009, "AT", std::string("\x18\0\x63\x10", 4), R"("AT","Value":["00181063"])"},
        {0x00189073, "FD", std::string("\0\0\0\0\0\0\xF8\x7F", 8), R"("FD","Value":["nan"])"},
        {0x00720082, "SV", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F",
         R"("SV","Value":["9223372036854775807"])"},
        {0x00091001, "OB", std::string("\0\1\2\xFF", 4), R"("OB","InlineBinary":"AAEC/w==")"},
        {tag::kRows, "UN", "\2\1", R"("US","Value":[258])"},
    };
    const ScratchFolder folder;
    for (const auto& c : kCases) {
        auto file = DicomBuilder::Part10(kExplicitUid);
        file.Add(c.tag, c.vr, c.value);
        const auto path = folder.Write("one.dcm", file.Bytes());
        std::array<char, 16> key{};
        std::snprintf(key.data(), key.size(), "%08X", c.tag);
        EXPECT_EQ(OutputOf({"info", "--dicom-json", path}),
                  "{\"" + std::string(key.data()) + R"(":{"vr":)" + c.json + "}}\n");
    }
    EXPECT_TRUE(Has(
        OutputOf({"info", "--dicom-json", kSlice}),
        R"("7FE00010":{"vr":"OW","BulkDataURI":"file://)" + kSamples + R"(ct.dcm#/7FE00010"}})"));
}

TEST(InfoCommand, WritesTheStandardsJsonAsPydicomDoes) {
    if (std::system("/usr/bin/python3 -c 'import pydicom' 2>/dev/null") != 0)
        GTEST_SKIP() << "pydicom is not installed";
    const ScratchFolder folder;
    std::string names;
    for (const auto& path : RealFiles()) names += path.string() + '\n';
    const auto list = folder.Write("names", names);
    const auto line = "/usr/bin/python3 " QUORVEX_SOURCE_DIR "/tests/tools/json_model.py " +
                      kCommand + " <" + list + " >" + folder.Path("said");
    EXPECT_EQ(std::system(line.c_str()), 0);
    const auto said = ReadAll(folder.Path("said"));
    EXPECT_TRUE(said.starts_with("compared ")) << said;
}

}  // namespace
}  // namespace quorvex::test
