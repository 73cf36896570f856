/// Everything that a parser makes of the frames of what it has read.
#pragma once

#include "fuzz/target.h"
#include "tests/support/answers.h"
#include "tests/support/memory_file.h"

#include <algorithm>

namespace quorvex::fuzz {

inline bool ReadWhole(CDcmObject& object, const test::Bytes& bytes) {
    CDcmApp app;
    test::MemoryFile file{.bytes = bytes};
    return object.ReadFile(&app, &file, test::MemoryFile::GiveFile) == kDcmSuccess;
}

/// Frames up to a sum of bytes, so that the work stays in proportion to the input.
inline void FetchFrames(CxDcmParser& parser, Options& options) {
    constexpr int kMostFrames = 16;
    constexpr std::size_t kMostBytes = 1 << 24;
    std::size_t sum = 0;
    const unsigned long sourceLength = options.Flag() ? options.Word() : 0U;
    const int count = std::min(parser.GetFrameCount(), kMostFrames);
    for (int i = 0; i < count && sum < kMostBytes; ++i) {
        sum += test::FrameOf(parser, i, sourceLength).bytes.size();
        (void)test::StoredFrameOf(parser, i);
    }
}

inline void MakeThumbnail(CxDcmParser& parser, Options& options) {
    constexpr QUORVEX_XFERSYNTAX kFormats[] = {kXferUncompressed, kXferJpegBaseline,
                                               kXferJpegLossless};
    test::ThumbnailForm form{.quality = 75};
    form.size.cx = 4 * options.Between(1, 16);
    form.size.cy = options.Between(1, 64);
    form.format = options.OneOf(kFormats);
    form.usesDataRange = options.Flag();
    (void)test::ThumbnailOf(parser, form);
    --form.size.cx;
    CxDcmParser standard(parser);
    standard.SetRules(Rules::kStandard);
    (void)test::ThumbnailOf(standard, form);
}

}  // namespace quorvex::fuzz
