#include "foundation/engines/jpeg/jpeg_coders.h"
#include "foundation/engines/jpeg/jpeg_engine.h"
#include "foundation/types/answer.h"

namespace quorvex {

class JpegCompression {
public:
    bool isLossless = false;
    int passes = 0;
    std::unique_ptr<JpegLineCoder> coder;
};

namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

bool IsCodable(const JpegCodingBlock& coding) noexcept {
    const bool hasShape = coding.columns > 0 && coding.rows > 0 &&
                          (coding.samples == 1 || coding.samples == 3) &&
                          (coding.bytesPerSample == 1 || coding.bytesPerSample == 2);
    const int precision = coding.precision;
    if (!hasShape || coding.write == nullptr) return false;
    switch (coding.process) {
        case JpegProcess::kBaseline:
            return precision == 8 && coding.bytesPerSample == 1;
        case JpegProcess::kExtended:
            return precision == 12 && coding.bytesPerSample == 2;
        case JpegProcess::kLossless:
            return precision >= 2 && precision <= 8 * coding.bytesPerSample &&
                   coding.predictor >= 1 && coding.predictor <= 7;
        case JpegProcess::kProgressive:
            return false;
    }
    return false;
}

MakeJpegCoder CoderFor(const JpegCodingBlock& coding) noexcept {
    if (coding.process == JpegProcess::kBaseline) return MakeTurboCoder;
    if (coding.process == JpegProcess::kExtended) return Make12BitCoder;
    return MakeLosslessCoder;
}

int Open(JpegCompressionHandle& handle, const JpegCodingBlock& coding) {
    if (!IsCodable(coding)) return kFailure;
    auto opened = std::make_unique<JpegCompression>();
    opened->isLossless = coding.process == JpegProcess::kLossless;
    opened->coder = CoderFor(coding)(coding);
    if (!opened->coder->Start()) return kFailure;
    handle.reset(opened.release());
    return kSuccess;
}

int Passes(bool isLossless) noexcept {
    return isLossless ? 2 : 1;
}

}  // namespace

void EndJpegCompression::operator()(JpegCompression* compression) const noexcept {
    delete compression;
}

int init_compression(JpegCompressionHandle& handle, const JpegCodingBlock& coding,
                     void* writeContext, JpegWriteCallback write) noexcept {
    handle.reset();
    JpegCodingBlock withOutput = coding;
    withOutput.writeContext = writeContext;
    withOutput.write = write;
    return Contain(kFailure, [&] { return Open(handle, withOutput); });
}

int icompress(const JpegCompressionHandle& handle, const unsigned char* source, int rows) noexcept {
    if (handle == nullptr || source == nullptr) return kFailure;
    JpegCompression& work = *handle;
    const int last = Passes(work.isLossless);
    if (work.passes >= last) return kFailure;
    ++work.passes;
    if (work.passes == 1 && !work.coder->Write(source, rows)) return kFailure;
    if (work.passes == last && !work.coder->Finish(source, rows)) return kFailure;
    return kSuccess;
}

int close_compression(JpegCompressionHandle& handle) noexcept {
    handle.reset();
    return kSuccess;
}

int comp_im_buf(JpegCompressionHandle& handle, const JpegCodingBlock& coding,
                const unsigned char* source, int rows) noexcept {
    int result = init_compression(handle, coding, coding.writeContext, coding.write);
    for (int pass = 0; result == kSuccess && pass < Passes(handle->isLossless); ++pass) {
        result = icompress(handle, source, rows);
    }
    close_compression(handle);
    return result;
}

}  // namespace quorvex
