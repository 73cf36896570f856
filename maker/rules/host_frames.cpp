#include "maker/rules/host_frames.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/checked_size.h"
#include "maker/pixels/pixel_attributes.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

constexpr std::size_t kHostColourBytes = 4;

/// A host's bitmap pixel: B, G, R and a byte that says nothing.
bool IsHostColour(const NewImage& image) {
    const unsigned bits = unsigned{image.format.bitsAllocated} * image.format.samplesPerPixel;
    const bool isOne = image.format.samplesPerPixel == 1 || image.format.samplesPerPixel == 4;
    return image.isDescribedByHost && isOne && bits == 8 * kHostColourBytes;
}

QUORVEX_MESSAGE CheckSamples(const StoredForms& forms) {
    if (forms.samplesPerPixel != 1 && forms.samplesPerPixel != 3)
        return QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
    const bool isWide = forms.bitsAllocated == 32 && forms.samplesPerPixel == 1;
    if (forms.bitsAllocated != 8 && forms.bitsAllocated != 16 && !isWide)
        return QVM_ERROR_INVALID_BITS_ALLOCATED;
    if (forms.bitsStored < 1 || forms.bitsStored > forms.bitsAllocated)
        return QVM_ERROR_INVALID_BITS_STORED;
    if (forms.rows == 0 || forms.rows == kUnset) return QVM_ERROR_INVALID_ROWS;
    return forms.columns == 0 || forms.columns == kUnset ? QVM_ERROR_INVALID_COLUMNS : QVM_SUCCESS;
}

/// Hosts' colour is R, G, B, whatever their source had.
CString PhotometricOf(const _DCM_PIXEL_INFO& format, bool isColour) {
    if (isColour) return "RGB";
    const CString& text = format.photometricInterpretation;
    return text.IsEmpty() ? CString("MONOCHROME2") : text;
}

bool IsKnownGrey(const CString& text) {
    constexpr const char* kKnown[] = {"MONOCHROME1", "MONOCHROME2", "PALETTE COLOR"};
    return std::ranges::any_of(kKnown, [&](const char* known) { return text == CString(known); });
}

void TakeHostColour(StoredForms& forms) {
    forms.samplesPerPixel = 3;
    forms.bitsAllocated = 8;
    forms.bitsStored = 8;
    forms.isSigned = false;
}

}  // namespace

QUORVEX_MESSAGE DescribeHostFrames(const NewImage& image, HostFrames& frames) {
    const _DCM_PIXEL_INFO& format = image.format;
    StoredForms& forms = frames.forms;
    forms.rows = format.rows;
    forms.columns = format.columns;
    forms.samplesPerPixel = std::max<std::uint16_t>(format.samplesPerPixel, 1);
    forms.bitsAllocated = format.bitsAllocated;
    forms.bitsStored = format.bitsStored;
    forms.isSigned = format.pixelRepresentation == 1;
    frames.areBlueGreenRed = IsHostColour(image);
    if (frames.areBlueGreenRed) TakeHostColour(forms);
    const auto checked = CheckSamples(forms);
    if (checked != QVM_SUCCESS) return checked;
    if (format.pixelRepresentation > 1) return QVM_ERROR_INVALID_PIXEL_REPRESENTATION;
    const bool isColour = forms.samplesPerPixel == 3;
    frames.photometric = PhotometricOf(format, isColour);
    if (!isColour && !IsKnownGrey(frames.photometric)) return QVM_ERROR_INVALID_PHOTOMETRIC;
    if (isColour && forms.isSigned) return QVM_ERROR_INVALID_PIXEL_REPRESENTATION;
    forms.isRgb = isColour;
    const auto pixels = CheckedProduct(forms.rows, forms.columns);
    const auto bytes =
        CheckedProduct(forms.rows, forms.columns, forms.samplesPerPixel, forms.bitsAllocated / 8U);
    if (!pixels || !bytes) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    frames.frameBytes = *bytes;
    frames.givenBytes = frames.areBlueGreenRed ? *pixels * kHostColourBytes : *bytes;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE PackedFrames::Next(std::span<unsigned char>& bytes) {
    frame_.reset();
    _DCM_FRAME_BUFFER* given = nullptr;
    const auto result = supply_.Fetch(next_++, given);
    if (result != QVM_SUCCESS) return result;
    if (given == nullptr || given->rawData == nullptr) return QVM_ERROR_NULL_SOURCE;
    if (given->rawLength != frames_.givenBytes) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    frame_.reset(std::exchange(given->rawData, nullptr));
    given->rawLength = 0;
    bytes = {frame_.get(), frames_.frameBytes};
    if (!frames_.areBlueGreenRed) return QVM_SUCCESS;
    unsigned char* to = frame_.get();  // in place: what is written lies at or before what is read
    for (std::size_t at = 0; at < frames_.givenBytes; at += kHostColourBytes, to += 3) {
        const unsigned char blue = frame_[at];
        to[1] = frame_[at + 1];
        to[0] = frame_[at + 2];
        to[2] = blue;
    }
    return QVM_SUCCESS;
}

}  // namespace quorvex
