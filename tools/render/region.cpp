#include "tools/render/region.h"

#include "quorvex/Attributes.h"
#include "quorvex/CxTiledImage.h"
#include "quorvex/Tags.h"

#include <limits>
#include <memory>

namespace quorvex::tools {
namespace {

struct Pixels {
    std::unique_ptr<unsigned char[]> data;
    unsigned long size = 0;
};

MC_STATUS GivePixels(int, std::uint32_t, void* user, int, int* length, void** data, int* last) {
    auto& pixels = *static_cast<Pixels*>(user);
    *data = pixels.data.get();
    *length = static_cast<int>(pixels.size);
    *last = 1;
    return kMcContinue;
}

/// What speaks of all tiles, and not of one picture.
constexpr std::uint32_t kOfTheWhole[] = {tag::kNumberOfFrames,
                                         tag::kTotalPixelMatrixColumns,
                                         tag::kTotalPixelMatrixRows,
                                         tag::kDimensionOrganizationType,
                                         tag::kExtendedOffsetTable,
                                         tag::kPerFrameFunctionalGroupsSequence,
                                         tag::kTotalPixelMatrixFocalPlanes};

QUORVEX_MESSAGE MakeObject(const TiledLevel& level, const CRect& area, Pixels& pixels,
                           CDcmObject& object) {
    for (const std::uint32_t tag : kOfTheWhole) object.RemoveValue(tag);
    if (object.SetTransferSyntax(kExplicitLittleEndian) != kDcmSuccess)
        return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    object.SetValue(tag::kColumns, area.Width());
    object.SetValue(tag::kRows, area.Height());
    const int bits = 8 * level.bytesPerSample;
    if (Read<int>(object, tag::kBitsAllocated) != bits) object.SetValue(tag::kBitsAllocated, bits);
    if (level.samplesPerPixel == 3) {
        object.SetValue(tag::kPhotometricInterpretation, "RGB");
        object.SetValue(tag::kPlanarConfiguration, 0);
    }
    const bool isPut = object.SetValue(tag::kPixelData, &pixels, GivePixels) == kDcmSuccess;
    return isPut ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

}  // namespace

ExitStatus OpenRegion(CDcmApp& app, const std::vector<std::string>& files,
                      const RegionChoice& choice, CDcmObject& object) {
    constexpr int kLongestSide = std::numeric_limits<std::uint16_t>::max();
    CxTiledImage image;
    for (const std::string& file : files) {
        const auto added = image.Add(&app, file);
        if (added == QVM_ERROR_INVALID_IMAGE_FORMAT) {
            Complain(file, "it is no part of the picture: a label, an overview or another slide");
            return kBadInput;
        }
        if (added != QVM_SUCCESS) return ReportBadInput(file, added);
    }
    TiledLevel level;
    if (image.GetLevel(choice.level, level) != QVM_SUCCESS)
        throw WrongUsage("--level is below " + std::to_string(image.GetLevelCount()) +
                         ", the number of levels in the files");
    if (choice.opticalPath >= level.opticalPaths || choice.focalPlane >= level.focalPlanes)
        throw WrongUsage("the level has " + std::to_string(level.opticalPaths) +
                         " optical paths and " + std::to_string(level.focalPlanes) +
                         " focal planes");
    Pixels pixels;
    auto result = choice.area.Width() > kLongestSide || choice.area.Height() > kLongestSide
                      ? QVM_ERROR_INVALID_OUTPUT_SIZE
                      : QVM_SUCCESS;
    unsigned char* data = nullptr;
    if (result == QVM_SUCCESS)
        result = image.GetRegion(choice.level, choice.area, choice.opticalPath, choice.focalPlane,
                                 data, pixels.size);
    pixels.data.reset(data);
    if (result == QVM_SUCCESS && pixels.size > std::numeric_limits<int>::max())
        result = QVM_ERROR_INVALID_OUTPUT_SIZE;
    if (result == QVM_SUCCESS) {
        object = *image.GetHeader(choice.level);
        result = MakeObject(level, choice.area, pixels, object);
    }
    return result == QVM_SUCCESS ? kAllDone : ReportBadInput(files.front(), result);
}

}  // namespace quorvex::tools
