#include "c/calls.h"
#include "c/presentation_record.h"
#include "quorvex/Attributes.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/Tags.h"

#include <cmath>

namespace quorvex::c {
namespace {

constexpr auto kNotWritten = QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;

CString TextOf(const CDcmObject& object, std::uint32_t tag) {
    return Read<CString>(object, tag).value_or(CString());
}

/// The mark with this index, by the size that the caller's release has.
quorvex_mark MarkAt(const quorvex_mark* marks, std::int32_t index) noexcept {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(marks);
    const std::size_t offset = marks->struct_size * static_cast<std::size_t>(index);
    quorvex_mark mark{};
    std::memcpy(&mark, bytes + offset, std::min(marks->struct_size, sizeof mark));
    return mark;
}

bool IsMark(const quorvex_mark& mark) noexcept {
    if (mark.points == nullptr || mark.point_count < 1) return false;
    for (std::int32_t i = 0; i < 2 * mark.point_count; ++i)
        if (!std::isfinite(mark.points[i])) return false;
    switch (mark.kind) {
        case QUORVEX_MARK_TEXT:
            return mark.text != nullptr && *mark.text != '\0';
        case QUORVEX_MARK_POINT:
            return mark.point_count == 1;
        case QUORVEX_MARK_POLYLINE:
        case QUORVEX_MARK_INTERPOLATED:
            return mark.point_count >= 2;
        case QUORVEX_MARK_CIRCLE:
            return mark.point_count == 2;
        case QUORVEX_MARK_ELLIPSE:
            return mark.point_count == 4;
        default:
            return false;
    }
}

void AddMark(CXGSPSInfo& info, const quorvex_mark& mark) {
    if (mark.kind == QUORVEX_MARK_TEXT) {
        auto text = std::make_unique<GSPSTextObject>();
        text->hasAnchor = 1;
        text->anchorVisible = 1;
        text->anchorPoint = new double[2]{mark.points[0], mark.points[1]};
        text->textValue = CString(mark.text);
        info.textObjects.Add(text.get());
        text.release();  // NOLINT(bugprone-unused-return-value): the record's from here on
        return;
    }
    auto shape = std::make_unique<GSPSGraphicObject>();
    shape->graphicType = mark.kind;
    shape->filled = mark.is_filled != 0 ? 1 : 0;
    shape->pointCount = mark.point_count;
    const auto points = static_cast<std::size_t>(mark.point_count);
    for (std::size_t i = 0; i < points; ++i) {
        auto point =
            std::make_unique<GSPSPoint>(GSPSPoint{mark.points[2 * i], mark.points[2 * i + 1]});
        shape->points.Add(point.get());
        point.release();  // NOLINT(bugprone-unused-return-value): the shape's
    }
    info.graphicObjects.Add(shape.get());
    shape.release();  // NOLINT(bugprone-unused-return-value): the record's
}

/// What the image or its state says, and over it what the host has set.
void Describe(quorvex_view& view, const char* label, PresentationRecord& record) {
    CXGSPSInfo& info = record.Info();
    CDcmObject& image = *view.header->GetHeader();
    info.imageColumns = Read<unsigned short>(image, tag::kColumns).value_or(0);
    info.imageRows = Read<unsigned short>(image, tag::kRows).value_or(0);
    const CString uid = TextOf(image, tag::kSOPInstanceUID);
    CXGSPSObject reader;
    reader.SetRules(Rules::kStandard);
    const bool hasState = view.state != nullptr;
    reader.GSPSApplier(hasState ? view.state->GetHeader() : &image, &info,
                       hasState ? uid : CString(), hasState ? view.frame + 1 : -1);
    info.objectKind = 1;
    info.seriesNumber = "1";
    info.instanceNumber = "1";
    info.seriesDescription = "Presentation states";
    info.contentLabel = CString(label != nullptr ? label : "VIEW");
    info.referencedSOPClassUID = TextOf(image, tag::kSOPClassUID);
    info.referencedSOPInstanceUID = uid;
    info.referencedSeriesUID = TextOf(image, tag::kSeriesInstanceUID);
    info.referencedFrameNumber = -1;
    const Choices& choices = view.choices;
    if (choices.window || choices.voi) {
        record.ReleaseVoiTable();
        view.shown.GetWindowingFactor(info.exactWindowWidth, info.exactWindowCenter);
        info.windowCenter = static_cast<std::int32_t>(info.exactWindowCenter);
        info.windowWidth = static_cast<std::int32_t>(std::max(1.0, info.exactWindowWidth));
        info.windowFunction = CString();
        info.windowExplanation = CString();
    }
    if (choices.isInverted) info.presentationShape = info.presentationShape == 0 ? 1 : 0;
    info.imageRotation = (info.imageRotation + choices.degrees) % 360;
    if (choices.isFlipped) info.imageHorizontalFlip = info.imageHorizontalFlip != 0 ? 0 : 1;
}

QUORVEX_MESSAGE WriteState(quorvex_view& view, const char* label, const quorvex_mark* marks,
                           std::int32_t count, const char* path) {
    CDcmObject& image = *view.header->GetHeader();
    const auto photometric = TextOf(image, tag::kPhotometricInterpretation);
    if (photometric.Find("MONOCHROME") != 0) return QVM_ERROR_NOT_COLOR_IMAGE;
    PresentationRecord record;
    Describe(view, label, record);
    for (std::int32_t i = 0; i < count; ++i) {
        const quorvex_mark mark = MarkAt(marks, i);
        if (!IsMark(mark)) return QVM_ERROR_INVALID_IMAGE_FORMAT;
        AddMark(record.Info(), mark);
    }
    CXGSPSInfo* info = &record.Info();
    CDcmObject* made = nullptr;
    CXGSPSObject writer;
    writer.SetRules(Rules::kStandard);
    writer.MakeGSPSObject(&image, &info, 1, made);
    const std::unique_ptr<CDcmObject> state(made);
    if (!state) return writer.GetOutcome();
    return state->WriteFile(CString(path)) == kDcmSuccess ? QVM_SUCCESS : kNotWritten;
}

}  // namespace
}  // namespace quorvex::c

using namespace quorvex;
using namespace quorvex::c;

quorvex_result quorvex_write_state(quorvex_view* view, const char* label, const quorvex_mark* marks,
                                   int32_t mark_count, const char* path) {
    if (!AreThere(view, path)) return QVM_ERROR_NULL_SOURCE;
    const bool areUsable =
        marks == nullptr ? mark_count <= 0 : marks->struct_size >= sizeof(size_t);
    if (!areUsable) return QVM_ERROR_NULL_SOURCE;
    return Call(*view->settings, kNotWritten, [&]() -> QUORVEX_MESSAGE {
        if (!view->origin) return QVM_ERROR_NO_IMAGE;
        return WriteState(*view, label, marks, mark_count, path);
    });
}
