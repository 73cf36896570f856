/// What a `CXDIPP` keeps of an image that it shows by the rules of the DICOM standard.
#pragma once

#include "pipeline/pixel_block.h"
#include "pipeline/recipe/shrunk_frame.h"
#include "pipeline/value_range.h"
#include "presentation/displayed_area.h"
#include "presentation/grey/grey_stages.h"
#include "quorvex/DicomObject.h"
#include "quorvex/Types.h"
#include "render/view_job.h"
#include "windowing/display_function.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quorvex {

/// Marks over an image, with the block that holds them.
struct OwnedMarks {
    std::uint32_t group = 0;  ///< of the plane; 0 for those in unused bits of the pixels, as one
    std::vector<unsigned char> bits;  ///< one for each pixel of the image, in overlay order
    Rgb colour{255, 255, 255};
};

/// A shutter of the size of the image.
struct OwnedShutter {
    std::vector<unsigned char> mask;  ///< a byte a pixel; not 0 hides
    Rgb colour{};
};

/// A presentation state as it applies to the frame on show.
struct AppliedState {
    GreyStages stages;
    int quarterTurns = 0;
    bool isFlipped = false;
    std::optional<DisplayedAreaSelection> area;
    std::optional<OwnedShutter> shutter;
    std::vector<OwnedMarks> overlays;
};

/// The stored values stay as they are: all that the stages do is done by the table of a render.
///
/// A grey frame's elements are 1, 2 or 4 bytes wide, sign-extended from Bits Stored; real ones are
/// as they came, 4 or 8 bytes wide.
struct StandardImage {
    StoredForm form;
    SampleType sampleType = SampleType::kInteger;
    bool isGrey = true;
    std::optional<CSize> whole;  ///< columns and rows, where it was decoded no finer than the view
    ValueSpan stored;            ///< lowest and highest element of the frame
    std::optional<PaddingRange> padding;
    std::optional<RealPaddingRange> realPadding;
    ExactSpan real;  ///< of the finite real elements that are no padding; low > high without any
    std::optional<ValueSpan> statedRange;  ///< modality values, as a host states them
    double aspect = 1.0;
    int bitsAllocated = 8;
    CString uid;
    int frameNumber = 1;  ///< counted from 1

    GreyStages own;
    std::vector<ValueColour> colours;  ///< of a supplemental palette, for every value of an element
    std::vector<OwnedMarks> overlays;
    std::optional<OwnedShutter> shutter;

    std::shared_ptr<const CDcmObject> state;  ///< the state that has been laid over, or null
    std::optional<AppliedState> applied;      ///< where it speaks of the frame on show

    std::size_t voiChoice = 0;
    std::optional<GreyWindow> userWindow;
    bool isToggled = false;  ///< black and white exchanged by the user

    [[nodiscard]] bool IsReal() const noexcept { return sampleType != SampleType::kInteger; }
    [[nodiscard]] const GreyStages& Stages() const noexcept {
        return applied ? applied->stages : own;
    }
};

/// A frame and its layers as they were shrunk for the last render.
struct ShrunkImage {
    ShrunkFrame frame;
    std::vector<unsigned char> shutter;              ///< coverage; empty without one
    std::vector<std::vector<unsigned char>> layers;  ///< coverage of each layer that is shown
    bool isOfEarlierFrame = false;  ///< another frame has come in since it was made
    bool hasShutter = false;        ///< whether it was made for one that is shown
    bool hasOverlays = false;
};

struct DisplayedImage;

/// The window that shows an image for which none is stated: up to 8 bits, over all that the stored
/// bits can hold; else over the modality values of the frame, padding left out.
[[nodiscard]] GreyWindow WindowOverValues(const DisplayedImage& image);

/// What the VOI stage does now: the user's window, the chosen window or table, or the one above.
[[nodiscard]] VoiChoice PresentVoi(const DisplayedImage& image);

/// The window that stands, for a table the one over the values that it maps.
[[nodiscard]] GreyWindow PresentWindow(const DisplayedImage& image);

}  // namespace quorvex
