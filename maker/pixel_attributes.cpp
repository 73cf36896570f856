#include "maker/pixel_attributes.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/checked_size.h"

#include <algorithm>
#include <string>

namespace quorvex {
namespace {

/// A whole number of the record, of the layout and of the object, and the code where it is missing.
struct Word {
    std::uint32_t tag;
    std::uint16_t _DCM_PIXEL_INFO::*set;
    std::uint16_t PixelLayout::*resolved;
    QUORVEX_MESSAGE failure;
};

constexpr Word kBitsAllocatedWord = {tag::kBitsAllocated, &_DCM_PIXEL_INFO::bitsAllocated,
                                     &PixelLayout::bitsAllocated, QVM_ERROR_INVALID_BITS_ALLOCATED};
constexpr Word kSamplesWord = {tag::kSamplesPerPixel, &_DCM_PIXEL_INFO::samplesPerPixel,
                               &PixelLayout::samplesPerPixel, QVM_ERROR_INVALID_SAMPLES_PER_PIXEL};
constexpr Word kBitsStoredWord = {tag::kBitsStored, &_DCM_PIXEL_INFO::bitsStored,
                                  &PixelLayout::bitsStored, QVM_ERROR_INVALID_BITS_STORED};
constexpr Word kRowsWord = {tag::kRows, &_DCM_PIXEL_INFO::rows, &PixelLayout::rows,
                            QVM_ERROR_INVALID_ROWS};
constexpr Word kColumnsWord = {tag::kColumns, &_DCM_PIXEL_INFO::columns, &PixelLayout::columns,
                               QVM_ERROR_INVALID_COLUMNS};
constexpr Word kRepresentationWord = {
    tag::kPixelRepresentation, &_DCM_PIXEL_INFO::pixelRepresentation,
    &PixelLayout::pixelRepresentation, QVM_ERROR_INVALID_PIXEL_REPRESENTATION};
constexpr Word kPlanarWord = {tag::kPlanarConfiguration, &_DCM_PIXEL_INFO::planarConfiguration,
                              &PixelLayout::planarConfiguration,
                              QVM_ERROR_INVALID_PLANAR_CONFIGURATION};
constexpr Word kHighBitWord = {tag::kHighBit, &_DCM_PIXEL_INFO::highBit, nullptr,
                               QVM_ERROR_INVALID_HIGH_BIT};

struct Text {
    std::uint32_t tag;
    CString _DCM_PIXEL_INFO::*text;
};

constexpr Text kWindow[] = {{tag::kWindowCenter, &_DCM_PIXEL_INFO::windowCenter},
                            {tag::kWindowWidth, &_DCM_PIXEL_INFO::windowWidth}};
constexpr Text kRescale[] = {{tag::kRescaleIntercept, &_DCM_PIXEL_INFO::rescaleIntercept},
                             {tag::kRescaleSlope, &_DCM_PIXEL_INFO::rescaleSlope}};

/// Gives each step its turn until one answers with a failure.
template <class... Steps>
QUORVEX_MESSAGE InOrder(Steps... steps) {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    (void)((result = steps(), result == QVM_SUCCESS) && ...);
    return result;
}

class LayoutResolver {
public:
    LayoutResolver(const _DCM_PIXEL_INFO& format, const CDcmObject& object, PixelLayout& layout)
        : format_(format), object_(object), layout_(layout) {}

    [[nodiscard]] QUORVEX_MESSAGE Take(const Word& word) const {
        std::uint16_t& value = layout_.*word.resolved;
        value = format_.*word.set;
        const bool isThere = value != kUnset || object_.GetValue(word.tag, value) == kDcmSuccess;
        return isThere ? QVM_SUCCESS : word.failure;
    }
    [[nodiscard]] QUORVEX_MESSAGE TakePhotometric() const {
        layout_.photometric = format_.photometricInterpretation;
        const bool isThere = !layout_.photometric.IsEmpty() ||
                             object_.GetValue(tag::kPhotometricInterpretation, layout_.photometric,
                                              -1) == kDcmSuccess;
        return isThere ? QVM_SUCCESS : QVM_ERROR_INVALID_PHOTOMETRIC;
    }

private:
    const _DCM_PIXEL_INFO& format_;
    const CDcmObject& object_;
    PixelLayout& layout_;
};

class AttributeWriter {
public:
    AttributeWriter(const _DCM_PIXEL_INFO& format, const PixelLayout& layout, CDcmObject& object)
        : format_(format), layout_(layout), object_(object) {}

