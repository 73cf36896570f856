#include "maker/pixels/pixel_data_writing.h"

#include "foundation/dicom/model/tags.h"

#include <algorithm>

namespace quorvex {
namespace {

/// Gives the frames to the object as it asks for them, in pieces whose length an int can hold.
class NativeValue {
public:
    explicit NativeValue(PlainFrameSource& frames) : frames_(frames) {}

    static MC_STATUS Give(int, std::uint32_t, void* user, int, int* length, void** data,
                          int* last) {
        return static_cast<NativeValue*>(user)->GivePiece(*length, *data, *last);
    }
    /// Why the value was refused.
    [[nodiscard]] QUORVEX_MESSAGE Failure() const noexcept {
        return result_ == QVM_SUCCESS ? QVM_ERROR_FAILED_TO_SET_PIXEL_DATA : result_;
    }

private:
    MC_STATUS GivePiece(int& length, void*& data, int& last) {
        constexpr std::size_t kLongestPiece = std::size_t{1} << 30U;
        if (rest_.empty() && !frames_.AreAtEnd()) result_ = frames_.Next(rest_);
        if (result_ != QVM_SUCCESS) return kMcRefuse;
        const auto piece = rest_.first(std::min(rest_.size(), kLongestPiece));
        rest_ = rest_.subspan(piece.size());
        length = static_cast<int>(piece.size());
        data = piece.data();
        last = rest_.empty() && frames_.AreAtEnd() ? 1 : 0;
        return kMcContinue;
    }

    PlainFrameSource& frames_;
    std::span<unsigned char> rest_;
    QUORVEX_MESSAGE result_ = QVM_SUCCESS;
};

}  // namespace

QUORVEX_MESSAGE PutNativeFrames(PlainFrameSource& frames, bool areWords, CDcmObject& object) {
    NativeValue value(frames);
    object.RemoveValue(tag::kExtendedOffsetTable);
    object.RemoveValue(tag::kExtendedOffsetTableLengths);
    if (object.SetValue(tag::kPixelData, &value, NativeValue::Give) != kDcmSuccess)
        return value.Failure();
    if (areWords) object.SetValueRepresentation(tag::kPixelData, MC_VR_OW);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE PutCodedFrames(std::vector<std::vector<unsigned char>>& frames,
                               CDcmObject& object) {
    std::vector<unsigned char*> starts;
    std::vector<unsigned long> lengths;
    for (auto& frame : frames) {
        starts.push_back(frame.data());
        lengths.push_back(frame.size());
    }
    const bool isPut = object.SetValueEx(tag::kPixelData, static_cast<int>(frames.size()),
                                         lengths.data(), starts.data()) == kDcmSuccess;
    return isPut ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
}

}  // namespace quorvex
