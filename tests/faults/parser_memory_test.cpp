// Failing memory under the parser and its palettes.
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxPaletteLUT.h"
#include "quorvex/Tags.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"

namespace quorvex {
namespace {

using namespace test;

/// A parser that has opened nothing yet, and all that it may be given and gives.
struct Parsing {
    explicit Parsing(const Kind& kind) : path(kind.path), bytes(kind.bytes), object(kind.object) {}
    [[nodiscard]] std::string Look() const {
        const auto* header = parser.GetHeader();
        return (header == nullptr ? std::string("no header") : test::Look(*header)) +
               std::to_string(parser.GetFrameCount()) + block.Look() + bitmap.Look() +
               std::to_string(place) + std::to_string(length) + std::to_string(location) +
               text.ToUtf8();
    }
    /// The first frame too, decoded.
    [[nodiscard]] std::string LookAtAll() {
        GivenBlock frame;
        const auto result = parser.GetAFrame(0, frame.data, frame.size, 0);
        return Look() + std::to_string(result) + frame.Look();
    }
    bool Open(int readWhole) {
        return parser.Initialize(&app, path.Give(), readWhole) == QVM_SUCCESS;
    }
    bool FetchLast() {
        block.Drop();
        return parser.GetAFrame(parser.GetFrameCount() - 1, block.data, block.size, 0) ==
               QVM_SUCCESS;
    }
    bool MakeThumbnail(QUORVEX_XFERSYNTAX format, int usesDataRange) {
        block.Drop();
        bitmap.Drop();
        tagBITMAPINFOHEADER* header = nullptr;
        const auto code = parser.MakeThumbNail(0, {16, 12}, format, usesDataRange, block.data,
                                               block.size, header, bitmap.size, 80);
        bitmap.data = static_cast<unsigned char*>(static_cast<void*>(header));
        return code == QVM_SUCCESS;
    }
    bool Colour() {
        unsigned short bits = 8;
        unsigned short samples = 0;
        block.Drop();
        const auto code = parser.GetRGBBufferFromPaletteImage(pixels.data(), 36, 20, bits, samples,
                                                              text, block.data, 0);
        block.size = block.data != nullptr ? 36 * 20 * 3 : 0;
        return code == QVM_SUCCESS;
    }

    CDcmApp app;
    GivenText path;
    std::vector<unsigned char> bytes;
    CDcmObject object;
    CxDcmParser parser;
    GivenBlock block;
    GivenBlock bitmap;
    unsigned long place = 0;
    unsigned long length = 0;
    double location = -1;
    CString text;
    std::vector<unsigned char> pixels = std::vector<unsigned char>(36 * 20, 77);
};

template <int readWhole>
struct Open : Parsing {
    explicit Open(const Kind& kind) : Parsing(kind) { static_cast<void>(Parsing::Open(readWhole)); }
};

/// A parser that holds something else so far.
struct OpenOther : Open<0> {
    explicit OpenOther(const Kind& kind) : Open<0>(AllKinds().front()), from(kind) {
        path = GivenText(kind.path);
    }
    Open<0> from;
};

struct Table {
    explicit Table(const Kind& kind) : object(kind.object) {}
    [[nodiscard]] std::string Look() const {
        return std::to_string(lut.GetEntryBits()) + ' ' + std::to_string(lut.GetEntries().size()) +
               ' ' + std::to_string(lut.Lookup(9));
    }
    CDcmObject object;
    CxPaletteLUT lut{0};
};

std::string LookAtAll(Parsing& s) {
    return s.LookAtAll();
}

std::vector<Operation> Operations() {
    return {
        On<Parsing>(
            "CxDcmParser::Initialize, header", kUsable, [](Parsing& s) { return s.Open(0); },
            LookAtAll),
        On<Parsing>(
            "CxDcmParser::Initialize, whole", kUsable, [](Parsing& s) { return s.Open(1); },
            LookAtAll),
        On<OpenOther>(
            "CxDcmParser::Initialize, again", kUsable,
            [](OpenOther& s) { return s.Parsing::Open(0); }, LookAtAll),
        On<Parsing>(
            "CxDcmParser::Initialize, object", kUsable,
            [](Parsing& s) {
                return s.parser.Initialize(&s.app, &s.object, nullptr, 0, 0) == QVM_SUCCESS;
            },
            LookAtAll),
        On<Parsing>("CxDcmParser::Initialize, memory", kUsable,
                    [](Parsing& s) {
                        return s.parser.Initialize(&s.app, &s.object, s.bytes.data(),
                                                   s.bytes.size(), 132) == QVM_SUCCESS;
                    }),
        On<Open<0>>("CxDcmParser::GetAFrame, file", kOnImages,
                    [](Parsing& s) { return s.FetchLast(); }),
        On<Open<1>>("CxDcmParser::GetAFrame, object", kOnImages,
                    [](Parsing& s) { return s.FetchLast(); }),
        On<Open<0>>("CxDcmParser::GetAFrame, stored", {},
                    [](Parsing& s) {
                        s.block.Drop();
                        return s.parser.GetAFrame(0, s.block.size = 200, s.block.data) ==
                               QVM_SUCCESS;
                    }),
        On<Open<0>>("CxDcmParser::GetAFrameOffsetSize", {.notOn = "presentation state|deflated"},
                    [](Parsing& s) {
                        return s.parser.GetAFrameOffsetSize(0, s.place, s.length) == QVM_SUCCESS;
                    }),
        On<Open<0>>("CxDcmParser::GetRGBBufferFromPaletteImage", {.on = "palette"},
                    [](Parsing& s) { return s.Colour(); }),
        On<Open<0>>("CxDcmParser::MakeThumbNail, plain", kOnImages,
                    [](Parsing& s) { return s.MakeThumbnail(kXferUncompressed, 0); }),
        On<Open<0>>("CxDcmParser::MakeThumbNail, plain, range", kOnImages,
                    [](Parsing& s) { return s.MakeThumbnail(kXferUncompressed, 1); }),
        On<Open<0>>("CxDcmParser::MakeThumbNail, JPEG", kOnImages,
                    [](Parsing& s) { return s.MakeThumbnail(kXferJpegBaseline, 0); }),
        On<Open<0>>("CxDcmParser::MakeThumbNail, lossless", kOnImages,
                    [](Parsing& s) { return s.MakeThumbnail(kXferJpegLossless, 0); }),
        On<Parsing>(
            "CxDcmParser::GetSliceLocation", kOnImages,
            [](Parsing& s) { return CxDcmParser::GetSliceLocation(&s.object, s.location) == 1; }),
        On<OpenOther>(
            "CxDcmParser, copy", kThrows,
            [](OpenOther& s) {
                s.parser = s.from.parser;
                return true;
            },
            LookAtAll),
        On<Table>("CxPaletteLUT::LoadLUT", {.on = "palette", .leaves = Leaves::kUsable},
                  [](Table& s) {
                      return s.lut.LoadLUT(&s.object, tag::kGreenPaletteColorLookupTableDescriptor,
                                           tag::kGreenPaletteColorLookupTableData, 0) != 0;
                  }),
    };
}

INSTANTIATE_TEST_SUITE_P(ParserMemory, FailingAllocation, testing::ValuesIn(Operations()));

}  // namespace
}  // namespace quorvex
