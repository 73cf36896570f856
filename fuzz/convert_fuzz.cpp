// An object brought into another form: the file that comes of it must read back to what it was.
#include "fuzz/reading.h"
#include "fuzz/scratch_file.h"
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

namespace {

using namespace quorvex;
using fuzz::Require;

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
    const auto photometric = Read<CString>(object, tag::kPhotometricInterpretation);
    return photometric.value_or("").Find("PALETTE") >= 0;
}

test::Answered InColour(Opened& source, test::Answered indices) {
    const auto number = [&](std::uint32_t tag, unsigned short otherwise) {
        return Read<unsigned short>(source.object, tag).value_or(otherwise);
    };
    return test::ColouredOf(source.parser, indices.bytes.data(), number(tag::kColumns, 0),
                            number(tag::kRows, 0), number(tag::kBitsAllocated, 8));
}

void RequireSameFrames(const CDcmObject& one, const CDcmObject& other) {
    constexpr int kMostFrames = 4;
    Opened before(one);
    Opened after(other);
    const bool isColoured = IsPalette(one) && !IsPalette(other);
    Require(before.parser.GetFrameCount() == after.parser.GetFrameCount());
    for (int i = 0; i < std::min(before.parser.GetFrameCount(), kMostFrames); ++i) {
        test::Answered expected = test::FrameOf(before.parser, i);
        if (isColoured && !expected.bytes.empty()) expected = InColour(before, std::move(expected));
        Require(test::FrameOf(after.parser, i) == expected);
    }
}

/// Only implicit VR has no room for some values, and then nothing is written.
CDcmObject WrittenAndRead(CDcmObject object) {
    if (fuzz::WriteAndRead(object)) return object;
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    object.GetTransferSyntax(syntax);
    Require(syntax == kImplicitLittleEndian);
    return object;
}

void Convert(fuzz::Options& options) {
    constexpr std::int32_t kForms[] = {kXferUncompressedImplicit,
                                       kXferUncompressedExplicit,
                                       kXferJpegLossless,
                                       kXferJpeg2000Lossless,
                                       kXferJpegBaseline,
                                       kXferJpegExtended,
                                       kXferJpeg2000,
                                       kXferRle,
                                       kXferHtj2kRpclLossless,
                                       kXferHtj2k};
    CDcmObject source;
    if (!fuzz::ReadWhole(source, options.Front())) return;
    const std::int32_t form = options.OneOf(kForms);
    const bool isLossless = form != kXferJpegBaseline && form != kXferJpegExtended &&
                            form != kXferJpeg2000 && form != kXferHtj2k;
    CDcmObject target = source;
    const auto quality = static_cast<std::uint16_t>(options.Byte());
    const auto made = test::ConvertTo(form, target, quality);
    if (made.answer != QVM_SUCCESS) return;
    if (made.outcome != QVM_SUCCESS) return RequireSameFrames(source, target);
    const CDcmObject written = WrittenAndRead(target);
    RequireSameFrames(target, written);
    if (isLossless) RequireSameFrames(source, written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.options = 2}, Convert);
}
