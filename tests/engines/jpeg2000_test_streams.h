/// Codestreams for the tests of the JPEG 2000 engine.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

#include <vector>

namespace quorvex::testing {

struct Jpeg2000Picture {
    int columns = 0;
    int rows = 0;
    int samples = 1;
    int bytesPerSample = 1;
    int bitDepth = 8;
    bool isSigned = false;
};

inline PegasusParameters Describe(const Jpeg2000Picture& picture) {
    PegasusParameters parameters;
    parameters.columns = picture.columns;
    parameters.rows = picture.rows;
    parameters.samples = picture.samples;
    parameters.bytesPerSample = picture.bytesPerSample;
    parameters.bitDepth = picture.bitDepth;
    parameters.isSigned = picture.isSigned;
    return parameters;
}

inline bool RunAll(PegasusParameters& parameters) {
    for (int request : {kPegasusBegin, kPegasusWork, kPegasusEnd}) {
        if (Pegasus(parameters, request) != kPegasusDone) return false;
    }
    return true;
}

/// The codestream; empty where the coder refuses. `target` 0: lossless.
inline std::vector<unsigned char> CodeJpeg2000(const Jpeg2000Picture& picture,
                                               const std::vector<unsigned char>& pixels,
                                               std::size_t target = 0) {
    PegasusParameters parameters = Describe(picture);
    parameters.operation = kPegasusEncode;
    parameters.input = pixels;
    parameters.isLossless = target == 0;
    parameters.targetBytes = target;
    return RunAll(parameters) ? parameters.coded : std::vector<unsigned char>{};
}

/// The pixels; empty where the decoder refuses.
inline std::vector<unsigned char> DecodeJpeg2000Pixels(const Jpeg2000Picture& picture,
                                                       const std::vector<unsigned char>& stream,
                                                       bool* isIncomplete = nullptr) {
    PegasusParameters parameters = Describe(picture);
    parameters.input = stream;
    std::vector<unsigned char> pixels(static_cast<std::size_t>(
        picture.columns * picture.rows * picture.samples * picture.bytesPerSample));
    parameters.output = pixels;
    if (PegasusQuery(parameters) == 0 || !RunAll(parameters)) return {};
    if (isIncomplete != nullptr) *isIncomplete = parameters.isIncomplete;
    return pixels;
}

}  // namespace quorvex::testing
