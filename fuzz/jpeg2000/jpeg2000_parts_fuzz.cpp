// One JPEG 2000 codestream, a resolution, layers and a region of it drawn from the last bytes: the
// region has the same samples as the whole, however damaged the stream is.
#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "fuzz/target.h"

#include <algorithm>

namespace {

using namespace quorvex;

constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 20;
constexpr std::int32_t kUntouched = 0x5A5A5A5A;

struct Samples {
    j2k::Outcome outcome = j2k::Outcome::kRefused;
    std::vector<j2k::Rect> areas;
    std::vector<std::vector<std::int32_t>> planes;
};

Samples Decode(const j2k::Decoder& decoder, const j2k::Wanted& wanted) {
    Samples samples;
    std::vector<j2k::OutputPlane> outputs;
    const auto count = static_cast<unsigned>(decoder.Size().components.size());
    std::uint64_t total = 0;
    for (unsigned i = 0; i < count; ++i) {
        const j2k::Rect area = decoder.Area(i, wanted);
        total += std::uint64_t{area.Width()} * area.Height() + 1;
        if (total > kMostSamples) return samples;
        samples.areas.push_back(area);
        samples.planes.emplace_back(std::size_t{area.Width()} * area.Height() + 1, kUntouched);
        j2k::OutputPlane plane;
        plane.data = reinterpret_cast<unsigned char*>(samples.planes.back().data());
        plane.rowStride = static_cast<std::ptrdiff_t>(area.Width()) * 4;
        plane.sampleStride = 4;
        plane.bytesPerSample = 4;
        plane.keepsSign = true;
        plane.width = area.Width();
        plane.height = area.Height();
        outputs.push_back(plane);
    }
    samples.outcome = decoder.Decode(wanted, outputs);
    for (const auto& plane : samples.planes) fuzz::Require(plane.back() == kUntouched);
    return samples;
}

void Compare(const Samples& whole, const Samples& part) {
    for (std::size_t i = 0; i < part.planes.size(); ++i) {
        const j2k::Rect& area = part.areas[i];
        const j2k::Rect& all = whole.areas[i];
        for (std::uint32_t y = area.y0; y < area.y1; ++y) {
            const auto from =
                part.planes[i].begin() + static_cast<std::ptrdiff_t>(y - area.y0) * area.Width();
            const auto like = whole.planes[i].begin() +
                              static_cast<std::ptrdiff_t>(y - all.y0) * all.Width() +
                              (area.x0 - all.x0);
            fuzz::Require(std::equal(from, from + area.Width(), like));
        }
    }
}

void Run(fuzz::Options& options) {
    const std::vector<unsigned char> stream = options.Front();
    j2k::Decoder decoder;
    if (decoder.Open(stream) != j2k::Outcome::kDone) return;
    j2k::Wanted wanted;
    wanted.discardedLevels = options.Below(6);
    wanted.layers = options.Flag() ? 65535 : options.Below(4);
    const Samples whole = Decode(decoder, wanted);
    const auto isGiven = [](const Samples& samples) {
        return samples.outcome == j2k::Outcome::kDone ||
               samples.outcome == j2k::Outcome::kIncomplete;
    };
    if (!isGiven(whole)) return;
    wanted.region.x0 = options.Word();
    wanted.region.y0 = options.Word();
    wanted.region.x1 = wanted.region.x0 + 1 + options.Byte();
    wanted.region.y1 = wanted.region.y0 + 1 + options.Byte();
    const Samples part = Decode(decoder, wanted);
    if (isGiven(part)) Compare(whole, part);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.largestInput = 1 << 16, .options = 16}, Run);
}
