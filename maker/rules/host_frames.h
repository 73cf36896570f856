/// Frames that a host supplies, in the form in which objects hold them.
#pragma once

#include "codec/stored_coding.h"
#include "maker/pixels/frame_supply.h"
#include "maker/pixels/pixel_data_writing.h"
#include "maker/rules/making_rules.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace quorvex {

/// Samples of a new object, and how the host's frames become such samples.
struct HostFrames {
    StoredForms forms;  ///< of the samples, whatever their coding
    CString photometric;
    bool areBlueGreenRed = false;  ///< a pixel is B, G, R and a fourth byte
    std::size_t givenBytes = 0;    ///< of a host's frame
    std::size_t frameBytes = 0;    ///< of a stored one
};

/// @return QVM_SUCCESS, or the code of what objects cannot hold: rows and columns of 0; two samples
///         a pixel; samples that are not whole bytes; more bits stored than allocated; a
///         photometric interpretation that is neither grey nor a palette
[[nodiscard]] QUORVEX_MESSAGE DescribeHostFrames(const NewImage& image, HostFrames& frames);

/// The frames one after the other as they are stored, each gone before the next one comes.
class PackedFrames final : public PlainFrameSource {
public:
    PackedFrames(FrameSupply& supply, const HostFrames& frames)
        : supply_(supply), frames_(frames), count_(supply.Count()) {}
    [[nodiscard]] bool AreAtEnd() const override { return next_ == count_; }
    /// @return QVM_SUCCESS; QVM_ERROR_NULL_SOURCE for a frame that is null
    QUORVEX_MESSAGE Next(std::span<unsigned char>& bytes) override;

private:
    FrameSupply& supply_;
    const HostFrames& frames_;
    int count_;
    int next_ = 0;
    std::unique_ptr<unsigned char[]> frame_;
};

}  // namespace quorvex
