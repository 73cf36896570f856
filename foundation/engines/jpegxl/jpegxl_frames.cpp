#include "foundation/engines/jpegxl/jpegxl_frames.h"

#include "foundation/engines/jpegxl/jpegxl_bits.h"
#include "foundation/types/limits.h"

#include <algorithm>

namespace quorvex {
namespace {

enum FrameType : unsigned { kShown, kLowest, kReference, kShownSlowly };
enum Flags : unsigned { kUsesLowest = 32 };

constexpr std::size_t kHalfBits = 16;  // of a number of half precision

std::uint64_t Divided(std::uint64_t number, std::uint64_t by) noexcept {
    return (number + by - 1) / by;
}

/// One frame's header, read as far as its kind is supported.
class FrameHeader {
public:
    FrameHeader(std::span<const unsigned char> frame, const JpegXlPicture& picture) noexcept
        : bits_(frame), picture_(picture), columns_(picture.columns), rows_(picture.rows) {}

    [[nodiscard]] JpegXlFrames Read() noexcept {
        if (bits_.TakeFlag()) return JpegXlFrames::kPlain;  // all as usual: the picture
        type_ = bits_.Take(2);
        if (type_ == kShownSlowly) return JpegXlFrames::kUnsupported;
        isModular_ = bits_.TakeFlag();
        ReadCoding();
        if (type_ != kReference) ReadPasses();
        unsigned level = 0;
        if (type_ == kLowest) level = bits_.Take(2) + 1;
        if (type_ != kLowest && bits_.TakeFlag() && !ReadSize()) return JpegXlFrames::kUnsupported;
        columns_ = Divided(columns_, std::uint64_t{1} << 3 * level);
        rows_ = Divided(rows_, std::uint64_t{1} << 3 * level);
        if (type_ == kShown) {
            const bool replaces = bits_.Take(2) == 0;
            if (!replaces || !bits_.TakeFlag()) return JpegXlFrames::kUnsupported;
            return bits_.AreExhausted() ? JpegXlFrames::kDamaged : JpegXlFrames::kPlain;
        }
        return ReadRest();
    }

    [[nodiscard]] bool IsLast() const noexcept { return type_ == kShown; }
    /// A frame of references can need no more than all pixels of the picture, loosely packed.
    [[nodiscard]] bool IsTooLarge() const noexcept {
        const std::uint64_t pixels = std::uint64_t{picture_.columns} * picture_.rows;
        return columns_ > UINT32_MAX || rows_ > UINT32_MAX ||
               columns_ * rows_ > 2 * pixels + kHiddenPixelAllowance;
    }

