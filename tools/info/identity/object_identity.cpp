#include "tools/info/identity/object_identity.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/sop_class/sop_class.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quorvex::tools {
namespace {

// What objects without pixels are shown with, by the beginning of their class.
struct OtherKind {
    std::string_view classes;
    const char* need;
};
constexpr std::array kOtherKinds = {
    OtherKind{"1.2.840.10008.1.3.10", "the files that it lists"},
    OtherKind{"1.2.840.10008.5.1.4.1.1.9.", "a viewer of waveforms"},
    OtherKind{"1.2.840.10008.5.1.4.1.1.11.", "the images that it refers to, with this state"},
    OtherKind{"1.2.840.10008.5.1.4.1.1.66.", "the images that it refers to"},
    OtherKind{"1.2.840.10008.5.1.4.1.1.88.", "a reader of structured reports"},
    OtherKind{"1.2.840.10008.5.1.4.1.1.104.", "a viewer of the document in it"},
    OtherKind{"1.2.840.10008.5.1.4.1.1.481.", "the images that it refers to"},
};

bool Has(const CDcmObject& header, std::uint32_t tag) {
    int count = 0;
    return header.GetValueCount(tag, count) == kDcmSuccess && count > 0;
}

std::string DateOf(const std::string& text) {
    constexpr std::size_t kDateLength = 8;
    const bool isDate =
        text.size() == kDateLength && text.find_first_not_of("0123456789") == std::string::npos;
    return isDate ? text.substr(0, 4) + '-' + text.substr(4, 2) + '-' + text.substr(6) : text;
}

std::string DecoderNeed(const CDcmObject& header) {
    const auto uid = TextOf(header, tag::kTransferSyntaxUID);
    TRANSFER_SYNTAX number = kSyntaxNone;
    header.GetTransferSyntax(number);
    const auto* syntax = uid.empty() ? TransferSyntaxOf(number) : TransferSyntaxOfUid(uid);
    if (syntax == nullptr)
        return uid.empty() ? "" : "a decoder for " + uid + ", which this build does not know";
    if (syntax->coding == FrameCoding::kNative) return {};
    const bool isHere = syntax->coding != FrameCoding::kNone;
    return "a decoder for " + std::string(syntax->name) +
           (isHere ? ", which this build has" : ", which this build does not have");
}

bool LacksWindow(const CDcmObject& header, const CString& photometric) {
    constexpr int kByte = 8;
    const bool isGrey = photometric.Find("MONOCHROME") >= 0;
    const int stored = Read<unsigned short>(header, tag::kBitsStored).value_or(0);
    return isGrey && stored > kByte && !Has(header, tag::kWindowCenter) &&
           !Has(header, tag::kVOILUTSequence) && !Has(header, tag::kSharedFunctionalGroupsSequence);
}

std::vector<std::string> NeedsOfImage(const CDcmObject& header) {
    std::vector<std::string> needs;
    const auto photometric =
        Read<CString>(header, tag::kPhotometricInterpretation).value_or(CString());
    if (auto decoder = DecoderNeed(header); !decoder.empty()) needs.push_back(std::move(decoder));
    if (IsPaletteColour(photometric))
        needs.emplace_back(Has(header, tag::kRedPaletteColorLookupTableDescriptor)
                               ? "the palette that it carries"
                               : "a palette, which it does not carry");
    if (Has(header, tag::kModalityLUTSequence)) needs.emplace_back("its modality LUT");
    if (Has(header, tag::kVOILUTSequence)) needs.emplace_back("its VOI LUT");
    if (LacksWindow(header, photometric)) needs.emplace_back("a window, which it does not state");
    if (needs.empty()) needs.emplace_back("this file alone");
    return needs;
}

std::vector<std::string> NeedsOf(const CDcmObject& header, std::string_view sopClass) {
    if (Has(header, tag::kRows) && Has(header, tag::kColumns)) return NeedsOfImage(header);
    for (const auto& kind : kOtherKinds)
        if (sopClass.starts_with(kind.classes)) return {kind.need};
    return {"it has no image"};
}

}  // namespace

ObjectIdentity Identify(const CDcmObject& header) {
    ObjectIdentity identity;
    identity.sopClassUid = TextOf(header, tag::kSOPClassUID);
    if (identity.sopClassUid.empty())
        identity.sopClassUid = TextOf(header, tag::kMediaStorageSOPClassUID);
    identity.sopClassName = SopClassName(identity.sopClassUid);
    identity.modality = TextOf(header, tag::kModality);
    identity.patientName = TextOf(header, tag::kPatientName);
    identity.patientId = TextOf(header, tag::kPatientID);
    identity.studyDate = DateOf(TextOf(header, tag::kStudyDate));
    identity.studyDescription = TextOf(header, tag::kStudyDescription);
    identity.seriesDescription = TextOf(header, tag::kSeriesDescription);
    identity.needs = NeedsOf(header, identity.sopClassUid);
    return identity;
}

}  // namespace quorvex::tools
