/// Everything that a parser makes of the frames of what it has read.
#pragma once

#include "fuzz/options.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <memory>

namespace quorvex::fuzz {

struct Frame {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    std::unique_ptr<unsigned char[]> bytes;
    unsigned long size = 0;
};

inline Frame FetchFrame(CxDcmParser& parser, int index, unsigned long sourceLength = 0) {
    Frame frame;
    unsigned char* bytes = nullptr;
    frame.result = parser.GetAFrame(index, bytes, frame.size, sourceLength);
    frame.bytes.reset(bytes);
    return frame;
}

/// Frames up to a sum of bytes, so that the work stays in proportion to the input.
inline void FetchFrames(CxDcmParser& parser, Options& options) {
    constexpr int kMostFrames = 16;
    constexpr unsigned long kMostBytes = 1 << 24;
    unsigned long sum = 0;
    const unsigned long sourceLength = options.Flag() ? options.Word() : 0U;
    const int count = std::min(parser.GetFrameCount(), kMostFrames);
    for (int i = 0; i < count && sum < kMostBytes; ++i) {
        const Frame frame = FetchFrame(parser, i, sourceLength);
        if (frame.bytes) sum += frame.size;
        unsigned long offset = 0;
        unsigned long size = 0;
        unsigned char* stored = nullptr;
        if (parser.GetAFrameOffsetSize(i, offset, size) != QVM_SUCCESS) continue;
        (void)parser.GetAFrame(offset, size, stored);
        const std::unique_ptr<unsigned char[]> owner(stored);
    }
}

inline void MakeThumbnail(CxDcmParser& parser, Options& options) {
    constexpr QUORVEX_XFERSYNTAX kFormats[] = {kXferUncompressed, kXferJpegBaseline,
                                               kXferJpegLossless};
    const CSize size{4 * options.Between(1, 16), options.Between(1, 64)};
    const QUORVEX_XFERSYNTAX format = options.OneOf(kFormats);
    unsigned char* image = nullptr;
    unsigned long imageSize = 0;
    tagBITMAPINFOHEADER* header = nullptr;
    unsigned long headerSize = 0;
    (void)parser.MakeThumbNail(0, size, format, options.Flag() ? 1 : 0, image, imageSize, header,
                               headerSize, 75);
    delete[] image;
    delete[] static_cast<unsigned char*>(static_cast<void*>(header));
}

}  // namespace quorvex::fuzz
