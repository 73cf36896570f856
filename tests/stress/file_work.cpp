#include "file_work.h"

#include "digest.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <array>
#include <memory>

namespace quorvex::test {
namespace {

constexpr std::int32_t kForms[] = {kXferUncompressedImplicit, kXferUncompressedExplicit,
                                   kXferJpegBaseline,         kXferJpegExtended,
                                   kXferJpegLossless,         kXferJpeg2000,
                                   kXferJpeg2000Lossless};
/// What tells of the moment at which an object was made.
constexpr std::uint32_t kMomentary[] = {0x00020003, 0x00080012, 0x00080013, 0x00080018,
                                        0x00080021, 0x00080023, 0x00080031, 0x00080033,
                                        0x0020000E, 0x00700082, 0x00700083};

MC_STATUS AddElement(const DcmElementView& element, void* user) {
    if (std::ranges::find(kMomentary, element.tag) != std::end(kMomentary)) return kMcContinue;
    auto& digest = *static_cast<Digest*>(user);
    digest.Add(element.tag);
    digest.Add(element.length);
    if (element.data != nullptr && !element.isCut) digest.Add({element.data, element.length});
    return kMcContinue;
}

std::uint64_t DigestOf(const CDcmObject& object) {
    Digest digest;
    object.WalkElements(&digest, AddElement);
    return digest.Value();
}

int NumberOf(const CDcmObject& object, std::uint32_t tag) {
    int number = 0;
    object.GetValue(tag, number);
    return number;
}

/// A record that gives back what reading put into it.
struct Presentation {
    Presentation() = default;
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;
    ~Presentation() {
        delete[] info.modalityLUTData;
        delete[] info.voiLUTData;
        delete[] info.presentationLUTData;
        delete[] info.shutterMask;
        delete[] info.maskFrameRanges;
        delete[] info.maskFrameNumbers;
    }
    [[nodiscard]] std::uint64_t Value() const;
    CXGSPSInfo info;
};

std::uint64_t Presentation::Value() const {
    Digest digest;
    for (const int number :
         {info.modalityLUTCount, info.voiLUTCount, info.windowCenter, info.windowWidth,
          info.presentationShape, info.imageRotation, info.imageHorizontalFlip,
          info.displayedAreaRight, info.displayedAreaBottom, info.shutterRadius,
          static_cast<int>(info.rescaleSlope * 1000), static_cast<int>(info.rescaleIntercept)})
        digest.Add(static_cast<std::uint64_t>(number));
    if (info.shutterMask != nullptr && info.imageColumns > 0 && info.imageRows > 0)
        digest.Add({info.shutterMask, static_cast<std::size_t>(info.imageColumns) *
                                          static_cast<std::size_t>(info.imageRows)});
    return digest.Value();
}

/// What a frame has to hold for operations that are not told its length.
unsigned long BytesPromised(const CDcmObject& header) {
    unsigned long bytes = 1;
    for (const std::uint32_t tag : {0x00280002U, 0x00280010U, 0x00280011U, 0x00280100U})
        bytes *= static_cast<unsigned long>(std::max(NumberOf(header, tag), 0));
    return (bytes + 7) / 8;
}

/// The objects of one visit to a file: none is shared with another visit.
class Visit {
public:
    Visit(const std::filesystem::path& path, unsigned turn) : path_(path.string()), turn_(turn) {}

    bool Open();
    void FetchFrames();
    void MakeThumbnails();
    void Render();
    void Convert();
    void Process();
    void MakeObject();
    void MakeState();

    FileResults results;

private:
    void Note(const char* step, QUORVEX_MESSAGE code, std::uint64_t digest = 0) {
        results.push_back({step, code, digest});
    }
    void NoteFrame(const char* step, QUORVEX_MESSAGE code, const unsigned char* data,
                   unsigned long size);
    void NoteView(const char* step, CXDIPP& pipeline);
    [[nodiscard]] std::int32_t Form() const { return kForms[turn_ % std::size(kForms)]; }
    [[nodiscard]] CDcmObject& Header() const { return *parser_.GetHeader(); }

