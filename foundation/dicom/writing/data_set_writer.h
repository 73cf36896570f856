/// Writes data sets down, in any encoding.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/writing/byte_sink.h"

namespace quorvex::dicom {

/// What the writing of a main data set takes beside its elements.
struct WritingRules {
    Encoding encoding;
    /// All text is written in UTF-8, and Specific Character Set says so.
    bool isForcedToUtf8 = false;
    /// Pixel Data of the main data set that is held in fragments is written as one native value.
    bool joinsPixelData = false;
    /// Bits Allocated; the words of native Pixel Data have that many bits, or 16.
    std::uint32_t bitsAllocated = 0;
};

/// Writes the elements of `main` but for group 0002 and group lengths. Sequences and items get
/// undefined lengths, odd values a pad byte; values are turned to the order of the encoding. A value
/// too long for the short length of its VR is written as UN.
void WriteDataSet(const DataSet& main, const WritingRules& rules, ByteSink& sink);

/// Writes file meta information: the group length, then the elements, explicit VR little endian.
void WriteMetaInformation(const DataSet& meta, ByteSink& sink);

}  // namespace quorvex::dicom