    [[nodiscard]] QUORVEX_MESSAGE Put(const Word& word) const {
        return Put(word, format_.*word.set);
    }
    [[nodiscard]] QUORVEX_MESSAGE PutSamples() const {
        const std::uint16_t samples = format_.samplesPerPixel;
        const bool isKept = samples == 1 || samples == 3 || samples == kUnset;
        const bool isWhole = layout_.bitsAllocated == 8 || layout_.bitsAllocated == 16;
        constexpr std::uint16_t kGrey = 1;
        constexpr std::uint16_t kColour = 3;
        const std::uint16_t replacement = isWhole ? kGrey : kColour;
        return Put(kSamplesWord, isKept ? samples : replacement);
    }
    [[nodiscard]] QUORVEX_MESSAGE PutPhotometric() const {
        const CString& text = format_.photometricInterpretation;
        if (text.IsEmpty()) return QVM_SUCCESS;
        const bool isPut =
            object_.SetValue(tag::kPhotometricInterpretation, text, -1) == kDcmSuccess;
        return isPut ? QVM_SUCCESS : QVM_ERROR_INVALID_PHOTOMETRIC;
    }
    [[nodiscard]] QUORVEX_MESSAGE PutPlanarConfiguration() const {
        return layout_.samplesPerPixel > 1 ? Put(kPlanarWord) : QVM_SUCCESS;
    }
    void PutSpacing() const {
        const auto& [first, second] = format_.pixelSpacing;
        if (first.IsEmpty()) return;
        object_.SetValue(tag::kPixelSpacing, first, -1);
        object_.SetNextValue(tag::kPixelSpacing, second.IsEmpty() ? first : second, -1);
    }
    void PutWindow() const {
        constexpr int kByteCenter = 128;
        constexpr int kByteWidth = 256;
        if (layout_.bitsAllocated == 16) {
            PutBoth(kWindow);
        } else if (layout_.samplesPerPixel == 3 && layout_.photometric == CString("RGB")) {
            object_.SetValue(tag::kWindowCenter, CString(std::to_string(kByteCenter)), -1);
            object_.SetValue(tag::kWindowWidth, CString(std::to_string(kByteWidth)), -1);
        }
    }
    void PutRescale() const {
        if (layout_.bitsAllocated == 16) PutBoth(kRescale);
    }

private:
    [[nodiscard]] QUORVEX_MESSAGE Put(const Word& word, std::uint16_t value) const {
        if (value == kUnset) return QVM_SUCCESS;
        return object_.SetValue(word.tag, value) == kDcmSuccess ? QVM_SUCCESS : word.failure;
    }
    void PutBoth(const Text (&texts)[2]) const {
        const bool areSet = std::ranges::none_of(
            texts, [&](const Text& text) { return (format_.*text.text).IsEmpty(); });
        if (!areSet) return;
        for (const auto& [tag, text] : texts) object_.SetValue(tag, format_.*text, -1);
    }

