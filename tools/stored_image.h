/// What several verbs ask of a stored image.
#pragma once

#include "quorvex/CxDcmParser.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quorvex::tools {

/// The first value of an attribute as UTF-8; empty where there is none.
std::string TextOf(const CDcmObjectCommon& object, std::uint32_t tag);

/// Whether pixels are indices of a palette, as a Photometric Interpretation says.
bool IsPaletteColour(const CString& photometric);

/// One frame as `CxDcmParser::GetAFrame` gives it.
struct FetchedFrame {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    std::unique_ptr<unsigned char[]> bytes;  ///< null unless it was fetched
    unsigned long size = 0;

    [[nodiscard]] std::span<const unsigned char> Bytes() const { return {bytes.get(), size}; }
};
FetchedFrame FetchFrame(CxDcmParser& parser, int index);

}  // namespace quorvex::tools