    /// What lies behind this frame; empty for nothing.
    [[nodiscard]] std::span<const unsigned char> Behind() noexcept {
        std::uint64_t length = 0;
        bits_.GoToByte();
        for (std::uint64_t left = Sections(); left > 0 && !bits_.AreExhausted(); --left)
            length += bits_.TakeOneOf({{{10, 0}, {14, 1024}, {22, 17408}, {30, 4211712}}});
        return bits_.Rest(length);
    }

private:
    void ReadCoding() noexcept {
        const bool usesLowest = (bits_.TakeLong() & kUsesLowest) != 0;
        const bool isYcc = !picture_.isXyb && bits_.TakeFlag();
        if (isYcc && !usesLowest) ReadChroma();
        if (!usesLowest) upsampling_ = 1U << bits_.Take(2);
        if (isModular_) {
            groupSide_ = 128U << bits_.Take(2);
        } else if (picture_.isXyb) {
            bits_.Skip(6);  // coarseness of two components
        }
    }
    void ReadChroma() noexcept {
        for (int i = 0; i < 3; ++i) {
            const unsigned mode = bits_.Take(2);
            widthShift_ = std::max(widthShift_, mode == 1 || mode == 2 ? 1U : 0U);
            heightShift_ = std::max(heightShift_, mode == 1 || mode == 3 ? 1U : 0U);
        }
    }
    void ReadPasses() noexcept {
        passes_ = bits_.TakeOneOf({{{0, 1}, {0, 2}, {0, 3}, {3, 4}}});
        if (passes_ == 1) return;
        const unsigned smaller = bits_.TakeOneOf({{{0, 0}, {0, 1}, {0, 2}, {1, 3}}});
        bits_.Skip(std::size_t{2} * (passes_ - 1 + smaller));
        for (unsigned i = 0; i < smaller; ++i)
            (void)bits_.TakeOneOf({{{0, 0}, {0, 1}, {0, 2}, {3, 0}}});
    }
    /// False for a shown frame that is not the whole picture.
    bool ReadSize() noexcept {
        const auto number = [&] {
            return bits_.TakeOneOf({{{8, 0}, {11, 256}, {14, 2304}, {30, 18688}}});
        };
        bool isMoved = false;
        if (type_ == kShown) {
            const auto across = number();
            const auto down = number();
            isMoved = across != 0 || down != 0;
        }
        const auto columns = number();
        const auto rows = number();
        if (columns != 0) columns_ = columns;
        if (rows != 0) rows_ = rows;
        const bool isWhole = columns_ == picture_.columns && rows_ == picture_.rows;
        return type_ != kShown || (!isMoved && isWhole);
    }
    /// From behind the size to the table of contents, of a hidden frame.
    JpegXlFrames ReadRest() noexcept {
        if (type_ == kReference) bits_.Skip(2 + 1);  // its place, and whether before colours
        const unsigned name = bits_.TakeOneOf({{{0, 0}, {4, 0}, {5, 16}, {10, 48}}});
        bits_.Skip(std::size_t{8} * name);
        const bool isKnown = ReadFilter() && bits_.TakeLong() == 0;
        const bool isOrdered = isKnown && !bits_.TakeFlag();
        if (bits_.AreExhausted()) return JpegXlFrames::kDamaged;
        return isOrdered ? JpegXlFrames::kPlain : JpegXlFrames::kUnsupported;
    }
    /// False for an extension.
    bool ReadFilter() noexcept {
        constexpr std::size_t kSmoothWeights = 6;
        constexpr std::size_t kSharpness = 8;
        constexpr std::size_t kEdgeWeights = 5;
        if (bits_.TakeFlag()) return true;
        if (bits_.TakeFlag() && bits_.TakeFlag()) bits_.Skip(kSmoothWeights * kHalfBits);
        if (bits_.Take(2) != 0) {
            if (!isModular_ && bits_.TakeFlag()) bits_.Skip(kSharpness * kHalfBits);
            if (bits_.TakeFlag()) bits_.Skip(kEdgeWeights * kHalfBits);
            if (bits_.TakeFlag()) bits_.Skip((isModular_ ? std::size_t{3} : 4) * kHalfBits);
            if (isModular_) bits_.Skip(kHalfBits);
        }
        return bits_.TakeLong() == 0;
    }

    [[nodiscard]] std::uint64_t Sections() const noexcept {
        const std::uint64_t columns = Divided(columns_, upsampling_);
        const std::uint64_t rows = Divided(rows_, upsampling_);
        const std::uint64_t groups = Divided(columns, groupSide_) * Divided(rows, groupSide_);
        if (groups == 1 && passes_ == 1) return 1;
        const std::uint64_t across = Divided(columns, 8U << widthShift_) << widthShift_;
        const std::uint64_t down = Divided(rows, 8U << heightShift_) << heightShift_;
        return 2 + Divided(across, groupSide_) * Divided(down, groupSide_) + groups * passes_;
    }

    JpegXlBits bits_;
    JpegXlPicture picture_;
    unsigned type_ = kShown;
    bool isModular_ = false;
    unsigned widthShift_ = 0;
    unsigned heightShift_ = 0;
    unsigned upsampling_ = 1;
    unsigned groupSide_ = 256;
    unsigned passes_ = 1;
    std::uint64_t columns_;
    std::uint64_t rows_;
};

}  // namespace

JpegXlFrames MeasureFrames(std::span<const unsigned char> frames,
                           const JpegXlPicture& picture) noexcept {
    for (int hidden = 0; hidden <= kMostHiddenFrames && !frames.empty(); ++hidden) {
        FrameHeader frame(frames, picture);
        const JpegXlFrames read = frame.Read();
        if (read != JpegXlFrames::kPlain || frame.IsLast()) return read;
        if (frame.IsTooLarge()) return JpegXlFrames::kDamaged;
        frames = frame.Behind();
    }
    return JpegXlFrames::kDamaged;
}

}  // namespace quorvex
