#include "foundation/platform/pages.h"
#include "parser/frames/frame_events.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <atomic>

namespace quorvex {
namespace {

std::atomic<int> latestFrameEvents{0};

}  // namespace

void ShowFrameEvents(int count) noexcept {
    latestFrameEvents.store(count, std::memory_order_relaxed);
}

int CxDcmParser::FrameEventCount() noexcept {
    return latestFrameEvents.load(std::memory_order_relaxed);
}

CxDcmParser::CxDcmParser() {
    ShowFrameEvents(0);
}

CxDcmParser::CxDcmParser(const CxDcmParser& other)
    : isPart10(other.isPart10),
      fileSize(other.fileSize),
      pixelDataOffset(other.pixelDataOffset),
      app(other.app),
      headerHoldsPixels(other.headerHoldsPixels) {
    if (other.fileBuffer) {
        fileBuffer.reset(TakePages(fileSize));
        std::copy_n(other.fileBuffer.get(), fileSize, fileBuffer.get());
    }
    if (other.header != nullptr) SetOwnHeader(std::make_unique<CDcmObject>(*other.header));
}

CxDcmParser& CxDcmParser::operator=(const CxDcmParser& other) {
    if (this == &other) return *this;
    CxDcmParser copy(other);
    isPart10 = copy.isPart10;
    fileBuffer = std::move(copy.fileBuffer);
    frameTable.reset();
    fileSize = copy.fileSize;
    pixelDataOffset = copy.pixelDataOffset;
    app = copy.app;
    headerHoldsPixels = copy.headerHoldsPixels;
    SetOwnHeader(std::move(copy.ownHeader));
    return *this;
}

CxDcmParser::~CxDcmParser() = default;

void CxDcmParser::SetOwnHeader(std::unique_ptr<CDcmObject> object) noexcept {
    ownHeader = std::move(object);
    header = ownHeader.get();
    ownsHeader = 1;
}

}  // namespace quorvex
