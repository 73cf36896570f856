// Failing memory under the parser and its palettes.
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxPaletteLUT.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"

namespace quorvex {
namespace {

using namespace test;

/// A parser with a file, and one result.
struct Parsing {
    explicit Parsing(const Kind& kind, int readWhole = 0) : path(kind.path), object(kind.object) {
        if (readWhole >= 0) static_cast<void>(parser.Initialize(&app, kind.path, readWhole));
    }
    [[nodiscard]] std::string Look() const {
        const auto* header = parser.GetHeader();
        return (header == nullptr ? std::string("no header") : test::Look(*header)) +
               std::to_string(parser.GetFrameCount()) + block.Look() + numbers;
    }
    /// The first frame too, decoded.
    [[nodiscard]] std::string LookAtAll() {
        GivenBlock frame;
        const auto result = parser.GetAFrame(0, frame.data, frame.size, 0);
        return Look() + std::to_string(result) + frame.Look();
    }

    CDcmApp app;
    GivenText path;
    CDcmObject object;
    CxDcmParser parser;
    GivenBlock block;
    std::string numbers;
};

template <int readWhole>
Subject Opening(const Kind& kind) {
    auto s = std::make_shared<Parsing>(kind, -1);
    return {[s] { return s->parser.Initialize(&s->app, s->path.Give(), readWhole) == QVM_SUCCESS; },
            [s] { return s->LookAtAll(); }};
}

Subject OpeningAgain(const Kind& kind) {
    auto s = std::make_shared<Parsing>(AllKinds().front());
    s->path = GivenText(kind.path);
    return {[s] { return s->parser.Initialize(&s->app, s->path.Give(), 0) == QVM_SUCCESS; },
            [s] { return s->LookAtAll(); }};
}

Subject TakingObject(const Kind& kind) {
    auto s = std::make_shared<Parsing>(kind, -1);
    return {[s] { return s->parser.Initialize(&s->app, &s->object, nullptr, 0, 0) == QVM_SUCCESS; },
            [s] { return s->LookAtAll(); }};
}

Subject TakingFileImage(const Kind& kind) {
    auto s = std::make_shared<Parsing>(kind, -1);
    auto bytes = std::make_shared<std::vector<unsigned char>>(kind.bytes);
    return {[s, bytes] {
                return s->parser.Initialize(&s->app, &s->object, bytes->data(), bytes->size(),
                                            132) == QVM_SUCCESS;
            },
            [s] { return s->Look(); }};
}

template <int readWhole>
Subject Fetching(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Parsing>(kind, readWhole);
    return {[s] {
                s->block.Drop();
                return s->parser.GetAFrame(s->parser.GetFrameCount() - 1, s->block.data,
                                           s->block.size, 0) == QVM_SUCCESS;
            },
            [s] { return s->Look(); }};
}

Subject FetchingStored(const Kind& kind) {
    auto s = std::make_shared<Parsing>(kind);
    return {
        [s] { return s->parser.GetAFrame(0, s->block.size = 200, s->block.data) == QVM_SUCCESS; },
        [s] { return s->Look(); }};
}

Subject Locating(const Kind& kind) {
    if (kind.isState || kind.name == "deflated") return {};
    auto s = std::make_shared<Parsing>(kind);
    auto place = std::make_shared<std::pair<unsigned long, unsigned long>>();
    return {[s, place] {
                return s->parser.GetAFrameOffsetSize(0, place->first, place->second) == QVM_SUCCESS;
            },
            [s, place] {
                return s->Look() + std::to_string(place->first) + std::to_string(place->second);
            }};
}

Subject Colouring(const Kind& kind) {
    if (kind.name != "palette") return {};
    auto s = std::make_shared<Parsing>(kind);
    auto pixels = std::make_shared<std::vector<unsigned char>>(36 * 20, 77);
    auto words = std::make_shared<std::array<unsigned short, 2>>();
    auto text = std::make_shared<CString>();
    return {[=] {
                (*words)[0] = 8;
                return s->parser.GetRGBBufferFromPaletteImage(pixels->data(), 36, 20, (*words)[0],
                                                              (*words)[1], *text, s->block.data,
                                                              0) == QVM_SUCCESS;
            },
            [=] {
                s->block.size = s->block.data != nullptr ? 36 * 20 * 3 : 0;
                return s->Look() + text->ToUtf8();
            }};
}

template <int format, int usesRange>
Subject Thumbnail(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Parsing>(kind);
    auto header = std::make_shared<GivenBlock>();
    return {[=] {
                tagBITMAPINFOHEADER* bitmap = nullptr;
                const auto result = s->parser.MakeThumbNail(
                    0, {16, 12}, static_cast<QUORVEX_XFERSYNTAX>(format), usesRange, s->block.data,
                    s->block.size, bitmap, header->size, 80);
                header->data = static_cast<unsigned char*>(static_cast<void*>(bitmap));
                return result == QVM_SUCCESS;
            },
            [=] { return s->Look() + header->Look(); }};
}

Subject SliceLocation(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Parsing>(kind, -1);
    auto location = std::make_shared<double>(-1);
    return {[=] { return CxDcmParser::GetSliceLocation(&s->object, *location) == 1; },
            [=] { return std::to_string(*location); }};
}

Subject Copying(const Kind& kind) {
    auto s = std::make_shared<Parsing>(kind);
    auto target = std::make_shared<Parsing>(AllKinds().front());
    return {[=] { return target->parser = s->parser, true; }, [=] { return target->LookAtAll(); }};
}

template <int colour>
Subject LoadingLut(const Kind& kind) {
    if (kind.name != "palette") return {};
    auto s = std::make_shared<Parsing>(kind, -1);
    auto lut = std::make_shared<CxPaletteLUT>(0);
    return {[=] { return lut->LoadLUT(&s->object, 0x00281101 + colour, 0x00281201 + colour, 0); },
            [=] {
                return std::to_string(lut->GetEntryBits()) + ' ' +
                       std::to_string(lut->GetEntries().size()) + ' ' +
                       std::to_string(lut->Lookup(9));
            }};
}

constexpr Operation kOperations[] = {
    {"CxDcmParser::Initialize, header", Opening<0>, Leaves::kUsable},
    {"CxDcmParser::Initialize, whole", Opening<1>, Leaves::kUsable},
    {"CxDcmParser::Initialize, again", OpeningAgain, Leaves::kUsable},
    {"CxDcmParser::Initialize, object", TakingObject, Leaves::kUsable},
    {"CxDcmParser::Initialize, memory", TakingFileImage, Leaves::kUsable},
    {"CxDcmParser::GetAFrame, file", Fetching<0>},
    {"CxDcmParser::GetAFrame, object", Fetching<1>},
    {"CxDcmParser::GetAFrame, stored", FetchingStored},
    {"CxDcmParser::GetAFrameOffsetSize", Locating},
    {"CxDcmParser::GetRGBBufferFromPaletteImage", Colouring},
    {"CxDcmParser::MakeThumbNail, plain", Thumbnail<1, 0>},
    {"CxDcmParser::MakeThumbNail, plain, range", Thumbnail<1, 1>},
    {"CxDcmParser::MakeThumbNail, JPEG", Thumbnail<5, 0>},
    {"CxDcmParser::MakeThumbNail, lossless", Thumbnail<7, 0>},
    {"CxDcmParser::GetSliceLocation", SliceLocation},
    {"CxDcmParser, copy", Copying, Leaves::kAsBefore, Tells::kException},
    {"CxPaletteLUT::LoadLUT", LoadingLut<1>, Leaves::kUsable},
};

class ParserMemory : public testing::TestWithParam<Operation> {};
TEST_P(ParserMemory, MayFail) {
    FailEveryAllocation(GetParam());
}
INSTANTIATE_TEST_SUITE_P(All, ParserMemory, testing::ValuesIn(kOperations));

}  // namespace
}  // namespace quorvex
