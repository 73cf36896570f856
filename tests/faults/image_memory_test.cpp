// Failing memory under the parser and the image processor.
#include "quorvex/Tags.h"
#include "tests/faults/fault_harness.h"
#include "tests/support/answers.h"
#include "tests/support/host_source.h"

namespace quorvex {
namespace {

using namespace test;

std::string SeenParser(Host& s) {
    const auto* header = s.parser.GetHeader();
    return (header == nullptr ? std::string("no header") : Look(*header)) + s.block.Look() +
           s.bitmap.Look() + s.text.ToUtf8() +
           TextOfNumbers(s.parser.GetFrameCount(), s.place, s.length, s.location);
}

std::string SeenFrame(Host& s) {
    const Answered frame = FrameOf(s.parser);
    return SeenParser(s) + std::to_string(frame.code) + TextOf(frame.bytes);
}

QUORVEX_MESSAGE TakeRegion(Host& s, GivenBlock& block) {
    return s.tiled.GetRegion(0, {3, 2, 40, 9}, 0, 0, block.data, block.size);
}

std::string SeenTiles(Host& s) {
    GivenBlock block;
    const auto code = TakeRegion(s, block);
    return TextOfNumbers(static_cast<int>(code), s.tiled.GetLevelCount()) + block.Look();
}

std::string SeenPalette(Host& s) {
    return TextOfNumbers(s.lut.GetEntryBits(), s.lut.GetEntries().size(), s.lut.Lookup(9));
}

std::string SeenCoding(Host& s) {
    if (s.pages != nullptr) return TextOf({s.pages, s.block.size});
    return s.block.Look() + TextOf(s.source);
}

// What the stream gives and not its bytes: the library codes an empty block, or leaves it out, by
// what lies behind its rows.
std::string SeenHighThroughput(Host& s) {
    if (s.block.data == nullptr) return SeenCoding(s);
    _IMAGE_PROCESS_PARAM param = s.param;
    param.transferSyntax = kHtj2k;
    CxImageProcessor processor;
    processor.SetAllocMode(1);
    unsigned char* pixels = nullptr;
    unsigned long size = 0;
    const auto code =
        processor.DecompressFrameData(&param, s.block.data, s.block.size, pixels, size, 0);
    const std::unique_ptr<unsigned char[]> frame(pixels);
    return TextOfNumbers(static_cast<int>(code)) + TextOf({pixels, size}) + TextOf(s.source);
}

constexpr auto kJpegBlind = &CxImageProcessor::DecompressBlindJPEGData;
constexpr auto kJp2kBlind = &CxImageProcessor::DecompressBlindJP2KData;

// --- Parser --------------------------------------------------------------------------------------

template <int readWhole>
bool Open(Host& s) {
    return IsDone(s.parser.Initialize(&s.app, s.path.Give(), readWhole));
}
template <int readWhole>
void Opened(Host& s) {
    static_cast<void>(Open<readWhole>(s));
}
/// A parser that holds something else so far.
void OpenedOther(Host& s) {
    static_cast<void>(s.parser.Initialize(&s.app, AllKinds().front().path, 0));
    s.from = std::make_unique<Host>(s.kind);
    Opened<0>(*s.from);
}

bool AddTiles(Host& s) {
    return IsDone(s.tiled.Add(&s.app, s.path.Give()));
}
void AddedTiles(Host& s) {
    static_cast<void>(AddTiles(s));
}

/// A source that gives more than is kept in memory.
void TookSource(Host& s) {
    s.source = s.kind.bytes;
    s.source.resize(s.source.size() + (std::size_t{64} << 10));
    s.hostSource = std::make_shared<HostSource>(s.source);
}
bool OpenSource(Host& s) {
    return IsDone(s.parser.Initialize(&s.app, s.hostSource, 0));
}
void OpenedSource(Host& s) {
    TookSource(s);
    static_cast<void>(OpenSource(s));
}

bool FetchLast(Host& s) {
    s.block.Drop();
    const int last = s.parser.GetFrameCount() - 1;
    return IsDone(s.parser.GetAFrame(last, s.block.data, s.block.size, 0));
}

bool MakeThumbnail(Host& s, QUORVEX_XFERSYNTAX format, int usesDataRange) {
    s.block.Drop();
    s.bitmap.Drop();
    tagBITMAPINFOHEADER* header = nullptr;
    const auto code = s.parser.MakeThumbNail(0, {16, 12}, format, usesDataRange, s.block.data,
                                             s.block.size, header, s.bitmap.size, 80);
    s.bitmap.data = static_cast<unsigned char*>(static_cast<void*>(header));
    return IsDone(code);
}

bool Colour(Host& s) {
    unsigned short bits = 8;
    unsigned short samples = 0;
    s.block.Drop();
    const auto code = s.parser.GetRGBBufferFromPaletteImage(s.pixels.data(), 36, 20, bits, samples,
                                                            s.text, s.block.data, 0);
    s.block.size = s.block.data != nullptr ? 36 * 20 * 3 : 0;
    return IsDone(code);
}

constexpr Operation kParsers[] = {
    {"CxDcmParser::Initialize, header", kUsable, SeenFrame, Open<0>},
    {"CxDcmParser::Initialize, whole", kUsable, SeenFrame, Open<1>},
    {"CxDcmParser::Initialize, again", kUsable, SeenFrame, Open<0>, OpenedOther},
    {"CxDcmParser::Initialize, object", kUsable, SeenFrame,
     DONE(s.parser.Initialize(&s.app, &s.object, nullptr, 0, 0))},
    {"CxDcmParser::Initialize, memory", kUsable, SeenParser,
     DONE(s.parser.Initialize(&s.app, &s.object, s.source.data(), s.source.size(), 132)),
     DO(s.source = s.kind.bytes)},
    {"CxDcmParser::Initialize, source", kUsable, SeenParser, OpenSource, TookSource},
    {"CxDcmParser::GetAFrame, source", NotOn("presentation state|deflated|bare data set"),
     SeenParser, FetchLast, OpenedSource},
    {"CxDcmParser::GetAFrame, file", kOnImages, SeenParser, FetchLast, Opened<0>},
    {"CxDcmParser::GetAFrame, object", kOnImages, SeenParser, FetchLast, Opened<1>},
    {"CxDcmParser::GetAFrame, stored", kOnAll, SeenParser,
     DONE(s.block.Drop(), s.parser.GetAFrame(0, s.block.size = 200, s.block.data)), Opened<0>},
    {"CxDcmParser::GetAFrameOffsetSize", NotOn("presentation state|deflated"), SeenParser,
     DONE(s.parser.GetAFrameOffsetSize(0, s.place, s.length)), Opened<0>},
    {"CxDcmParser::GetRGBBufferFromPaletteImage", On("palette"), SeenParser, Colour, Opened<0>},
    {"CxDcmParser::MakeThumbNail, plain", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferUncompressed, 0)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, plain, range", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferUncompressed, 1)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, JPEG", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferJpegBaseline, 0)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, lossless", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferJpegLossless, 0)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, standard", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferUncompressed, 1)),
     DO(s.parser.SetRules(Rules::kStandard), Opened<0>(s))},
    {"CxDcmParser::GetSliceLocation", kOnImages, SeenParser,
     DONE(CxDcmParser::GetSliceLocation(&s.object, s.location) == 1)},
    {"CxDcmParser, copy", kThrows, SeenFrame, DONE(s.parser = s.from->parser, true), OpenedOther},
    {"CxTiledImage::Add", kOnImages, SeenTiles, AddTiles},
    {"CxTiledImage::GetRegion", kOnImages, SeenTiles,
     DONE(s.block.Drop(), IsDone(TakeRegion(s, s.block))), AddedTiles},
    {"CxPaletteLUT::LoadLUT", On("palette", Leaves::kUsable), SeenPalette,
     DONE(s.lut.LoadLUT(&s.object, tag::kGreenPaletteColorLookupTableDescriptor,
                        tag::kGreenPaletteColorLookupTableData, 0) != 0)},
};

