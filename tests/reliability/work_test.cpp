// Files that ask for endless work, or for work that grows faster than they do.
#include "foundation/types/limits.h"
#include "tests/reliability/hostile_image.h"
#include "tests/reliability/hostile_streams.h"
#include "tests/reliability/measured_child.h"
#include "tests/support/every_route.h"
#include "tests/support/temporary_file.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr std::uint32_t kAnnotations = 0x00700001;

std::string Repeated(std::string_view text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

DicomBuilder Image() {
    return HostileImage({.rows = "16", .columns = "16"});
}

DicomBuilder& AddPixels(DicomBuilder& file) {
    return file.Add(tag::kPixelData, "OW", std::string(512, 'x'));
}

DicomBuilder DescendingElements() {
    auto file = DicomBuilder::Part10(kExplicitUid);
    for (std::uint32_t tag = 0x00420000; tag > 0x00100000; tag -= 12) file.Add(tag, "LO", "x ");
    return file;
}

DicomBuilder EmptyItems() {
    auto file = Image();
    file.Sequence(tag::kReferencedImageSequence);
    for (int i = 0; i < 200'000; ++i) file.Item(0);
    file.EndSequence();
    return std::move(AddPixels(file));
}

/// Each text has to be decoded, by a list of character sets that is long.
DicomBuilder TextsUnderALongCharacterSet() {
    auto file = DicomBuilder::Part10(kExplicitUid);
    file.Header(tag::kSpecificCharacterSet, "UN", 1'000'000)
        .Raw(Repeated("ISO 2022 IR 100\\", 62'500));
    file.Sequence(tag::kReferencedImageSequence);
    for (int i = 0; i < 20'000; ++i) file.Item(10).Add(tag::kPatientName, "LO", "\xE4 ");
    file.EndSequence();
    return file;
}

DicomBuilder ManyValues() {
    auto file = Image();
    file.Header(tag::kWindowCenter, "UN", 2'000'000).Raw(Repeated("1\\", 1'000'000));
    file.Header(tag::kWindowWidth, "UN", 2'000'000).Raw(Repeated("\\\\", 1'000'000));
    return std::move(AddPixels(file));
}

DicomBuilder EmptyFragments() {
    auto file = HostileImage({.frames = "300000"});
    file.Header(tag::kPixelData, "OB", 0xFFFFFFFF);
    for (int i = 0; i < 300'000; ++i) file.Item(0);
    file.EndSequence();
    return file;
}

/// Every side crosses every one of 8,192 rows.
DicomBuilder Polygon(std::size_t sides) {
    auto file = HostileImage({.rows = "8192", .columns = "64", .bits = "8"});
    file.Add(tag::kShutterShape, "CS", "POLYGONAL ");
    const std::string zigzag = Repeated("1\\1\\8192\\64\\", sides / 2);
    file.Header(tag::kVerticesOfThePolygonalShutter, "UN",
                static_cast<std::uint32_t>(zigzag.size()))
        .Raw(zigzag);
    return std::move(file.Add(tag::kPixelData, "OB", std::string(64, 'x')));
}

DicomBuilder PaletteThatPointsAtItself() {
    auto file = Image();
    for (const std::uint32_t colour : {0U, 1U, 2U})
        file.Words(tag::kRedPaletteColorLookupTableDescriptor + colour, "US", {0, 0, 16});
    file.Words(tag::kSegmentedRedPaletteColorLookupTableData, "OW", {0, 0, 2, 2, 0, 0});
    return std::move(AddPixels(file));
}

DicomBuilder Annotations(int objects, int points) {
    auto file = Image();
    file.Sequence(kAnnotations).Item().Sequence(tag::kTextObjectSequence);
    for (int i = 0; i < objects; ++i) {
        file.Item(32).Add(0x00700006, "ST", "text");
        file.Header(0x00700014, "FL", 8).Number(0, 8).Raw("    ");
    }
    file.EndSequence().Sequence(tag::kGraphicObjectSequence);
    for (int i = 0; i < objects; ++i) {
        file.Item().Add(0x00700005, "CS", "PIXEL ").Us(0x00700020, 2);
        file.Header(0x00700022, "UN", static_cast<std::uint32_t>(8 * points));
        for (int p = 0; p < points; ++p)
            file.Number(p % 2 == 0 ? 0x00000000 : 0x41700000, 4).Number(0x41000000, 4);
        file.Add(tag::kGraphicType, "CS", i % 2 == 0 ? "POLYLINE" : "INTERPOLATED");
        file.Add(0x00700024, "CS", "Y ").EndItem();
    }
    file.EndSequence().EndItem().EndSequence();
    return std::move(AddPixels(file));
}

/// Beginnings of data sets all over, each of which leads on for long and then breaks off.
DicomBuilder Junk() {
    DicomBuilder file(false);
    file.Raw(std::string(200, 'j'));
    for (std::uint32_t i = 0; i < 300'000; ++i) file.Add(0x00080000 + i, "", "12");
    return std::move(file.Raw("jj"));
}

TEST(Work, GrowsWithTheFileAndNoFaster) {
    struct Case {
        const char* what;
        DicomBuilder file;
    };
    const Case cases[] = {
        {"elements in falling order", DescendingElements()},
        {"empty items", EmptyItems()},
        {"texts under a long character set", TextsUnderALongCharacterSet()},
        {"values of one attribute", ManyValues()},
        {"empty fragments", EmptyFragments()},
        {"a polygon of the most crossings", Polygon(8'000)},
        {"a polygon of more", Polygon(80'000)},
        {"a palette that points at itself", PaletteThatPointsAtItself()},
        {"texts and graphics", Annotations(10'000, 2)},
        {"points of a graphic", Annotations(2, 500'000)},
        {"beginnings of data sets", Junk()},
    };
    for (const auto& c : cases) {
        const double megabytes = static_cast<double>(c.file.Size()) / 1e6;
        ExpectCost(c.what, 1.0 + megabytes, [&] { ThroughEverything(c.file.Bytes()); });
    }
}

TEST(Work, ScansOfAJpegStreamAreCounted) {
    const auto stream = JpegOfEmptyScans({.scans = 4000, .side = 4096});
    ExpectCost("scans", 3.0, [&] {
        auto source = stream;
        _IMAGE_PROCESS_PARAM param;
        param.transferSyntax = kJpegBaseline;
        param.photometric = "MONOCHROME2";
        param.rows = param.columns = 4096;
        param.samplesPerPixel = 1;
        param.bitsAllocated = 8;
        ForgetLimit();
        (void)DecodedOf(param, source);
        if (LatestLimit() != Limit::kMostScans) std::abort();
    });
}

/// A fetch walks along the fragments ahead of its frame.
TEST(Work, AFrameCostsNoMoreThanItsFileIsLong) {
    constexpr int kFrames = 300'000;
    const ImageClaim claim{.rows = "4", .columns = "4", .bits = "8", .frames = "300000"};
    for (const auto syntax : {kRleUid, kExplicitUid}) {
        const TemporaryFile file(HostileImage(claim, syntax, kFrames).Bytes());
        ExpectCost(std::string(syntax), 2.0, [&] {
            CDcmApp app;
            CxDcmParser parser;
            (void)parser.Initialize(&app, file.Path(), 0);
            for (int i = kFrames - 50; i < kFrames; ++i) (void)FrameOf(parser, i);
        });
    }
}

}  // namespace
}  // namespace quorvex::test
