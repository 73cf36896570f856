/// Encapsulated Pixel Data that lies in a buffer: its items, found by their lengths.
#pragma once

#include "foundation/dicom/frames/frame_boundaries.h"
#include "foundation/dicom/model/element.h"

#include <vector>

namespace quorvex::dicom {

struct EncapsulatedItems {
    Bytes offsetTable;
    std::vector<Fragment> fragments;
    /// The item tags led to a sequence delimiter or exactly to the end, as they would not among
    /// native words that happen to look like an Item tag.
    bool isChained = false;
};

/// True when the bytes begin with an Item tag, little endian as encapsulated data always is.
[[nodiscard]] bool BeginsWithItem(Bytes value) noexcept;

/// Walks the items from the first byte of a Pixel Data value on, by their lengths: bytes inside a
/// fragment that look like a delimiter mean nothing. A length past the end gives what is there; the
/// walk ends at the sequence delimiter or at anything else that is no item. A first item that
/// begins an image is a fragment, and the offset table is empty.
[[nodiscard]] EncapsulatedItems ItemsIn(Bytes value, TRANSFER_SYNTAX syntax);

/// True for a value of nothing but items, in either byte order: a writer that names a native
/// big-endian syntax over fragments may have byte-swapped their item headers too.
[[nodiscard]] bool IsChainOfItems(Bytes value) noexcept;

/// The items of a value that the reader has taken apart already.
[[nodiscard]] EncapsulatedItems ItemsIn(const FragmentView& view);

}  // namespace quorvex::dicom
