#include "tools/trouble.h"

#include "quorvex/CxDcmParser.h"
#include "quorvex/Limits.h"
#include "quorvex/Tags.h"
#include "tools/sop_class/sop_class.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <vector>

namespace quorvex::tools {
namespace {

// What a frame that cannot be decoded, for whatever reason, is answered with.
constexpr std::array kFailuresOfDecoding = {
    QVM_ERROR_FAILED_TO_DECOMPRESS,     QVM_ERROR_CANNOT_OPEN_STREAM,
    QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, QVM_ERROR_FAILED_TO_PARSE_DICOM,
    QVM_ERROR_INVALID_JPEG_STREAM,      QVM_ERROR_INVALID_JPEG_LAYOUT,
    QVM_ERROR_INVALID_JPEG_PRECISION,   QVM_ERROR_INVALID_TRANSFER_SYNTAX,
    QVM_ERROR_INVALID_SOURCE_SYNTAX,
};

// "it has no image; it is RT Plan Storage" for an object of another kind.
std::optional<std::string> MissingImage(const CDcmObject& header) {
    int count = 0;
    for (const auto tag : {tag::kRows, tag::kColumns})
        if (header.GetValueCount(tag, count) == kDcmSuccess) return std::nullopt;
    const auto name = SopClassName(TextOf(header, tag::kSOPClassUID));
    return "it has no image" + (name.empty() ? "" : "; it is " + std::string(name));
}

// What a Part 2 stream may ask for, and a plain one does not.
std::optional<std::string> PartTwoOnly(const CDcmObject& header) {
    const auto* syntax = TransferSyntaxOfUid(TextOf(header, tag::kTransferSyntaxUID));
    const bool isPartTwo = syntax != nullptr && (syntax->number == kJpeg2000Part2 ||
                                                 syntax->number == kJpeg2000Part2Lossless);
    if (!isPartTwo) return std::nullopt;
    return "the frame could not be decoded: of " + std::string(syntax->name) +
           ", this build has a decoder only for plain streams of one frame each";
}

// What a header tells of a frame that could not be had.
std::optional<Trouble> TroubleByHeader(QUORVEX_MESSAGE result, const CDcmObject& header) {
    if (result == QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)
        if (auto sentence = MissingImage(header))
            return Trouble{kBadInput, result, *std::move(sentence)};
    if (auto sentence = MissingDecoder(header))
        return Trouble{kBadInput, QVM_ERROR_INVALID_TRANSFER_SYNTAX, *std::move(sentence)};
    if (auto sentence = PartTwoOnly(header))
        return Trouble{kBadInput, result, *std::move(sentence)};
    return std::nullopt;
}

std::optional<Trouble> TroubleByHeaderOf(const std::string& path, QUORVEX_MESSAGE result) {
    CDcmApp app;
    CxDcmParser parser;
    parser.Initialize(&app, path, 0);
    const auto* header = parser.GetHeader();
    return header == nullptr ? std::nullopt : TroubleByHeader(result, *header);
}

std::string Because(const char* what) {
    return what + std::string(": ") + std::strerror(errno);
}

}  // namespace

std::string Trouble::Text() const {
    return std::string(ResultName(code)) + " (" + std::to_string(code) + "): " + sentence;
}

std::optional<std::string> MissingDecoder(const CDcmObject& header) {
    const auto uid = TextOf(header, tag::kTransferSyntaxUID);
    if (uid.empty()) return std::nullopt;
    const auto* syntax = TransferSyntaxOfUid(uid);
    if (syntax == nullptr)
        return "its transfer syntax " + uid +
               " is none of the standard's, and this build cannot "
               "read its frames";
    if (syntax->coding != FrameCoding::kNone) return std::nullopt;
    return "its frames are coded as " + std::string(syntax->name) + " (" + uid +
           "), and this build has no decoder for that; frame --stream writes them as they are";
}

std::optional<std::string> ReadFailureOf(const std::string& path) {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                               std::fclose);
    if (!file) return Because("it cannot be opened");
    std::vector<char> piece(kPiece);
    while (std::fread(piece.data(), 1, piece.size(), file.get()) == piece.size()) {
    }
    if (std::ferror(file.get()) != 0) return Because("it cannot be read");
    return std::nullopt;
}

Trouble TroubleOf(const std::string& path, QUORVEX_MESSAGE result, const CDcmObject* header) {
    const auto limit = LatestLimit();
    if (limit == Limit::kMemory) return {kEnvironment, result, LimitSentence(limit)};
    if (limit != Limit::kNone) return {kBadInput, result, LimitSentence(limit)};
    if (result == QVM_ERROR_FAILED_TO_READ_FILE)
        if (auto failure = ReadFailureOf(path)) return {kEnvironment, result, *std::move(failure)};
    if (std::ranges::find(kFailuresOfDecoding, result) != kFailuresOfDecoding.end()) {
        auto trouble =
            header != nullptr ? TroubleByHeader(result, *header) : TroubleByHeaderOf(path, result);
        if (trouble) return *std::move(trouble);
    }
    return {kBadInput, result, ResultSentence(result)};
}

bool IsOtherKindOfFile(const std::string& path, const Trouble& trouble) {
    constexpr std::size_t kPreamble = 128;
    constexpr std::size_t kMarker = 4;
    if (trouble.status != kBadInput || (trouble.code != QVM_ERROR_FAILED_TO_PARSE_DICOM &&
                                        trouble.code != QVM_ERROR_FAILED_TO_READ_FILE))
        return false;
    std::array<char, kPreamble + kMarker> head{};
    std::ifstream file(path, std::ios::binary);
    return !file.read(head.data(), head.size()) ||
           std::memcmp(&head[kPreamble], "DICM", kMarker) != 0;
}

ExitStatus ReportTrouble(const std::string& path, const Trouble& trouble) {
    Complain(path, trouble.Text());
    return trouble.status;
}

}  // namespace quorvex::tools
