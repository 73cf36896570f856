#include "foundation/raster/word_ramp.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/undo.h"
#include "quorvex/CXWindowing.h"
#include "render/job_rules.h"

#include <cstdint>
#include <cstring>
#include <span>

namespace quorvex {
namespace {

/// A job of fewer pixels is done before a ramp is found.
constexpr std::int64_t kFewPixels = 65536;

bool HasUsableSizes(const _IMAGE_INFO& info) {
    if (info.imageWidth < 1 || info.imageHeight < 1) return false;
    if (info.outputWidth < 1 || info.outputHeight < 1) return false;
    if (info.outputWidth % kRowAlignment != 0) return false;
    return !IsQuarterTurn(info.rotation) || info.outputHeight % kRowAlignment == 0;
}

bool IsUsable(const _IMAGE_INFO& info) {
    return HasUsableSizes(info) && info.bytesPerPixel > 0 && info.pixels != nullptr &&
           info.output != nullptr && (IsHalfTurn(info.rotation) || IsQuarterTurn(info.rotation));
}

CRect CutToImage(const _IMAGE_INFO& info) {
    const int left = std::clamp(info.roi.left, 0, info.imageWidth);
    const int top = std::clamp(info.roi.top, 0, info.imageHeight);
    return {left, top, std::clamp(info.roi.right, left, info.imageWidth),
            std::clamp(info.roi.bottom, top, info.imageHeight)};
}

double HorizontalScale(const _IMAGE_INFO& info) {
    const auto [left, top, right, bottom] = info.roi;
    const double length = IsHalfTurn(info.rotation) ? static_cast<double>(bottom) - top
                                                    : static_cast<double>(right) - left;
    return info.outputHeight / (length * UsableAspectRatio(info.aspectRatio));
}

struct ValueRange {
    int lowest;
    int highest;
};

/// Every value that a grey pixel can be read as.
ValueRange PixelValues(const _IMAGE_INFO& info) {
    if (info.bytesPerPixel == 1) return {0, UINT8_MAX};
    const bool isSigned = info.lutOffset < 0;
    if (info.bitsStored == 8) {
        return isSigned ? ValueRange{INT8_MIN, INT8_MAX} : ValueRange{0, UINT8_MAX};
    }
    return isSigned ? ValueRange{INT16_MIN, INT16_MAX} : ValueRange{0, UINT16_MAX};
}

std::unique_ptr<unsigned char[]> ZeroedBlock(std::size_t size) {
    HeapBlock block(size);
    std::memset(block.Data(), 0, size);
    return std::unique_ptr<unsigned char[]>(block.Release());
}

std::size_t RowBytes(const _IMAGE_INFO& info, int pixelSize) {
    return static_cast<std::size_t>(info.imageWidth) * static_cast<std::size_t>(pixelSize);
}

}  // namespace

CXImageCreator::CXImageCreator() = default;

// Between jobs there is no buffer, and nobody copies an object in the middle of one.
CXImageCreator::CXImageCreator(const CXImageCreator& other) noexcept
    : workPixelSize(other.workPixelSize), scale(other.scale) {}

CXImageCreator& CXImageCreator::operator=(const CXImageCreator& other) noexcept {
    workPixelSize = other.workPixelSize;
    scale = other.scale;
    return *this;
}

CXImageCreator::~CXImageCreator() = default;

int CXImageCreator::GetImageWithInfo(_IMAGE_INFO& info) {
    return Answer(kJobWithoutTable, [&] {
        const UndoUnlessKept buffers([this] { ReleaseBuffers(); });
        return RunStages(info);
    });
}

int CXImageCreator::RunStages(_IMAGE_INFO& info) {
    const int prepared = PrepareRender(info);
    return prepared != kJobDone ? prepared : ArrangeRender(info);
}

void CXImageCreator::ReleaseBuffers() noexcept {
    workImage.reset();
    workLut.reset();
    compositeImage.reset();
    valueTable = nullptr;
    ramp.reset();
}

int CXImageCreator::PrepareRender(_IMAGE_INFO& info) {
    if (!IsUsable(info)) return kJobRefused;
    scale = HorizontalScale(info);
    workRoi = CutToImage(info);
    workPixelSize = IsColour(info) ? kColourBytes : 1;
    outputPixelSize = IsComposite(info) ? kColourBytes : workPixelSize;
    workImage = ZeroedBlock(2 * RowBytes(info, workPixelSize));
    if (IsComposite(info)) compositeImage = ZeroedBlock(2 * RowBytes(info, kColourBytes));
    valueTable = info.lut;
    valueTableStart = info.lutOffset;
    if (IsColour(info)) return kJobDone;
    if (info.lut == nullptr) return FetchLut(info);
    FindRamp(info, info.lutCount);
    return kJobDone;
}

/// Takes the table as it stands and widens it to every value that a pixel can have: those outside
/// take its nearest end, so that no pixel reads past it.
int CXImageCreator::FetchLut(_IMAGE_INFO& info) {
    int count = 0;
    int first = 0;
    if (info.windowing == nullptr) return kJobWithoutTable;
    info.windowing->GetValue(CXWindowing::kDisplayTableCount, &count, nullptr);
    info.windowing->GetValue(CXWindowing::kDisplayTableFirst, &first, nullptr);
    if (count <= 0) return kJobWithoutTable;
    const auto fetched = ZeroedBlock(static_cast<std::size_t>(count));
    info.windowing->GetValue(CXWindowing::kDisplayTable, fetched.get(), nullptr);

    info.lutOffset = first;
    const auto [lowest, highest] = PixelValues(info);
    workLut = ZeroedBlock(static_cast<std::size_t>(highest - lowest) + 1);
    for (int value = lowest; value <= highest; ++value) {
        const auto place = std::clamp<std::int64_t>(std::int64_t{value} - first, 0, count - 1);
        workLut[static_cast<std::size_t>(value - lowest)] =
            fetched[static_cast<std::size_t>(place)];
    }
    info.lut = workLut.get();
    valueTable = workLut.get();
    valueTableStart = lowest;
    FindRamp(info, highest - lowest + 1);
    return kJobDone;
}

void CXImageCreator::FindRamp(const _IMAGE_INFO& info, int tableCount) {
    const bool hasEveryWord = tableCount >= static_cast<int>(kWords) &&
                              (valueTableStart == 0 || valueTableStart == INT16_MIN);
    if (info.bytesPerPixel != 2 || info.bitsStored == 8 || !hasEveryWord) return;
    if (std::int64_t{workRoi.Width()} * workRoi.Height() < kFewPixels) return;
    const auto found = RampOfTable(std::span<const std::uint8_t, kWords>(valueTable, kWords),
                                   static_cast<std::uint16_t>(valueTableStart));
    if (found) ramp = std::make_unique<const WordRamp>(*found);
}

unsigned char* CXImageCreator::WorkRow(const _IMAGE_INFO& info, int row) const noexcept {
    return workImage.get() + (row % 2 == 0 ? 0 : RowBytes(info, workPixelSize));
}

unsigned char* CXImageCreator::CompositeRow(const _IMAGE_INFO& info, int row) const noexcept {
    return compositeImage.get() + (row % 2 == 0 ? 0 : RowBytes(info, kColourBytes));
}

/// Makes one row of the image that is to be resized, and gives its first pixel inside the region.
const unsigned char* CXImageCreator::Render(const _IMAGE_INFO& info, int row, int soon) {
    if (IsColour(info)) {
        RenderColorImage(info, row, soon);
    } else if (info.bytesPerPixel == 1) {
        RawImg2PValue(info, row, soon);
    } else if (info.bitsStored == 8) {
        RawImg2PValue16Half(info, row, soon);
    } else {
        RawImg2PValue16(info, row, soon);
    }
    if (info.renderMode == kRenderOverlay) ApplyOverlay(info, row);
    if (IsComposite(info)) RenderSuppPal(info, row);
    const unsigned char* const whole =
        IsComposite(info) ? CompositeRow(info, row) : WorkRow(info, row);
    return whole + std::ptrdiff_t{workRoi.left} * outputPixelSize;
}

}  // namespace quorvex
