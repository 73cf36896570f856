#include "tests/reliability/every_way.h"

#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "tests/pipeline/test_objects.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace quorvex::test {
namespace {

using Owned = std::unique_ptr<unsigned char[]>;

MC_STATUS Count(const DcmElementView& element, void* user) {
    *static_cast<unsigned long*>(user) += element.length;
    return kMcContinue;
}

void Fetch(CxDcmParser& parser, int index) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    unsigned long offset = 0;
    (void)parser.GetAFrameOffsetSize(index, offset, size);
    const auto result = parser.GetAFrame(index, data, size, 0);
    const Owned owner(result == QVM_SUCCESS ? data : nullptr);
}

void MakeThumbnail(CxDcmParser& parser, int useDataRange) {
    unsigned char* image = nullptr;
    tagBITMAPINFOHEADER* bitmap = nullptr;
    unsigned long imageSize = 0;
    unsigned long bitmapSize = 0;
    (void)parser.MakeThumbNail(0, {64, 64}, kXferUncompressed, useDataRange, image, imageSize,
                               bitmap, bitmapSize, 85);
    const Owned owner(image);
    const Owned other(static_cast<unsigned char*>(static_cast<void*>(bitmap)));
}

void ThroughParser(CxDcmParser& parser) {
    for (const int index : {0, 1, parser.GetFrameCount() - 1}) Fetch(parser, index);
    MakeThumbnail(parser, 0);
    MakeThumbnail(parser, 1);
    double location = 0.0;
    (void)CxDcmParser::GetSliceLocation(parser.GetHeader(), location);
}

void Show(CXDIPP& image) {
    image.ShowShutter(1);
    image.ShowOverlays(1);
    image.ShowAnnotations(1);
    for (const int turn : {0, 90}) {
        image.UpdateRotate_Offset(turn);
        if (image.Render() != QVM_SUCCESS) continue;
        std::vector<unsigned char> paper(64UL * 64 * 4);
        DrawingSurface surface{paper.data(), 64, 64, 256, 4};
        CDC context(&surface);
        (void)image.Draw(&context);
    }
    image.UpdateVOILUT_Offset(50, -50);
    (void)image.Render();
}

void Convert(CDcmApp& app, const CDcmObject& source) {
    for (const std::int32_t form : {3, 7, 9}) {
        CDcmObject object = source;
        CxDcmMaker maker;
        _USER_SETTING_INFO settings;
        settings.compressionType = form;
        (void)maker.MakeDcmObject(&app, &object, &settings);
    }
}

void WriteAndRead(CDcmApp& app, const CDcmObject& source) {
    const auto path = ScratchPath("written");
    if (source.WriteFile(path) == kDcmSuccess) {
        CDcmObject again;
        again.Open(path);
        (void)again.ReadFile(&app, nullptr, nullptr);
    }
    std::error_code failure;
    std::filesystem::remove(path, failure);
}

void AsObject(CDcmApp& app, CDcmObject& object) {
    unsigned long bytes = 0;
    object.WalkElements(&bytes, Count);
    CDcmObject copy = object;
    copy.SetValue(0x00100010, "Changed^Name");
    WriteAndRead(app, copy);
    Convert(app, object);
    CDcmObject skeleton;
    CxDcmMaker().MakeDcmSkeleton(&object, &skeleton);
    ThroughState(object);
}

}  // namespace

std::string ScratchPath(const std::string& name) {
    return (std::filesystem::temp_directory_path() /
            ("quorvex_" + std::to_string(getpid()) + "_" + name))
        .string();
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
    CXGSPSInfo info;
    CXGSPSInfo* infos[] = {&info};
    CDcmObject* made = nullptr;
    (void)CXGSPSObject().MakeGSPSObject(&state, infos, 1, made);
    const std::unique_ptr<CDcmObject> owner(made);
}

void ThroughEverything(CDcmObject& object) {
    CDcmApp app;
    AsObject(app, object);
    CDcmObject copy = object;
    CxDcmParser parser;
    if (parser.Initialize(&app, &copy, nullptr, 0, 0) == QVM_SUCCESS) ThroughParser(parser);
    CXDIPP image;
    if (image.Initialize(&app, &object, {64, 64}, 0) == QVM_SUCCESS) Show(image);
}

void ThroughEverything(const std::vector<unsigned char>& file) {
    CDcmApp app;
    const auto path = ScratchPath("input");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
    for (const int readWhole : {0, 1}) {
        CxDcmParser parser;
        (void)parser.Initialize(&app, path, readWhole);
        if (parser.GetHeader() == nullptr) continue;
        ThroughParser(parser);
        if (readWhole != 0) AsObject(app, *parser.GetHeader());
    }
    CXDIPP image;
    if (image.Initialize(&app, path, {64, 64}, 0) == QVM_SUCCESS) Show(image);
    std::error_code failure;
    std::filesystem::remove(path, failure);
}

}  // namespace quorvex::test
