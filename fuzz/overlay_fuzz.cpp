// Overlay planes and shutters over a small image: the input is overlay data, its end attributes.
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/target.h"
#include "quorvex/CLData.h"

namespace {

using namespace quorvex;

int NearOrFar(fuzz::Options& options) {
    return options.Flag() ? options.Between(-40, 80) : static_cast<std::int16_t>(options.Word());
}

unsigned short SideLength(fuzz::Options& options, unsigned short ofImage) {
    const unsigned kind = options.Below(8);
    if (kind == 1) return options.Word();
    return kind < 4 ? ofImage : static_cast<unsigned short>(options.Below(40));
}

void AddOverlay(CDcmObject& object, std::uint32_t group, const std::vector<unsigned char>& data,
                fuzz::Options& options) {
    const fuzz::Shape image;
    const unsigned missing = options.Byte();
    if (missing % 16 != 1) object.SetValue(group | 0x10, SideLength(options, image.rows));
    if (missing % 16 != 2) object.SetValue(group | 0x11, SideLength(options, image.columns));
    if (missing % 16 != 3) {
        fuzz::PutNumbers(object, group | 0x50, {NearOrFar(options), NearOrFar(options)});
    }
    const unsigned bits = options.Byte();
    object.SetValue(group | 0x100, static_cast<unsigned short>(bits < 128 ? 1 : bits - 112));
    object.SetValue(group | 0x102, static_cast<unsigned short>(bits < 96 ? 0 : options.Below(20)));
    object.SetValue(group | 0x40, options.Flag() ? "G" : "R");
    if (missing < 128) fuzz::PutBytes(object, group | 0x3000, data, MC_VR_OW);
    if (options.Flag()) fuzz::PutNumbers(object, group | 0x1101, {options.Word()});
}

void AddShutter(CDcmObject& object, fuzz::Options& options) {
    constexpr const char* kShapes[] = {"RECTANGULAR",         "CIRCULAR", "POLYGONAL", "BITMAP",
                                       "CIRCULAR\\POLYGONAL", ""};
    object.SetValue(0x00181600, options.OneOf(kShapes));
    for (const std::uint32_t edge : {0x00181602U, 0x00181604U, 0x00181606U, 0x00181608U}) {
        object.SetValue(edge, NearOrFar(options));
    }
    fuzz::PutNumbers(object, 0x00181610, {NearOrFar(options), NearOrFar(options)});
    object.SetValue(0x00181612, NearOrFar(options));
    object.SetValue(0x00181620, NearOrFar(options));
    for (unsigned i = options.Below(24); i > 0; --i) {
        object.SetNextValue(0x00181620, NearOrFar(options));
    }
    object.SetValue(0x00181622, options.Word());
    object.SetValue(0x00181623, static_cast<unsigned short>(0x6000 + 2 * options.Below(3)));
}

/// The planes into a block of exactly their size.
void MakePlanes(CDcmObject& object, std::vector<unsigned char> bits) {
    const fuzz::Shape largest;
    std::vector<unsigned char> plane(std::size_t{largest.rows} * largest.columns * 3);
    const CXDIPP image;
    unsigned long length = 0;
    unsigned short width = 0;
    (void)image.MakeOverlayImage(&object, nullptr, plane.data(), length, width, 0);
    CLData data;
    data.overlayPlane = bits.data();
    data.overlayPlaneSize = bits.size();
    (void)image.MakeOverlayImage2(&object, &data, plane.data(), length, width, 0, 0, 0, 0, 0, 0);
    unsigned char* embedded = nullptr;
    (void)MakeEmbeddedOverlayPlane(&object, bits.data(), bits.size(), embedded, length);
    delete[] embedded;
}

/// The same header over pixels of the host's.
void ShowHostsPixels(CDcmObject& object, fuzz::Options& options) {
    const fuzz::Shape largest;
    std::vector<unsigned char> pixels(std::size_t{largest.rows} * largest.columns * 3);
    for (auto& byte : pixels) byte = static_cast<unsigned char>(options.Byte());
    CDcmApp app;
    CXDIPP image;
    const int highest = options.Word();
    if (image.Initialize(&app, &object, pixels.data(), {30, 30}, highest, -highest, 0) ==
        QVM_SUCCESS) {
        fuzz::ShowAsDrawn(image, options);
    }
}

void ShowOverlays(fuzz::Options& options) {
    constexpr unsigned short kFewerBits[] = {16, 12, 8, 10, 1, 0};
    CDcmObject object;
    fuzz::DrawImage(object, options);
    object.SetValue(0x00280101, options.OneOf(kFewerBits));
    for (unsigned i = options.Below(3); i > 0; --i) {
        AddOverlay(object, 0x60000000 + 0x00020000 * i, options.Front(), options);
    }
    AddShutter(object, options);
    MakePlanes(object, options.Front());
    CDcmApp app;
    CXDIPP image;
    if (image.Initialize(&app, &object, fuzz::DrawViewSize(options), 0) != QVM_SUCCESS) return;
    image.ShowShutter(1);
    image.ShowOverlays(1);
    fuzz::RenderAndDraw(image, options);
    fuzz::ShowAsDrawn(image, options);
    ShowHostsPixels(object, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 13, 160}, ShowOverlays);
}
