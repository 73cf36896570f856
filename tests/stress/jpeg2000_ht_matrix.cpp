// High-throughput streams of every kind that OpenJPH writes, through our decoder, OpenJPEG's and
// OpenJPH's own: reversible ones give the source picture, the others what the libraries give,
// within rounding. Also at lower resolutions.
// Usage: quorvex_jpeg2000_ht_matrix [FIRST [COUNT]]    each number is a stream, always the same one
#include "tests/stress/jpeg2000_codecs.h"
#include "tests/stress/jpeg2000_pictures.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace quorvex::test {
namespace {

struct Case {
    Planes picture;
    HtCoding coding;
};

Planes DrawPicture(const HtCoding& coding, std::uint32_t width, std::uint32_t height, int count,
                   Random& random) {
    Planes picture;
    picture.precision = random.Between(1, 16);
    picture.isSigned = random.OneIn(3);
    const std::int32_t half = 1 << (picture.precision - 1);
    const std::int32_t least = picture.isSigned ? -half : 0;
    const auto along = [](std::uint32_t from, std::uint32_t size, std::uint32_t step) {
        return (from + size + step - 1) / step - (from + step - 1) / step;
    };
    for (int i = 0; i < count; ++i) {
        const Pair step = i == 0 ? Pair{1, 1} : coding.subsampling;
        picture.planes.push_back(
            {along(coding.origin.x, width, step.x), along(coding.origin.y, height, step.y), {}});
        Draw(picture.planes.back(), least, least + 2 * half - 1, random);
    }
    return picture;
}

Case Make(unsigned number) {
    constexpr const char* kProgressions[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
    Random random(number);
    Case made;
    HtCoding& coding = made.coding;
    const int largest = random.OneIn(8) ? 300 : 67;
    const std::uint32_t width = random.Side(1, largest);
    const std::uint32_t height = random.Side(1, largest);
    const int count = random.OneIn(3) ? 3 : random.OneIn(6) ? random.Between(2, 4) : 1;
    if (random.OneIn(3)) coding.origin = {random.Side(0, 20), random.Side(0, 20)};
    if (random.OneIn(3)) {
        coding.tile = {random.Side(9, 90), random.Side(9, 90)};
        coding.tileOrigin = {std::min(coding.origin.x, random.Side(0, 8)),
                             std::min(coding.origin.y, random.Side(0, 8))};
    }
    const int across = random.Between(2, 10);
    coding.block = {1U << across, 1U << random.Between(2, std::min(10, 12 - across))};
    coding.levels = random.OneIn(5) ? 0 : random.Side(1, 6);
    if (random.OneIn(2)) {
        const int sizes = random.Between(1, 4);
        for (int i = 0; i < sizes; ++i) {
            coding.precincts.push_back(
                {1U << random.Between(i == 0 ? 2 : 3, 8), 1U << random.Between(i == 0 ? 2 : 3, 8)});
        }
    }
    coding.progression = kProgressions[random.Between(0, 4)];
    coding.isReversible = !random.OneIn(3);
    coding.transformsColour = count >= 3 && random.OneIn(2);
    coding.step = 0.5F / static_cast<float>(1 << random.Between(1, 12));
    if (count > 1 && !coding.transformsColour && random.OneIn(3)) {
        coding.subsampling = {random.Side(1, 2), random.Side(1, 2)};
    }
    made.picture = DrawPicture(coding, width, height, count, random);
    return made;
}

std::string Describe(const Case& made) {
    const HtCoding& c = made.coding;
    char text[300];
    std::snprintf(text, sizeof text,
                  "%u x %u at %u,%u, %zu of %d %s bits, levels %u, block %u x %u, %s, tile %u x %u "
                  "at %u,%u, %zu precincts, %s%s, steps %u x %u",
                  made.picture.planes[0].width, made.picture.planes[0].height, c.origin.x,
                  c.origin.y, made.picture.planes.size(), made.picture.precision,
                  made.picture.isSigned ? "signed" : "unsigned", c.levels, c.block.x, c.block.y,
                  c.progression, c.tile.x, c.tile.y, c.tileOrigin.x, c.tileOrigin.y,
                  c.precincts.size(), c.isReversible ? "reversible" : "irreversible",
                  c.transformsColour ? ", colour" : "", c.subsampling.x, c.subsampling.y);
    return text;
}

struct Counts {
    int streams = 0;
    int refused = 0;  ///< by the coder
    int wrong = 0;
    int libraries = 0;  ///< decodings where a library differs or fails
};

/// One stream at one resolution. The source decides where it can, else one library must agree:
/// OpenJPH's lower resolutions are wrong with tiles, and OpenJPEG's too wide with an odd origin.
void Compare(const Case& made, const Stream& stream, std::uint32_t discarded, unsigned number,
             Counts& counts) {
    static Handover handover;
    const Planes ours = DecodeByOurs(stream, discarded);
    const Planes openJpeg = handover.Ask([&] { return DecodeByOpenJpeg(stream, discarded); });
    const Planes openJph = handover.Ask([&] { return DecodeByOpenJph(stream, discarded); });
    // Both libraries and we compute irreversible samples with 24 bits.
    const bool isReversible = made.coding.isReversible;
    const std::int64_t most =
        isReversible ? 0 : 1 + (std::int64_t{1} << made.picture.precision) / 8192;
    const auto isLike = [&](const Planes& other) {
        const std::int64_t difference = Difference(ours, other);
        return difference >= 0 && difference <= most;
    };
    const bool isSource = Difference(ours, made.picture) == 0;
    const int agree = (isLike(openJpeg) ? 1 : 0) + (isLike(openJph) ? 1 : 0);
    if (agree < 2) ++counts.libraries;
    if (discarded == 0 && isReversible ? isSource : agree > 0) return;
    ++counts.wrong;
    std::printf("%u, %u levels less: source %lld, OpenJPEG %lld, OpenJPH %lld | %s\n", number,
                discarded, static_cast<long long>(Difference(ours, made.picture)),
                static_cast<long long>(Difference(ours, openJpeg)),
                static_cast<long long>(Difference(ours, openJph)), Describe(made).c_str());
}

/// A lower resolution at which the picture's origin is whole; 0 for none.
std::uint32_t Discarded(const HtCoding& coding, unsigned number) {
    if (coding.levels == 0) return 0;
    const std::uint32_t discarded = 1 + number % coding.levels;
    const std::uint32_t step = (1U << discarded) * coding.subsampling.x * coding.subsampling.y;
    return coding.origin.x % step == 0 && coding.origin.y % step == 0 ? discarded : 0;
}

int Run(unsigned first, unsigned count) {
    Counts counts;
    for (unsigned number = first; number < first + count; ++number) {
        const Case made = Make(number);
        const Stream stream = EncodeHt(made.picture, made.coding);
        if (stream.empty()) {
            ++counts.refused;
            continue;
        }
        ++counts.streams;
        Compare(made, stream, 0, number, counts);
        const std::uint32_t discarded = Discarded(made.coding, number);
        if (discarded > 0) Compare(made, stream, discarded, number, counts);
    }
    std::printf("%d streams (%d codings refused): %d wrong, %d decodings where a library differs\n",
                counts.streams, counts.refused, counts.wrong, counts.libraries);
    return counts.wrong == 0 ? 0 : 1;
}

}  // namespace
}  // namespace quorvex::test

int main(int argc, char** argv) {
    const auto number = [&](int i, unsigned otherwise) {
        return argc > i ? static_cast<unsigned>(std::strtoul(argv[i], nullptr, 10)) : otherwise;
    };
    return quorvex::test::Run(number(1, 0), number(2, 3000));
}
