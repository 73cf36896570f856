#include "tools/capture/capture.h"

#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "tools/capture/png_reader.h"
#include "tools/convert_target.h"
#include "tools/output/object_output.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <memory>

namespace quorvex::tools {
namespace {

constexpr const char* kSecondaryCapture = "1.2.840.10008.5.1.4.1.1.7";
constexpr const char* kGreyFrames = "1.2.840.10008.5.1.4.1.1.7.2";
constexpr const char* kColourFrames = "1.2.840.10008.5.1.4.1.1.7.4";

// What the source says of its own pixels and their place in the patient.
constexpr std::uint32_t kNotOfPictures[] = {tag::kImagePositionPatient,
                                            tag::kImageOrientationPatient,
                                            tag::kFrameOfReferenceUID,
                                            tag::kPositionReferenceIndicator,
                                            tag::kSmallestPixelValueInSeries,
                                            tag::kLargestPixelValueInSeries,
                                            tag::kPixelPaddingValue,
                                            tag::kWindowCenter,
                                            tag::kWindowWidth,
                                            tag::kRescaleIntercept,
                                            tag::kRescaleSlope};

struct TextAttribute {
    std::uint32_t tag;
    const char* text;
};
constexpr TextAttribute kOfCaptures[] = {
    {tag::kImageType, "DERIVED"},  // and SECONDARY
    {tag::kModality, "OT"},
    {tag::kConversionType, "WSD"},
    {tag::kSeriesNumber, "1"},
    {tag::kInstanceNumber, "1"},
    {tag::kPatientOrientation, ""},
    {tag::kBurnedInAnnotation, "YES"},  // nobody has looked whether there is text in the picture
    {tag::kWindowCenter, "128"},        // every byte as it is
    {tag::kWindowWidth, "256"},
};

struct Pictures {
    std::vector<Picture> frames;
    ExitStatus status = kAllDone;
};

Pictures ReadPictures(const std::vector<std::string>& paths) {
    Pictures pictures;
    for (const auto& path : paths) {
        Picture picture;
        std::string trouble = ReadPng(path, picture);
        if (trouble.empty() && !pictures.frames.empty() &&
            (picture.width != pictures.frames.front().width ||
             picture.height != pictures.frames.front().height))
            trouble = "this picture has not the size of the first one";
        if (!trouble.empty()) {
            Complain(path, trouble);
            pictures.status = kBadInput;
            continue;
        }
        pictures.frames.push_back(std::move(picture));
    }
    return pictures;
}

bool HaveColour(const std::vector<Picture>& frames) {
    return std::ranges::any_of(frames, [](const Picture& frame) { return frame.channels == 3; });
}

// The picture's pixels in a block for the maker; grey among colours is coloured.
std::unique_ptr<unsigned char[]> PixelsOf(const Picture& picture, int channels) {
    const auto repeat = static_cast<std::size_t>(channels / picture.channels);
    auto pixels = std::make_unique<unsigned char[]>(picture.pixels.size() * repeat);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        std::fill_n(&pixels[i * repeat], repeat, picture.pixels[i]);
    return pixels;
}

_FRAME_INFO DescribeFrames(const Picture& first, int channels) {
    _FRAME_INFO info;
    info.samplesPerPixel = static_cast<std::uint16_t>(channels);
    info.photometricInterpretation = "MONOCHROME2";
    info.rows = static_cast<std::uint16_t>(first.height);
    info.columns = static_cast<std::uint16_t>(first.width);
    info.bitsAllocated = 8;
    info.bitsStored = 8;
    return info;
}

const char* ClassOf(std::size_t frames, int channels) {
    if (frames == 1) return kSecondaryCapture;
    return channels == 3 ? kColourFrames : kGreyFrames;
}

// Frames follow each other like the pages of a book.
void NumberThePages(CDcmObject& object, std::size_t frames) {
    if (frames == 1) return;
    object.SetValue(tag::kPageNumberVector, 1);
    for (std::size_t page = 2; page <= frames; ++page)
        object.SetNextValue(tag::kPageNumberVector, static_cast<int>(page));
    object.SetValue(tag::kFrameIncrementPointer, static_cast<int>(tag::kPageNumberVector));
}

void SayThatItIsACapture(CDcmObject& object, std::size_t frames, int channels) {
    for (const auto tag : kNotOfPictures) object.RemoveValue(tag);
    object.SetValue(tag::kSOPClassUID, ClassOf(frames, channels));
    for (const auto& [tag, text] : kOfCaptures) object.SetValue(tag, text);
    object.SetNextValue(tag::kImageType, "SECONDARY");
    NumberThePages(object, frames);
}

QUORVEX_MESSAGE Make(CDcmObject& source, const std::vector<Picture>& frames,
                     const ConvertTarget& target, std::unique_ptr<CDcmObject>& made) {
    const int channels = HaveColour(frames) ? 3 : 1;
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(target.syntax->form);
    _FRAME_INFO info = DescribeFrames(frames.front(), channels);
    CxDcmMaker maker;
    maker.SetQuality(static_cast<std::uint16_t>(target.quality));
    auto result = maker.DcmMakerInit(&source, &settings, &info);
    for (std::size_t i = 0; result == QVM_SUCCESS && i < frames.size(); ++i) {
        auto pixels = PixelsOf(frames[i], channels);
        result = maker.AddFrame(pixels.get());
        if (result == QVM_SUCCESS) static_cast<void>(pixels.release());
    }
    CDcmObject* object = nullptr;
    if (result == QVM_SUCCESS) result = maker.MakeDcmObject(object);
    made.reset(object);
    if (result != QVM_SUCCESS) return result;
    SayThatItIsACapture(*made, frames.size(), channels);
    NameColoursOf(*made, target);
    return result;
}

}  // namespace

ExitStatus Capture(const CaptureArguments& arguments) {
    const ConvertTarget target = ConvertTargetOf(arguments.target);
    CDcmApp app;
    CxDcmParser parser;
    auto result = parser.Initialize(&app, arguments.source, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.source, result);
    if (TextOf(*parser.GetHeader(), tag::kStudyInstanceUID).empty()) {
        Complain(arguments.source, "there is no Study Instance UID to put pictures under");
        return kBadInput;
    }
    const auto pictures = ReadPictures(arguments.pictures);
    if (pictures.status != kAllDone) return pictures.status;
    std::unique_ptr<CDcmObject> made;
    result = Make(*parser.GetHeader(), pictures.frames, target, made);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.pictures.front(), result);
    WriteObjectTo(*made, arguments.output);
    return kAllDone;
}

}  // namespace quorvex::tools
