#include "tools/render/state_file.h"

#include "quorvex/Tags.h"
#include "tools/stored_image.h"

namespace quorvex::tools {
namespace {

constexpr const char* kStateClasses = "1.2.840.10008.5.1.4.1.1.11.";  // all of them begin so

struct Search {
    std::string uid;
    bool refersToImages = false;
    bool isFound = false;
};

std::string UidBytes(const DcmElementView& element) {
    std::string uid(reinterpret_cast<const char*>(element.data), element.length);
    while (!uid.empty() && (uid.back() == '\0' || uid.back() == ' ')) uid.pop_back();
    return uid;
}

MC_STATUS VisitReference(const DcmElementView& element, void* user) {
    auto& search = *static_cast<Search*>(user);
    if (element.tag != tag::kReferencedSOPInstanceUID || element.data == nullptr)
        return kMcContinue;
    search.refersToImages = true;
    search.isFound = UidBytes(element) == search.uid;
    return search.isFound ? kMcRefuse : kMcContinue;
}

bool IsPresentationState(const CDcmObject& object) {
    return TextOf(object, tag::kSOPClassUID).starts_with(kStateClasses);
}

// A state without any reference speaks of every image.
bool SpeaksOf(const CDcmObject& state, const CDcmObject& image) {
    if (!IsPresentationState(state)) return false;
    Search search{.uid = TextOf(image, tag::kSOPInstanceUID)};
    state.WalkElements(&search, VisitReference);
    return search.isFound || !search.refersToImages;
}

}  // namespace

ExitStatus StateFile::Open(CDcmApp& app, const std::string& statePath,
                           const std::string& imagePath) {
    auto result = state_.Initialize(&app, statePath, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(statePath, result);
    CxDcmParser image;
    result = image.Initialize(&app, imagePath, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(imagePath, result);
    if (SpeaksOf(*state_.GetHeader(), *image.GetHeader())) return kAllDone;
    Complain(statePath, "this is not a presentation state for " + imagePath);
    return kBadInput;
}

}  // namespace quorvex::tools
