#include "foundation/dicom/writing/meta_information.h"

#include "foundation/dicom/model/tags.h"

namespace quorvex::dicom {
namespace {

constexpr std::string_view kOwnImplementationClassUid = "1.2.999.700040.1";
constexpr std::string_view kOwnImplementationVersionName = "QUORVEX_0_1";

void PutText(DataSet& meta, std::uint32_t tag, MC_VR vr, std::string_view text) {
    if (!text.empty()) meta.PutBytes(tag, vr, ByteBuffer(text.begin(), text.end()));
}

/// A DICOMDIR has no SOP Class UID in its data set; its meta information is all that names it.
std::string_view FirstUid(const DataSet& main, std::uint32_t tag, std::uint32_t otherwise) {
    const auto uid = UidOf(main, tag);
    return uid.empty() ? UidOf(main, otherwise) : uid;
}

}  // namespace

std::string_view UidOf(const DataSet& dataSet, std::uint32_t tag) {
    const Element* element = dataSet.Find(tag);
    if (element == nullptr) return {};
    std::string_view text = CharactersOf(dataSet.ValueOf(*element));
    while (!text.empty() && (text.back() == '\0' || text.back() == ' ')) text.remove_suffix(1);
    return text;
}

DataSet MetaInformationOf(const DataSet& main, std::string_view transferSyntaxUid) {
    DataSet meta;
    meta.PutBytes(tag::kFileMetaInformationVersion, MC_VR_OB, {0, 1});
    PutText(meta, tag::kMediaStorageSOPClassUID, MC_VR_UI,
            FirstUid(main, tag::kSOPClassUID, tag::kMediaStorageSOPClassUID));
    PutText(meta, tag::kMediaStorageSOPInstanceUID, MC_VR_UI,
            FirstUid(main, tag::kSOPInstanceUID, tag::kMediaStorageSOPInstanceUID));
    PutText(meta, tag::kTransferSyntaxUID, MC_VR_UI, transferSyntaxUid);
    PutText(meta, tag::kImplementationClassUID, MC_VR_UI, kOwnImplementationClassUid);
    PutText(meta, tag::kImplementationVersionName, MC_VR_SH, kOwnImplementationVersionName);
    return meta;
}

}  // namespace quorvex::dicom
