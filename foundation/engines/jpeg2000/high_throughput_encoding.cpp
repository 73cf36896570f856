#include "foundation/engines/jpeg2000/high_throughput_encoding.h"

#include "foundation/engines/jpeg2000/encoding_samples.h"
#include "foundation/engines/jpeg2000/tile_part_lengths.h"

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
#include <span>
#include <vector>

namespace quorvex {
namespace {

constexpr ojph::ui32 kBlockSide = 64;
// The lowest resolution is at most so wide and high.
constexpr int kLowestSide = 64;
// Halvings of the range in which the step of a lossy stream lies.
constexpr int kTries = 8;

/// Where the coder writes.
class CodedBytes final : public ojph::outfile_base {
public:
    explicit CodedBytes(std::vector<unsigned char>& bytes) : bytes_(bytes) {}

    std::size_t write(const void* from, std::size_t size) override {
        const auto* first = static_cast<const unsigned char*>(from);
        bytes_.insert(bytes_.end(), first, first + size);
        return size;
    }
    ojph::si64 tell() override { return static_cast<ojph::si64>(bytes_.size()); }

private:
    std::vector<unsigned char>& bytes_;
};

int Levels(const PegasusParameters& p) noexcept {
    int levels = UsefulLevels(p);
    while (((std::max(p.columns, p.rows) - 1) >> levels) >= kLowestSide) ++levels;
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
    style.set_num_decomposition(static_cast<ojph::ui32>(Levels(p)));
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
    for (int y = 0; y < p.rows; ++y, row += rowBytes) {
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
    return fits && AddTilePartLengths(coded);
}

// The smallest step whose stream is no longer than the target; the coder knows steps only.
bool EncodeToSize(PegasusParameters& p) {
    double fine = -p.bitDepth;  // as powers of 2
    double coarse = -1;
    if (!Encode(p, std::exp2(fine), p.coded)) return false;
    if (p.targetBytes == 0 || p.coded.size() <= p.targetBytes) return true;
    if (!Encode(p, std::exp2(coarse), p.coded)) return false;
    std::vector<unsigned char> tried;
    for (int i = 0; i < kTries; ++i) {
        const double middle = (fine + coarse) / 2;
        if (!Encode(p, std::exp2(middle), tried)) return false;
        const bool isShort = tried.size() <= p.targetBytes;
        (isShort ? coarse : fine) = middle;
        if (isShort) p.coded.swap(tried);
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
        isCoded = parameters.isLossless ? Encode(parameters, 0, parameters.coded)
                                        : EncodeToSize(parameters);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {  // the library throws words where it has no memory
        parameters.coded.clear();
        throw std::bad_alloc();
    }
    if (!isCoded) parameters.coded.clear();
    return isCoded;
}

}  // namespace quorvex
