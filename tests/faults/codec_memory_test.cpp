// Failing memory under the image processor.
#include "quorvex/CxImageProcessor.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"
#include "tests/maker/maker_objects.h"

namespace quorvex {
namespace {

using namespace test;

/// A frame of a kind as it is stored, its record, and one result.
struct Coding {
    explicit Coding(const Kind& kind) : source(StoredFrames(kind.object).front()) {
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        kind.object.GetTransferSyntax(syntax);
        param.transferSyntax = syntax;
        kind.object.GetValue(0x00280002, param.samplesPerPixel);
        kind.object.GetValue(0x00280004, param.photometric);
        kind.object.GetValue(0x00280006, param.planarConfiguration);
        kind.object.GetValue(0x00280010, param.rows);
        kind.object.GetValue(0x00280011, param.columns);
        kind.object.GetValue(0x00280100, param.bitsAllocated);
        kind.object.GetValue(0x00280103, param.pixelRepresentation);
        param.quality = 50;
    }
    /// The source too: operations may turn it, but on failure not halfway.
    [[nodiscard]] std::string Look() const {
        return block.Look() + std::string(source.begin(), source.end());
    }

    _IMAGE_PROCESS_PARAM param;
    std::vector<unsigned char> source;
    CxImageProcessor processor;
    GivenBlock block;
};

template <int allocMode>
Subject Decoding(const Kind& kind) {
    if (kind.isState || kind.name == "big endian") return {};
    auto s = std::make_shared<Coding>(kind);
    s->processor.SetAllocMode(allocMode);
    auto pages = std::shared_ptr<unsigned char*>(new unsigned char*(nullptr), [](auto* p) {
        ReleasePages(*p);
        delete p;
    });
    return {[=] {
                unsigned char*& result = allocMode == 1 ? s->block.data : *pages;
                if (allocMode == 1) s->block.Drop();
                ReleasePages(std::exchange(*pages, nullptr));
                const auto answer = s->processor.DecompressFrameData(
                    &s->param, s->source.data(), s->source.size(), result, s->block.size, 0);
                return answer == QVM_SUCCESS || answer == QVM_FRAME_COPIED;
            },
            [=] {
                if (*pages != nullptr) return std::string(*pages, *pages + s->block.size);
                return s->Look();
            }};
}

Subject DecodingBlind(const Kind& kind) {
    const bool isJpeg2000 = kind.name == "JPEG 2000";
    if (!isJpeg2000 && kind.name != "JPEG baseline") return {};
    auto s = std::make_shared<Coding>(kind);
    return {[=] {
                unsigned short word[5] = {};
                const auto decode = isJpeg2000 ? &CxImageProcessor::DecompressBlindJP2KData
                                               : &CxImageProcessor::DecompressBlindJPEGData;
                s->block.Drop();
                return (s->processor.*decode)(s->source.data(), s->source.size(), s->block.data,
                                              s->block.size, word[0], word[1], word[2], word[3],
                                              word[4]) == QVM_SUCCESS;
            },
            [=] { return s->Look(); }};
}

/// Codes plain frames: grey ones to the forms for more than 8 bits, colour to those of 8.
template <int target>
Subject Compressing(const Kind& kind) {
    const bool isWide = kind.name == "native CT";
    if (!isWide && kind.name != "colour") return {};
    if ((target == 5 && isWide) || (target == 6 && !isWide)) return {};
    auto s = std::make_shared<Coding>(kind);
    s->param.targetSyntax = target;
    return {[=] {
                s->block.Drop();
                return s->processor.CompressFrameData(&s->param, s->source.data(), s->source.size(),
                                                      s->block.data, s->block.size) == QVM_SUCCESS;
            },
            [=] { return s->Look(); }};
}

Subject CompressingPlanes(const Kind& kind) {
    Subject subject = Compressing<7>(kind);
    if (!subject.work || kind.name != "colour") return {};
    auto s = std::make_shared<Coding>(kind);
    s->param.targetSyntax = 7;
    s->param.planarConfiguration = 1;
    auto planes = std::make_shared<std::vector<unsigned char>>(s->source);
    return {[=] {
                s->block.Drop();
                s->source = *planes;  // of the same size: nothing is allocated
                return s->processor.CompressFrameData(&s->param, s->source.data(), s->source.size(),
                                                      s->block.data, s->block.size) == QVM_SUCCESS;
            },
            [=] { return s->block.Look(); }};
}

Subject CompressingRaw(const Kind& kind) {
    if (kind.name != "native CT") return {};
    auto s = std::make_shared<Coding>(kind);
    s->param.targetSyntax = 9;
    return {[=] {
                s->block.Drop();
                return s->processor.CompressRawImage2Jp2File(&s->param, s->source.data(),
                                                             s->source.size(), s->block.data,
                                                             s->block.size) == QVM_SUCCESS &&
                       s->block.data != nullptr;
            },
            [=] { return s->Look(); }};
}

Subject ConvertingColour(const Kind& kind) {
    if (kind.name != "colour") return {};
    auto s = std::make_shared<Coding>(kind);
    s->param.photometric = "YBR_FULL";
    s->block.size = s->source.size();
    s->block.data = new unsigned char[s->block.size]();
    return {[=] {
                return s->processor.ConvertYBRToRGB(&s->param, s->source.data(), s->block.data) ==
                       QVM_SUCCESS;
            },
            [=] { return s->Look(); }};
}

Subject Resizing(const Kind& kind) {
    if (kind.name != "native CT" && kind.name != "colour" && kind.name != "palette") return {};
    auto s = std::make_shared<Coding>(kind);
    return {[=] {
                s->block.Drop();
                return s->processor.ResizeImage(&s->param, s->source.data(), s->block.data,
                                                s->block.size, {20, 33}) == QVM_SUCCESS;
            },
            [=] { return s->Look(); }};
}

constexpr Operation kOperations[] = {
    {"CxImageProcessor::DecompressFrameData", Decoding<1>, Leaves::kUsable},
    {"CxImageProcessor::DecompressFrameData, pages", Decoding<2>, Leaves::kUsable},
    {"CxImageProcessor::DecompressBlind...", DecodingBlind},
    {"CxImageProcessor::CompressFrameData, baseline", Compressing<5>},
    {"CxImageProcessor::CompressFrameData, extended", Compressing<6>},
    {"CxImageProcessor::CompressFrameData, lossless", Compressing<7>},
    {"CxImageProcessor::CompressFrameData, JPEG 2000", Compressing<8>},
    {"CxImageProcessor::CompressFrameData, 2000 lossless", Compressing<9>},
    {"CxImageProcessor::CompressFrameData, planes", CompressingPlanes},
    {"CxImageProcessor::CompressRawImage2Jp2File", CompressingRaw},
    {"CxImageProcessor::ConvertYBRToRGB", ConvertingColour},
    {"CxImageProcessor::ResizeImage", Resizing},
};

class CodecMemory : public testing::TestWithParam<Operation> {};
TEST_P(CodecMemory, MayFail) {
    FailEveryAllocation(GetParam());
}
INSTANTIATE_TEST_SUITE_P(All, CodecMemory, testing::ValuesIn(kOperations));

}  // namespace
}  // namespace quorvex
