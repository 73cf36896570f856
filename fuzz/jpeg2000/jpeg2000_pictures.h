/// A codestream decoded in several ways that must agree.
#pragma once

#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "fuzz/target.h"

#include <cstring>
#include <optional>
#include <vector>

namespace quorvex::fuzz {

inline constexpr std::uint64_t kMostJpeg2000Samples = 1 << 19;

/// One component's samples, four bytes each, in a block of exactly their size.
struct Plane {
    j2k::Rect area;
    std::vector<std::int32_t> samples;
};

inline bool IsDecoded(j2k::Outcome outcome) {
    return outcome == j2k::Outcome::kDone || outcome == j2k::Outcome::kIncomplete;
}

struct Picture {
    j2k::Outcome outcome = j2k::Outcome::kRefused;
    std::vector<Plane> planes;
};

/// Nothing where the picture is too large to be worth its time.
inline std::optional<Picture> DecodePicture(const j2k::Decoder& decoder,
                                            const j2k::Wanted& wanted) {
    Picture picture;
    std::vector<j2k::OutputPlane> outputs;
    std::uint64_t samples = 0;
    const auto& components = decoder.Size().components;
    if (components.size() > 64) return std::nullopt;
    for (unsigned c = 0; c < components.size(); ++c) {
        const j2k::Rect area = decoder.Area(c, wanted);
        samples += std::uint64_t{area.Width()} * area.Height();
        if (samples > kMostJpeg2000Samples) return std::nullopt;
        const auto count = std::size_t{area.Width()} * area.Height();
        picture.planes.push_back({area, std::vector<std::int32_t>(count, 0x5A5A5A5A)});
        j2k::OutputPlane output;
        output.data = reinterpret_cast<unsigned char*>(picture.planes.back().samples.data());
        output.sampleStride = 4;
        output.rowStride = static_cast<std::ptrdiff_t>(area.Width()) * 4;
        output.bytesPerSample = 4;
        output.keepsSign = true;
        output.width = area.Width();
        output.height = area.Height();
        outputs.push_back(output);
    }
    picture.outcome = decoder.Decode(wanted, outputs);
    return picture;
}

inline bool HasSameSamples(const Picture& one, const Picture& other) {
    for (std::size_t c = 0; c < one.planes.size(); ++c)
        if (one.planes[c].samples != other.planes[c].samples) return false;
    return one.outcome == other.outcome;
}

/// `part` is what `whole` has there.
inline bool IsPartOf(const Picture& part, const Picture& whole) {
    for (std::size_t c = 0; c < part.planes.size(); ++c) {
        const Plane& small = part.planes[c];
        const Plane& large = whole.planes[c];
        for (std::uint32_t y = small.area.y0; y < small.area.y1; ++y) {
            const auto width = std::size_t{small.area.Width()};
            const auto* own = small.samples.data() + (y - small.area.y0) * width;
            const auto* there = large.samples.data() +
                                (y - large.area.y0) * std::size_t{large.area.Width()} +
                                (small.area.x0 - large.area.x0);
            if (std::memcmp(own, there, width * sizeof(std::int32_t)) != 0) return false;
        }
    }
    return true;
}

/// The whole picture, the same by another order of tasks, and a part of it.
inline void DecodeInEveryWay(j2k::Bytes stream, Options& options) {
    j2k::Decoder decoder;
    if (decoder.Open(stream) != j2k::Outcome::kDone) return;
    j2k::Wanted wanted;
    wanted.discardedLevels = options.Below(decoder.Levels() + 1);
    if (options.Flag()) wanted.layers = 1 + options.Below(8);
    const auto whole = DecodePicture(decoder, wanted);
    if (!whole || !IsDecoded(whole->outcome)) return;
    wanted.executor = {.threads = 2, .run = [](unsigned count, const auto& task) {
                           for (unsigned i = count; i-- > 0;) task(i);
                       }};
    const auto shared = DecodePicture(decoder, wanted);
    Require(shared && HasSameSamples(*shared, *whole));
    const j2k::Rect& image = decoder.Size().image;
    j2k::Rect& region = wanted.region;
    region.x0 = options.Below(1 + std::min(image.Width(), 60000U));
    region.y0 = options.Below(1 + std::min(image.Height(), 60000U));
    region.x1 = region.x0 + options.Below(300);
    region.y1 = region.y0 + options.Below(300);
    if (region.IsEmpty()) return;
    const auto part = DecodePicture(decoder, wanted);
    Require(part.has_value());
    const bool isEmpty = std::any_of(part->planes.begin(), part->planes.end(),
                                     [](const Plane& plane) { return plane.samples.empty(); });
    if (whole->outcome != j2k::Outcome::kDone || isEmpty) return;
    Require(part->outcome == j2k::Outcome::kDone && IsPartOf(*part, *whole));
}

}  // namespace quorvex::fuzz
