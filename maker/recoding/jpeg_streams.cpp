#include "maker/recoding/jpeg_streams.h"

#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg/jpeg_header.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "maker/pixels/pixel_data_writing.h"
#include "maker/recoding/nested_pixels.h"
#include "quorvex/Tags.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

using Stream = std::vector<unsigned char>;

MC_STATUS CollectFrame(int, std::uint32_t, void* user, int item, unsigned long length,
                       unsigned char* data, int, int) {
    if (item == 0) return kMcContinue;  // the offset table
    auto& streams = *static_cast<std::vector<Stream>*>(user);
    streams.resize(static_cast<std::size_t>(item));
    streams.back().insert(streams.back().end(), data, data + length);
    return kMcContinue;
}

/// The zero that makes a fragment even is no part of a stream, and will be there again.
void DropPad(Stream& stream) {
    const std::size_t size = stream.size();
    if (size > 3 && size % 2 == 0 && stream[size - 1] == 0 && stream[size - 2] == 0xD9 &&
        stream[size - 3] == 0xFF)
        stream.pop_back();
}

/// The transfer syntax of a stream's process; none for one that JPEG XL does not keep.
std::optional<TRANSFER_SYNTAX> SyntaxOf(std::span<const unsigned char> jpeg) {
    JpegHeaderScanner scanner;
    if (scanner.Scan(jpeg) != JpegHeaderScanner::State::kDone) return std::nullopt;
    const JpegHeader& header = scanner.Header();
    constexpr unsigned kBits = 8;
    if (!header.IsDecodable() || header.IsArithmetic() || header.precision != kBits)
        return std::nullopt;
    switch (header.Process()) {
        case JpegProcess::kBaseline:
            return kJpegBaseline;
        case JpegProcess::kExtended:
            return kJpegExtended;
        case JpegProcess::kProgressive:
            return kJpegFullProgression;
        default:
            return std::nullopt;
    }
}

class JpegStreams {
public:
    JpegStreams(CxDcmParser& parser, const RecodingWish& wish)
        : parser_(parser), wish_(wish), count_(parser.GetFrameCount()) {}

    QUORVEX_MESSAGE Collect() {
        parser_.GetHeader()->GetValueEx(tag::kPixelData, &streams_, CollectFrame);
        const bool areAll = count_ > 0 && streams_.size() == static_cast<std::size_t>(count_);
        return areAll ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    }
    QUORVEX_MESSAGE Repack() {
        for (int i = 0; i < count_; ++i) {
            Stream& stream = streams_[static_cast<std::size_t>(i)];
            const bool isIntoBoxes = wish_.form == kXferJpegXlOfJpeg;
            auto result = isIntoBoxes ? Recompress(i, stream) : Restore(stream);
            if (result == QVM_SUCCESS) result = wish_.progress.Report(i + 1, count_);
            if (result != QVM_SUCCESS) return result;
        }
        return QVM_SUCCESS;
    }
    QUORVEX_MESSAGE Put(CDcmObject& target) {
        const auto syntax = wish_.form == kXferJpegXlOfJpeg ? kJpegXlOfJpeg : *process_;
        if (target.SetTransferSyntax(syntax) != kDcmSuccess)
            return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
        return PutCodedFrames(streams_, target);
    }

private:
    /// All streams of an object are of one process.
    QUORVEX_MESSAGE TakeProcess(std::span<const unsigned char> jpeg) {
        const auto process = SyntaxOf(jpeg);
        if (!process) return QVM_ERROR_INVALID_TARGET_SYNTAX;
        if (process_ && process_ != process) return QVM_ERROR_INVALID_JPEG_STREAM;
        process_ = process;
        return QVM_SUCCESS;
    }
    /// The library behind gets no stream that was not decoded before.
    QUORVEX_MESSAGE Recompress(int frame, Stream& stream) {
        DropPad(stream);
        auto result = TakeProcess(stream);
        if (result == QVM_SUCCESS) result = CheckWhole(frame);
        if (result != QVM_SUCCESS) return result;
        auto boxes = RecompressJpeg(stream);
        if (!boxes) return QVM_ERROR_INVALID_TARGET_SYNTAX;
        stream = *std::move(boxes);
        return QVM_SUCCESS;
    }
    QUORVEX_MESSAGE CheckWhole(int frame) {
        unsigned char* data = nullptr;
        unsigned long size = 0;
        const auto result = parser_.GetAFrame(frame, data, size, 0);
        const std::unique_ptr<unsigned char[]> decoded(data);
        const bool isCut = parser_.GetFrameQuality() == FrameQuality::kPartial;
        return result == QVM_SUCCESS && isCut ? QVM_ERROR_FAILED_TO_DECOMPRESS : result;
    }
    QUORVEX_MESSAGE Restore(Stream& stream) {
        Stream jpeg;
        JpegXlDecoder boxes(stream);
        if (boxes.State() != JpegXlResult::kDone) return QVM_ERROR_FAILED_TO_DECOMPRESS;
        if (!boxes.Header().hasJpeg) return QVM_ERROR_INVALID_TARGET_SYNTAX;
        if (boxes.RestoreJpeg(jpeg) != JpegXlResult::kDone) return QVM_ERROR_FAILED_TO_DECOMPRESS;
        stream = std::move(jpeg);
        return TakeProcess(stream);
    }

    CxDcmParser& parser_;
    const RecodingWish& wish_;
    int count_;
    std::vector<Stream> streams_;
    std::optional<TRANSFER_SYNTAX> process_;
};

}  // namespace

QUORVEX_MESSAGE KeepJpegStreams(CxDcmParser& parser, TRANSFER_SYNTAX from, const RecodingWish& wish,
                                CDcmObject& target) {
    const bool isIntoBoxes = wish.form == kXferJpegXlOfJpeg;
    const FrameCoding coding = CodingOf(from);
    if (isIntoBoxes ? from == kJpegXlOfJpeg : coding == FrameCoding::kJpeg) return QVM_FRAME_COPIED;
    if (coding != (isIntoBoxes ? FrameCoding::kJpeg : FrameCoding::kJpegXl) || !HasJpegXl())
        return QVM_ERROR_INVALID_TARGET_SYNTAX;
    JpegStreams streams(parser, wish);
    auto result = streams.Collect();
    if (result == QVM_SUCCESS) result = streams.Repack();
    if (result == QVM_SUCCESS) result = streams.Put(target);
    return result == QVM_SUCCESS ? DecodeNestedPixels(from, target) : result;
}

}  // namespace quorvex
