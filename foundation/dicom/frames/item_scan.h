/// Encapsulated Pixel Data that is read where it lies: its items found, without their content.
#pragma once

#include "foundation/dicom/frames/frame_boundaries.h"
#include "foundation/dicom/frames/value_reader.h"
#include "foundation/dicom/model/element.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex::dicom {

/// Where a fragment's bytes lie in the value, or in the file.
struct FragmentPlace {
    std::uint64_t offset = 0;
    std::uint32_t length = 0;
};

struct ScannedItems {
    ByteBuffer offsetTable;
    std::vector<FragmentPlace> fragments;
};

/// What ItemsIn() finds in a value that lies in memory. Nothing where it cannot be read.
///
/// Of long items the headers alone are read; short ones, for which a visit each would take longer,
/// come many at a time.
[[nodiscard]] std::optional<ScannedItems> ScanItems(ValueReader& value, TRANSFER_SYNTAX syntax);

/// What IsChainOfItems() says of a value that lies in memory. Nothing where it cannot be read.
[[nodiscard]] std::optional<bool> ScanForChain(ValueReader& value);

/// FindFrames() among items that were scanned. Nothing where the value cannot be read.
[[nodiscard]] std::optional<FrameStarts> FindScannedFrames(ValueReader& value,
                                                           const ScannedItems& items,
                                                           const FrameHints& hints);

}  // namespace quorvex::dicom
