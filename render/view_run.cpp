// RunViewJob: rows mapped, marked, scaled, turned.
#include "foundation/raster/bit_marks.h"
#include "foundation/raster/byte_table.h"
#include "foundation/raster/scaling/view_scaler.h"
#include "foundation/raster/turn_kernels.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/scratch_memory.h"
#include "render/row_mapping.h"
#include "render/view_job.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

constexpr std::size_t kChannels = 3;

/// Makes rows of the display image: looked up, hidden, marked.
class RowMaker {
public:
    RowMaker(const ViewJob& job, std::size_t firstColumn, std::size_t columnEnd,
             std::pmr::memory_resource& scratch)
        : job_(job),
          first_(firstColumn),
          count_(columnEnd - firstColumn),
          pixelBytes_(static_cast<std::size_t>(ResultPixelBytes(job))),
          rows_(TakeArray<unsigned char>(scratch, 2 * RowBytes())),
          grey_(TakeArray<unsigned char>(scratch,
                                         IsColourSource() || pixelBytes_ == 1 ? 0 : count_)) {
        std::ranges::fill(rows_, static_cast<unsigned char>(0));
    }

    /// A row of the image, counted from the top. Only the columns that count are made. It is good
    /// until the next but one is made.
    const unsigned char* Make(int row, int prefetchRow) {
        cancellation_.ThrowIfAsked();
        isOdd_ = !isOdd_;
        unsigned char* const begin = rows_.data() + (isOdd_ ? RowBytes() : 0);
        unsigned char* const to = begin + first_ * pixelBytes_;
        if (IsColourSource()) {
            MapColoursReversed(job_.table.first<256>(), Source(row), to, count_);
        } else if (pixelBytes_ == 1) {
            MapGrey(row, prefetchRow, to);
        } else {
            MapGrey(row, prefetchRow, grey_.data());
            Colour(row, to);
        }
        HideShuttered(row, to);
        for (const MarkLayer& layer : job_.layers) Mark(layer, row, to);
        return begin;
    }

private:
    [[nodiscard]] bool IsColourSource() const { return job_.pixelBytes > 2; }
    [[nodiscard]] std::size_t RowBytes() const {
        return static_cast<std::size_t>(job_.imageSize.cx) * pixelBytes_;
    }
    [[nodiscard]] std::size_t PixelAt(int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(job_.imageSize.cx) + first_;
    }
    [[nodiscard]] const unsigned char* Source(int row) const {
        return job_.pixels + PixelAt(row) * static_cast<std::size_t>(job_.pixelBytes);
    }

    void MapGrey(int row, int prefetchRow, unsigned char* to) const {
        if (job_.greySource) return job_.greySource(row, prefetchRow, first_, {to, count_});
        const ByteTable table{job_.table.data(), 0};
        if (job_.pixelBytes == 1) {
            MapPlain<ByteReader>(Source(row), Source(prefetchRow), table, to, count_);
        } else if (job_.ramp) {
            MapByRamp(*job_.ramp, Source(row), Source(prefetchRow), to, count_);
        } else {
            MapPlain<WordReader<std::uint16_t>>(Source(row), Source(prefetchRow), table, to,
                                                count_);
        }
    }

    void Colour(int row, unsigned char* to) const {
        const unsigned char* const source = Source(row);
        for (std::size_t i = 0; i < count_; ++i, to += kChannels) {
            const unsigned char grey = grey_[i];
            Rgb colour{grey, grey, grey};
            if (!job_.colours.empty()) {
                const int value = job_.pixelBytes == 1 ? ByteReader::At(source, i)
                                                       : WordReader<std::uint16_t>::At(source, i);
                const ValueColour& own = job_.colours[static_cast<std::size_t>(value)];
                if (own.isThere) colour = own.colour;
            }
            Put(colour, to);
        }
    }

    static void Put(const Rgb& colour, unsigned char* to) {
        to[0] = colour[2];
        to[1] = colour[1];
        to[2] = colour[0];
    }

    void HideShuttered(int row, unsigned char* to) const {
        if (job_.shutterMask != nullptr) Cover(job_.shutterMask, job_.shutterColour, row, to);
    }

    void Mark(const MarkLayer& layer, int row, unsigned char* to) const {
        if (!layer.coverage.empty()) return Cover(layer.coverage.data(), layer.colour, row, to);
        ForEachSetBit(layer.bits, PixelAt(row), count_,
                      [&](std::size_t i) { PutPixel(layer.colour, to + i * pixelBytes_); });
    }

