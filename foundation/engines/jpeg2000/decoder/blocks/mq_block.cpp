#include "foundation/engines/jpeg2000/decoder/blocks/mq_block.h"

#include "foundation/engines/jpeg2000/decoder/blocks/mq_passes.h"

#include <algorithm>

namespace quorvex::j2k {
namespace {

enum class PassKind { kSignificance, kRefinement, kCleanUp };

// A block's first pass is a clean-up; then the three kinds follow each other, a plane each round.
PassKind KindOf(std::uint32_t pass) noexcept {
    return static_cast<PassKind>((pass + 2) % 3);
}

int PlaneOf(int planes, std::uint32_t pass) noexcept {
    return planes - static_cast<int>((pass + 2) / 3);
}

// The bypass style codes the first four planes and all clean-ups arithmetically.
bool IsRaw(unsigned style, std::uint32_t pass) noexcept {
    constexpr std::uint32_t kFirstRaw = 10;
    return (style & kStyleBypass) != 0 && pass >= kFirstRaw && KindOf(pass) != PassKind::kCleanUp;
}

// Bit 4 * column + row for each place of a tract that lies in the block.
std::uint64_t ValidPlaces(int columns, int rows) noexcept {
    constexpr std::uint64_t kTopRow = 0x1111111111111111;
    const std::uint64_t column = (std::uint64_t{1} << std::min(rows, 4)) - 1;
    const std::uint64_t all = kTopRow * column;
    return columns >= kTractColumns ? all : all & ((std::uint64_t{1} << (4 * columns)) - 1);
}

BlockInWork Prepare(const CodedBlock& coded, MqScratch& scratch) {
    BlockInWork block;
    block.width = coded.width;
    block.height = coded.height;
    block.tractsAcross = (coded.width + kTractColumns - 1) / kTractColumns;
    block.tractStride = block.tractsAcross + 2;
    block.columnStride = block.tractsAcross * kTractColumns + 2;
    block.isCausal = (coded.style & kStyleVerticallyCausal) != 0;
    block.zeroCoding = &kZeroCoding[static_cast<std::size_t>(coded.band)];
    const auto stripes = static_cast<std::size_t>(block.Stripes());
    const auto across = static_cast<std::size_t>(block.tractsAcross);
    scratch.tracts.assign((across + 2) * (stripes + 2), Tract());
    scratch.columns.assign(static_cast<std::size_t>(block.columnStride) * (stripes + 2), 0);
    scratch.values.assign(across * stripes * kTractValues, 0);
    block.tracts = scratch.tracts.data() + block.tractStride + 1;
    block.columns = scratch.columns.data() + block.columnStride + 1;
    block.values = scratch.values.data();
    for (int stripe = 0; stripe < block.Stripes(); ++stripe) {
        for (int i = 0; i < block.tractsAcross; ++i) {
            block.tracts[stripe * block.tractStride + i].valid =
                ValidPlaces(block.width - i * kTractColumns, block.height - 4 * stripe);
        }
    }
    return block;
}

// False where the symbol behind a clean-up pass is not the one that belongs there.
bool HasSegmentationSymbol(BlockInWork& block, MqDecoder& decoder) noexcept {
    unsigned symbol = 0;
    for (int i = 0; i < 4; ++i) {
        symbol = (symbol << 1) | decoder.Decode(block.contexts[kUniformContext]);
    }
    return symbol == 0xA;
}

class PassRun {
public:
    PassRun(const CodedBlock& coded, MqScratch& scratch)
        : coded_(coded), bits_(scratch.bits), block_(Prepare(coded, scratch)) {}

    // False where the block is damaged; the passes up to there are done. The last segmentation
    // symbol does not count: coders that cut a block off after a clean-up pass may lose it.
    bool Run() {
        for (const BlockSegment& segment : coded_.segments) {
            if (!RunSegment(segment)) return false;
        }
        return wrongSymbols_ == 0 || (wrongSymbols_ == 1 && isLastSymbolWrong_);
    }

