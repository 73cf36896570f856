// Failing memory under the image processor.
#include "quorvex/Attributes.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/Tags.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"

namespace quorvex {
namespace {

using namespace test;

/// A frame of a kind as it is stored, its record, and one result.
struct Coding {
    explicit Coding(const Kind& kind) : stored(StoredFrames(kind.object).front()), source(stored) {
        const auto word = [&](std::uint32_t tag) {
            return Read<unsigned short>(kind.object, tag).value_or(0);
        };
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        kind.object.GetTransferSyntax(syntax);
        param.transferSyntax = syntax;
        param.samplesPerPixel = word(tag::kSamplesPerPixel);
        param.photometric = Read<CString>(kind.object, tag::kPhotometricInterpretation).value();
        param.planarConfiguration = word(tag::kPlanarConfiguration);
        param.rows = word(tag::kRows);
        param.columns = word(tag::kColumns);
        param.bitsAllocated = word(tag::kBitsAllocated);
        param.pixelRepresentation = word(tag::kPixelRepresentation);
        param.quality = 50;
    }
    ~Coding() { ReleasePages(pages); }
    Coding(const Coding&) = delete;
    Coding& operator=(const Coding&) = delete;

    bool Decode(int allocMode) {
        processor.SetAllocMode(allocMode);
        block.Drop();
        ReleasePages(std::exchange(pages, nullptr));
        const auto code =
            processor.DecompressFrameData(&param, source.data(), source.size(),
                                          allocMode == 1 ? block.data : pages, block.size, 0);
        return code == QVM_SUCCESS || code == QVM_FRAME_COPIED;
    }
    bool DecodeBlindly(decltype(&CxImageProcessor::DecompressBlindJPEGData) decode) {
        unsigned short word[5] = {};
        block.Drop();
        return (processor.*decode)(source.data(), source.size(), block.data, block.size, word[0],
                                   word[1], word[2], word[3], word[4]) == QVM_SUCCESS;
    }
    bool Compress(std::uint32_t target) {
        block.Drop();
        param.targetSyntax = target;
        return processor.CompressFrameData(&param, source.data(), source.size(), block.data,
                                           block.size) == QVM_SUCCESS;
    }
    /// The source too: operations may change the order of its bytes, but on failure not halfway.
    [[nodiscard]] std::string Look() const {
        if (pages != nullptr) return {pages, pages + block.size};
        return block.Look() + std::string(source.begin(), source.end());
    }

    _IMAGE_PROCESS_PARAM param;
    const std::vector<unsigned char> stored;
    std::vector<unsigned char> source;
    CxImageProcessor processor;
    GivenBlock block;
    unsigned char* pages = nullptr;
};

struct FullRangeYbr : Coding {
    explicit FullRangeYbr(const Kind& kind) : Coding(kind) {
        param.photometric = "YBR_FULL";
        block.size = source.size();
        block.data = new unsigned char[block.size]();
    }
};

constexpr const char* kPlain = "native CT|colour";
constexpr How kCodedStreams{.notOn = "presentation state|big endian", .leaves = Leaves::kUsable};

std::vector<Operation> Operations() {
    return {
        On<Coding>("CxImageProcessor::DecompressFrameData", kCodedStreams,
                   [](Coding& s) { return s.Decode(1); }),
        On<Coding>("CxImageProcessor::DecompressFrameData, pages", kCodedStreams,
                   [](Coding& s) { return s.Decode(2); }),
        On<Coding>(
            "CxImageProcessor::DecompressBlindJPEGData", {.on = "JPEG baseline"},
            [](Coding& s) { return s.DecodeBlindly(&CxImageProcessor::DecompressBlindJPEGData); }),
        On<Coding>(
            "CxImageProcessor::DecompressBlindJP2KData", {.on = "JPEG 2000"},
            [](Coding& s) { return s.DecodeBlindly(&CxImageProcessor::DecompressBlindJP2KData); }),
        On<Coding>("CxImageProcessor::CompressFrameData, baseline", {.on = "colour"},
                   [](Coding& s) { return s.Compress(kXferJpegBaseline); }),
        On<Coding>("CxImageProcessor::CompressFrameData, extended", {.on = "native CT"},
                   [](Coding& s) { return s.Compress(kXferJpegExtended); }),
        On<Coding>("CxImageProcessor::CompressFrameData, lossless", {.on = kPlain},
                   [](Coding& s) { return s.Compress(kXferJpegLossless); }),
        On<Coding>("CxImageProcessor::CompressFrameData, JPEG 2000", {.on = kPlain},
                   [](Coding& s) { return s.Compress(kXferJpeg2000); }),
        On<Coding>("CxImageProcessor::CompressFrameData, 2000 lossless", {.on = kPlain},
                   [](Coding& s) { return s.Compress(kXferJpeg2000Lossless); }),
        On<Coding>(
            "CxImageProcessor::CompressFrameData, planes", {.on = "colour"},
            [](Coding& s) {
                s.source = s.stored;  // of the same size: nothing is allocated
                s.param.planarConfiguration = 1;
                return s.Compress(kXferJpegLossless);
            },
            [](const Coding& s) { return s.block.Look(); }),
        On<Coding>("CxImageProcessor::CompressRawImage2Jp2File", {.on = "native CT"},
                   [](Coding& s) {
                       s.block.Drop();
                       s.param.targetSyntax = kXferJpeg2000Lossless;
                       return s.processor.CompressRawImage2Jp2File(&s.param, s.source.data(),
                                                                   s.source.size(), s.block.data,
                                                                   s.block.size) == QVM_SUCCESS &&
                              s.block.data != nullptr;
                   }),
        On<FullRangeYbr>("CxImageProcessor::ConvertYBRToRGB", {.on = "colour"},
                         [](Coding& s) {
                             return s.processor.ConvertYBRToRGB(&s.param, s.source.data(),
                                                                s.block.data) == QVM_SUCCESS;
                         }),
        On<Coding>("CxImageProcessor::ResizeImage", {.on = "native CT|colour|palette"},
                   [](Coding& s) {
                       s.block.Drop();
                       return s.processor.ResizeImage(&s.param, s.source.data(), s.block.data,
                                                      s.block.size, {20, 33}) == QVM_SUCCESS;
                   }),
    };
}

INSTANTIATE_TEST_SUITE_P(CodecMemory, FailingAllocation, testing::ValuesIn(Operations()));

}  // namespace
}  // namespace quorvex
