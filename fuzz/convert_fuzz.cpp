// An object brought into another form: the file that comes of it must read back to what it was.
#include "fuzz/elements.h"
#include "fuzz/frames.h"
#include "fuzz/memory_feed.h"
#include "fuzz/options.h"
#include "fuzz/require.h"
#include "fuzz/scratch_file.h"
#include "quorvex/CxDcmMaker.h"

#include <cstring>

namespace {

using namespace quorvex;
using fuzz::Require;

constexpr int kMostFrames = 4;

/// A parser that leaves its object as it is.
struct Opened {
    explicit Opened(const CDcmObject& source) : object(source) {
        Require(parser.Initialize(&app, &object, nullptr, 0, 0) == QVM_SUCCESS);
    }
    CDcmApp app;
    CDcmObject object;
    CxDcmParser parser;
};

bool IsPalette(const CDcmObject& object) {
    CString photometric;
    object.GetValue(0x00280004, photometric);
    return photometric.Find("PALETTE") >= 0;
}

fuzz::Frame InColour(Opened& source, fuzz::Frame indices) {
    unsigned short rows = 0;
    unsigned short columns = 0;
    unsigned short bits = 8;
    unsigned short samples = 1;
    CString photometric;
    source.object.GetValue(0x00280010, rows);
    source.object.GetValue(0x00280011, columns);
    source.object.GetValue(0x00280100, bits);
    unsigned char* rgb = nullptr;
    fuzz::Frame colours;
    colours.result = source.parser.GetRGBBufferFromPaletteImage(indices.bytes.get(), columns, rows,
                                                                bits, samples, photometric, rgb, 0);
    colours.bytes.reset(rgb);
    colours.size = 3UL * rows * columns;
    return colours;
}

void RequireSameFrames(const CDcmObject& one, const CDcmObject& other) {
    Opened before(one);
    Opened after(other);
    const bool isColoured = IsPalette(one) && !IsPalette(other);
    Require(before.parser.GetFrameCount() == after.parser.GetFrameCount());
    for (int i = 0; i < std::min(before.parser.GetFrameCount(), kMostFrames); ++i) {
        fuzz::Frame expected = fuzz::FetchFrame(before.parser, i);
        const fuzz::Frame frame = fuzz::FetchFrame(after.parser, i);
        if (isColoured && expected.bytes) expected = InColour(before, std::move(expected));
        Require(expected.result == frame.result && expected.size == frame.size);
        Require(!frame.bytes ||
                std::memcmp(frame.bytes.get(), expected.bytes.get(), frame.size) == 0);
    }
}

/// What is written is a fixed point: read and written again it is the same file. Only implicit VR has
/// no room for some values, and then nothing is written.
CDcmObject WrittenAndRead(const CDcmObject& object) {
    const fuzz::ScratchFile file;
    const fuzz::ScratchFile again;
    if (object.WriteFile(file.Path()) != kDcmSuccess) {
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        object.GetTransferSyntax(syntax);
        Require(syntax == kImplicitLittleEndian);
        return object;
    }
    CDcmApp app;
    CDcmObject result;
    result.Open(file.Path());
    Require(result.ReadFile(&app, nullptr, nullptr) == kDcmSuccess);
    Require(result.WriteFile(again.Path()) == kDcmSuccess);
    Require(file.Bytes() == again.Bytes());
    return result;
}

void Convert(const CDcmObject& source, fuzz::Options& options) {
    constexpr std::int32_t kForms[] = {kXferUncompressedImplicit,
                                       kXferUncompressedExplicit,
                                       kXferJpegLossless,
                                       kXferJpeg2000Lossless,
                                       kXferJpegBaseline,
                                       kXferJpegExtended,
                                       kXferJpeg2000,
                                       kXferRle};
    _USER_SETTING_INFO settings;
    settings.compressionType = options.OneOf(kForms);
    const bool isLossless = settings.compressionType != kXferJpegBaseline &&
                            settings.compressionType != kXferJpegExtended &&
                            settings.compressionType != kXferJpeg2000;
    CDcmApp app;
    CDcmObject target = source;
    CxDcmMaker maker;
    maker.SetQuality(static_cast<std::uint16_t>(options.Byte()));
    if (maker.MakeDcmObject(&app, &target, &settings) != QVM_SUCCESS) return;
    const auto outcome = maker.GetOutcome();
    if (outcome != QVM_SUCCESS) return RequireSameFrames(source, target);
    const CDcmObject written = WrittenAndRead(target);
    RequireSameFrames(target, written);
    if (isLossless) RequireSameFrames(source, written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestInput = 1 << 16;
    constexpr std::size_t kOptions = 2;
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, kOptions);
    CDcmApp app;
    fuzz::MemoryFeed feed(options.Front());
    CDcmObject source;
    if (source.ReadFile(&app, &feed, fuzz::MemoryFeed::GiveFile) != kDcmSuccess) return 0;
    Convert(source, options);
    return 0;
}
