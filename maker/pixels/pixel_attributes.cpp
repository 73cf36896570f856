#include "maker/pixels/pixel_attributes.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/checked_size.h"
#include "maker/attribute_writing.h"

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

/// Takes values from the record, or where it does not set them from the object.
class LayoutResolver {
public:
    LayoutResolver(const _DCM_PIXEL_INFO& format, const CDcmObject& object, PixelLayout& layout)
        : format_(format), object_(object), layout_(layout) {}

    [[nodiscard]] bool Take(const Word& word) const {
        std::uint16_t& value = layout_.*word.resolved;
        value = format_.*word.set;
        return value != kUnset || object_.GetValue(word.tag, value) == kDcmSuccess;
    }
    [[nodiscard]] bool TakePhotometric() const {
        CString& text = layout_.photometric;
        text = format_.photometricInterpretation;
        return !text.IsEmpty() ||
               object_.GetValue(tag::kPhotometricInterpretation, text) == kDcmSuccess;
    }

private:
    const _DCM_PIXEL_INFO& format_;
    const CDcmObject& object_;
    PixelLayout& layout_;
};

/// Writes values that the record sets. False where the object refuses one.
class AttributeWriter {
public:
    AttributeWriter(const _DCM_PIXEL_INFO& format, const PixelLayout& layout, CDcmObject& object)
        : format_(format), layout_(layout), object_(object) {}

    [[nodiscard]] bool Put(const Word& word) const { return Put(word, format_.*word.set); }
    [[nodiscard]] bool PutSamples() const {
        constexpr std::uint16_t kGrey = 1;
        constexpr std::uint16_t kColour = 3;
        const std::uint16_t samples = format_.samplesPerPixel;
        const bool isKept = samples == kGrey || samples == kColour || samples == kUnset;
        const bool isWhole = layout_.bitsAllocated == 8 || layout_.bitsAllocated == 16;
        const std::uint16_t replacement = isWhole ? kGrey : kColour;
        return Put(kSamplesWord, isKept ? samples : replacement);
    }
    [[nodiscard]] bool PutPhotometric() const {
        const CString& text = format_.photometricInterpretation;
        return text.IsEmpty() ||
               object_.SetValue(tag::kPhotometricInterpretation, text) == kDcmSuccess;
    }
    void PutSpacing() const {
        const auto& [first, second] = format_.pixelSpacing;
        if (first.IsEmpty()) return;
        WritePair(object_, tag::kPixelSpacing, first, second.IsEmpty() ? first : second);
    }
    void PutWindow() const {
        if (layout_.bitsAllocated == 16) {
            PutBoth(kWindow);
        } else if (layout_.samplesPerPixel == 3 && layout_.photometric == CString("RGB")) {
            object_.SetValue(tag::kWindowCenter, "128");
            object_.SetValue(tag::kWindowWidth, "256");
        }
    }
    void PutRescale() const {
        if (layout_.bitsAllocated == 16) PutBoth(kRescale);
    }

private:
    [[nodiscard]] bool Put(const Word& word, std::uint16_t value) const {
        return value == kUnset || object_.SetValue(word.tag, value) == kDcmSuccess;
    }
    void PutBoth(const Text (&texts)[2]) const {
        const bool areSet = std::ranges::none_of(
            texts, [&](const Text& text) { return (format_.*text.text).IsEmpty(); });
        if (!areSet) return;
        for (const auto& [tag, text] : texts) object_.SetValue(tag, format_.*text);
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
    // The first value that is missing decides the code, so the order counts.
    for (const Word* word :
         {&kBitsAllocatedWord, &kSamplesWord, &kBitsStoredWord, &kRowsWord, &kColumnsWord}) {
        if (!resolver.Take(*word)) return word->failure;
    }
    if (!resolver.TakePhotometric()) return QVM_ERROR_INVALID_PHOTOMETRIC;
    if (!resolver.Take(kRepresentationWord)) return kRepresentationWord.failure;
    if (layout.samplesPerPixel > 1 && !resolver.Take(kPlanarWord)) return kPlanarWord.failure;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE WritePixelAttributes(const _DCM_PIXEL_INFO& format, const PixelLayout& layout,
                                     int frameCount, CDcmObject& object) {
    const AttributeWriter writer(format, layout, object);
    if (frameCount > 1) object.SetValue(tag::kNumberOfFrames, CString(std::to_string(frameCount)));
    writer.PutSpacing();
    writer.PutWindow();
    writer.PutRescale();
    if (!writer.PutSamples()) return kSamplesWord.failure;
    if (!writer.PutPhotometric()) return QVM_ERROR_INVALID_PHOTOMETRIC;
    if (layout.samplesPerPixel > 1 && !writer.Put(kPlanarWord)) return kPlanarWord.failure;
    for (const Word* word : {&kRowsWord, &kColumnsWord, &kBitsAllocatedWord, &kBitsStoredWord,
                             &kHighBitWord, &kRepresentationWord}) {
        if (!writer.Put(*word)) return word->failure;
    }
    return QVM_SUCCESS;
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
    for (const auto& [tag, text] : kRescale) object.GetValue(tag, format.*text);
}

void ReadPixelInfo(const CDcmObject& object, _DCM_PIXEL_INFO& format) {
    for (const Word& word : {kRowsWord, kColumnsWord, kBitsAllocatedWord, kBitsStoredWord,
                             kHighBitWord, kSamplesWord, kRepresentationWord, kPlanarWord})
        object.GetValue(word.tag, format.*word.set);
    object.GetValue(tag::kPhotometricInterpretation, format.photometricInterpretation);
    for (const auto& [tag, text] : kWindow) object.GetValue(tag, format.*text);
    if (object.GetValue(tag::kPixelSpacing, format.pixelSpacing[0]) == kDcmSuccess)
        object.GetNextValue(tag::kPixelSpacing, format.pixelSpacing[1]);
}

}  // namespace quorvex
