#include "tools/capture/capture.h"

#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "tools/capture/png_reader.h"
#include "tools/convert_target.h"
#include "tools/output/object_output.h"
#include "tools/output/output_place.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <memory>

namespace quorvex::tools {
namespace {

struct Pages {
    std::vector<Page> all;
    ExitStatus status = kAllDone;

    [[nodiscard]] bool HaveColour() const {
        return std::ranges::any_of(all, [](const Page& page) { return page.channels == 3; });
    }
};

std::string SizeOf(const Page& page) {
    return std::to_string(page.width) + " x " + std::to_string(page.height);
}

// Why a page cannot follow the first one in one object; empty where it can.
std::string DifferenceOf(const Page& page, const Page& first) {
    if (page.width != first.width || page.height != first.height)
        return "this picture has " + SizeOf(page) + " pixels, the first one " + SizeOf(first) +
               ", and the pages of an object have one size";
    if (page.bits != first.bits)
        return "this picture has " + std::to_string(page.bits) + " bits a sample, the first one " +
               std::to_string(first.bits) + ": save all of them with as many";
    // Multi-frame True Color Secondary Capture has 8 bits (PS3.3 A.8.5.4), and no other class has
    // colour pages.
    const bool isDeepColour = page.bits == 16 && std::max(page.channels, first.channels) == 3;
    return isDeepColour ? "no class of images holds several pages in colours of 16 bits: capture "
                          "each page by itself, or save all of them with 8 bits a sample"
                        : "";
}

Pages ReadPages(const std::vector<std::string>& paths) {
    Pages pages;
    for (const auto& path : paths) {
        Page page;
        std::string trouble = ReadPng(path, page);
        if (trouble.empty() && !pages.all.empty()) trouble = DifferenceOf(page, pages.all.front());
        if (trouble.empty()) {
            pages.all.push_back(std::move(page));
        } else {
            Complain(path, trouble);
            pages.status = kBadInput;
        }
    }
    return pages;
}

// Grey among colours is coloured.
void MakeColoured(Page& page) {
    if (page.channels == 3) return;
    const auto bytes = static_cast<std::size_t>(page.bits / 8);
    std::vector<unsigned char> colours;
    colours.reserve(page.samples.size() * 3);
    for (auto at = page.samples.begin(); at != page.samples.end();
         at += static_cast<std::ptrdiff_t>(bytes)) {
        for (int i = 0; i < 3; ++i)
            colours.insert(colours.end(), at, at + static_cast<std::ptrdiff_t>(bytes));
    }
    page.samples = std::move(colours);
    page.channels = 3;
}

_FRAME_INFO DescribeFrames(const Page& first) {
    _FRAME_INFO info;
    info.samplesPerPixel = static_cast<std::uint16_t>(first.channels);
    info.photometricInterpretation = "MONOCHROME2";
    info.rows = static_cast<std::uint16_t>(first.height);
    info.columns = static_cast<std::uint16_t>(first.width);
    info.bitsAllocated = static_cast<std::uint16_t>(first.bits);
    info.bitsStored = info.bitsAllocated;
    return info;
}

QUORVEX_MESSAGE Make(CDcmObject& source, const Pages& pages, const ConvertTarget& target,
                     std::unique_ptr<CDcmObject>& made) {
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(target.form);
    settings.modality = "OT";
    settings.seriesNumber = "1";
    settings.instanceNumber = "1";
    _FRAME_INFO info = DescribeFrames(pages.all.front());
    std::vector<const unsigned char*> frames;
    for (const Page& page : pages.all) frames.push_back(page.samples.data());
    CxDcmMaker maker;
    maker.SetQuality(static_cast<std::uint16_t>(target.quality));
    CDcmObject* object = nullptr;
    const auto result = maker.MakeSecondaryCapture(&source, &settings, &info, frames.data(),
                                                   static_cast<int>(frames.size()), object);
    made.reset(object);
    return result;
}

// Pictures are unsigned, grey or R, G, B, and whole bytes: only a coding can be against that.
ExitStatus ReportRefusal(const CaptureArguments& arguments, QUORVEX_MESSAGE result,
                         const Page& page) {
    const std::string& picture = arguments.pictures.front();
    const bool isOfCoding = result == QVM_ERROR_INVALID_BITS_ALLOCATED ||
                            result == QVM_ERROR_INVALID_BITS_STORED ||
                            result == QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
    if (!isOfCoding) return ReportBadInput(picture, result);
    Complain(picture, arguments.target + " holds no " + (page.channels == 3 ? "colours" : "greys") +
                          " of " + std::to_string(page.bits) +
                          " bits: choose another form by --to, such as j2k-lossless");
    return kBadInput;
}

}  // namespace

ExitStatus Capture(const CaptureArguments& arguments) {
    const ConvertTarget target = CodingTargetOf(arguments.target);
    RefuseToReplace(arguments.output, {arguments.source});
    RefuseToReplace(arguments.output, arguments.pictures);
    CDcmApp app;
    CxDcmParser parser;
    auto result = parser.Initialize(&app, arguments.source, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.source, result);
    if (TextOf(*parser.GetHeader(), tag::kStudyInstanceUID).empty()) {
        Complain(arguments.source, "there is no Study Instance UID to put pictures under");
        return kBadInput;
    }
    auto pages = ReadPages(arguments.pictures);
    if (pages.status != kAllDone) return pages.status;
    if (pages.HaveColour()) std::ranges::for_each(pages.all, MakeColoured);
    std::unique_ptr<CDcmObject> made;
    result = Make(*parser.GetHeader(), pages, target, made);
    if (result != QVM_SUCCESS) return ReportRefusal(arguments, result, pages.all.front());
    WriteObjectTo(*made, arguments.output);
    return kAllDone;
}

}  // namespace quorvex::tools
