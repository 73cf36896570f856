/// An object whose Pixel Data is being made, while the one that it will replace stays as it was.
#pragma once

#include "maker/pixels/pixel_attributes.h"
#include "quorvex/CxDcmMaker.h"

#include <utility>

namespace quorvex {

struct PixelDraft {
    PixelDraft(_DCM_PIXEL_INFO wanted, const CDcmObject& withTables, const CDcmObject& target)
        : format(std::move(wanted)), palette(withTables), object(target) {}

    _DCM_PIXEL_INFO format;                   ///< of the pixels to be written
    PixelLayout incoming{};                   ///< of the frames as they come
    PixelLayout outgoing{};                   ///< of the frames before they are coded
    const TransferSyntax* written = nullptr;  ///< of the new object
    CDcmObject palette;                       ///< has the colour tables of indices
    CDcmObject object;                        ///< shares with its original all that does not change
};

}  // namespace quorvex
