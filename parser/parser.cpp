#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/platform/diagnostics.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "parser/frames/frame_events.h"
#include "parser/frames/frame_fetch.h"
#include "parser/palette/palette_image.h"
#include "parser/parser_state.h"
#include "parser/photometric.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

/// Length of native Pixel Data; 0 where there is none.
std::size_t NativeBytes(const ParsedFile& file, const CDcmObject& header) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    if (header.GetTransferSyntax(syntax) != kDcmSuccess || IsEncapsulated(syntax)) return 0;
    if (file.FramesLieInFile(syntax)) return file.PixelDataValue(syntax).bytes;
    unsigned long length = 0;
    return header.GetValueLength(tag::kPixelData, 1, length) == kDcmSuccess ? length : 0;
}

QUORVEX_MESSAGE ByItsRules(const ParserState& state, QUORVEX_MESSAGE result) {
    CDcmObject* const header = state.file.GetHeader();
    if (state.rules != Rules::kStandard || header == nullptr) return result;
    UnderstandPhotometric(*header, NativeBytes(state.file, *header));
    return result;
}

void ForgetFrames(ParserState& state) noexcept {
    state.frameIndex.reset();
    state.quality = FrameQuality::kNone;
}

}  // namespace

CxDcmParser::CxDcmParser() : state_(std::make_unique<ParserState>()) {
    ShowFrameEvents(0);
}

CxDcmParser::CxDcmParser(const CxDcmParser& other)
    : state_(std::make_unique<ParserState>(*other.state_)) {}

CxDcmParser& CxDcmParser::operator=(const CxDcmParser& other) {
    if (this != &other) state_ = std::make_unique<ParserState>(*other.state_);
    return *this;
}

CxDcmParser::~CxDcmParser() = default;

QUORVEX_MESSAGE CxDcmParser::Initialize(CDcmApp* app, CString path, int readWholeFile) {
    if (app == nullptr) {
        WriteDebugLine("QVM_ERROR_INVALID_DCMAPP error\n");
        return QVM_ERROR_INVALID_DCMAPP;
    }
    ForgetFrames(*state_);
    return Answer(QVM_ERROR_FAILED_TO_READ_FILE, [&] {
        return ByItsRules(*state_, state_->file.Initialize(*app, path, readWholeFile));
    });
}

QUORVEX_MESSAGE CxDcmParser::Initialize(CDcmApp* app, std::shared_ptr<FileSource> source,
                                        int readWholeFile) {
    if (app == nullptr) {
        WriteDebugLine("QVM_ERROR_INVALID_DCMAPP error\n");
        return QVM_ERROR_INVALID_DCMAPP;
    }
    ForgetFrames(*state_);
    return Answer(QVM_ERROR_FAILED_TO_READ_FILE, [&] {
        if (!source) return QVM_ERROR_FAILED_TO_READ_FILE;
        return ByItsRules(*state_, state_->file.Initialize(*app, std::move(source), readWholeFile));
    });
}

QUORVEX_MESSAGE CxDcmParser::Initialize(CDcmApp* app, CDcmObject* object, unsigned char* fileBytes,
                                        unsigned long fileSize, unsigned long pixelDataOffset) {
    if (app == nullptr || object == nullptr) return QVM_ERROR_INVALID_DCMAPP;
    ForgetFrames(*state_);
    return Answer(QVM_ERROR_INVALID_DCMAPP, [&] {
        const auto result =
            state_->file.Initialize(*app, *object, fileBytes, fileSize, pixelDataOffset);
        return ByItsRules(*state_, result);
    });
}

void CxDcmParser::SetRules(Rules rules) noexcept {
    state_->rules = rules;
}

CDcmObject* CxDcmParser::GetHeader() const noexcept {
    return state_->file.GetHeader();
}

SampleType CxDcmParser::GetSampleType() const {
    return Contain(SampleType::kInteger, [&] { return state_->file.GetSampleType(); });
}

