#include "foundation/engines/jpeg2000/high_throughput_encoding.h"

#include "foundation/engines/jpeg2000/coding_check.h"
#include "foundation/engines/jpeg2000/encoding_samples.h"
#include "foundation/engines/jpeg2000/tile_part_lengths.h"
#include "foundation/types/answer.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <openjph/ojph_arch.h>
#include <openjph/ojph_base.h>
#include <openjph/ojph_codestream.h>
#include <openjph/ojph_file.h>
#include <openjph/ojph_mem.h>
#include <openjph/ojph_params.h>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {
namespace {

constexpr ojph::ui32 kBlockSide = 64;
// The lowest resolution is at most so wide and high.
constexpr int kLowestSide = 64;
// Halvings of the range in which the step of a lossy stream lies.
constexpr int kTries = 8;
// With both ends of the range, and the decoding at last.
constexpr std::size_t kStepsOfSize = kTries + 3;
constexpr std::size_t kStepsOfLossless = 2;
// A stream that is shorter than its target by at most this share is as good as one that fills it.
constexpr std::size_t kCloseEnough = 50;
// The headers alone need some of it.
constexpr std::size_t kLeastTarget = 512;

/// Where the coder writes.
class CodedBytes final : public ojph::outfile_base {
public:
    explicit CodedBytes(std::vector<unsigned char>& bytes) : bytes_(bytes) {}

    std::size_t write(const void* from, std::size_t size) override {
        const auto* first = static_cast<const unsigned char*>(from);
        isFull_ = isFull_ || !Contain(false, [&] {
                      bytes_.insert(bytes_.end(), first, first + size);
                      return true;
                  });
        return size;
    }
    ojph::si64 tell() override { return static_cast<ojph::si64>(bytes_.size()); }
    /// Memory ran out: the library loses some of its own where that is thrown through it.
    [[nodiscard]] bool IsFull() const noexcept { return isFull_; }

private:
    bool isFull_ = false;
    std::vector<unsigned char>& bytes_;
};

// At least one: without any, the library asserts that samples of 1 bit need more bit planes.
int LosslessLevels(const PegasusParameters& p) noexcept {
    int levels = std::max(UsefulLevels(p), 1);
    while (((std::max(p.columns, p.rows) - 1) >> levels) >= kLowestSide) ++levels;
    return levels;
}

// The library's irreversible wavelet takes two rows for others.
int LossyLevels(const PegasusParameters& p) noexcept {
    int levels = 0;
    for (int rows = p.rows; levels < UsefulLevels(p) && rows != 2; rows = (rows + 1) / 2) ++levels;
    return levels;
}

void Configure(ojph::codestream& stream, const PegasusParameters& p, double step) {
    auto size = stream.access_siz();
    const auto components = static_cast<ojph::ui32>(p.samples);
    size.set_image_extent(
        ojph::point(static_cast<ojph::ui32>(p.columns), static_cast<ojph::ui32>(p.rows)));
    size.set_num_components(components);
    for (ojph::ui32 c = 0; c < components; ++c)
        size.set_component(c, ojph::point(1, 1), static_cast<ojph::ui32>(p.bitDepth), p.isSigned);
    auto style = stream.access_cod();
    style.set_num_decomposition(
        static_cast<ojph::ui32>(p.isLossless ? LosslessLevels(p) : LossyLevels(p)));
    style.set_block_dims(kBlockSide, kBlockSide);
    style.set_progression_order("RPCL");
    style.set_color_transform(p.samples == 3 && p.hasColourTransform);
    style.set_reversible(p.isLossless);
    if (!p.isLossless) stream.access_qcd().set_irrev_quant(static_cast<float>(step));
    stream.set_planar(false);
}

// False when a sample needs more bits than are coded.
bool FeedRows(ojph::codestream& stream, const PegasusParameters& p) {
    const auto columns = static_cast<std::size_t>(p.columns);
    const auto bytes = static_cast<std::size_t>(p.bytesPerSample);
    const std::size_t rowBytes = columns * static_cast<std::size_t>(p.samples) * bytes;
    const unsigned char* row = p.input.data();
    ojph::ui32 component = 0;
    ojph::line_buf* line = stream.exchange(nullptr, component);
    bool fits = true;
    const auto cancellation = Cancellation::OfThisThread();
    for (int y = 0; y < p.rows; ++y, row += rowBytes) {
        TellProgress(static_cast<std::size_t>(y), static_cast<std::size_t>(p.rows));
        cancellation.ThrowIfAsked();
        for (int c = 0; c < p.samples; ++c) {
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-union-access): so the library hands it out
            const std::span<std::int32_t> values(line->i32, columns);
            fits = ReadComponent(values, row + component * bytes, p) && fits;
            line = stream.exchange(line, component);
        }
    }
    return fits;
}

