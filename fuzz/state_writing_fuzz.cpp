// A presentation state made from a record, written, and read back: the record must come out again.
#include "fuzz/elements.h"
#include "fuzz/scratch_file.h"
#include "quorvex/CXGSPSObject.h"
#include "tests/support/record.h"

#include <memory>

namespace {

using namespace quorvex;
using fuzz::Require;

int AnyWord(fuzz::Options& options) {
    return static_cast<std::int16_t>(options.Word());
}

/// A number that a float holds, as coordinates are written.
double AnyPlace(fuzz::Options& options) {
    return AnyWord(options) / 8.0;
}

double* AnyPair(fuzz::Options& options) {
    return new double[2]{AnyPlace(options), AnyPlace(options)};
}

CString AnyText(fuzz::Options& options) {
    std::string text;
    for (unsigned i = options.Below(20); i > 0; --i) {
        text.push_back(static_cast<char>(options.Byte()));
    }
    return text;
}

void FillTables(CXGSPSInfo& record, fuzz::Options& options) {
    record.windowCenter = AnyWord(options);
    record.windowWidth = options.Word();
    record.presentationShape = static_cast<int>(options.Below(2));
    if (!options.Flag()) return;
    record.voiLUTCount = options.Between(1, 40);
    record.voiLUTFirst = options.Word();
    record.voiLUTBits = options.Between(8, 16);
    record.voiLUTData = new std::uint16_t[static_cast<std::size_t>(record.voiLUTCount)];
    for (int i = 0; i < record.voiLUTCount; ++i) record.voiLUTData[i] = options.Word();
}

void FillDisplay(CXGSPSInfo& record, fuzz::Options& options) {
    record.imageRotation = 90 * static_cast<int>(options.Below(4));
    record.imageHorizontalFlip = options.Flag() ? 1 : 0;
    record.displayedAreaLeft = AnyWord(options);
    record.displayedAreaTop = AnyWord(options);
    record.displayedAreaRight = AnyWord(options);
    record.displayedAreaBottom = AnyWord(options);
    record.presentationSizeMode = static_cast<int>(options.Below(3));
    record.presentationMagnification = AnyPlace(options);
}

void FillShutter(CXGSPSInfo& record, fuzz::Options& options) {
    record.shutterType = options.Between(-1, 3);
    record.shutterLeft = AnyWord(options);
    record.shutterUpper = AnyWord(options);
    record.shutterRight = AnyWord(options);
    record.shutterLower = AnyWord(options);
    record.shutterCenterRow = AnyWord(options);
    record.shutterCenterColumn = AnyWord(options);
    record.shutterRadius = AnyWord(options);
    record.shutterPresentationValue = options.Word();
    for (unsigned i = options.Below(12); i > 0; --i) {
        record.shutterVertices.push_back({AnyWord(options), AnyWord(options)});
    }
}

void AddText(CXGSPSInfo& record, fuzz::Options& options) {
    auto text = std::make_unique<GSPSTextObject>();
    text->textValue = AnyText(options);
    text->hasAnchor = options.Flag() ? 1 : 0;
    if (text->hasAnchor != 0) text->anchorPoint = AnyPair(options);
    text->hasBoundingBox = options.Flag() ? 1 : 0;
    if (text->hasBoundingBox != 0) {
        text->boundingBoxTopLeft = AnyPair(options);
        text->boundingBoxBottomRight = AnyPair(options);
    }
    record.textObjects.Add(text.release());
}

void AddGraphic(CXGSPSInfo& record, fuzz::Options& options) {
    auto graphic = std::make_unique<GSPSGraphicObject>();
    graphic->graphicType = options.Between(1, 5);
    graphic->filled = options.Flag() ? 1 : 0;
    for (unsigned i = options.Below(10); i > 0; --i) {
        graphic->points.Add(new GSPSPoint{AnyPlace(options), AnyPlace(options)});
    }
    graphic->pointCount = graphic->points.GetSize();
    record.graphicObjects.Add(graphic.release());
}

void Fill(CXGSPSInfo& record, fuzz::Options& options) {
    record.objectKind = 1;
    record.referencedSOPClassUID = "1.2.840.10008.5.1.4.1.1.7";
    record.referencedSOPInstanceUID = fuzz::kImageUid;
    record.referencedSeriesUID = "1.2.3";
    record.referencedFrameNumber = options.Flag() ? 1 : -1;
    record.contentLabel = AnyText(options);
    FillTables(record, options);
    FillDisplay(record, options);
    FillShutter(record, options);
    for (unsigned i = options.Below(3); i > 0; --i) AddText(record, options);
    for (unsigned i = options.Below(3); i > 0; --i) AddGraphic(record, options);
}

template <class Value>
void RequireSame(const CXGSPSInfo& one, const CXGSPSInfo& other,
                 std::initializer_list<Value CXGSPSInfo::*> fields) {
    for (const auto field : fields) Require(one.*field == other.*field);
}

void RequireSameGraphics(const CPtrArray& one, const CPtrArray& other) {
    Require(one.GetSize() == other.GetSize());
    for (int i = 0; i < one.GetSize(); ++i) {
        const auto& written = *static_cast<const GSPSGraphicObject*>(one[i]);
        const auto& read = *static_cast<const GSPSGraphicObject*>(other[i]);
        Require(written.graphicType == read.graphicType && written.filled == read.filled);
        Require(written.points.GetSize() == read.points.GetSize());
        for (int p = 0; p < read.points.GetSize(); ++p) {
            const auto& from = *static_cast<const GSPSPoint*>(written.points[p]);
            const auto& to = *static_cast<const GSPSPoint*>(read.points[p]);
            Require(from.x == to.x && from.y == to.y);
        }
    }
}

void RequireSameRecord(const CXGSPSInfo& one, const CXGSPSInfo& other) {
    using Info = CXGSPSInfo;
    RequireSame<std::int32_t>(
        one, other,
        {&Info::imageRotation, &Info::imageHorizontalFlip, &Info::presentationSizeMode,
         &Info::displayedAreaLeft, &Info::displayedAreaTop, &Info::displayedAreaRight,
         &Info::displayedAreaBottom, &Info::presentationShape});
    if (one.voiLUTData != nullptr) {
        RequireSame<std::int32_t>(one, other, {&Info::voiLUTCount, &Info::voiLUTBits});
        Require(other.voiLUTData != nullptr && one.voiLUTFirst == other.voiLUTFirst);
        Require(std::equal(one.voiLUTData, one.voiLUTData + one.voiLUTCount, other.voiLUTData));
    } else if (one.windowWidth != 0) {
        RequireSame<std::int32_t>(one, other, {&Info::windowCenter, &Info::windowWidth});
    }
    if (one.shutterType >= 0) {
        Require(one.shutterPresentationValue == other.shutterPresentationValue);
    }
    if (one.shutterType == 2) Require(one.shutterVertices == other.shutterVertices);
    Require(one.textObjects.GetSize() == other.textObjects.GetSize());
    RequireSameGraphics(one.graphicObjects, other.graphicObjects);
}

void WriteState(fuzz::Options& options) {
    CDcmObject image;
    fuzz::DrawImage(image, options);
    test::Record record;
    Fill(record, options);
    CXGSPSInfo* records[] = {&record};
    CDcmObject* made = nullptr;
    Require(CXGSPSObject().MakeGSPSObject(&image, records, 1, made) == 1);
    const std::unique_ptr<CDcmObject> state(made);
    Require(fuzz::WriteAndRead(*state));
    test::Record read;
    read.imageRows = 20;
    read.imageColumns = 24;
    (void)CXGSPSObject().GSPSApplier(state.get(), &read, fuzz::kImageUid,
                                     record.referencedFrameNumber);
    RequireSameRecord(record, read);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 11, size}, WriteState);
}
