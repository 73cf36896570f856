// Overlays and palettes as the command shows them.
#include "run_command.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

std::string GreyHeader(const char* photometric) {
    return Element(0x00280002, "US", Number16(1)) + Element(0x00280004, "CS", photometric) +
           Element(0x00280010, "US", Number16(2)) + Element(0x00280011, "US", Number16(4)) +
           Element(0x00280100, "US", Number16(8)) + Element(0x00280101, "US", Number16(8)) +
           Element(0x00280102, "US", Number16(7)) + Element(0x00280103, "US", Number16(0));
}

std::string Overlay(std::uint32_t origin, const std::string& data) {
    return Element(0x60000010, "US", Number16(2)) + Element(0x60000011, "US", Number16(4)) +
           Element(0x60000022, "LO", "marks ") + Element(0x60000050, "SS", Number32(origin)) +
           Element(0x60000100, "US", Number16(1)) + Element(0x60000102, "US", Number16(0)) +
           Element(0x60003000, "OW", data);
}

std::string File(const std::string& dataSet) {
    return Part10("1.2.840.10008.1.2.1", dataSet);
}

const std::string kPixels = {0, 1, 2, 3, 0, 1, 2, 3};
// Bits 0 and 5 of a plane that lies on the image: its first pixel, and the second one of row 2.
const std::string kMarks = {0x21, 0};

TEST(RenderCommand, BurnsInOverlays) {
    const ScratchFolder folder;
    const auto path =
        folder.Write("grey.dcm", File(GreyHeader("MONOCHROME2 ") + Overlay(0x00010001, kMarks) +
                                      Element(0x7FE00010, "OW", kPixels)));
    const auto output = folder.Path("grey.png");
    ASSERT_EQ(RunCommand({"render", path, "--window", "100,200", "-o", output}).status, 0);
    const auto plain = ReadPng(output);
    ASSERT_EQ(
        RunCommand({"render", path, "--window", "100,200", "--overlays", "-o", output}).status, 0);
    const auto marked = ReadPng(output);
    ASSERT_EQ(marked.pixels.size(), 8U);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(marked.pixels[i], i == 0 || i == 5 ? 255 : plain.pixels[i]) << i;
    }
    const auto info = RunCommand({"info", path}).output;
    EXPECT_NE(info.find("overlay 6000    4 x 2 from column 1, row 1, marks"), std::string::npos);
    const auto json = RunCommand({"info", path, "--json"}).output;
    EXPECT_NE(json.find("\"overlays\":[{\"group\":\"6000\",\"columns\":4,\"rows\":2"),
              std::string::npos);
}

TEST(RenderCommand, BurnsOverlaysIntoPaletteColours) {
    std::string palette;
    for (std::uint32_t tag = 0x00281101; tag <= 0x00281103; ++tag) {
        palette += Element(tag, "US", Number16(4) + Number16(0) + Number16(16));
    }
    const std::string ramp = Number16(0) + Number16(0x4000) + Number16(0x8000) + Number16(0xFF00);
    const std::string dark(8, '\0');
    palette += Element(0x00281201, "OW", ramp) + Element(0x00281202, "OW", dark) +
               Element(0x00281203, "OW", dark);
    const ScratchFolder folder;
    const auto path = folder.Write(
        "palette.dcm", File(GreyHeader("PALETTE COLOR ") + palette + Overlay(0x00010001, kMarks) +
                            Element(0x7FE00010, "OW", kPixels)));
    const auto output = folder.Path("palette.png");
    ASSERT_EQ(RunCommand({"render", path, "--overlays", "-o", output}).status, 0);
    const auto picture = ReadPng(output);
    ASSERT_EQ(picture.channels, 3);
    const int reds[] = {255, 63, 127, 254, 0, 255, 127, 254};
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_NEAR(picture.pixels[3 * i], reds[i], 1) << i;
        EXPECT_EQ(picture.pixels[3 * i + 1], i == 0 || i == 5 ? 255 : 0) << i;
    }
}

TEST(RenderCommand, BadOverlaysStillGiveAPicture) {
    const ScratchFolder folder;
    for (const auto& overlay :
         {Overlay(0x7FFF8000, kMarks), Overlay(0x00010001, ""),
          Element(0x60000010, "US", Number16(65535)) + Element(0x60000011, "US", Number16(65535)) +
              Element(0x60000050, "SS", Number32(0x80008000)) +
              Element(0x60000100, "US", Number16(1)) + Element(0x60000102, "US", Number16(0)) +
              Element(0x60003000, "OW", kMarks)}) {
        const auto path = folder.Write("bad.dcm", File(GreyHeader("MONOCHROME2 ") + overlay +
                                                       Element(0x7FE00010, "OW", kPixels)));
        const auto output = folder.Path("bad.png");
        EXPECT_EQ(RunCommand({"render", path, "--overlays", "-o", output}).status, 0);
        EXPECT_EQ(ReadPng(output).pixels.size(), 8U);
    }
}

}  // namespace
}  // namespace quorvex::test
