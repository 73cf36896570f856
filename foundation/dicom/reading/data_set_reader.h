/// Whole data sets: Part 10 files and bare streams, in whatever encoding they really have.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/reading/byte_feed.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorvex::dicom {

struct ReadOutcome {
    DCMRESULT result = kDcmFailure;
    /// First byte of the element that stopped the reading, or the end of the data; on failure where
    /// the data set should have begun.
    std::size_t offset = 0;
    std::shared_ptr<DataSet> dataSet;  ///< never null; on failure what could be read
    const char* failure = "";
};

/// Reads a file with preamble and marker. A deflated data set is read whole, in inflated bytes; the
/// offset then is that of the stop in the file as it would be without compression.
[[nodiscard]] ReadOutcome ReadPart10(ByteFeed& feed, std::uint32_t stopTag);

/// Reads a data set whose first element is of the group of `startTag`, or meta information and any
/// data set behind it.
[[nodiscard]] ReadOutcome ReadBareDataSet(ByteFeed& feed, std::uint32_t startTag,
                                          std::uint32_t stopTag, TRANSFER_SYNTAX syntax);

}  // namespace quorvex::dicom
