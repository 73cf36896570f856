#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/dicom/object/around_pixels.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/dicom/object/pixel_shape.h"
#include "foundation/dicom/writing/data_set_writer.h"
#include "foundation/dicom/writing/deflating_sink.h"
#include "foundation/dicom/writing/meta_information.h"
#include "foundation/dicom/writing/output_file.h"
#include "foundation/dicom/writing/text_target.h"
#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorvex {
namespace {

using namespace dicom;

/// How an object is written, or why it cannot be.
struct WritingPlan {
    std::string_view transferSyntaxUid = {};
    WritingRules rules = {};
    bool isDeflated = false;
    const char* obstacle = nullptr;
};

/// The row of the syntax that the object is written in; nothing where there is none to name.
std::optional<TransferSyntax> SyntaxToWrite(const DataSet& main) {
    if (main.syntax == kSyntaxNone) return *TransferSyntaxOf(kExplicitLittleEndian);
    if (main.syntax != kOtherEncapsulated) {
        const auto* row = TransferSyntaxOf(main.syntax);
        return row == nullptr || row->uid.empty() ? std::nullopt : std::optional(*row);
    }
    const auto uid = UidOf(main, tag::kTransferSyntaxUID);
    if (uid.empty()) return std::nullopt;
    TransferSyntax unnumbered;
    unnumbered.uid = uid;
    unnumbered.number = kOtherEncapsulated;
    unnumbered.isEncapsulated = true;
    return unnumbered;
}

std::size_t BytesIn(const FragmentView& fragments) {
    std::size_t bytes = 0;
    for (std::size_t i = 1; i < fragments.Count(); ++i) bytes += fragments[i].size();
    return bytes;
}

/// Some writers put native pixels into items. Those have the size of all frames, coded ones have
/// not.
bool HoldsNativePixels(const FragmentView& fragments, const PixelShape& shape) {
    const auto frame = StoredFrameBytes(shape);
    const auto all = frame ? CheckedProduct(*frame, shape.frameCount) : std::nullopt;
    const std::size_t there = BytesIn(fragments);
    return all && there >= *all && there - *all < 2;
}

/// In implicit VR only the tag says whether items or a value follow: an element of another kind
/// than its tag would be read as the other one, or as fragments.
bool ContradictsItsTag(const DataSet& dataSet) {
    return std::ranges::any_of(dataSet.Elements(), [&](const Element& element) {
        const MC_VR expected = LookUp(element.tag).vr;
        const Items* items = ItemsOf(element);
        if (items == nullptr) return expected == MC_VR_SQ && !dataSet.ValueOf(element).empty();
        const bool isRaw = expected != MC_VR_UN && Describe(expected).kind == ValueKind::kRaw;
        return (isRaw && !items->empty()) || std::ranges::any_of(*items, [](const auto& item) {
                   return ContradictsItsTag(*item);
               });
    });
}

void PlanPixelData(WritingPlan& plan, const DataSet& main, const PixelShape& shape,
                   bool isEncapsulated) {
    const Element* pixels = main.Find(tag::kPixelData);
    if (pixels == nullptr) return;
    if (ItemsOf(*pixels) != nullptr) {
        plan.obstacle = "Pixel Data is a sequence";
        return;
    }
    const FragmentView fragments = main.FragmentsOf(*pixels);
    if (fragments.IsEmpty() == !isEncapsulated) return;
    plan.rules.joinsPixelData = !isEncapsulated && HoldsNativePixels(fragments, shape);
    if (plan.rules.joinsPixelData) return;
    plan.obstacle = isEncapsulated ? "the transfer syntax wants encapsulated Pixel Data"
                                   : "the transfer syntax wants native Pixel Data";
}

WritingPlan PlanOf(const DataSet& main, const PixelShape& shape) {
    const auto syntax = SyntaxToWrite(main);
    if (!syntax) return {.obstacle = "the transfer syntax has no UID"};
    WritingPlan plan = {.transferSyntaxUid = syntax->uid,
                        .rules = {.encoding = {syntax->isExplicit, syntax->isBigEndian},
                                  .isForcedToUtf8 = !HoldsAllText(main),
                                  .bitsAllocated = shape.bitsAllocated},
                        .isDeflated = syntax->isDeflated};
    PlanPixelData(plan, main, shape, syntax->isEncapsulated);
    if (!syntax->isExplicit && ContradictsItsTag(main))
        plan.obstacle =
            "an attribute is of another kind than its tag, which implicit VR cannot tell";
    return plan;
}

void WriteAll(const DataSet& main, const WritingPlan& plan, ByteSink& sink) {
    constexpr std::array<unsigned char, kPreambleBytes> kPreamble = {};
    sink.Put(kPreamble);
    sink.Put({reinterpret_cast<const unsigned char*>(kPart10Marker.data()), kPart10Marker.size()});
    WriteMetaInformation(MetaInformationOf(main, plan.transferSyntaxUid), sink);
    if (!plan.isDeflated) return WriteDataSet(main, plan.rules, sink);
    DeflatingSink deflating(sink);
    WriteDataSet(main, plan.rules, deflating);
    deflating.Finish();
}

}  // namespace

DCMRESULT CDcmObject::WriteFile(const CString& path) const {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const DataSet& main = state.Content();
        const WritingPlan plan = PlanOf(main, ShapeOf(*this));
        if (plan.obstacle != nullptr) return state.Fail(kDcmFailure, plan.obstacle);
        OutputFile file(path.ToUtf8());
        if (file.IsOpen()) WriteAll(main, plan, file);
        if (file.Commit()) return kDcmSuccess;
        return state.Fail(kDcmFailure, "the file cannot be written");
    });
}

std::optional<AroundPixels> dicom::WriteAroundPixels(const CDcmObject& object,
                                                     std::uint64_t nativeBytes) {
    const DataSet& main = ObjectState::Of(object).Content();
    WritingPlan plan = PlanOf(main, ShapeOf(object));
    if (plan.obstacle != nullptr || plan.isDeflated) return std::nullopt;
    BufferSink sink;
    std::optional<std::size_t> place;
    plan.rules.nativePixelBytes = nativeBytes;
    plan.rules.atPixels = [&] { place = sink.Written().size(); };
    WriteAll(main, plan, sink);
    if (!place) return std::nullopt;
    const Bytes all = sink.Written();
    const auto middle = all.begin() + static_cast<std::ptrdiff_t>(*place);
    return AroundPixels{.ahead = {all.begin(), middle}, .behind = {middle, all.end()}};
}

}  // namespace quorvex
