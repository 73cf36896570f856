#include "tools/convert/checks/source_checks.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/convert/refusal.h"
#include "tools/convert_target.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorvex::tools {
namespace {

unsigned short WordOf(const CDcmObject& object, std::uint32_t tag, unsigned short absent = 0) {
    return Read<unsigned short>(object, tag).value_or(absent);
}

/// The storage classes of images behind "1.2.840.10008.5.1.4.1.1." (PS3.4 B.5) that never lack
/// pixels; each with all classes below it.
constexpr std::array<std::string_view, 20> kImageClasses = {
    "1",  "2",    "3.1",  "4",  "4.1", "6.1",  "6.2",  "7",    "12.1", "12.2",
    "13", "14.1", "14.2", "20", "30",  "66.4", "66.7", "77.1", "128",  "130"};

bool IsImageClass(std::string_view uid) {
    constexpr std::string_view kStorage = "1.2.840.10008.5.1.4.1.1.";
    if (!uid.starts_with(kStorage)) return false;
    uid.remove_prefix(kStorage.size());
    return std::ranges::any_of(kImageClasses, [&](std::string_view image) {
        const bool isExact = image.starts_with('4') || image.starts_with("66");
        return uid == image ||
               (!isExact && uid.starts_with(image) && uid.substr(image.size()).starts_with('.'));
    });
}

bool Has(const CDcmObject& object, std::uint32_t tag) {
    int count = 0;
    return object.GetValueCount(tag, count) == kDcmSuccess;
}

MC_STATUS NoteCut(const DcmElementView& element, void* user) {
    auto& isCut = *static_cast<bool*>(user);
    isCut = isCut || element.isCut;
    return isCut ? kMcRefuse : kMcContinue;
}

/// How many frames native Pixel Data has bits for; nothing for coded one, and for a header without
/// a size.
/// A header can claim at most 65535^4 x 2^31 bits, which a double holds well enough.
/// @param samples  of a pixel, as they are stored
std::optional<double> NativeFrames(const CDcmObject& source, unsigned samples) {
    unsigned long length = 0;
    const TransferSyntax* syntax = SyntaxOf(source);
    if (syntax == nullptr || syntax->isEncapsulated ||
        source.GetValueLength(tag::kPixelData, 1, length) != kDcmSuccess)
        return std::nullopt;
    double bits = samples;
    for (const auto tag : {tag::kRows, tag::kColumns, tag::kBitsAllocated})
        bits *= WordOf(source, tag);
    if (bits == 0.0) return std::nullopt;
    return static_cast<double>(length) * 8.0 / bits;
}

}  // namespace

int FramesOf(const CDcmObject& object) {
    return Read<int>(object, tag::kNumberOfFrames).value_or(1);
}

bool HoldsFractions(const CDcmObject& object) {
    return Has(object, tag::kFloatPixelData) || Has(object, tag::kDoubleFloatPixelData);
}

bool IsImage(const CDcmObject& object) {
    constexpr std::uint32_t kPixelDataProviderUrl = 0x00287FE0;  // where a server has them
    if (Has(object, tag::kPixelData) || HoldsFractions(object)) return true;
    const bool saysSo = IsImageClass(TextOf(object, tag::kSOPClassUID)) ||
                        (Has(object, tag::kRows) && Has(object, tag::kColumns));
    return saysSo && !Has(object, kPixelDataProviderUrl);
}

bool IsCodedWithLosses(const CDcmObject& object) {
    const TransferSyntax* syntax = SyntaxOf(object);
    return (syntax != nullptr && syntax->isLossy) ||
           TextOf(object, tag::kLossyImageCompression) == "01";
}

bool IsDirectory(const CDcmObject& object) {
    constexpr const char* kDirectoryStorage = "1.2.840.10008.1.3.10";
    return TextOf(object, tag::kMediaStorageSOPClassUID) == kDirectoryStorage;
}

// A decoder fills up what is missing, and the output would look whole.
void RefuseWhatIsCut(const CDcmObject& source) {
    bool isCut = false;
    source.WalkElements(&isCut, NoteCut);
    if (isCut) throw BadInput(QVM_ERROR_FAILED_TO_READ_FILE, "the file ends before its data does");
}

void RefuseUnfitImage(const CDcmObject& source) {
    if (!Has(source, tag::kPixelData))
        throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                       "an image without its pixels: the file was cut off, or they were taken out");
    if (WordOf(source, tag::kRows) == 0 || WordOf(source, tag::kColumns) == 0)
        throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    const bool sharesChroma =
        TextOf(source, tag::kPhotometricInterpretation).find("_42") != std::string::npos;
    const unsigned samples = sharesChroma ? 2 : WordOf(source, tag::kSamplesPerPixel, 1);
    if (NativeFrames(source, samples).value_or(FramesOf(source)) < FramesOf(source))
        throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                       "there are fewer pixels than the header says");
}

void RefuseUncountedFrames(const CDcmObject& source) {
    const unsigned samples = WordOf(source, tag::kSamplesPerPixel, 1);
    if (NativeFrames(source, samples).value_or(0.0) >= std::max(FramesOf(source), 1) + 1)
        throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                       "there are more frames than the header says");
}

}  // namespace quorvex::tools
