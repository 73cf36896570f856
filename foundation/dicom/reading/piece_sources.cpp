#include "foundation/dicom/reading/piece_sources.h"

#include "foundation/types/answer.h"

#include <cerrno>
#include <new>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kFilePiece = std::size_t{1} << 18;

PieceSource::Piece PieceOf(MC_STATUS status, int length, const void* data, int last) {
    const bool isBad = status != kMcContinue || length < 0 || (length > 0 && data == nullptr);
    if (isBad) return {.isRefused = true};
    const auto* bytes = static_cast<const unsigned char*>(data);
    return {.bytes = {bytes, static_cast<std::size_t>(length)}, .isLast = last != 0};
}

}  // namespace

PieceSource::Piece FileCallbackSource::Next(bool isFirst) {
    int length = 0;
    int last = 0;
    void* data = nullptr;
    const HostCode host;
    const MC_STATUS status =
        callback_(fileName_.c_str(), user_, &length, &data, isFirst ? 1 : 0, &last);
    return PieceOf(status, length, data, last);
}

PieceSource::Piece StreamCallbackSource::Next(bool isFirst) {
    int length = 0;
    int last = 0;
    void* data = nullptr;
    const HostCode host;
    const MC_STATUS status = callback_(0, user_, isFirst ? 1 : 0, &length, &data, &last);
    return PieceOf(status, length, data, last);
}

NamedFileSource::NamedFileSource(const std::string& path)
    : piece_(kFilePiece), file_(std::fopen(path.c_str(), "rb")) {
    if (file_ == nullptr && errno == ENOMEM) throw std::bad_alloc();
}

PieceSource::Piece NamedFileSource::Next(bool) {
    if (file_ == nullptr) return {.isRefused = true};
    const std::size_t count = std::fread(piece_.data(), 1, piece_.size(), file_.get());
    if (std::ferror(file_.get()) != 0) return {.isRefused = true};
    return {.bytes = Bytes(piece_).first(count), .isLast = count < piece_.size()};
}

}  // namespace quorvex::dicom