    [[nodiscard]] const BlockInWork& Block() const noexcept { return block_; }

private:
    bool RunSegment(const BlockSegment& segment) {
        const std::span<const unsigned char> bytes(segment.data, segment.size);
        if (segment.passes == 0) return true;
        if (IsRaw(coded_.style, pass_)) {
            RawBits bits(bytes);
            return RunPasses(segment.passes,
                             [&](PassKind kind, int plane) { RunRaw(bits, kind, plane); });
        }
        const std::size_t size = UnstuffSegment(bytes, bits_);
        MqDecoder decoder;
        decoder.Begin(bits_.data(), size);
        return RunPasses(segment.passes,
                         [&](PassKind kind, int plane) { RunCoded(decoder, kind, plane); });
    }

    template <class Run>
    bool RunPasses(std::uint32_t passes, const Run& run) {
        for (std::uint32_t i = 0; i < passes; ++i, ++pass_) {
            const int plane = PlaneOf(coded_.bitPlanes, pass_);
            if (plane < 1) return false;  // more passes than planes
            run(KindOf(pass_), plane);
            if ((coded_.style & kStyleReset) != 0) block_.contexts = kFirstStates;
        }
        return true;
    }

    void RunRaw(RawBits& bits, PassKind kind, int plane) noexcept {
        if (kind == PassKind::kSignificance) RawSignificancePass(block_, bits, plane);
        if (kind == PassKind::kRefinement) RawRefinementPass(block_, bits, plane);
    }

    void RunCoded(MqDecoder& decoder, PassKind kind, int plane) noexcept {
        if (kind == PassKind::kSignificance) SignificancePass(block_, decoder, plane);
        if (kind == PassKind::kRefinement) RefinementPass(block_, decoder, plane);
        if (kind != PassKind::kCleanUp) return;
        CleanUpPass(block_, decoder, plane);
        if ((coded_.style & kStyleSegmentationSymbols) == 0) return;
        isLastSymbolWrong_ = !HasSegmentationSymbol(block_, decoder);
        wrongSymbols_ += isLastSymbolWrong_ ? 1 : 0;
    }

    const CodedBlock& coded_;
    std::vector<unsigned char>& bits_;
    BlockInWork block_;
    std::uint32_t pass_ = 0;
    int wrongSymbols_ = 0;
    bool isLastSymbolWrong_ = false;
};

// From the order of the scan with the sign in bit 31 to rows of two's complement.
void WriteRows(const BlockInWork& block, std::int32_t* out, std::ptrdiff_t stride) noexcept {
    const std::ptrdiff_t stripeValues = std::ptrdiff_t{block.tractsAcross} * kTractValues;
    for (int y = 0; y < block.height; ++y) {
        const std::uint32_t* value = block.values + std::ptrdiff_t{y / 4} * stripeValues + y % 4;
        std::int32_t* row = out + std::ptrdiff_t{y} * stride;
        for (int x = 0; x < block.width; ++x) {
            const std::uint32_t sign = std::uint32_t{0} - (value[std::ptrdiff_t{4} * x] >> 31);
            row[x] = static_cast<std::int32_t>(
                ((value[std::ptrdiff_t{4} * x] & 0x7FFFFFFF) ^ sign) - sign);
        }
    }
}

void WriteZeros(const CodedBlock& block, std::int32_t* out, std::ptrdiff_t stride) noexcept {
    for (int y = 0; y < block.height; ++y) std::fill_n(out + y * stride, block.width, 0);
}

}  // namespace

bool DecodeMqBlock(const CodedBlock& coded, std::int32_t* out, std::ptrdiff_t stride,
                   MqScratch& scratch) {
    if (coded.bitPlanes < 1 || coded.bitPlanes > kMostBitPlanes) {
        WriteZeros(coded, out, stride);
        return coded.bitPlanes == 0 && coded.segments.empty();
    }
    PassRun passes(coded, scratch);
    const bool isSound = passes.Run();
    WriteRows(passes.Block(), out, stride);
    return isSound;
}

}  // namespace quorvex::j2k
