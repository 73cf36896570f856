// One JPEG 2000 codestream, a resolution, layers and a region of it drawn from the last bytes: the
// region has the same samples as the whole, however damaged the stream is.
#include "fuzz/jpeg2000/jpeg2000_pictures.h"

#include <algorithm>

namespace {

using namespace quorvex;

void Run(fuzz::Options& options) {
    const std::vector<unsigned char> stream = options.Front();
    j2k::Decoder decoder;
    if (decoder.Open(stream) != j2k::Outcome::kDone) return;
    j2k::Wanted wanted;
    wanted.discardedLevels = options.Below(6);
    wanted.layers = options.Flag() ? 65535 : options.Below(4);
    const auto whole = fuzz::DecodePicture(decoder, wanted);
    if (!whole || !fuzz::IsDecoded(whole->outcome)) return;
    wanted.region.x0 = options.Word();
    wanted.region.y0 = options.Word();
    wanted.region.x1 = wanted.region.x0 + 1 + options.Byte();
    wanted.region.y1 = wanted.region.y0 + 1 + options.Byte();
    const auto part = fuzz::DecodePicture(decoder, wanted);
    if (!part || !fuzz::IsDecoded(part->outcome)) return;
    const bool isEmpty = std::any_of(part->planes.begin(), part->planes.end(),
                                     [](const auto& plane) { return plane.samples.empty(); });
    if (!isEmpty) fuzz::Require(fuzz::IsPartOf(*part, *whole));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.largestInput = 1 << 16, .options = 16}, Run);
}