    const _DCM_PIXEL_INFO& format_;
    const PixelLayout& layout_;
    CDcmObject& object_;
};

/// A frame of no samples is written as one of one sample.
std::optional<std::size_t> BytesOf(unsigned rows, unsigned columns, unsigned samples,
                                   unsigned bits) noexcept {
    const auto all = CheckedProduct(rows, columns, std::max(samples, 1U), bits);
    if (all) return *all / 8;
    return CheckedProduct(rows, columns, std::max(samples, 1U), bits / 8);
}

}  // namespace

std::optional<std::size_t> PixelLayout::FrameBytes() const noexcept {
    return BytesOf(rows, columns, samplesPerPixel, bitsAllocated);
}

std::optional<std::size_t> FrameBytes(const _DCM_PIXEL_INFO& format) noexcept {
    return BytesOf(format.rows, format.columns, format.samplesPerPixel, format.bitsAllocated);
}

_IMAGE_PROCESS_PARAM PixelLayout::ProcessParam() const {
    _IMAGE_PROCESS_PARAM param;
    param.samplesPerPixel = std::max<std::uint16_t>(samplesPerPixel, 1);
    param.photometric = photometric;
    param.planarConfiguration = planarConfiguration;
    param.rows = rows;
    param.columns = columns;
    param.bitsAllocated = bitsAllocated;
    param.pixelRepresentation = pixelRepresentation;
    return param;
}

QUORVEX_MESSAGE ResolveLayout(const _DCM_PIXEL_INFO& format, const CDcmObject& object,
                              PixelLayout& layout) {
    const LayoutResolver resolver(format, object, layout);
    return InOrder(
        [&] { return resolver.Take(kBitsAllocatedWord); },
        [&] { return resolver.Take(kSamplesWord); }, [&] { return resolver.Take(kBitsStoredWord); },
        [&] { return resolver.Take(kRowsWord); }, [&] { return resolver.Take(kColumnsWord); },
        [&] { return resolver.TakePhotometric(); },
        [&] { return resolver.Take(kRepresentationWord); },
        [&] { return layout.samplesPerPixel > 1 ? resolver.Take(kPlanarWord) : QVM_SUCCESS; });
}

QUORVEX_MESSAGE WritePixelAttributes(const _DCM_PIXEL_INFO& format, const PixelLayout& layout,
                                     int frameCount, CDcmObject& object) {
    const AttributeWriter writer(format, layout, object);
    if (frameCount > 1)
        object.SetValue(tag::kNumberOfFrames, CString(std::to_string(frameCount)), -1);
    writer.PutSpacing();
    writer.PutWindow();
    writer.PutRescale();
    return InOrder(
        [&] { return writer.PutSamples(); }, [&] { return writer.PutPhotometric(); },
        [&] { return writer.PutPlanarConfiguration(); }, [&] { return writer.Put(kRowsWord); },
        [&] { return writer.Put(kColumnsWord); }, [&] { return writer.Put(kBitsAllocatedWord); },
        [&] { return writer.Put(kBitsStoredWord); }, [&] { return writer.Put(kHighBitWord); },
        [&] { return writer.Put(kRepresentationWord); });
}

void WriteCodingAttributes(const _DCM_PIXEL_INFO& format, const TransferSyntax& written,
                           CDcmObject& object) {
    constexpr int kExtendedBits = 12;
    if (written.isEncapsulated)
        object.SetValue(tag::kLossyImageCompression, written.isLossy ? "01" : "00");
    if (written.number != kJpegExtended || format.bitsStored == kExtendedBits) return;
    object.SetValue(tag::kBitsStored, kExtendedBits);
    object.SetValue(tag::kHighBit, kExtendedBits - 1);
}

void ReadRescale(const CDcmObject& object, _DCM_PIXEL_INFO& format) {
    for (const auto& [tag, text] : kRescale) object.GetValue(tag, format.*text, -1);
}

void ReadPixelInfo(const CDcmObject& object, _DCM_PIXEL_INFO& format) {
    for (const Word& word : {kRowsWord, kColumnsWord, kBitsAllocatedWord, kBitsStoredWord,
                             kHighBitWord, kSamplesWord, kRepresentationWord, kPlanarWord})
        object.GetValue(word.tag, format.*word.set);
    object.GetValue(tag::kPhotometricInterpretation, format.photometricInterpretation, -1);
    for (const auto& [tag, text] : kWindow) object.GetValue(tag, format.*text, -1);
    if (object.GetValue(tag::kPixelSpacing, format.pixelSpacing[0], -1) == kDcmSuccess)
        object.GetNextValue(tag::kPixelSpacing, format.pixelSpacing[1], -1);
}

}  // namespace quorvex
