#include "tests/support/every_route.h"

#include "quorvex/CXGSPSObject.h"
#include "quorvex/Tags.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/digest.h"
#include "tests/support/record.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorvex::test {
namespace {

Answered RenderedOf(const CString& path) {
    CDcmApp app;
    CXDIPP image;
    const auto opened = image.Initialize(&app, path, {37, 29}, 0);
    if (opened != QVM_SUCCESS) return {opened, {}};
    const auto code = image.Render();
    return {code, ResultOf(image).bytes};
}

void ThroughParser(CxDcmParser& parser) {
    for (const int index : {0, 1, parser.GetFrameCount() - 1}) {
        (void)FrameOf(parser, index);
        (void)StoredFrameOf(parser, index);
    }
    for (const bool usesDataRange : {false, true})
        (void)ThumbnailOf(parser, {.size = {64, 64}, .usesDataRange = usesDataRange});
    double location = 0.0;
    (void)CxDcmParser::GetSliceLocation(parser.GetHeader(), location);
}

void Show(CXDIPP& image) {
    image.ShowShutter(1);
    image.ShowOverlays(1);
    image.ShowAnnotations(1);
    for (const int turn : {0, 90}) {
        image.UpdateRotate_Offset(turn);
        if (image.Render() == QVM_SUCCESS) (void)DrawnOf(image, {64, 64}, 4);
    }
    image.UpdateVOILUT_Offset(50, -50);
    (void)image.Render();
}

void WriteAndRead(CDcmApp& app, const CDcmObject& source) {
    const ScratchFolder folder;
    const CString path = folder.Path("written");
    if (source.WriteFile(path) != kDcmSuccess) return;
    CDcmObject again;
    again.Open(path);
    (void)again.ReadFile(&app, nullptr, nullptr);
}

void AsObject(CDcmApp& app, CDcmObject& object) {
    (void)DigestOf(object);
    CDcmObject copy = object;
    copy.SetValue(tag::kPatientName, "Changed^Name");
    WriteAndRead(app, copy);
    for (const auto form : {kXferUncompressedExplicit, kXferJpegLossless, kXferJpeg2000Lossless}) {
        CDcmObject converted = object;
        (void)ConvertTo(form, converted);
    }
    CDcmObject skeleton;
    CxDcmMaker().MakeDcmSkeleton(&object, &skeleton);
    ThroughState(object);
}

}  // namespace

Answered ConvertedOf(CDcmObject object, std::int32_t form) {
    Answered answer{ConvertTo(form, object).Code(), {}};
    CDcmApp app;
    CxDcmParser parser;
    if (parser.Initialize(&app, &object, nullptr, 0, 0) != QVM_SUCCESS) return answer;
    for (int i = 0; i < parser.GetFrameCount(); ++i) {
        const Answered frame = FrameOf(parser, i);
        if (frame.code != QVM_SUCCESS) break;
        answer.bytes.insert(answer.bytes.end(), frame.bytes.begin(), frame.bytes.end());
    }
    return answer;
}

std::vector<Answered> AskEverything(const Bytes& file) {
    const TemporaryFile onDisk(file);
    CDcmApp app;
    CxDcmParser fromFile;
    CxDcmParser fromObject;
    const auto opened = fromFile.Initialize(&app, onDisk.Path(), 0);
    EXPECT_EQ(fromObject.Initialize(&app, onDisk.Path(), 1), opened);
    if (opened != QVM_SUCCESS) return {{opened, {}}};
    std::vector<Answered> answers = {FrameOf(fromFile), FrameOf(fromObject)};
    for (const Answered& frame : answers)
        EXPECT_TRUE(frame.IsDone() || frame.bytes.empty()) << "a failure hands nothing over";
    for (const auto format : {kXferUncompressed, kXferJpegBaseline, kXferJpegLossless}) {
        const bool usesDataRange = format == kXferUncompressed;
        answers.push_back(
            ThumbnailOf(fromFile, {.format = format, .usesDataRange = usesDataRange}));
    }
    answers.push_back(RenderedOf(onDisk.Path()));
    for (const auto form : {kXferUncompressedExplicit, kXferJpeg2000Lossless})
        answers.push_back(ConvertedOf(*fromObject.GetHeader(), form));
    return answers;
}

void ThroughState(CDcmObject& state) {
    CDcmApp app;
    CDcmObject image;
    pipeline_test::FillImage<unsigned short>(image, {.size = {16, 16}},
                                             std::vector<unsigned short>(256, 7));
    CXDIPP shown;
    if (shown.Initialize(&app, &image, {64, 64}, 0) != QVM_SUCCESS) return;
    (void)shown.ApllyGSPSObject(&app, &state);
    Show(shown);
    Record record;
    CXGSPSInfo* records[] = {&record};
    CDcmObject* made = nullptr;
    (void)CXGSPSObject().MakeGSPSObject(&state, records, 1, made);
    const std::unique_ptr<CDcmObject> owner(made);
}

void ThroughEverything(const Bytes& file) {
    const TemporaryFile onDisk(file);
    CDcmApp app;
    for (const int readWhole : {0, 1}) {
        CxDcmParser parser;
        (void)parser.Initialize(&app, onDisk.Path(), readWhole);
        if (parser.GetHeader() == nullptr) continue;
        ThroughParser(parser);
        if (readWhole != 0) AsObject(app, *parser.GetHeader());
    }
    CXDIPP image;
    if (image.Initialize(&app, onDisk.Path(), {64, 64}, 0) == QVM_SUCCESS) Show(image);
}

}  // namespace quorvex::test