    CString path_;
    unsigned turn_;
    CDcmApp app_;
    CxDcmParser parser_;
    CxDcmMaker maker_;
};

bool Visit::Open() {
    const auto code = parser_.Initialize(&app_, path_, 0);
    const bool isOpen = code == QVM_SUCCESS && parser_.GetHeader() != nullptr;
    Note("open", code, isOpen ? DigestOf(Header()) : 0);
    return isOpen;
}

void Visit::NoteFrame(const char* step, QUORVEX_MESSAGE code, const unsigned char* data,
                      unsigned long size) {
    Digest digest;
    if (code == QVM_SUCCESS && data != nullptr) digest.Add({data, size});
    Note(step, code, digest.Value());
}

void Visit::FetchFrames() {
    for (int frame = 0; frame < parser_.GetFrameCount(); ++frame) {
        unsigned char* data = nullptr;
        unsigned long size = 0;
        const auto code = parser_.GetAFrame(frame, data, size, 0);
        const std::unique_ptr<unsigned char[]> owner(data);
        NoteFrame("frame", code, data, size);
        if (code != QVM_SUCCESS) return;
    }
}

void Visit::MakeThumbnails() {
    for (const auto format : {kXferUncompressed, kXferJpegBaseline, kXferJpegLossless}) {
        unsigned char* image = nullptr;
        unsigned long size = 0;
        tagBITMAPINFOHEADER* header = nullptr;
        unsigned long headerSize = 0;
        const int useDataRange = format == kXferJpegBaseline ? 1 : 0;
        const auto code = parser_.MakeThumbNail(0, {64, 48}, format, useDataRange, image, size,
                                                header, headerSize, 80);
        const std::unique_ptr<unsigned char[]> owner(image);
        const std::unique_ptr<unsigned char[]> bitmap(reinterpret_cast<unsigned char*>(header));
        NoteFrame("thumbnail", code, image, size);
    }
}

void Visit::NoteView(const char* step, CXDIPP& pipeline) {
    constexpr int kWidth = 160;
    constexpr int kHeight = 120;
    const auto code = pipeline.Render();
    std::vector<unsigned char> pixels(std::size_t{kWidth} * kHeight * 3);
    DrawingSurface surface{.pixels = pixels.data(),
                           .width = kWidth,
                           .height = kHeight,
                           .rowBytes = std::ptrdiff_t{kWidth} * 3,
                           .bytesPerPixel = 3};
    CDC device(&surface);
    pipeline.Draw(&device);
    NoteFrame(step, code, pixels.data(), pixels.size());
}

void Visit::Render() {
    CXDIPP pipeline;
    const auto code = pipeline.Initialize(&app_, path_, {160, 120}, 0);
    Note("show", code);
    if (code != QVM_SUCCESS) return;
    NoteView("render", pipeline);
    pipeline.ShowShutter(1);
    pipeline.ShowAnnotations(1);
    pipeline.ShowOverlays(1);
    pipeline.UpdateVOILUT_Offset(7, -11);
    pipeline.UpdateZoom_Offset(25);
    pipeline.UpdatePan_Offset({5, -9});
    pipeline.UpdateRotate_Offset(90);
    pipeline.UpdateHFlip_Toggle();
    CXDIPP copy(pipeline);
    pipeline.Inverse();
    NoteView("render with options", pipeline);
    NoteView("render a copy", copy);
}

void Visit::Convert() {
    CxDcmParser whole;
    if (whole.Initialize(&app_, path_, 1) != QVM_SUCCESS) return;
    CDcmObject object = *whole.GetHeader();
    _USER_SETTING_INFO settings;
    settings.compressionType = Form();
    maker_.SetQuality(Form() == kXferJpegBaseline ? 90 : 0);
    const auto code = maker_.MakeDcmObject(&app_, &object, &settings);
    Note("convert", code == QVM_SUCCESS ? maker_.GetOutcome() : code, DigestOf(object));
}

void Visit::Process() {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    if (parser_.GetAFrame(0, data, size, 0) != QVM_SUCCESS) return;
    const std::unique_ptr<unsigned char[]> frame(data);
    const CDcmObject& header = Header();
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = static_cast<std::uint16_t>(NumberOf(header, 0x00280002));
    param.photometric = param.samplesPerPixel == 3 ? "RGB" : "MONOCHROME2";
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(NumberOf(header, 0x00280010));
    param.columns = static_cast<std::uint16_t>(NumberOf(header, 0x00280011));
    param.bitsAllocated = static_cast<std::uint16_t>(NumberOf(header, 0x00280100));
    param.pixelRepresentation = static_cast<std::uint16_t>(NumberOf(header, 0x00280103));
    param.targetSyntax = turn_ % 2 == 0 ? kXferJpegLossless : kXferJpeg2000Lossless;
    if (size < BytesPromised(header) || param.bitsAllocated % 8 != 0) return;

    CxImageProcessor processor;
    unsigned char* coded = nullptr;
    unsigned long codedSize = 0;
    auto code = processor.CompressFrameData(&param, data, size, coded, codedSize);
    const std::unique_ptr<unsigned char[]> stream(coded);
    NoteFrame("compress", code, coded, codedSize);
    if (code == QVM_SUCCESS) {
        unsigned char* decoded = nullptr;
        unsigned long decodedSize = 0;
        std::array<unsigned short, 5> facts{};
        const auto blind = turn_ % 2 == 0 ? &CxImageProcessor::DecompressBlindJPEGData
                                          : &CxImageProcessor::DecompressBlindJP2KData;
        code = (processor.*blind)(coded, codedSize, decoded, decodedSize, facts[0], facts[1],
                                  facts[2], facts[3], facts[4]);
        const std::unique_ptr<unsigned char[]> owner(decoded);
        NoteFrame("decompress", code, decoded, decodedSize);
    }
    unsigned char* resized = nullptr;
    unsigned long resizedSize = 0;
    code = processor.ResizeImage(&param, data, resized, resizedSize, {48, 31});
    const std::unique_ptr<unsigned char[]> owner(resized);
    NoteFrame("resize", code, resized, resizedSize);
}

void Visit::MakeObject() {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    if (parser_.GetAFrame(0, data, size, 0) != QVM_SUCCESS) return;
    std::unique_ptr<unsigned char[]> frame(data);
    _USER_SETTING_INFO settings;
    settings.compressionType = Form();
    if (size < BytesPromised(Header())) return;
    if (maker_.DcmMakerInit(&Header(), &settings, nullptr) != QVM_SUCCESS) return;
    if (maker_.AddFrame(frame.get()) != QVM_SUCCESS) return;
    static_cast<void>(frame.release());
    CDcmObject* made = nullptr;
    const auto code = maker_.MakeDcmObject(made);
    const std::unique_ptr<CDcmObject> object(made);
    Note("new object", code, object ? DigestOf(*object) : 0);
}

void Visit::MakeState() {
    CDcmObject& image = Header();
    Presentation record;
    record.info.imageColumns = NumberOf(image, 0x00280011);
    record.info.imageRows = NumberOf(image, 0x00280010);
    CXGSPSObject applier;
    const int isRead = applier.GSPSApplier(&image, &record.info, CString(), -1);
    Note("read presentation", isRead != 0 ? QVM_SUCCESS : QVM_ERROR_NO_IMAGE, record.Value());
    CString uid;
    image.GetValue(0x00080018, uid);
    record.info.objectKind = 1;
    record.info.referencedSOPInstanceUID = uid;
    record.info.referencedFrameNumber = -1;
    record.info.imageRotation = 90;
    record.info.shutterType = 1;
    record.info.shutterRadius = 10;
    CXGSPSInfo* records[] = {&record.info};
    CDcmObject* made = nullptr;
    CXGSPSObject().MakeGSPSObject(&image, records, 1, made);
    const std::unique_ptr<CDcmObject> state(made);
    Note("make state", state ? QVM_SUCCESS : QVM_ERROR_NO_IMAGE, state ? DigestOf(*state) : 0);
    if (!state) return;
    CXDIPP pipeline;
    if (pipeline.Initialize(&app_, path_, {160, 120}, 0) != QVM_SUCCESS) return;
    pipeline.ApllyGSPSObject(&app_, state.get());
    pipeline.ShowShutter(1);
    NoteView("render under the state", pipeline);
}

}  // namespace

FileResults WorkOnFile(const std::filesystem::path& path, unsigned turn, Amount amount) {
    Visit visit(path, turn);
    if (!visit.Open()) return visit.results;
    visit.Render();
    visit.Convert();
    if (amount == Amount::kOpenRenderConvert) return visit.results;
    visit.FetchFrames();
    visit.MakeThumbnails();
    visit.Process();
    visit.MakeObject();
    visit.MakeState();
    return visit.results;
}

std::string DifferenceOf(const FileResults& one, const FileResults& other) {
    const auto [first, second] = std::ranges::mismatch(one, other);
    if (first == one.end() && second == other.end()) return {};
    return first != one.end() ? first->step : second->step;
}

std::vector<std::filesystem::path> FilesIn(int count, char** places) {
    namespace fs = std::filesystem;
    constexpr const char* kOtherKinds[] = {".txt", ".gz", ".dump", ".py", ".pyc", ".json", ".md"};
    std::vector<fs::path> files;
    for (const std::string place : std::span(places, static_cast<std::size_t>(count))) {
        if (!fs::is_directory(place)) {
            files.emplace_back(place);
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(place)) {
            const auto kind = entry.path().extension();
            const bool isOther = std::ranges::find(kOtherKinds, kind) != std::end(kOtherKinds);
            if (entry.is_regular_file() && !isOther) files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    return files;
}

}  // namespace quorvex::test
