/// The character sets in which the text of a data set is written.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/text/text_codec.h"

namespace quorvex::dicom {

/// In what the text of one data set is stored, and in what it is to be written.
struct TextTarget {
    CharacterSets stored;
    CharacterSets written;
    bool isForcedToUtf8 = false;  ///< all text is written in UTF-8, whatever the object says

    [[nodiscard]] static TextTarget OfMain(const DataSet& main, bool isForcedToUtf8);
    /// The same for an item of this data set.
    [[nodiscard]] TextTarget OfItem(const DataSet& item) const;
};

/// The value of a text element as it is written; nothing when the sets cannot hold it.
[[nodiscard]] std::optional<ByteBuffer> WrittenText(const Element& element, Bytes value,
                                                    const TextTarget& target);

/// True when the character sets of `main` and its items can hold all of its text.
[[nodiscard]] bool HoldsAllText(const DataSet& main);

}  // namespace quorvex::dicom
