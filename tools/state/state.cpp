#include "tools/state/state.h"

#include "quorvex/CXGSPSObject.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "tools/output/object_output.h"
#include "tools/output/output_place.h"
#include "tools/state/common_stages.h"
#include "tools/state/state_record.h"
#include "tools/stored_image.h"

#include <memory>

namespace quorvex::tools {
namespace {

/// An image that the state is to refer to, without its pixels.
struct ReferencedImage {
    std::string path;
    CxDcmParser parser;
    std::unique_ptr<StateRecord> record;
};
using ReferencedImages = std::vector<std::unique_ptr<ReferencedImage>>;

// What keeps a greyscale state from referring to this image; empty where nothing does.
std::string ObstacleOf(const CDcmObject& image, const CDcmObject& first) {
    for (const std::uint32_t tag :
         {tag::kSOPClassUID, tag::kSOPInstanceUID, tag::kStudyInstanceUID, tag::kSeriesInstanceUID})
        if (TextOf(image, tag).empty()) return "the image lacks a UID that a state has to name";
    if (TextOf(image, tag::kRows).empty() || TextOf(image, tag::kColumns).empty())
        return "this is no image";
    if (!TextOf(image, tag::kPhotometricInterpretation).starts_with("MONOCHROME"))
        return "a greyscale state cannot show colours";
    if (TextOf(image, tag::kStudyInstanceUID) != TextOf(first, tag::kStudyInstanceUID))
        return "the image is of another study than the first one";
    return {};
}

ExitStatus OpenImages(CDcmApp& app, const StateArguments& arguments, ReferencedImages& images) {
    auto status = kAllDone;
    for (const auto& path : arguments.images) {
        auto image = std::make_unique<ReferencedImage>();
        image->path = path;
        const auto result = image->parser.Initialize(&app, path, 0);
        if (result != QVM_SUCCESS) {
            status = ReportBadInput(path, result);
            continue;
        }
        CDcmObject& header = *image->parser.GetHeader();
        const auto& first = images.empty() ? header : *images.front()->parser.GetHeader();
        const std::string obstacle = ObstacleOf(header, first);
        if (!obstacle.empty()) {
            Complain(path, obstacle);
            status = kBadInput;
            continue;
        }
        image->record = std::make_unique<StateRecord>(header, arguments);
        const CXGSPSInfo& info = image->record->Info();
        const CXGSPSInfo& firstInfo = images.empty() ? info : images.front()->record->Info();
        const std::string difference =
            DifferenceOf(info, firstInfo, images.empty() ? path : images.front()->path, arguments);
        if (!difference.empty()) {
            Complain(path, difference);
            status = kBadInput;
            continue;
        }
        images.push_back(std::move(image));
    }
    return status;
}

}  // namespace

ExitStatus State(const StateArguments& arguments) {
    RefuseToReplace(arguments.output, arguments.images);
    CDcmApp app;
    ReferencedImages images;
    const auto status = OpenImages(app, arguments, images);
    if (status != kAllDone) return status;
    std::vector<CXGSPSInfo*> records;
    for (const auto& image : images) records.push_back(&image->record->Info());
    CDcmObject* made = nullptr;
    CXGSPSObject writer;
    writer.SetRules(Rules::kStandard);
    writer.MakeGSPSObject(images.front()->parser.GetHeader(), records.data(),
                          static_cast<int>(records.size()), made);
    const std::unique_ptr<CDcmObject> state(made);
    if (!state)
        throw EnvironmentFailure(
            "the state could not be made: memory, or the prefix of UIDs in Quorvex.INI");
    WriteObjectTo(*state, arguments.output);
    return kAllDone;
}

}  // namespace quorvex::tools
