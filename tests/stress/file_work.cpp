#include "file_work.h"

#include "quorvex/Attributes.h"
#include "quorvex/CXGSPSObject.h"
#include "tests/support/answers.h"
#include "tests/support/digest.h"
#include "tests/support/record.h"

#include <algorithm>
#include <memory>

namespace quorvex::test {
namespace {

struct Form {
    std::int32_t target;
    Rules rules = Rules::kEstablished;
};
constexpr Form kForms[] = {{kXferUncompressedImplicit},
                           {kXferUncompressedExplicit},
                           {kXferJpegBaseline},
                           {kXferJpegExtended},
                           {kXferJpegLossless},
                           {kXferJpeg2000},
                           {kXferJpeg2000Lossless},
                           {kXferHtj2k},
                           {kXferHtj2kRpclLossless},
                           {kXferRle, Rules::kStandard},
                           {kXferJpegLsLossless, Rules::kStandard},
                           {kXferJpegLs, Rules::kStandard},
                           {kXferJpegXlLossless, Rules::kStandard},
                           {kXferDeflatedFrames, Rules::kStandard},
                           {kXferEncapsulated, Rules::kStandard}};
constexpr CSize kView = {160, 120};

std::uint64_t DigestOfMade(const CDcmObject* object) {
    return object == nullptr ? 0 : DigestOf(*object, kNewEachTime);
}

std::uint64_t DigestOfRecord(const CXGSPSInfo& info) {
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

/// The objects of one visit to a file: none is shared with another visit.
class Visit {
public:
    Visit(const std::filesystem::path& path, unsigned turn)
        : path_(path.string()), turn_(turn), form_(kForms[turn % std::size(kForms)]) {}

    bool Open() {
        const auto code = parser_.Initialize(&app_, path_, 0);
        const bool isOpen = code == QVM_SUCCESS && parser_.GetHeader() != nullptr;
        Note("open", code, DigestOfMade(isOpen ? &Header() : nullptr));
        return isOpen;
    }

    void Render() {
        CXDIPP pipeline;
        const auto code = pipeline.Initialize(&app_, path_, kView, 0);
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

    void Convert() {
        CxDcmParser whole;
        if (whole.Initialize(&app_, path_, 1) != QVM_SUCCESS) return;
        CDcmObject object = *whole.GetHeader();
        const std::uint16_t quality = form_.target == kXferJpegBaseline ? 90 : 0;
        const auto made = ConvertTo(form_.target, object, quality, form_.rules);
        Note("convert", made.Code(), DigestOfMade(&object));
    }

    void FetchFrames() {
        for (int i = 0; i < parser_.GetFrameCount(); ++i) {
            Note("frame", FrameOf(parser_, i));
            if (results.back().code != QVM_SUCCESS) return;
        }
    }

    void MakeThumbnails() {
        for (const auto format : {kXferUncompressed, kXferJpegBaseline, kXferJpegLossless}) {
            const bool usesDataRange = format == kXferJpegBaseline;
            Note("thumbnail", ThumbnailOf(parser_, {{64, 48}, format, usesDataRange, 80}));
        }
    }

    void Process() {
        Bytes frame = PromisedFrame();
        _IMAGE_PROCESS_PARAM param = ParamOf(Header());
        param.transferSyntax = kExplicitLittleEndian;
        param.photometric = param.samplesPerPixel == 3 ? "RGB" : "MONOCHROME2";
        param.planarConfiguration = 0;
        param.targetSyntax = turn_ % 2 == 0 ? kXferJpegLossless : kXferJpeg2000Lossless;
        if (frame.empty() || param.bitsAllocated % 8 != 0) return;
        Answered coded = CodedOf(param, frame);
        Note("compress", coded);
        if (coded.IsDone())
            Note("decompress", BlindlyDecoded(kBlindDecoders[turn_ % 2], coded.bytes));
        unsigned char* resized = nullptr;
        unsigned long size = 0;
        const auto code =
            CxImageProcessor().ResizeImage(&param, frame.data(), resized, size, {48, 31});
        Note("resize", Answered::Take(code, resized, size));
    }

    void MakeObject() {
        const Bytes frame = PromisedFrame();
        _USER_SETTING_INFO settings;
        settings.compressionType = form_.target;
        CxDcmMaker maker;
        maker.SetRules(form_.rules);
        if (frame.empty() || maker.DcmMakerInit(&Header(), &settings, nullptr) != QVM_SUCCESS)
            return;
        auto handed = std::make_unique<unsigned char[]>(frame.size());
        std::ranges::copy(frame, handed.get());
        if (maker.AddFrame(handed.get()) != QVM_SUCCESS) return;
        static_cast<void>(handed.release());
        CDcmObject* made = nullptr;
        const auto code = maker.MakeDcmObject(made);
        const std::unique_ptr<CDcmObject> object(made);
        Note("new object", code, DigestOfMade(made));
    }

    void MakeState() {
        CDcmObject& image = Header();
        Record record;
        record.imageColumns = Read<int>(image, tag::kColumns).value_or(0);
        record.imageRows = Read<int>(image, tag::kRows).value_or(0);
        const int isRead = CXGSPSObject().GSPSApplier(&image, &record, CString(), -1);
        Note("read presentation", isRead, DigestOfRecord(record));
        record.objectKind = 1;
        record.referencedSOPInstanceUID = Read<CString>(image, tag::kSOPInstanceUID).value_or("");
        record.referencedFrameNumber = -1;
        record.imageRotation = 90;
        record.shutterType = 1;
        record.shutterRadius = 10;
        CXGSPSInfo* records[] = {&record};
        CDcmObject* made = nullptr;
        const int isMade = CXGSPSObject().MakeGSPSObject(&image, records, 1, made);
        const std::unique_ptr<CDcmObject> state(made);
        Note("make state", isMade, DigestOfMade(made));
        CXDIPP pipeline;
        if (!state || pipeline.Initialize(&app_, path_, kView, 0) != QVM_SUCCESS) return;
        pipeline.ApllyGSPSObject(&app_, made);
        pipeline.ShowShutter(1);
        NoteView("render under the state", pipeline);
    }

    FileResults results;

private:
    void Note(const char* step, int code, std::uint64_t digest = 0) {
        results.push_back({step, code, digest});
    }
    void Note(const char* step, const Answered& answer) {
        Digest digest;
        if (answer.IsDone()) digest.Add(answer.bytes);
        Note(step, answer.code, digest.Value());
    }
    void NoteView(const char* step, CXDIPP& pipeline) {
        const auto code = pipeline.Render();
        Note(step, {code, DrawnOf(pipeline, kView).bytes});
    }
    [[nodiscard]] CDcmObject& Header() const { return *parser_.GetHeader(); }

    /// The first frame, unless it is shorter than its header says: not every operation asks how
    /// long a frame is.
    Bytes PromisedFrame() {
        const auto param = ParamOf(Header());
        const std::size_t bits =
            std::size_t{param.samplesPerPixel} * param.rows * param.columns * param.bitsAllocated;
        Answered frame = FrameOf(parser_);
        return frame.bytes.size() < (bits + 7) / 8 ? Bytes() : std::move(frame.bytes);
    }

    CString path_;
    unsigned turn_;
    Form form_;
    CDcmApp app_;
    CxDcmParser parser_;
};

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

}  // namespace quorvex::test
