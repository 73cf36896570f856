// A whole file by its path: header, every element, frames, thumbnail, palette, displayed picture.
#include "fuzz/drawing.h"
#include "fuzz/memory_path.h"
#include "fuzz/reading.h"
#include "quorvex/Attributes.h"
#include "tests/support/digest.h"
#include "tests/support/host_source.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

using namespace quorvex;

void ColourByPalette(CxDcmParser& parser) {
    test::Bytes frame = test::FrameOf(parser).bytes;
    const auto number = [&](std::uint32_t tag) {
        return Read<unsigned short>(*parser.GetHeader(), tag).value_or(0);
    };
    const unsigned short rows = number(tag::kRows);
    const unsigned short columns = number(tag::kColumns);
    const unsigned short bits = number(tag::kBitsAllocated);
    const std::size_t indexBytes = bits >= 16 && bits < 24 ? 2 : 1;
    if (frame.empty() || frame.size() < std::size_t{rows} * columns * indexBytes) return;
    (void)test::ColouredOf(parser, frame.data(), columns, rows, bits);
}

void Show(CDcmApp& app, const CString& path, fuzz::Options& options) {
    CXDIPP image;
    const CSize view = fuzz::DrawViewSize(options);
    const int frame = static_cast<int>(options.Below(4));
    if (image.Initialize(&app, path, view, frame) != QVM_SUCCESS) return;
    fuzz::ShowAsDrawn(image, options);
    if (image.Initialize(&app, fuzz::DrawViewSize(options), frame + 1) != QVM_SUCCESS) return;
    fuzz::ShowAsDrawn(image, options);
}

/// The file by a host's source, with more behind it than is kept in memory: each read may fail, and
/// what comes is what the whole file gives, or a code.
void FromSource(CDcmApp& app, fuzz::Options& options) {
    test::Bytes bytes = options.Front();
    bytes.resize(bytes.size() + (std::size_t{64} << 10));
    const auto good = std::make_shared<test::HostSource>(bytes);
    const auto bad = std::make_shared<test::HostSource>(std::move(bytes));
    bad->failAt = options.Between(1, 12);
    bad->wrong = options.Flag() ? test::HostSource::kGivesHalf : test::HostSource::kThrows;
    CxDcmParser whole;
    CxDcmParser parser;
    const bool isRead = whole.Initialize(&app, good, 0) == QVM_SUCCESS;
    if (parser.Initialize(&app, bad, 0) != QVM_SUCCESS) return;
    fuzz::Require(isRead);
    for (int i = 0; i < std::min(parser.GetFrameCount(), 3); ++i) {
        const test::Answered frame = test::FrameOf(parser, i);
        const bool isWhole = frame == test::FrameOf(whole, i);
        fuzz::Require(isWhole || frame.code == QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    }
}

void Open(fuzz::Options& options) {
    const fuzz::MemoryPath path(options.Front());
    CDcmApp app;
    if (options.Flag()) return FromSource(app, options);
    CxDcmParser parser;
    const bool isRead = parser.Initialize(&app, path.Text(), options.Flag() ? 1 : 0) == QVM_SUCCESS;
    if (parser.GetHeader() != nullptr) (void)test::DigestOf(*parser.GetHeader());
    if (!isRead) return;
    fuzz::FetchFrames(parser, options);
    fuzz::MakeThumbnail(parser, options);
    ColourByPalette(parser);
    Show(app, path.Text(), options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 17, 48}, Open);
}
