/// What "Quorvex.INI" beside the host's executable says of the maker of new objects.
#pragma once

#include "quorvex/Types.h"

#include <string_view>

namespace quorvex {

struct MakerConfiguration {
    CString uidPrefix;
    CString manufacturer;
    CString modelName;
};

/// The values of a maker without a configuration file.
[[nodiscard]] MakerConfiguration DefaultConfiguration();

/// Reads strict pairs of lines, a tag and its value, in UTF-8; they may end in CR LF, and a
/// byte-order mark may lie ahead of them. A first line
/// that is no tag is skipped with the line behind it. What no tag names stays empty.
[[nodiscard]] MakerConfiguration ParseConfiguration(std::string_view text);

/// The prefix that the file gives, read anew; empty without file or prefix.
[[nodiscard]] CString ConfiguredUidRoot();

/// Reads the file anew; the defaults where it cannot be read.
[[nodiscard]] MakerConfiguration ReadConfiguration();

}  // namespace quorvex