    void PutPixel(const Rgb& colour, unsigned char* to) const {
        if (pixelBytes_ == 1) {
            *to = colour[0];
        } else {
            Put(colour, to);
        }
    }

    /// Mixes a colour in, by how much it covers of each pixel.
    void Cover(const unsigned char* coverage, const Rgb& colour, int row, unsigned char* to) const {
        coverage += PixelAt(row);
        for (std::size_t i = 0; i < count_; ++i, to += pixelBytes_) {
            const int share = coverage[i];
            if (share == 0) continue;
            unsigned char covered[kChannels] = {};
            PutPixel(colour, covered);
            for (std::size_t channel = 0; channel < pixelBytes_; ++channel) {
                const int mixed = covered[channel] * share + to[channel] * (255 - share);
                to[channel] = static_cast<unsigned char>((mixed + 127) / 255);
            }
        }
    }

    const ViewJob& job_;
    Cancellation cancellation_ = Cancellation::OfThisThread();
    std::size_t first_;  ///< column that rows begin with
    std::size_t count_;
    std::size_t pixelBytes_;
    std::span<unsigned char> rows_;
    std::span<unsigned char> grey_;
    bool isOdd_ = false;
};

/// The window in the scaled image before it is mirrored and turned.
RasterRect UprightWindow(const ViewJob& job) {
    const CSize turned = TurnedSize(job);
    RasterRect window = job.window;
    if (job.isMirrored) window.x = turned.cx - window.x - window.width;
    const int right = job.scaled.cx;
    const int bottom = job.scaled.cy;
    switch (job.quarterTurns) {
        case 1:
            return {window.y, bottom - window.x - window.width, window.height, window.width};
        case 2:
            return {right - window.x - window.width, bottom - window.y - window.height,
                    window.width, window.height};
        case 3:
            return {right - window.y - window.height, window.x, window.height, window.width};
        default:
            return window;
    }
}

std::pair<int, int> ColumnsRead(const ViewJob& job, const RasterRect& window,
                                std::pmr::memory_resource& scratch) {
    const ScaleTaps taps = MakeScaleTaps(job.imageSize.cx, job.scaled.cx, window.x, window.width,
                                         Interpolation::kCubic, &scratch);
    return {taps.Begin(), taps.End()};
}

}  // namespace

CSize TurnedSize(const ViewJob& job) noexcept {
    return job.quarterTurns % 2 == 0 ? job.scaled : CSize{job.scaled.cy, job.scaled.cx};
}

void RunViewJob(const ViewJob& job, const PixelGrid<unsigned char>& output,
                std::pmr::memory_resource& scratch) {
    const int pixelBytes = ResultPixelBytes(job);
    const RasterRect upright = UprightWindow(job);
    // Rows run from the bottom from here on, in the image and in its window.
    const int lastRow = job.imageSize.cy - 1;
    const RasterRect window{upright.x, job.scaled.cy - upright.y - upright.height, upright.width,
                            upright.height};
    ViewScaler scaler({job.imageSize, job.scaled, window, pixelBytes, job.enlarging}, &scratch);
    const auto [firstColumn, columnEnd] = ColumnsRead(job, window, scratch);
    RowMaker maker(job, static_cast<std::size_t>(firstColumn), static_cast<std::size_t>(columnEnd),
                   scratch);
    const auto rowAt = [&](int y, int prefetch) {
        return maker.Make(lastRow - y, lastRow - prefetch);
    };

    const CSize size{window.width, window.height};
    const auto step = std::ptrdiff_t{window.width} * pixelBytes;
    PixelGrid<unsigned char> scaled = output;
    if (job.quarterTurns != 0) {
        const auto turned = TakeArray<unsigned char>(
            scratch, static_cast<std::size_t>(step) * static_cast<std::size_t>(size.cy));
        scaled = {turned.data(), step, size, pixelBytes};
    }
    scaler.Run(rowAt, scaled);
    if (job.quarterTurns != 0) {
        TurnPixels({scaled.samples, step, size, pixelBytes}, output, job.quarterTurns);
    }
    if (job.isMirrored) ReverseRows(output, static_cast<std::size_t>(pixelBytes));
}

}  // namespace quorvex
