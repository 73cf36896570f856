/// Native Pixel Data as an object describes it: its frames by their index, without a walk.
#pragma once

#include "foundation/dicom/frames/native_frames.h"
#include "foundation/dicom/model/tags.h"

#include <cstdint>
#include <optional>

namespace quorvex::dicom {

class NativePixels {
public:
    /// The frames of a native value of `valueBytes` that lies elsewhere and is encoded as the
    /// object says. `frameBytes` 0 takes the size that the header gives.
    [[nodiscard]] static NativeFrames In(const CDcmObject& object, std::size_t valueBytes,
                                         std::size_t frameBytes);
    /// The frames of the object's own Pixel Data, or of another element that holds pixels, valid
    /// until the object changes. Nothing where it has none, or where it is encapsulated.
    [[nodiscard]] static std::optional<NativeFrames> Of(const CDcmObject& object,
                                                        std::uint32_t tag = tag::kPixelData);
};

}  // namespace quorvex::dicom