// The step is a share of the samples' range.
bool Encode(const PegasusParameters& p, double step, std::vector<unsigned char>& coded) {
    coded.clear();
    CodedBytes target(coded);
    ojph::codestream stream;
    Configure(stream, p, step);
    stream.write_headers(&target);
    const bool fits = FeedRows(stream, p);
    stream.flush();
    stream.close();
    if (target.IsFull()) throw std::bad_alloc();
    return fits && AddTilePartLengths(coded);
}

bool EncodeLossless(PegasusParameters& p) {
    const ProgressStretch first(0, kStepsOfLossless);
    return Encode(p, 0, p.coded);
}

// The finest step of 16 bits is close to what single precision gives.
bool IsNear(const PegasusParameters& p) {
    const int allowance = 8 + ((1 << p.bitDepth) >> 8);
    return GreatestCodingError(p).value_or(allowance + 1) <= allowance;
}

// As a power of 2. A picture without levels would have no bit planes at half of its range, which
// the library asserts.
double CoarsestStep(const PegasusParameters& p) noexcept {
    return LossyLevels(p) > 0 ? -1 : -2;
}

// The smallest step whose stream is no longer than the target; the coder knows steps only.
bool EncodeToSize(PegasusParameters& p) {
    double coarse = CoarsestStep(p);
    double fine = std::min<double>(-p.bitDepth, coarse);
    const std::size_t target = std::max(p.targetBytes, kLeastTarget);
    std::size_t step = 0;
    const auto encode = [&](double exponent, std::vector<unsigned char>& coded) {
        const ProgressStretch stretch(step++, kStepsOfSize);
        return Encode(p, std::exp2(exponent), coded);
    };
    if (!encode(fine, p.coded) || !IsNear(p)) return false;
    if (p.targetBytes == 0 || p.coded.size() <= target) return true;
    if (!encode(coarse, p.coded)) return false;
    std::vector<unsigned char> tried;
    for (int i = 0; i < kTries; ++i) {
        const double middle = (fine + coarse) / 2;
        if (!encode(middle, tried)) return false;
        const bool isShort = tried.size() <= target;
        (isShort ? coarse : fine) = middle;
        if (isShort) p.coded.swap(tried);
        if (isShort && p.coded.size() >= target - target / kCloseEnough) break;
    }
    return true;
}

}  // namespace

bool HasHighThroughputCoder() noexcept {
    return true;
}

bool EncodeHighThroughput(PegasusParameters& parameters) {
    bool isCoded = false;
    try {
        isCoded = parameters.isLossless ? EncodeLossless(parameters) : EncodeToSize(parameters);
        const std::size_t steps = parameters.isLossless ? kStepsOfLossless : kStepsOfSize;
        const ProgressStretch last(steps - 1, steps);
        const auto error = isCoded ? GreatestCodingError(parameters) : std::nullopt;
        isCoded = error && (*error == 0 || !parameters.isLossless);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const Cancelled&) {
        throw;
    } catch (...) {  // the library throws words where it has no memory
        parameters.coded.clear();
        throw std::bad_alloc();
    }
    if (!isCoded) parameters.coded.clear();
    return isCoded;
}

}  // namespace quorvex
