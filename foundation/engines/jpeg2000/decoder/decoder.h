/// Decodes JPEG 2000 codestreams (ISO/IEC 15444-1, high throughput by 15444-15): all or part of
/// them, into the caller's memory.
///
/// Whatever a stream says is checked before it is believed. Memory goes with the width of a tile
/// and the length of its stream, not with the picture's area.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/codestream.h"
#include "foundation/engines/jpeg2000/decoder/samples/output_plane.h"

#include <cstdint>
#include <functional>
#include <span>

namespace quorvex::j2k {

/// Threads that the host lends. `run(count, task)` calls task(0) to task(count - 1), in any order
/// and at the same time, and returns when all have ended. Tasks throw nothing.
struct Executor {
    unsigned threads = 1;  ///< as many tasks are worth while; 1 for none
    std::function<void(unsigned count, const std::function<void(unsigned)>& task)> run;
};

/// What is wanted of a picture.
struct Wanted {
    unsigned discardedLevels = 0;  ///< each halves width and height
    unsigned layers = 65535;       ///< at most so many
    /// In samples of the full resolution from the picture's upper left corner; empty for all.
    Rect region;
    Executor executor;
};

enum class Outcome {
    kDone,
    kIncomplete,   ///< damaged or cut short: what could not be decoded is guessed or zero
    kUnsupported,  ///< a sound stream of a kind that is not decoded here
    kRefused,      ///< no sound header, planes that do not fit, or more work than the stream merits
};

class Decoder {
public:
    Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Reads the headers. The bytes must outlive the decoder. Throws std::bad_alloc.
    /// @return kDone, kUnsupported or kRefused
    [[nodiscard]] Outcome Open(Bytes codestream);

    [[nodiscard]] const ImageSize& Size() const noexcept { return codestream_.size; }
    [[nodiscard]] const Parameters& MainParameters() const noexcept {
        return codestream_.parameters;
    }

    /// A transform of ISO/IEC 15444-2 is asked for, which is not done here.
    [[nodiscard]] bool IsMultiComponent() const noexcept { return codestream_.isMultiComponent; }

    /// The most levels that can be discarded, in any tile.
    [[nodiscard]] unsigned Levels() const;
    /// Which of a component's samples `wanted` gives, in the coordinates of its resolution.
    [[nodiscard]] Rect Area(unsigned component, const Wanted& wanted) const noexcept;

    /// Decodes into `planes`, one for each component: every sample of Area() is written, except
    /// where the planes' width and height end, or for a result that is neither kDone nor
    /// kIncomplete. Throws std::bad_alloc.
    [[nodiscard]] Outcome Decode(const Wanted& wanted, std::span<const OutputPlane> planes) const;

private:
    [[nodiscard]] bool Fits(const Wanted& wanted, std::span<const OutputPlane> planes) const;

    Codestream codestream_;
    std::size_t length_ = 0;
};

}  // namespace quorvex::j2k
