/// A presentation state by the rules of the DICOM standard (PS3.3 A.33.1).
#pragma once

#include "maker/attribute_writing.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace quorvex {

/// A record, and the image that it is for: what the record does not name is that of the source.
struct ImageState {
    const CXGSPSInfo* record = nullptr;
    CString series;
    CString sopClass;
    CString instance;
    std::int32_t frame = 0;  ///< from 1; 0 for all of them
    std::int32_t columns = 0;
    std::int32_t rows = 0;

    /// An item with a Referenced Image Sequence of this one reference.
    [[nodiscard]] CDcmItem Item() const;
};

/// What the modules are written from. All is kept by reference.
struct StateDraft {
    const CDcmObject& source;
    std::span<const ImageState> images;  ///< at least one
    CDcmObject& target;

    /// Whose data a state has only once.
    [[nodiscard]] const CXGSPSInfo& First() const noexcept { return *images.front().record; }
    /// The state that this record was read from; null where that was an image.
    [[nodiscard]] const CDcmObject* Earlier() const noexcept { return First().state.get(); }
};

/// @param infos  at least one record, none of them null
/// @return as `CXGSPSObject::GetOutcome`
[[nodiscard]] QUORVEX_MESSAGE MakeStandardState(const CDcmObject& source,
                                                std::span<CXGSPSInfo* const> infos,
                                                std::unique_ptr<CDcmObject>& made);

// The modules, one by one.
void WriteDisplayedAreas(const StateDraft& draft);
void WriteShutters(const StateDraft& draft);
void WriteModality(const StateDraft& draft);
void WriteVOI(const StateDraft& draft);
/// What an earlier state has in no field: overlays, curves, who made it. Ahead of the shutters,
/// which take a group that is free, and of the annotations, which name the layers.
void WriteEarlierAttributes(const StateDraft& draft);
void WritePresentationLUT(const StateDraft& draft);
void WriteAnnotations(const StateDraft& draft);

}  // namespace quorvex
