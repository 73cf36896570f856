/// What the numbers of a decoded frame are.
#pragma once

#include "quorvex/CxDcmParser.h"

#include <cstddef>
#include <optional>
#include <string>

namespace quorvex::tools {

/// Shape and type of frames as CxDcmParser::GetAFrameUnpacked gives them.
struct FrameShape {
    int frames = 0;  ///< that the object has
    std::size_t rows = 0;
    std::size_t columns = 0;
    std::size_t samples = 1;
    std::size_t sampleBytes = 1;
    bool isSigned = false;
    bool isFloat = false;

    [[nodiscard]] std::size_t FrameBytes() const noexcept {
        return rows * columns * samples * sampleBytes;
    }
    /// "2 frames of 512 rows x 512 columns x 3 samples, uint8"; a type as numpy names it.
    [[nodiscard]] std::string Text(int frameCount) const;
    /// "uint16", "float32".
    [[nodiscard]] std::string TypeName() const;
    /// The header of a .npy file (format 1.0) with that many frames: an array of frames, rows,
    /// columns, samples, where one frame and one sample have no dimension.
    [[nodiscard]] std::string NumpyHeader(int frameCount) const;
};

/// Nothing for an object without a usable image.
std::optional<FrameShape> ReadFrameShape(CxDcmParser& parser);

}  // namespace quorvex::tools
