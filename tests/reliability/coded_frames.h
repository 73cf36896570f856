/// Files of coded frames, made for tests that put frames under other headers.
#pragma once

#include "tests/codec/coded_frames.h"
#include "tests/support/dicom_builder.h"

namespace quorvex::test {

/// A file of one frame, coded as it may be, under a header that may say something else.
inline Bytes FileOf(std::string_view uid, bool isEncapsulated, const FrameForm& header,
                    const Bytes& frame) {
    const ImageFacts facts{.rows = header.rows,
                           .columns = header.columns,
                           .bits = header.Allocated(),
                           .photometric = header.Photometric(),
                           .samples = header.samples};
    return isEncapsulated ? EncapsulatedFile(uid, facts, {frame}) : NativeFile(uid, facts, frame);
}

inline Bytes FileOf(const Coding& coding, const FrameForm& header, const Bytes& frame) {
    return FileOf(coding.uid, coding.target != kXferUncompressed, header, frame);
}

}  // namespace quorvex::test
