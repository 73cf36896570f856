/// Supplemental palettes: colours for a part of the values of a grey image.
#pragma once

#include "parser/palette/palette_image.h"

namespace quorvex {

/// How pixel values find their colours.
struct SupplementalRules {
    bool hasSignedWords = false;  ///< values of 2 bytes
    double factor = 1.0;          ///< what entries are multiplied by; the low 8 bits are stored
    bool readsStraight = false;   ///< entries as stored, without factor
    /// The end of a table is compared as an unsigned number: a negative value lies behind every
    /// table that reaches up to 0, and no other value behind one that ends below it.
    bool hasUnsignedEnd = true;
    /// Black means that there is no colour; a table's own black becomes the darkest grey.
    bool liftsBlack = false;
};

/// The colour of every value of `indexBytes` bytes; black where one of the tables has no entry.
[[nodiscard]] PaletteColours SupplementalColours(const Palette& palette, std::size_t indexBytes,
                                                 const SupplementalRules& rules);

/// The rules that show a palette as it is meant, whatever the width of its entries.
[[nodiscard]] SupplementalRules RulesForDisplay(const Palette& palette, bool isSigned);

}  // namespace quorvex
