/// The stages between stored values and the screen, as an image or a presentation state defines
/// them, with nothing rounded and nothing cut.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quorvex {

/// A look-up table with as many entries as its descriptor counts; never empty.
struct GreyTable {
    std::vector<std::uint16_t> entries;
    std::int64_t first = 0;  ///< the value that entry 0 belongs to; those below it take entry 0
    int bits = 16;           ///< of an entry: the highest one that it can have is 2^bits - 1
    CString explanation;

    [[nodiscard]] std::uint16_t At(std::int64_t value) const noexcept;
    [[nodiscard]] double Highest() const noexcept { return static_cast<double>((1U << bits) - 1); }
};

/// From stored to modality values: a table, or slope and intercept.
struct ModalityStage {
    double slope = 1.0;
    double intercept = 0.0;
    std::shared_ptr<const GreyTable> table;  ///< wins where it is there

    [[nodiscard]] double operator()(std::int64_t stored) const noexcept;
    /// What is not a number counts as the lowest value.
    [[nodiscard]] double OfReal(double stored) const noexcept;
};

/// A window, in modality units (DICOM PS3.3 C.11.2.1.2 and C.11.2.1.3).
struct GreyWindow {
    double centre = 0.0;
    double width = 1.0;  ///< above 0; 1 or more where the function is linear
    VoiFunction function = VoiFunction::kLinear;

    /// 0 (black) to 1 (white).
    [[nodiscard]] double operator()(double modalityValue) const noexcept;
    /// The window that shows `low` black, `high` white and all between in proportion.
    [[nodiscard]] static GreyWindow Over(double low, double high) noexcept;
};

/// Nothing for a width that is not above 0, or a number that is not finite. A linear window
/// narrower than 1, which has no meaning, counts as an exact one.
[[nodiscard]] std::optional<GreyWindow> MakeWindow(double centre, double width,
                                                   VoiFunction function);

struct ExplainedWindow {
    GreyWindow window;
    CString explanation;
};

/// The windows and tables that an object offers; one of them is chosen. A table comes before the
/// windows in the order of choices.
struct VoiStage {
    std::vector<std::shared_ptr<const GreyTable>> tables;
    std::vector<ExplainedWindow> windows;

    [[nodiscard]] std::size_t ChoiceCount() const noexcept {
        return tables.size() + windows.size();
    }
};

/// From the VOI stage's 0 .. 1 to the screen's.
struct PresentationStage {
    bool isInverse = false;
    std::shared_ptr<const GreyTable> table;  ///< in place of `isInverse`
};

/// Stored values that are no part of the image.
struct PaddingRange {
    std::int64_t low = 0;
    std::int64_t high = 0;
    [[nodiscard]] bool Holds(std::int64_t stored) const noexcept {
        return low <= stored && stored <= high;
    }
};

/// The same of real samples.
struct RealPaddingRange {
    double low = 0.0;
    double high = 0.0;
    [[nodiscard]] bool Holds(double stored) const noexcept {
        return low <= stored && stored <= high;
    }
};

struct GreyStages {
    ModalityStage modality;
    VoiStage voi;
    PresentationStage presentation;
};

/// What the elements of a grey image can be.
struct StoredForm {
    int bitsStored = 16;
    bool isSigned = false;

    [[nodiscard]] std::int64_t Lowest() const noexcept {
        return isSigned ? -(std::int64_t{1} << (bitsStored - 1)) : 0;
    }
    [[nodiscard]] std::int64_t Highest() const noexcept {
        return (std::int64_t{1} << (isSigned ? bitsStored - 1 : bitsStored)) - 1;
    }
};

/// The stages of an image: those of its header, MONOCHROME1 as an inverse presentation.
/// @param header  with what the frame's functional groups say at its top level
[[nodiscard]] GreyStages ReadImageStages(const CDcmObject& header, const StoredForm& form);

/// The stages that a presentation state defines for a frame (counted from 1) of an image. What it
/// does not define is an identity: nothing of the image's own counts (DICOM PS3.4 N.2).
[[nodiscard]] GreyStages ReadStateStages(const CDcmObject& state, const CString& imageUID,
                                         std::int32_t frameNumber, const StoredForm& form);

/// Nothing where the header states no Pixel Padding Value.
[[nodiscard]] std::optional<PaddingRange> ReadPadding(const CDcmObject& header,
                                                      const StoredForm& form);

/// Of an image of real samples: Float or Double Float Pixel Padding Value and its range limit.
[[nodiscard]] std::optional<RealPaddingRange> ReadRealPadding(const CDcmObject& header,
                                                              SampleType sampleType);

/// Whether a state refers to a frame of an image at all. One without references refers to
/// everything.
[[nodiscard]] bool RefersTo(const CDcmObject& state, const CString& imageUID,
                            std::int32_t frameNumber);

}  // namespace quorvex
