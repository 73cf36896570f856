#include "maker/recoding/lossy_record.h"

#include "foundation/dicom/model/attributes.h"
#include "maker/attribute_writing.h"
#include "maker/configuration.h"
#include "maker/uids.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace quorvex {
namespace {

struct Code {
    const char* value;
    const char* meaning;
};
constexpr Code kLossyCompression{"113040", "Lossy Compression"};
constexpr Code kPredecessor{"121320", "Uncompressed predecessor"};

/// A Defined Term of Lossy Image Compression Method.
const char* MethodOf(const TransferSyntax& coding) {
    switch (coding.coding) {
        case FrameCoding::kJpeg2000:
            return coding.number == kHtj2k ? "ISO_15444_15" : "ISO_15444_1";
        case FrameCoding::kJpeg:
            return "ISO_10918_1";
        case FrameCoding::kJpegXl:
            return coding.form == kXferJpegXlOfJpeg ? "ISO_10918_1" : "ISO_18181_1";
        case FrameCoding::kJpegLs:
            return "ISO_14495_1";
        default:
            return "";
    }
}

/// At most 16 characters, as a decimal string must be.
CString RatioText(double ratio) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.4g", ratio >= 1e6 ? std::round(ratio) : ratio);
    return text.data();
}

CDcmItem ItemOf(const Code& code) {
    CDcmItem item;
    item.SetValue(tag::kCodeValue, code.value);
    item.SetValue(tag::kCodingSchemeDesignator, "DCM");
    item.SetValue(tag::kCodeMeaning, code.meaning);
    return item;
}

template <class Value>
void Append(CDcmObjectCommon& object, std::uint32_t tag, Value value) {
    int count = 0;
    const bool hasValues = object.GetValueCount(tag, count) == kDcmSuccess && count > 0;
    if (hasValues) {
        object.SetNextValue(tag, value);
    } else {
        object.SetValue(tag, value);
    }
}

/// DERIVED in place of the first value; the others stay.
void SetDerived(CDcmObjectCommon& object, std::uint32_t tag) {
    std::vector<CString> values;
    ForEachValue<CString>(object, tag, [&](const CString& value) { values.push_back(value); });
    if (values.empty()) values = {"", "PRIMARY"};
    values.front() = "DERIVED";
    ValueWriter writer(object, tag);
    for (const CString& value : values) writer.Add(value);
}

MC_STATUS CollectSequences(const DcmElementView& element, void* user) {
    auto& sequences = *static_cast<std::vector<std::uint32_t>*>(user);
    if (element.depth == 0 && element.vr == MC_VR_SQ) sequences.push_back(element.tag);
    return kMcContinue;
}

MC_STATUS FindFrameType(const DcmElementView& element, void*) {
    return element.tag == tag::kFrameType ? kMcRefuse : kMcContinue;
}

bool HasFrameType(const CDcmObjectCommon& object) {
    return object.WalkElements(nullptr, FindFrameType) != kDcmSuccess;
}

void SetFrameTypesDerived(CDcmObjectCommon& group);

void SetFrameTypesDerived(CDcmObjectCommon& object, std::uint32_t sequence) {
    std::vector<CDcmItem> items;
    ForEachItem(object, sequence, [&](const CDcmItem& item) { items.push_back(item); });
    ValueWriter writer(object, sequence);
    for (CDcmItem& item : items) {
        SetFrameTypesDerived(item);
        writer.Add(std::move(item));
    }
}

/// The types of the frames stand in functional groups, one or two sequences below.
void SetFrameTypesDerived(CDcmObjectCommon& group) {
    if (!HasFrameType(group)) return;
    if (Read<CString>(group, tag::kFrameType)) SetDerived(group, tag::kFrameType);
    std::vector<std::uint32_t> sequences;
    group.WalkElements(&sequences, CollectSequences);
    for (const std::uint32_t sequence : sequences) SetFrameTypesDerived(group, sequence);
}

void DescribeDerivation(const TransferSyntax& coding, double ratio, unsigned errorBound,
                        CDcmObject& object) {
    constexpr int kLongestText = 1024;
    CString text = CString("Lossy compression ") + RatioText(ratio) + ":1, " + CString(coding.name);
    if (errorBound != 0)
        text += CString(", samples within " + std::to_string(errorBound) + " of their source");
    const auto earlier = Read<CString>(object, tag::kDerivationDescription);
    const CString all = earlier && !earlier->IsEmpty() ? *earlier + "; " + text : text;
    object.SetValue(tag::kDerivationDescription, all.GetLength() <= kLongestText ? all : text);
    CDcmItem code = ItemOf(kLossyCompression);
    Append(object, tag::kDerivationCodeSequence, &code);
}

void ReferToSource(CDcmObject& object) {
    CDcmItem source;
    for (const auto& [from, to] : {std::pair(tag::kSOPClassUID, tag::kReferencedSOPClassUID),
                                   std::pair(tag::kSOPInstanceUID, tag::kReferencedSOPInstanceUID)})
        source.SetValue(to, Read<CString>(object, from).value_or(CString()));
    CDcmItem purpose = ItemOf(kPredecessor);
    source.SetValue(tag::kPurposeOfReferenceCodeSequence, &purpose);
    Append(object, tag::kSourceImageSequence, &source);
}

}  // namespace

void AppendLoss(const TransferSyntax& coding, double ratio, CDcmObject& object) {
    object.SetValue(tag::kLossyImageCompression, "01");
    Append(object, tag::kLossyImageCompressionRatio, RatioText(ratio));
    Append(object, tag::kLossyImageCompressionMethod, CString(MethodOf(coding)));
}

void MarkEarlierLoss(const TransferSyntax& coding, double ratio, CDcmObject& object) {
    if (Read<CString>(object, tag::kLossyImageCompression) == CString("01")) return;
    AppendLoss(coding, ratio, object);
}

bool RecordLoss(const TransferSyntax& coding, double ratio, unsigned errorBound,
                CDcmObject& object) {
    const auto uid = NewUid(ConfiguredUidRoot());
    if (!uid) return false;
    AppendLoss(coding, ratio, object);
    DescribeDerivation(coding, ratio, errorBound, object);
    ReferToSource(object);
    SetDerived(object, tag::kImageType);
    for (const auto groups :
         {tag::kSharedFunctionalGroupsSequence, tag::kPerFrameFunctionalGroupsSequence}) {
        if (Read<CDcmItem>(object, groups)) SetFrameTypesDerived(object, groups);
    }
    object.SetValue(tag::kSOPInstanceUID, *uid);
    return true;
}

}  // namespace quorvex
