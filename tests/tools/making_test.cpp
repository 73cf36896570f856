// New objects from pictures, and presentation states.
#include "tests/support/dicom_builder.h"
#include "tests/tools/run_command.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <png.h>

namespace quorvex::test {
namespace {

// A picture whose samples follow from their places; `format` and depth as libpng has them.
std::string WritePicture(const std::string& path, png_uint_32 format, png_uint_32 width = 6) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = 4;
    image.format = format;
    std::vector<unsigned char> samples(PNG_IMAGE_SIZE(image));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<unsigned char>(
            (format & PNG_FORMAT_FLAG_COLORMAP) != 0 ? i % 3 : i * 37 % 256);
    const unsigned char palette[] = {255, 0, 0, 0, 255, 0, 1, 2, 3};
    image.colormap_entries = 3;
    EXPECT_NE(png_image_write_to_file(&image, path.c_str(), 0, samples.data(), 0, palette), 0);
    return path;
}

std::string Samples(std::size_t count) {
    std::string samples;
    for (std::size_t i = 0; i < count; ++i) samples += static_cast<char>(i * 37 % 256);
    return samples;
}

TEST(CaptureCommand, PutsPicturesUnderThePatient) {
    const ScratchFolder folder;
    const auto grey = WritePicture(folder.Path("grey.png"), PNG_FORMAT_GRAY);
    const auto colour = WritePicture(folder.Path("colour.png"), PNG_FORMAT_RGB);
    const auto output = folder.Path("out.dcm");
    for (const auto* target : {"explicit", "implicit", "jpeg-lossless", "j2k-lossless"}) {
        OutputOf({"capture", kSlice, colour, "-o", output, "--to", target});
        EXPECT_EQ(FramesOf(output), Samples(6 * 4 * 3)) << target;
    }
    const auto info = InfoOf(output);
    for (const auto* part : {"[Phantom^Quorvex]", "[QX0001]",
                             "SOPClassUID                          [1.2.840.10008.5.1.4.1.1.7]",
                             "MediaStorageSOPClassUID              [1.2.840.10008.5.1.4.1.1.7]"})
        EXPECT_TRUE(Has(info, part)) << part;
    for (const auto* part : {"RescaleSlope", "ImagePositionPatient", "PixelPaddingValue"})
        EXPECT_FALSE(Has(info, part)) << part;

    OutputOf({"capture", kSlice, grey, grey, "-o", output});
    EXPECT_EQ(FramesOf(output), Samples(6 * 4) + Samples(6 * 4));
    EXPECT_TRUE(Has(InfoOf(output), "6 x 4, 2 frames"));
    OutputOf({"capture", kSlice, grey, colour, "-o", output});
    EXPECT_EQ(FramesOf(output).substr(3, 3), std::string(3, 37)) << "grey among colours";
    EXPECT_EQ(FramesOf(output).substr(6 * 4 * 3), Samples(6 * 4 * 3));
}

TEST(CaptureCommand, ExpandsPalettesAndKeepsDeepSamples) {
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    const auto palette = WritePicture(folder.Path("palette.png"), PNG_FORMAT_RGB_COLORMAP);
    OutputOf({"capture", kSlice, palette, "-o", output});
    EXPECT_EQ(FramesOf(output).substr(0, 9), std::string("\xFF\0\0\0\xFF\0\1\2\3", 9));
    const auto deepColour = WritePicture(folder.Path("colour.png"), PNG_FORMAT_LINEAR_RGB);
    for (const auto* target : {"explicit", "rle", "jpeg-lossless", "j2k-lossless"}) {
        OutputOf({"capture", kSlice, deepColour, "-o", output, "--to", target});
        EXPECT_EQ(FramesOf(output), Samples(6 * 4 * 3 * 2)) << target;
    }
    const auto deep = WritePicture(folder.Path("deep.png"), PNG_FORMAT_LINEAR_Y);
    OutputOf({"capture", kSlice, deep, deep, "-o", output});
    EXPECT_TRUE(Has(InfoOf(output), "16 bits in 16, unsigned"));
    const std::string frame = Samples(6 * 4 * 2);
    EXPECT_EQ(FramesOf(output), frame + frame);
}

TEST(CaptureCommand, RefusesWhatDoesNotFit) {
    const ScratchFolder folder;
    const auto picture = WritePicture(folder.Path("a.png"), PNG_FORMAT_GRAY);
    const auto wider = WritePicture(folder.Path("b.png"), PNG_FORMAT_GRAY, 7);
    const auto torn = folder.Write("torn.png", ReadAll(picture).substr(0, 40));
    auto nobody = DicomBuilder::Part10(kExplicitUid);
    const auto anonymous =
        folder.Write("none.dcm", nobody.Add(tag::kPatientName, "PN", "A ").Bytes());
    const auto deep = WritePicture(folder.Path("deep.png"), PNG_FORMAT_LINEAR_Y);
    const auto deepColour = WritePicture(folder.Path("deep_colour.png"), PNG_FORMAT_LINEAR_RGB);
    const auto seeThrough = WritePicture(folder.Path("alpha.png"), PNG_FORMAT_RGBA);
    const auto output = folder.Path("out.dcm");
    const std::size_t files = folder.Names().size();
    const std::pair<Arguments, const char*> bad[] = {
        {{kSlice, picture, wider}, "7 x 4 pixels, the first one 6 x 4"},
        {{kSlice, torn}, ""},
        {{kSlice, kSlice}, ""},
        {{anonymous, picture}, "Study Instance UID"},
        {{picture, picture}, ""},
        {{kSlice, picture, "--to", "jpeg12"}, "jpeg12 holds no greys of 8 bits"},
        {{kSlice, deepColour, "--to", "jpeg"}, "jpeg holds no colours of 16 bits"},
        {{kSlice, deepColour, "--to", "jpeg12"}, "jpeg12 holds no colours of 16 bits"},
        {{kSlice, picture, deep}, "16 bits a sample, the first one 8"},
        {{kSlice, deepColour, deepColour}, "capture each page by itself"},
        {{kSlice, deep, deepColour}, "capture each page by itself"},
        {{kSlice, seeThrough}, "alpha"},
    };
    for (const auto& [arguments, part] : bad) {
        ExpectStatus(1, Arguments{"capture", "-o", output} + arguments, part);
        EXPECT_EQ(folder.Names().size(), files) << testing::PrintToString(arguments);
    }
    const std::string before = ReadAll(picture);
    ExpectStatus(2, {"capture", kSlice, picture, "-o", folder.Path("./a.png")},
                 "replace the input");
    EXPECT_EQ(ReadAll(picture), before);
    ExpectStatus(3, {"capture", kSlice, picture, "-o", "/dev/full"});
    ExpectStatus(2, {"capture", kSlice, picture, "-o", folder.Path(".")});
}

TEST(StateCommand, IsShownAsItsOptionsSay) {
    const Arguments window = {"--window", "-500,1500"};
    const Arguments area = {"--area", "51,101,350,400"};
    const Arguments areaByHand = {"--zoom", "1.7066666666666668", "--pan", "96,10"};
    const std::pair<Arguments, Arguments> cases[] = {
        {window, window},
        {{"--invert"}, {"--invert"}},
        {{"--rotate", "90"}, {"--rotate", "90"}},
        {{"--flip"}, {"--flip"}},
        {area + window, areaByHand + window},
    };
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    for (const auto& [wishes, view] : cases) {
        OutputOf(Arguments{"state", kSlice, "-o", state} + wishes);
        const auto shown = PictureBy({"render", kSlice, "--state", state});
        EXPECT_TRUE(shown.pixels == PictureBy(Arguments{"render", kSlice} + view).pixels)
            << wishes.front();
    }
}

TEST(StateCommand, HoldsWhatWasAskedFor) {
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    OutputOf({"state", kRadiograph, "-o", state, "--label", "LEFT HAND", "--text",
              "10,20.5,Here, or there", "--text", "1,1,again", "--polyline", "1,2;3,4;5,6",
              "--shutter", "polygon:10,20;10,40;30,30"});
    const auto info = InfoOf(state);
    for (const auto* part :
         {"1.2.840.10008.5.1.4.1.1.11.1", "[LEFT HAND]", "[Here, or there]", "10\\20.5", "[again]",
          "1\\2\\3\\4\\5\\6", "[POLYGONAL]", "[10\\20\\10\\40\\30\\30\\10\\20]", "[INVERSE]",
          "[SCALE TO FIT]", "480\\586", "[Phantom^Quorvex]"})
        EXPECT_TRUE(Has(info, part)) << part;
}

// What a state has once, two images have to have alike; each slice of a PET has its own rescale.
TEST(StateCommand, IsForImagesThatItCanShowAlike) {
    const ScratchFolder folder;
    const auto image = [&](const std::string& name, const std::string& slope,
                           const std::string& photometric, unsigned edge) {
        auto file = DicomBuilder::Part10(kExplicitUid);
        file.Add(tag::kSOPClassUID, "UI", "1.2.840.10008.5.1.4.1.1.128")
            .Add(tag::kSOPInstanceUID, "UI", "1.2.3." + std::to_string(folder.Names().size() + 10))
            .Add(tag::kModality, "CS", "PT")
            .Add(tag::kShutterShape, "CS", "RECTANGULAR ")
            .Add(tag::kShutterLeftVerticalEdge, "IS", "1 ")
            .Add(tag::kShutterRightVerticalEdge, "IS", std::to_string(edge))
            .Add(tag::kShutterUpperHorizontalEdge, "IS", "1 ")
            .Add(tag::kShutterLowerHorizontalEdge, "IS", "2 ")
            .Add(tag::kStudyInstanceUID, "UI", "1.2.3.44")
            .Add(tag::kSeriesInstanceUID, "UI", "1.2.3.45")
            .Us(tag::kSamplesPerPixel, 1)
            .Add(tag::kPhotometricInterpretation, "CS", photometric)
            .Us(tag::kRows, 2)
            .Us(tag::kColumns, 4)
            .Us(tag::kBitsAllocated, 16)
            .Us(tag::kBitsStored, 16)
            .Us(tag::kPixelRepresentation, 0)
            .Add(tag::kRescaleIntercept, "DS", "0 ")
            .Add(tag::kRescaleSlope, "DS", slope);
        return folder.Write(name, file.Bytes());
    };
    const auto first = image("first.dcm", "0.25", "MONOCHROME2 ", 3);
    const auto same = image("same.dcm", "0.250 ", "MONOCHROME2 ", 3);
    const auto slope = image("slope.dcm", "0.5 ", "MONOCHROME2 ", 3);
    const auto inverse = image("inverse.dcm", "0.25", "MONOCHROME1 ", 3);
    const auto shutter = image("shutter.dcm", "0.25", "MONOCHROME2 ", 4);
    const Arguments make = {"state", "-o", folder.Path("state.dcm"), first};
    OutputOf(make + Arguments{same});
    OutputOf(make + Arguments{same, shutter, "--shutter", "rect:1,1,2,2"});
    const std::pair<std::string, std::string> bad[] = {
        {slope, "slope 0.5 and intercept 0, " + first + " has rescale slope 0.25 and intercept 0"},
        {inverse, "the other way than those of " + first},
        {shutter, "the shutter of " + first}};
    for (const auto& [other, sentence] : bad) {
        ExpectStatus(1, make + Arguments{other}, sentence);
        ExpectStatus(1, make + Arguments{other}, other);
        OutputOf({"state", "-o", folder.Path("state.dcm"), other});
    }
}

TEST(StateCommand, RefusesWhatAStateCannotBeFor) {
    const ScratchFolder folder;
    const Arguments make = {"state", "-o", folder.Path("state.dcm")};
    for (const auto& images : {Arguments{kLoop}, Arguments{kState}, Arguments{kSlice, kRadiograph}})
        ExpectStatus(1, make + images);
    ExpectStatus(3, make + Arguments{folder.Path("none")});
    for (const auto& wrong :
         {Arguments{"--label", "small"}, Arguments{"--area", "5,5,1,9"},
          Arguments{"--shutter", "square:1,2"}, Arguments{"--shutter", "circle:1,2"},
          Arguments{"--polyline", "1,1"}, Arguments{"--text", "1,1"},
          Arguments{"--text", "1,nan,text"}, Arguments{"--shutter", "polygon:1,2;3,4"}})
        ExpectStatus(2, make + Arguments{kSlice} + wrong);
    EXPECT_TRUE(folder.Names().empty());
    const auto image = folder.Write("image.dcm", ReadAll(kSlice));
    ExpectStatus(2, {"state", image, "-o", image}, "replace the input");
    EXPECT_TRUE(ReadAll(image) == ReadAll(kSlice));
}

}  // namespace
}  // namespace quorvex::test
