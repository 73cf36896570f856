#include "tools/state/common_stages.h"

#include "quorvex/CXGSPSObject.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

namespace quorvex::tools {
namespace {

constexpr const char* kOneEach = ": make a state of each";

std::string ModalityOf(const CXGSPSInfo& image) {
    if (image.modalityLUTData != nullptr) return "a Modality LUT of its own";
    if (image.rescaleSlope == 0.0) return "no rescale";
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "rescale slope %.10g and intercept %.10g",
                  image.rescaleSlope, image.rescaleIntercept);
    return text.data();
}

bool HaveOneMask(const CXGSPSInfo& image, const CXGSPSInfo& first) {
    if (image.shutterMask == nullptr || first.shutterMask == nullptr)
        return image.shutterMask == first.shutterMask;
    if (image.imageRows != first.imageRows || image.imageColumns != first.imageColumns)
        return false;
    const auto pixels =
        static_cast<std::size_t>(image.imageRows) * static_cast<std::size_t>(image.imageColumns);
    return std::equal(image.shutterMask, image.shutterMask + pixels, first.shutterMask);
}

/// Shapes hold for images of any size, bitmaps for those of one.
bool HaveOneShutter(const CXGSPSInfo& image, const CXGSPSInfo& first) {
    constexpr std::int32_t CXGSPSInfo::*kNumbers[] = {
        &CXGSPSInfo::shutterShapes, &CXGSPSInfo::shutterLeft,         &CXGSPSInfo::shutterUpper,
        &CXGSPSInfo::shutterRight,  &CXGSPSInfo::shutterLower,        &CXGSPSInfo::shutterCenterRow,
        &CXGSPSInfo::shutterRadius, &CXGSPSInfo::shutterCenterColumn,
    };
    constexpr std::int32_t kBitmap = 8;
    return std::ranges::all_of(kNumbers, [&](auto n) { return image.*n == first.*n; }) &&
           image.shutterVertices == first.shutterVertices &&
           ((image.shutterShapes & kBitmap) == 0 || HaveOneMask(image, first));
}

}  // namespace

std::string DifferenceOf(const CXGSPSInfo& image, const CXGSPSInfo& first,
                         const std::string& firstPath, const StateArguments& arguments) {
    if (image.modalityVaries != 0)
        return "its frames differ in rescale, and a state has one rescale for all that it shows";
    if (!CXGSPSObject::HaveOneModality(image, first))
        return "it has " + ModalityOf(image) + ", " + firstPath + " has " + ModalityOf(first) +
               ", and a state has one rescale for all of its images" + kOneEach;
    if (image.presentationShape != first.presentationShape)
        return "its greys run the other way than those of " + firstPath +
               ", and a state has one way for all of its images" + kOneEach;
    const bool isChosen = arguments.shutter.kind != ShutterShape::Kind::kNone;
    if (!isChosen && !HaveOneShutter(image, first))
        return "it has not the shutter of " + firstPath +
               ", and a state has one for all of its images" + kOneEach +
               ", or choose one by --shutter";
    return {};
}

}  // namespace quorvex::tools
