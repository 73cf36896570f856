// Arithmetic-coded JPEG 2000 streams with every option of OpenJPEG's coder, through our decoder and
// its own: reversible ones give the source picture, the others what the library gives, within
// rounding.
// Usage: quorvex_jpeg2000_mq_matrix [FIRST [COUNT]]    each number is a stream, always the same one
#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"
#include "tests/engines/jpeg2000/mq_coding.h"
#include "tests/stress/jpeg2000_pictures.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quorvex::test {
namespace {

struct Case {
    Planes picture;
    MqCoding coding;
};

void ChooseGeometry(MqCoding& coding, Random& random) {
    if (random.OneIn(4)) coding.origin = {random.Side(0, 20), random.Side(0, 20)};
    if (random.OneIn(3)) {
        coding.tile = {random.Side(9, 90), random.Side(9, 90)};
        coding.tileOrigin = {std::min(coding.origin.x, random.Side(0, 8)),
                             std::min(coding.origin.y, random.Side(0, 8))};
        coding.tile.x = std::max(coding.tile.x, coding.origin.x + 1);
        coding.tile.y = std::max(coding.tile.y, coding.origin.y + 1);
    }
    const int across = random.Between(2, 10);
    coding.block = {1U << across, 1U << random.Between(2, std::min(10, 12 - across))};
    coding.levels = random.Side(0, 6);
    if (random.OneIn(3)) {
        const int sizes = random.Between(1, 3);
        // The coder halves the last size from level to level, and none may vanish.
        for (int i = 0; i < sizes; ++i) coding.precincts.push_back(1U << random.Between(6, 8));
        coding.precincts.back() = 256;
    }
}

void ChooseCoding(MqCoding& coding, int components, Random& random) {
    coding.style = random.OneIn(2) ? 0 : random.Between(0, 63);
    coding.progression = random.Between(0, 4);
    coding.layers = random.OneIn(2) ? 1 : random.Between(1, 6);
    coding.rate = static_cast<float>(random.Between(2, 30));
    coding.isReversible = !random.OneIn(4);
    coding.transformsColour = components >= 3 && random.OneIn(2);
    coding.hasSop = random.OneIn(4);
    coding.hasEph = random.OneIn(4);
    coding.hasPlt = random.OneIn(5);
    coding.hasTlm = random.OneIn(5);
    if (random.OneIn(7)) coding.changedProgression = random.Between(0, 4);
    // With both the coder leaves packets out, as it does where it cuts the last layer.
    coding.hasTileParts = coding.isReversible && coding.changedProgression < 0 && random.OneIn(5);
    if (random.OneIn(10)) coding.roiShift = random.Between(1, 10);
    if (components > 1 && !coding.transformsColour && random.OneIn(4)) {
        coding.subsampling = {random.Side(1, 3), random.Side(1, 3)};
    }
}

Case Make(unsigned number) {
    constexpr int kPrecisions[] = {1, 8, 8, 10, 12, 12, 16, 16};
    constexpr int kCounts[] = {1, 1, 1, 2, 3, 3, 3, 4};
    Random random(number);
    Case made;
    MqCoding& coding = made.coding;
    const int largest = random.OneIn(8) ? 300 : 67;
    const std::uint32_t width = random.Side(1, largest);
    const std::uint32_t height = random.Side(1, largest);
    const int count = kCounts[random.Between(0, 7)];
    ChooseGeometry(coding, random);
    ChooseCoding(coding, count, random);
    made.picture.precision =
        random.OneIn(5) ? random.Between(1, 16) : kPrecisions[random.Between(0, 7)];
    made.picture.isSigned = random.OneIn(4);
    const std::int32_t half = 1 << (made.picture.precision - 1);
    const std::int32_t least = made.picture.isSigned ? -half : 0;
    const auto along = [](std::uint32_t from, std::uint32_t size, std::uint32_t step) {
        return (from + size + step - 1) / step - (from + step - 1) / step;
    };
    for (int i = 0; i < count; ++i) {
        const Pair step = i == 0 ? Pair{1, 1} : coding.subsampling;
        made.picture.planes.push_back(
            {along(coding.origin.x, width, step.x), along(coding.origin.y, height, step.y), {}});
        Draw(made.picture.planes.back(), least, least + 2 * half - 1, random);
    }
    return made;
}

std::string Describe(const Case& made) {
    const MqCoding& c = made.coding;
    char text[300];
    std::snprintf(text, sizeof text,
                  "%u x %u at %u,%u, %zu of %d %s bits, levels %u, block %u x %u, style %d, "
                  "progression %d then %d, %d layers, tile %u x %u, %zu precincts, %s%s, shift %d, "
                  "steps %u x %u, tile-parts %d",
                  made.picture.planes[0].width, made.picture.planes[0].height, c.origin.x,
                  c.origin.y, made.picture.planes.size(), made.picture.precision,
                  made.picture.isSigned ? "signed" : "unsigned", c.levels, c.block.x, c.block.y,
                  c.style, c.progression, c.changedProgression, c.layers, c.tile.x, c.tile.y,
                  c.precincts.size(), c.isReversible ? "reversible" : "irreversible",
                  c.transformsColour ? ", colour" : "", c.roiShift, c.subsampling.x,
                  c.subsampling.y, c.hasTileParts ? 1 : 0);
    return text;
}

struct Counts {
    int streams = 0;
    int refused = 0;  ///< by the coder
    int wrong = 0;
    int library = 0;  ///< the library fails, or differs where we give the source
    int coder = 0;    ///< a reversible stream that has not got the whole source in it
};

enum class Verdict { kRight, kLibraryWrong, kCoderWrong, kWrong };

bool IsWithin(std::int64_t difference, std::int64_t most) {
    return difference >= 0 && difference <= most;
}

// The library's constant for one band is 3 parts in 100,000 off, and it takes values of half the
// shift for the region of interest: the source decides where it can.
Verdict Judge(const Case& made, const Planes& ours, const Planes& library) {
    const MqCoding& coding = made.coding;
    const std::int64_t most =
        coding.isReversible ? 0 : 1 + (std::int64_t{1} << made.picture.precision) / 8192;
    const bool isLike = IsWithin(Difference(ours, library), most);
    const bool isSource = IsWithin(Difference(ours, made.picture), coding.isReversible ? 0 : 2);
    // Packets are missing, which we tell, and the library gives noise.
    const std::int64_t lossOfPackets = coding.isReversible ? 1 : most * 1000;
    if (ours.planes.empty() && Difference(library, made.picture) >= lossOfPackets)
        return Verdict::kCoderWrong;
    if (coding.isReversible) {
        if (isSource) return isLike ? Verdict::kRight : Verdict::kLibraryWrong;
        // With both of these the coder loses bits: ffmpeg does not find the source either.
        const bool isLost = coding.roiShift > 0 && (coding.style & j2k::kStyleBypass) != 0;
        return isLike || isLost ? Verdict::kCoderWrong : Verdict::kWrong;
    }
    if (isLike) return Verdict::kRight;
    return isSource || coding.roiShift > 0 ? Verdict::kLibraryWrong : Verdict::kWrong;
}

void Compare(const Case& made, const Stream& stream, unsigned number, Counts& counts) {
    static Handover handover;
    const Planes ours = DecodeByOurs(stream);
    const Planes library = handover.Ask([&] { return DecodeByOpenJpeg(stream); });
    const Verdict verdict = Judge(made, ours, library);
    if (verdict == Verdict::kLibraryWrong) ++counts.library;
    if (verdict == Verdict::kCoderWrong) ++counts.coder;
    if (verdict != Verdict::kWrong) return;
    ++counts.wrong;
    std::printf("%u: source %lld, library %lld (%lld) | %s\n", number,
                static_cast<long long>(Difference(ours, made.picture)),
                static_cast<long long>(Difference(ours, library)),
                static_cast<long long>(Difference(library, made.picture)), Describe(made).c_str());
}

// The coder's stream, handed over as the samples of a plane.
Stream EncodeInChild(const Case& made) {
    static Handover handover;
    const Planes answer = handover.Ask([&] {
        const Stream stream = EncodeMq(made.picture, made.coding);
        Planes bytes;
        bytes.planes.push_back({static_cast<std::uint32_t>(stream.size()), 1,
                                std::vector<std::int32_t>(stream.begin(), stream.end())});
        return bytes;
    });
    if (answer.planes.empty()) return {};
    return {answer.planes[0].samples.begin(), answer.planes[0].samples.end()};
}

int Run(unsigned first, unsigned count) {
    Counts counts;
    for (unsigned number = first; number < first + count; ++number) {
        const Case made = Make(number);
        const Stream stream = EncodeInChild(made);
        if (stream.empty()) {
            ++counts.refused;
            continue;
        }
        ++counts.streams;
        Compare(made, stream, number, counts);
    }
    std::printf(
        "%d streams (%d codings refused): %d wrong, %d where the library is, %d where the "
        "coder is\n",
        counts.streams, counts.refused, counts.wrong, counts.library, counts.coder);
    return counts.wrong == 0 ? 0 : 1;
}

}  // namespace
}  // namespace quorvex::test

int main(int argc, char** argv) {
    const auto number = [&](int i, unsigned otherwise) {
        return argc > i ? static_cast<unsigned>(std::strtoul(argv[i], nullptr, 10)) : otherwise;
    };
    return quorvex::test::Run(number(1, 0), number(2, 4000));
}
