#include "codec/colour.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg2000/jpeg2000_engine.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <span>

namespace quorvex {
namespace {

std::atomic<bool> isFrameCoderLoaded{false};
std::atomic<bool> isBlindCoderLoaded{false};

bool LoadDecoder(std::atomic<bool>& isLoaded) noexcept {
    constexpr int kEngineVersion = 20;
    if (isLoaded.load(std::memory_order_acquire)) return true;
    if (PegasusLoadFromRes(kPegasusDecode, kEngineVersion, 0, 0) != 0) return false;
    isLoaded.store(true, std::memory_order_release);
    return true;
}

bool Contains(const CString& text, const char* part) {
    return text.Find(part) >= 0;
}

bool IsGrey(const CString& photometric) {
    return Contains(photometric, "MONOCHROME") || Contains(photometric, "PALETTE");
}

/// All three requests, in order.
bool Decode(PegasusParameters& parameters) noexcept {
    for (const int request : {kPegasusBegin, kPegasusWork, kPegasusEnd}) {
        if (Pegasus(parameters, request) != kPegasusDone) return false;
    }
    return true;
}

/// Components that the codestream does not turn into R, G, B itself.
void ConvertStoredYbr(std::span<unsigned char> pixels) {
    const HeapBlock stored(pixels.size());
    std::ranges::copy(pixels, stored.Data());
    ConvertToRgb({.form = ColourForm::kFullInterleaved, .columns = pixels.size() / 3, .rows = 1},
                 stored.Bytes(), pixels);
}

/// The pixels that the blind route knows, by the bits of a whole pixel.
struct BlindForm {
    int bitCount;
    int components;
    unsigned short bits;
};
constexpr BlindForm kBlindForms[] = {{8, 1, 8}, {16, 1, 16}, {24, 3, 8}, {32, 4, 8}};

const BlindForm* BlindFormOf(const PegasusParameters& parameters) noexcept {
    for (const BlindForm& form : kBlindForms) {
        const bool isIt = form.bitCount == parameters.bitmap.biBitCount &&
                          form.components == parameters.components;
        if (isIt) return &form;
    }
    return nullptr;
}

/// Nothing but the stream's own word speaks for its size: a short one must not ask for much.
bool IsWorthItsMemory(std::size_t frameBytes, unsigned long sourceLength) noexcept {
    return frameBytes <= kBarePictureForAnybody ||
           frameBytes / kMostBarePicturePerByte <= sourceLength || RefuseBy(Limit::kLargestPicture);
}

}  // namespace

/// The codestream must be as the header says in size and sample count; samples of fewer bits than
/// the header allocates are widened. Rows are packed.
int CxImageProcessor::DecompressJ2KData(unsigned char* source, unsigned long sourceLength,
                                        unsigned char*& result, unsigned long& resultSize,
                                        int unsignedOnly) {
    if (!LoadDecoder(isFrameCoderLoaded)) return 0;
    PegasusParameters parameters;
    parameters.input = {source, sourceLength};
    parameters.output = {result, resultSize};
    parameters.columns = columns;
    parameters.rows = rows;
    parameters.samples = samplesPerPixel;
    parameters.bytesPerSample = static_cast<int>(BytesPerSample());
    if (IsGrey(photometric)) {
        parameters.isSigned = unsignedOnly == 0 && pixelRepresentation == 1;
        parameters.isBigEndian = IsBigEndian(SourceSyntax());
    }
    if (PegasusQuery(parameters) == 0) return 0;
    const auto streamBytes =
        CheckedProduct(BytesPerSample(), samplesPerPixel, std::abs(parameters.bitmap.biHeight),
                       parameters.bitmap.biWidth);
    if (streamBytes != resultSize || !Decode(parameters)) return 0;
    const bool isYbr = photometric == "YBR_FULL" || photometric == "YBR_FULL_422";
    if (isYbr && samplesPerPixel == 3 && !parameters.hasColourTransform && BytesPerSample() == 1) {
        ConvertStoredYbr(parameters.output);
    }
    return 1;
}

QUORVEX_MESSAGE CxImageProcessor::DecompressBlindJP2KData(
    unsigned char* source, unsigned long sourceLength, unsigned char*& result,
    unsigned long& resultSize, unsigned short& width, unsigned short& height,
    unsigned short& samples, unsigned short& bits, unsigned short& bytesPerPixel) {
    return Answer(QVM_ERROR_FAILED_TO_DECOMPRESS, [&] {
        resultSize = 0;
        if (source == nullptr || !LoadDecoder(isBlindCoderLoaded)) {
            return QVM_ERROR_CANNOT_OPEN_STREAM;
        }
        PegasusParameters parameters;
        parameters.input = {source, sourceLength};
        if (PegasusQuery(parameters) == 0) return QVM_ERROR_CANNOT_OPEN_STREAM;
        const BlindForm* form = BlindFormOf(parameters);
        width = static_cast<unsigned short>(parameters.bitmap.biWidth);
        height = static_cast<unsigned short>(std::abs(parameters.bitmap.biHeight));
        bytesPerPixel = static_cast<unsigned short>(parameters.bitmap.biBitCount / 8);
        const auto frameBytes = CheckedProduct(width, height, bytesPerPixel);
        if (form == nullptr || !frameBytes || !IsWorthItsMemory(*frameBytes, sourceLength)) {
            return QVM_ERROR_CANNOT_OPEN_STREAM;
        }
        samples = static_cast<unsigned short>(form->components);
        bits = form->bits;
        parameters.columns = width;
        parameters.rows = height;
        parameters.samples = samples;
        parameters.bytesPerSample = bits / 8;
        result = nullptr;
        HeapBlock block(*frameBytes);
        parameters.output = block.Bytes();
        // Half a picture is none to a caller that knows nothing about it.
        if (!Decode(parameters) || parameters.isIncomplete) return QVM_ERROR_FAILED_TO_DECOMPRESS;
        resultSize = *frameBytes;
        result = block.Release();
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
