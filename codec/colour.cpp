#include "codec/colour.h"

#include "codec/wide_ybr.h"
#include "foundation/raster/interleave.h"
#include "foundation/raster/raster.h"
#include "foundation/types/block.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvex {
namespace {

constexpr unsigned kAnyPlanarConfiguration = 2;

struct FormRow {
    std::u16string_view photometric;
    unsigned planarConfiguration;
    ColourForm form;
};

constexpr FormRow kForms[] = {
    {u"YBR_FULL", 1, ColourForm::kFullPlanes},
    {u"YBR_FULL", 0, ColourForm::kFullInterleaved},
    {u"YBR_FULL_422", kAnyPlanarConfiguration, ColourForm::kFull422},
    {u"YBR_PARTIAL_422", kAnyPlanarConfiguration, ColourForm::kPartial422},
    {u"RGB", 1, ColourForm::kRgbPlanes},
    {u"RGB", kAnyPlanarConfiguration, ColourForm::kRgbInterleaved},
};

bool IsRgb(ColourForm form) noexcept {
    return form == ColourForm::kRgbPlanes || form == ColourForm::kRgbInterleaved;
}

void InterleaveRgb(const ColourFrame& frame, std::span<const unsigned char> source,
                   unsigned char* rgb) {
    const std::size_t plane = frame.Pixels() * frame.bytesPerSample;
    const std::array planes{source.data(), source.data() + plane, source.data() + 2 * plane};
    InterleavePlanes(planes, frame.Pixels(), frame.bytesPerSample, rgb);
}

void ConvertPartial422(const ColourFrame& frame, std::span<const unsigned char> source,
                       std::span<unsigned char> rgb) {
    if (frame.isExact) {
        return ConvertYbr422(source, frame.Pixels(), YbrArithmetic::kExactVideo, rgb);
    }
    const CSize size{static_cast<std::int32_t>(frame.columns),
                     static_cast<std::int32_t>(frame.rows)};
    const auto columns = static_cast<std::ptrdiff_t>(frame.columns);
    ippiYCbCr422ToRGB_8u_C2C3R(source.data(), 2 * columns, rgb.data(), 3 * columns, size);
}

void ConvertWide(const ColourFrame& frame, std::span<const unsigned char> source,
                 std::span<unsigned char> rgb) {
    const WideYbr ybr{source, frame.Pixels(), frame.bitsStored};
    if (frame.form == ColourForm::kFullPlanes) return ConvertWidePlanes(ybr, rgb);
    if (frame.form == ColourForm::kFull422) return ConvertWide422(ybr, rgb);
    ConvertWidePixels(ybr, rgb);
}

/// Whether a form has a conversion for samples of that many bytes.
bool IsConverted(ColourForm form, std::size_t bytesPerSample, bool isExact) noexcept {
    if (IsRgb(form) || bytesPerSample == 1) return true;
    return bytesPerSample == 2 && isExact && form != ColourForm::kPartial422;
}

/// Converts a source that has all of its bytes.
void ConvertWhole(const ColourFrame& frame, std::span<const unsigned char> source,
                  std::span<unsigned char> rgb) {
    const std::size_t pixels = frame.Pixels();
    if (frame.bytesPerSample == 2 && !IsRgb(frame.form)) return ConvertWide(frame, source, rgb);
    const auto arithmetic = frame.isExact ? YbrArithmetic::kExact : YbrArithmetic::kWrapped;
    switch (frame.form) {
        case ColourForm::kFullPlanes:
            return ConvertYbrPlanes(source, pixels, arithmetic, rgb);
        case ColourForm::kFullInterleaved:
            return ConvertYbrPixels(source, pixels, arithmetic, rgb);
        case ColourForm::kFull422:
            return ConvertYbr422(source, pixels, arithmetic, rgb);
        case ColourForm::kPartial422:
            return ConvertPartial422(frame, source, rgb);
        case ColourForm::kPartialPlanes:
            return ConvertYbrPlanes(source, pixels, YbrArithmetic::kExactVideo, rgb);
        case ColourForm::kRgbPlanes:
            return InterleaveRgb(frame, source, rgb.data());
        case ColourForm::kRgbInterleaved:
            std::copy_n(source.data(), rgb.size(), rgb.data());
            return;
        case ColourForm::kUnknown:
            return;
    }
}

/// The part of a frame that a short interleaved source still has: whole rows of the video form,
/// whole pixels (as one long row) of the others.
ColourFrame FirstPart(const ColourFrame& frame, std::size_t sourceBytes) noexcept {
    ColourFrame part = frame;
    if (frame.form == ColourForm::kPartial422) {
        part.rows = sourceBytes / (2 * frame.columns);
    } else {
        part.rows = 1;
        part.columns = frame.form == ColourForm::kFull422
                           ? sourceBytes / (4 * frame.bytesPerSample) * 2
                           : sourceBytes / (3 * frame.bytesPerSample);
    }
    return part;
}

void ConvertFirstPart(const ColourFrame& frame, std::span<const unsigned char> source,
                      std::span<unsigned char> rgb) {
    const ColourFrame part = FirstPart(frame, source.size());
    ConvertWhole(part, source.first(part.StoredBytes()), rgb.first(part.RgbBytes()));
    std::ranges::fill(rgb.subspan(part.RgbBytes()), static_cast<unsigned char>(0));
}

/// A short planar source lacks the last samples of its pixels; they count as 0.
void ConvertPadded(const ColourFrame& frame, std::span<const unsigned char> source,
                   std::span<unsigned char> rgb) {
    const HeapBlock padded(frame.StoredBytes());
    const auto behind = std::ranges::copy(source, padded.Bytes().begin()).out;
    std::fill(behind, padded.Bytes().end(), static_cast<unsigned char>(0));
    ConvertWhole(frame, padded.Bytes(), rgb);
}

}  // namespace

std::size_t ColourFrame::StoredBytes() const noexcept {
    if (form == ColourForm::kFull422) return (Pixels() + 1) / 2 * 4 * bytesPerSample;
    if (form == ColourForm::kPartial422) return Pixels() * 2;
    return RgbBytes();
}

ColourForm ColourFormOf(std::u16string_view photometric, unsigned planarConfiguration,
                        std::size_t bytesPerSample, bool isExact) noexcept {
    for (const FormRow& row : kForms) {
        const bool isPlanarFitting = row.planarConfiguration == kAnyPlanarConfiguration ||
                                     row.planarConfiguration == planarConfiguration;
        if (!isPlanarFitting || photometric != row.photometric) continue;
        return IsConverted(row.form, bytesPerSample, isExact) ? row.form : ColourForm::kUnknown;
    }
    return ColourForm::kUnknown;
}

bool ConvertToRgb(const ColourFrame& frame, std::span<const unsigned char> source,
                  std::span<unsigned char> rgb) {
    if (frame.form == ColourForm::kUnknown) return false;
    if (source.size() >= frame.StoredBytes()) {
        ConvertWhole(frame, source, rgb);
    } else if (IsPlanar(frame.form)) {
        ConvertPadded(frame, source, rgb);
    } else {
        ConvertFirstPart(frame, source, rgb);
    }
    return true;
}

void ConvertYbrInPlace(std::span<unsigned char> pixels, YbrArithmetic arithmetic) {
    const HeapBlock stored(pixels.size());
    std::ranges::copy(pixels, stored.Data());
    ConvertYbrPixels(stored.Bytes(), pixels.size() / 3, arithmetic, pixels);
}

}  // namespace quorvex
