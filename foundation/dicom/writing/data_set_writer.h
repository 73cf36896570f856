/// Writes data sets in any encoding.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/writing/byte_sink.h"

#include <cstddef>
#include <functional>

namespace quorvex::dicom {

/// How a main data set is written.
struct WritingRules {
    Encoding encoding;
    /// All text is written in UTF-8, and Specific Character Set says so.
    bool isForcedToUtf8 = false;
    /// Fragments of the main data set's Pixel Data are written as one native value.
    bool joinsPixelData = false;
    /// Bits Allocated, by which native Pixel Data are words of 8, 16, 32 or 64 bits.
    std::uint32_t bitsAllocated = 0;
    /// Is called where more of the main data set's Pixel Data belongs: behind the fragments that
    /// are there, or behind the header of a native value.
    std::function<void()> atPixels = {};
    std::size_t nativePixelBytes = 0;  ///< of a native value that atPixels() stands for
};

/// Writes the elements of `main` except group 0002 and group lengths. Sequences and items get
/// undefined lengths, odd values a pad byte; values are byte-swapped where the encoding asks for
/// it. A value too long for the short length of its VR is written as UN.
void WriteDataSet(const DataSet& main, const WritingRules& rules, ByteSink& sink);

/// Writes file meta information: the group length, then the elements, explicit VR little endian.
void WriteMetaInformation(const DataSet& meta, ByteSink& sink);

}  // namespace quorvex::dicom
