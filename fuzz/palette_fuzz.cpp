// Palettes, plain and segmented: the input is their data, its end their descriptors and the image.
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/target.h"
#include "quorvex/CLData.h"
#include "quorvex/CxPaletteLUT.h"

namespace {

using namespace quorvex;

std::vector<unsigned char> Part(const std::vector<unsigned char>& data, unsigned third) {
    const std::size_t length = data.size() / 3;
    const auto begin = data.begin() + static_cast<std::ptrdiff_t>(third * length);
    return {begin, begin + static_cast<std::ptrdiff_t>(length)};
}

void AddColour(CDcmObject& object, unsigned colour, const std::vector<unsigned char>& data,
               fuzz::Options& options) {
    constexpr MC_VR kTypes[] = {MC_VR_OW, MC_VR_OB, MC_VR_US, MC_VR_UN};
    constexpr int kBits[] = {8, 16, 12, 0, 10, 255};
    const bool isSegmented = options.Flag();
    int first = options.Word();
    if (options.Flag()) first = static_cast<std::int16_t>(first);
    const int count = options.Flag() ? options.Word() : static_cast<int>(data.size() / 2);
    fuzz::PutNumbers(object, 0x00281101 + colour, {count, first, options.OneOf(kBits)});
    fuzz::PutBytes(object, (isSegmented ? 0x00281221 : 0x00281201) + colour, data,
                   options.OneOf(kTypes));
}

void Load(CDcmObject& object, int representation, Rules rules) {
    for (const int segmented : {0, 1}) {
        CxPaletteLUT table(representation);
        table.SetRules(rules);
        if (table.LoadLUT(&object, 0x00281101, segmented != 0 ? 0x00281221 : 0x00281201,
                          segmented) == 0) {
            continue;
        }
        for (int value = -40000; value < 70000; value += 97) (void)table.Lookup(value);
    }
}

/// Each of them makes a picture of the same pixels.
void Colour(CDcmObject& object, std::vector<unsigned char> pixels, const fuzz::Shape& shape) {
    CDcmApp app;
    CxDcmParser parser;
    parser.SetRules(shape.bits == 8 ? Rules::kStandard : Rules::kEstablished);
    if (parser.Initialize(&app, &object, nullptr, 0, 0) != QVM_SUCCESS) return;
    unsigned char* rgb[3] = {};
    unsigned long length = 0;
    unsigned short padded = 0;
    const CXDIPP image;
    (void)test::ColouredOf(parser, pixels.data(), shape.columns, shape.rows, shape.bits);
    (void)image.MakePaletteColorImage(&object, pixels.data(), rgb[0], length, padded);
    (void)image.MakeSPCOverlay(&object, pixels.data(), rgb[1], length);
    (void)image.MakeSPCOverlayForMPR(&object, pixels.data(), shape.columns, shape.rows, rgb[2],
                                     length);
    for (unsigned char* block : rgb) delete[] block;
}

/// The pixels as a volume of the host's, with the object's palette as colours or as a layer.
void ShowVolume(CDcmObject& object, std::vector<unsigned char> pixels, const fuzz::Shape& shape,
                fuzz::Options& options) {
    CLData data;
    data.pixels = pixels.data();
    data.width = shape.columns;
    data.height = shape.rows;
    data.bitsAllocated = shape.bits;
    data.bitsStored = static_cast<unsigned short>(options.Below(20));
    data.photometricInterpretation = "PALETTE COLOR";
    data.pixelRepresentation = shape.isSigned;
    data.windowWidth = static_cast<int>(options.Byte());
    CXDIPP image;
    const int highest = options.Word();
    const int lowest = static_cast<std::int16_t>(options.Word());
    for (const int kind : {2, 3, 5}) {
        if (image.Initialize(&object, &data, {40, 40}, highest, lowest, kind) == QVM_SUCCESS) {
            fuzz::RenderAndDraw(image, options);
        }
    }
}

void ShowPalettes(fuzz::Options& options) {
    const std::vector<unsigned char> tables = options.Front();
    const fuzz::Shape shape{.bits = static_cast<unsigned short>(options.Flag() ? 16 : 8),
                            .isSigned = static_cast<unsigned short>(options.Below(2))};
    CDcmObject object;
    fuzz::FillImage(object, shape, "PALETTE COLOR");
    for (unsigned colour = 0; colour < 3; ++colour) {
        AddColour(object, colour, Part(tables, colour), options);
    }
    Load(object, shape.isSigned, Rules::kEstablished);
    Load(object, shape.isSigned, Rules::kStandard);
    std::vector<unsigned char> pixels(shape.FrameBytes());
    for (auto& byte : pixels) byte = static_cast<unsigned char>(options.Byte());
    Colour(object, pixels, shape);
    ShowVolume(object, std::move(pixels), shape, options);
    CDcmApp app;
    CXDIPP image;
    if (image.Initialize(&app, &object, {32, 32}, 0) == QVM_SUCCESS)
        fuzz::RenderAndDraw(image, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 14, 64}, ShowPalettes);
}
