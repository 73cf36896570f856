/// One render job, from its record to its finished image.
#pragma once

#include "foundation/raster/word_ramp.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/scratch_memory.h"
#include "quorvex/CXImageCreator.h"

#include <cstddef>
#include <memory_resource>
#include <optional>
#include <span>

namespace quorvex {

/// The state of one job; made for it, and gone with it.
///
/// The working image is never whole in memory: the resampler asks for the rows that it needs, two
/// at a time at most, and no other row is ever mapped. Only the columns of the region are mapped.
///
/// Throws std::bad_alloc or BlockTooLarge, and the output is untouched then.
class RenderRun {
public:
    /// @param scratch  what the job works with comes from there
    RenderRun(_IMAGE_INFO& info, std::pmr::memory_resource& scratch) noexcept
        : info_(info), scratch_(scratch) {}
    RenderRun(const RenderRun&) = delete;
    RenderRun& operator=(const RenderRun&) = delete;

    /// Runs the stages. Gives what PrepareRender gives; the output is untouched after any other
    /// result than kJobDone.
    int Run();

private:
    /// Checks the record, takes the memory of the rows and finds the table.
    /// Gives kJobDone, kJobRefused or kJobWithoutTable.
    int PrepareRender();
    int FetchLut();
    void FindRamp(int tableCount);

    /// Makes one row of the image that is to be resized, and gives its first pixel inside the
    /// region. The source of `prefetchRow` is fetched into the cache meanwhile.
    const unsigned char* Render(int row, int prefetchRow);
    void RawImg2PValue(int row, int prefetchRow);
    void RawImg2PValue16(int row, int prefetchRow);
    void RawImg2PValue16Half(int row, int prefetchRow);
    void RenderColorImage(int row);
    void RenderSuppPal(int row);
    void ApplyOverlay(int row);
    template <class Reader>
    void MapRow(int row, int prefetchRow);
    void MapRowByRamp(int row, int prefetchRow);

    /// Resizes, mirrors and turns into the output; the overlay has gone into the rows before.
    void ArrangeRender();
    void ResizeInto(unsigned char* destination, CSize size);
    void HorizontalFlipImage(unsigned char* image, CSize size) const;
    void RotateImage(const unsigned char* image, CSize size) const;

    // Where the region begins in a working row: its first pixel in the working image and in the
    // composite, and the index of that pixel in the source, the mask and the palette.
    [[nodiscard]] unsigned char* WorkRow(int row) const noexcept;
    [[nodiscard]] unsigned char* CompositeRow(int row) const noexcept;
    [[nodiscard]] std::size_t SourcePixel(int row) const noexcept;

    _IMAGE_INFO& info_;
    std::pmr::memory_resource& scratch_;
    Cancellation cancellation_ = Cancellation::OfThisThread();
    CRect workRoi_;                       ///< the record's `roi`, cut to the image
    double scale_ = 1.0;                  ///< horizontal scale factor
    int workPixelSize_ = 1;               ///< bytes of a working pixel
    int outputPixelSize_ = 1;             ///< bytes of a pixel of the output
    std::span<unsigned char> workImage_;  ///< two rows of the working image, even and odd
    std::span<unsigned char>
        compositeImage_;  ///< two rows of grey with the supplemental palette's colours
    std::span<unsigned char>
        workLut_;  ///< made of the table of `windowing`, for every value of a pixel
    const unsigned char* table_ = nullptr;  ///< `workLut_` or the record's `lut`
    int tableFirst_ = 0;                    ///< stored value of its first entry
    std::optional<WordRamp> ramp_;          ///< `table_` as arithmetic, where that can be
};

}  // namespace quorvex