// --- Image processor -----------------------------------------------------------------------------

/// A frame as it is stored, and its record.
void TakeFrame(Host& s) {
    s.param = ParamOf(s.object);
    s.param.quality = 50;
    s.source = StoredFrames(s.object).front();
}

template <int allocMode>
bool Decode(Host& s) {
    s.processor.SetAllocMode(allocMode);
    s.block.Drop();
    ReleasePages(std::exchange(s.pages, nullptr));
    unsigned char*& result = allocMode == 1 ? s.block.data : s.pages;
    const auto code = s.processor.DecompressFrameData(&s.param, s.source.data(), s.source.size(),
                                                      result, s.block.size, 0);
    return IsDone(code) || code == QVM_FRAME_COPIED;
}

template <auto decode>
bool DecodeBlindly(Host& s) {
    unsigned short word[5] = {};
    s.block.Drop();
    return IsDone((s.processor.*decode)(s.source.data(), s.source.size(), s.block.data,
                                        s.block.size, word[0], word[1], word[2], word[3], word[4]));
}

template <auto compress = &CxImageProcessor::CompressFrameData>
bool Compress(Host& s, std::uint32_t target) {
    s.block.Drop();
    s.param.targetSyntax = target;
    return IsDone((s.processor.*compress)(&s.param, s.source.data(), s.source.size(), s.block.data,
                                          s.block.size)) &&
           s.block.data != nullptr;
}

