// The three images among the sample objects.
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
    {0x00280002, Number(1)},  {0x00280100, Number(16)}, {0x00280101, Number(12)},
    {0x00280102, Number(11)}, {0x00280103, Number(0)},
};
constexpr Attribute kSlice[] = {
    {0x00080008, "ORIGINAL\\PRIMARY\\AXIAL"},
    {0x00080060, "CT"},
    {0x00180050, "5"},
    {0x00180060, "120"},
    {0x00185100, "HFS"},
    {0x00200012, "1"},
    {0x00200032, "-199.609375\\-199.609375\\0"},
    {0x00200037, "1\\0\\0\\0\\1\\0"},
    {0x00200052, "2.25.32980073569858662929564197851150617301"},
    {0x00201040, ""},
    {0x00280004, "MONOCHROME2"},
    {0x00280030, "0.78125\\0.78125"},
    {0x00281050, "40\\-600"},
    {0x00281051, "400\\1500"},
    {0x00281052, "-1024"},
    {0x00281053, "1"},
    {0x00281054, "HU"},
    {0x00281055, "SOFT TISSUE\\LUNG"},
};
constexpr Attribute kRadiograph[] = {
    {0x00080008, "ORIGINAL\\PRIMARY"}, {0x00080060, "CR"},   {0x00185101, "PA"},
    {0x00280004, "MONOCHROME1"},       {0x00281050, "2000"}, {0x00281051, "3600"},
};
constexpr Attribute kLoop[] = {
    {0x00080008, "ORIGINAL\\PRIMARY\\INTRACARDIAC\\0011"},
    {0x00080060, "US"},
    {0x00181063, "40"},
    {0x00280002, Number(3)},
    {0x00280004, "RGB"},
    {0x00280006, Number(0)},
    {0x00280014, Number(1)},
    {0x00280100, Number(8)},
    {0x00280101, Number(8)},
    {0x00280102, Number(7)},
    {0x00280103, Number(0)},
    {0x00282110, "00"},
};

void SetSize(CDcmObject& object, CSize size) {
    SetAttributes(object, std::array{Attribute{0x00280010, Number(size.cy)},
                                     Attribute{0x00280011, Number(size.cx)}});
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
    SetText(*object, 0x00181164, spacing + '\\' + spacing);
    SetSize(*object, size);
    SetSamples(*object, DrawRadiograph(size));
    return object;
}

std::unique_ptr<CDcmObject> MakeLoop(CSize size, int frames, int number) {
    auto object = std::make_unique<CDcmObject>();
    SetIdentity(*object, IdentityOf(kUltrasoundLoop, 3, number));
    SetAttributes(*object, kLoop);
    SetWholeNumbers(*object, 0x00280009, std::array{0x00181063});  // the frames follow Frame Time
    SetText(*object, 0x00280008, std::to_string(frames));
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