int CxDcmParser::GetFrameCount() const {
    return state_->file.GetFrameCount();
}

QUORVEX_MESSAGE CxDcmParser::GetAFrame(int frameIndex, unsigned char*& data, unsigned long& size,
                                       unsigned long sourceLength) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        FrameFetch fetch(*state_, frameIndex);
        return fetch.Decode(data, size, sourceLength);
    });
}

QUORVEX_MESSAGE CxDcmParser::GetAFrameUnpacked(int frameIndex, unsigned char*& data,
                                               unsigned long& size) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        FrameFetch fetch(*state_, frameIndex);
        return fetch.DecodeUnpacked(data, size);
    });
}

QUORVEX_MESSAGE CxDcmParser::GetAReducedFrame(int frameIndex, CSize least, unsigned char*& data,
                                              unsigned long& size, CSize& frameSize) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        FrameFetch fetch(*state_, frameIndex);
        const QUORVEX_MESSAGE result = fetch.DecodeReduced(least, data, size);
        if (result == QVM_SUCCESS) frameSize = {fetch.Shape().columns, fetch.Shape().rows};
        return result;
    });
}

QUORVEX_MESSAGE CxDcmParser::GetAFrameRegion(int frameIndex, const CRect& region, int level,
                                             unsigned char*& data, unsigned long& size) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        FrameFetch fetch(*state_, frameIndex);
        return fetch.DecodeRegion(region, level, data, size);
    });
}

QUORVEX_MESSAGE CxDcmParser::GetFrameLevelCount(int frameIndex, int& count) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        FrameFetch fetch(*state_, frameIndex);
        return fetch.CountLevels(count);
    });
}

FrameQuality CxDcmParser::GetFrameQuality() const noexcept {
    return state_->quality;
}

QUORVEX_MESSAGE CxDcmParser::GetAFrame(unsigned long offset, unsigned long size,
                                       unsigned char*& data) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        if (!state_->file.File().IsThere()) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        FileReading file(state_->file.File());
        const bool isInside = offset <= file.Size() && size <= file.Size() - offset;
        if (!file.IsOpen() || !isInside) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        HeapBlock block(size);
        if (!file.Read(offset, block.Bytes()) || !file.IsSound())
            return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        data = block.Release();
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxDcmParser::GetAFrameOffsetSize(int frameIndex, unsigned long& offset,
                                                 unsigned long& size) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        FrameFetch fetch(*state_, frameIndex);
        return fetch.Locate(offset, size);
    });
}

QUORVEX_MESSAGE CxDcmParser::GetRGBBufferFromPaletteImage(unsigned char* pixels,
                                                          unsigned short columns,
                                                          unsigned short rows, unsigned short& bits,
                                                          unsigned short& samples,
                                                          CString& photometric, unsigned char*& rgb,
                                                          unsigned long /*reserved*/) {
    return Answer(QVM_ERROR_INVALID_PHOTOMETRIC, [&] {
        CDcmObject* const header = GetHeader();
        if (header == nullptr || pixels == nullptr) return QVM_ERROR_INVALID_PHOTOMETRIC;
        const auto bytes = CheckedProduct(columns, rows, 3);
        if (!bytes) return QVM_ERROR_INVALID_PHOTOMETRIC;
        HeapBlock block(*bytes);
        const std::size_t indexBytes = PaletteIndexBytes(bits);
        if (!ColourByObject(*header, state_->rules, {pixels, *bytes / 3 * indexBytes}, indexBytes,
                            block.Bytes())) {
            return QVM_ERROR_INVALID_PHOTOMETRIC;
        }
        CString name("RGB");
        std::swap(photometric, name);
        bits = 24;
        samples = 3;
        rgb = block.Release();
        return QVM_SUCCESS;
    });
}

int CxDcmParser::FrameEventCount() noexcept {
    return LatestFrameEvents();
}

}  // namespace quorvex
