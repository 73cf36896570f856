// The three images among the sample objects.
#include "quorvex/Tags.h"
#include "tools/phantom/phantom_images.h"
#include "tools/phantom/phantom_objects.h"

#include <array>
#include <bit>
#include <vector>

namespace quorvex::tools {
namespace {

constexpr const char* kCtImage = "1.2.840.10008.5.1.4.1.1.2";
constexpr const char* kCrImage = "1.2.840.10008.5.1.4.1.1.1";
constexpr const char* kUltrasoundLoop = "1.2.840.10008.5.1.4.1.1.3.1";

constexpr unsigned short Number(int number) {
    return static_cast<unsigned short>(number);
}

constexpr Attribute kTwelveBits[] = {
    {tag::kSamplesPerPixel, Number(1)},     {tag::kBitsAllocated, Number(16)},
    {tag::kBitsStored, Number(12)},         {tag::kHighBit, Number(11)},
    {tag::kPixelRepresentation, Number(0)},
};
constexpr Attribute kSlice[] = {
    {tag::kImageType, "ORIGINAL\\PRIMARY\\AXIAL"},
    {tag::kModality, "CT"},
    {tag::kSliceThickness, "5"},
    {tag::kKVP, "120"},
    {tag::kPatientPosition, "HFS"},
    {tag::kAcquisitionNumber, "1"},
    {tag::kImagePositionPatient, "-199.609375\\-199.609375\\0"},
    {tag::kImageOrientationPatient, R"(1\0\0\0\1\0)"},
    {tag::kFrameOfReferenceUID, "2.25.32980073569858662929564197851150617301"},
    {tag::kPositionReferenceIndicator, ""},
    {tag::kPhotometricInterpretation, "MONOCHROME2"},
    {tag::kPixelSpacing, "0.78125\\0.78125"},
    {tag::kWindowCenter, "40\\-600"},
    {tag::kWindowWidth, "400\\1500"},
    {tag::kRescaleIntercept, "-1024"},
    {tag::kRescaleSlope, "1"},
    {tag::kRescaleType, "HU"},
    {tag::kWindowCenterWidthExplanation, "SOFT TISSUE\\LUNG"},
};
constexpr Attribute kRadiograph[] = {
    {tag::kImageType, "ORIGINAL\\PRIMARY"},
    {tag::kModality, "CR"},
    {tag::kViewPosition, "PA"},
    {tag::kPhotometricInterpretation, "MONOCHROME1"},
    {tag::kWindowCenter, "2000"},
    {tag::kWindowWidth, "3600"},
};
constexpr Attribute kLoop[] = {
    {tag::kImageType, R"(ORIGINAL\PRIMARY\INTRACARDIAC\0011)"},
    {tag::kModality, "US"},
    {tag::kFrameTime, "40"},
    {tag::kSamplesPerPixel, Number(3)},
    {tag::kPhotometricInterpretation, "RGB"},
    {tag::kPlanarConfiguration, Number(0)},
    {tag::kUltrasoundColorDataPresent, Number(1)},
    {tag::kBitsAllocated, Number(8)},
    {tag::kBitsStored, Number(8)},
    {tag::kHighBit, Number(7)},
    {tag::kPixelRepresentation, Number(0)},
    {tag::kLossyImageCompression, "00"},
};

void SetSize(CDcmObject& object, CSize size) {
    SetAttributes(object, std::array{Attribute{tag::kRows, Number(size.cy)},
                                     Attribute{tag::kColumns, Number(size.cx)}});
}

void SetSamples(CDcmObject& object, const std::vector<std::uint16_t>& samples) {
    static_assert(std::endian::native == std::endian::little, "samples are stored as they lie");
    const auto* bytes = reinterpret_cast<const unsigned char*>(samples.data());
    SetPixels(object, {bytes, 2 * samples.size()}, MC_VR_OW);
}

}  // namespace

Identity SliceIdentity() {
    return IdentityOf(kCtImage, 1, 1);
}

std::unique_ptr<CDcmObject> MakeSlice() {
    auto object = std::make_unique<CDcmObject>();
    SetIdentity(*object, SliceIdentity());
    SetAttributes(*object, kTwelveBits);
    SetAttributes(*object, kSlice);
    SetSize(*object, kSliceSize);
    SetSamples(*object, DrawSlice(kSliceSize));
    return object;
}

std::unique_ptr<CDcmObject> MakeRadiograph(CSize size, int number) {
    constexpr double kPlate = 350.0;  // width in mm
    auto object = std::make_unique<CDcmObject>();
    SetIdentity(*object, IdentityOf(kCrImage, 2, number));
    SetAttributes(*object, kTwelveBits);
    SetAttributes(*object, kRadiograph);
    const auto spacing = std::to_string(kPlate / size.cx);
    SetText(*object, tag::kImagerPixelSpacing, spacing + '\\' + spacing);
    SetSize(*object, size);
    SetSamples(*object, DrawRadiograph(size));
    return object;
}

std::unique_ptr<CDcmObject> MakeLoop(CSize size, int frames, int number) {
    auto object = std::make_unique<CDcmObject>();
    SetIdentity(*object, IdentityOf(kUltrasoundLoop, 3, number));
    SetAttributes(*object, kLoop);
    SetWholeNumbers(*object, tag::kFrameIncrementPointer,
                    std::array{static_cast<int>(tag::kFrameTime)});
    SetText(*object, tag::kNumberOfFrames, std::to_string(frames));
    SetSize(*object, size);
    std::vector<unsigned char> samples;
    for (int frame = 0; frame < frames; ++frame) {
        const auto picture = DrawLoopFrame(size, static_cast<double>(frame) / frames);
        samples.insert(samples.end(), picture.begin(), picture.end());
    }
    SetPixels(*object, samples, MC_VR_OB);
    return object;
}

}  // namespace quorvex::tools