bool CompressPlanes(Host& s) {
    s.source = s.from->source;  // of the same size: nothing is allocated
    s.param.planarConfiguration = 1;
    return Compress(s, kXferJpegLossless);
}

constexpr How kCodedStreams = NotOn("presentation state|big endian", Leaves::kUsable);
constexpr How kPlain = On("native CT|colour");

void KeepFrame(Host& s) {
    TakeFrame(s);
    s.from = std::make_unique<Host>(s.kind);
    s.from->source = s.source;
}

constexpr Operation kCoders[] = {
    {"CxImageProcessor::DecompressFrameData", kCodedStreams, SeenCoding, Decode<1>, TakeFrame},
    {"CxImageProcessor::DecompressFrameData, pages", kCodedStreams, SeenCoding, Decode<2>,
     TakeFrame},
    {"CxImageProcessor::DecompressBlindJPEGData", On("JPEG baseline"), SeenCoding,
     DecodeBlindly<kJpegBlind>, TakeFrame},
    {"CxImageProcessor::DecompressBlindJP2KData", On("JPEG 2000"), SeenCoding,
     DecodeBlindly<kJp2kBlind>, TakeFrame},
    {"CxImageProcessor::CompressFrameData, baseline", On("colour"), SeenCoding,
     DONE(Compress(s, kXferJpegBaseline)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, extended", On("native CT"), SeenCoding,
     DONE(Compress(s, kXferJpegExtended)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, lossless", kPlain, SeenCoding,
     DONE(Compress(s, kXferJpegLossless)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, JPEG 2000", kPlain, SeenCoding,
     DONE(Compress(s, kXferJpeg2000)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, 2000 lossless", kPlain, SeenCoding,
     DONE(Compress(s, kXferJpeg2000Lossless)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, HTJ2K", kPlain, SeenHighThroughput,
     DONE(Compress(s, kXferHtj2k)), TakeFrame, kHtj2k},
    {"CxImageProcessor::CompressFrameData, HTJ2K lossless", kPlain, SeenHighThroughput,
     DONE(Compress(s, kXferHtj2kLossless)), TakeFrame, kHtj2kLossless},
    {"CxImageProcessor::CompressFrameData, planes", On("colour"), SeenBlock, CompressPlanes,
     KeepFrame},
    {"CxImageProcessor::CompressRawImage2Jp2File", On("native CT"), SeenCoding,
     DONE(Compress<&CxImageProcessor::CompressRawImage2Jp2File>(s, kXferJpeg2000Lossless)),
     TakeFrame},
    {"CxImageProcessor::ResizeImage", On("native CT|colour|palette"), SeenCoding,
     DONE(s.block.Drop(),
          s.processor.ResizeImage(&s.param, s.source.data(), s.block.data, s.block.size, {20, 33})),
     TakeFrame},
};

INSTANTIATE_TEST_SUITE_P(ParserMemory, FailingAllocation, testing::ValuesIn(kParsers));
INSTANTIATE_TEST_SUITE_P(CodecMemory, FailingAllocation, testing::ValuesIn(kCoders));

}  // namespace
}  // namespace quorvex
