#include "foundation/dicom/reading/byte_feed.h"

namespace quorvex::dicom {

void ByteFeed::PullPiece() {
    const PieceSource::Piece piece = source_.Next(isFirst_);
    isFirst_ = false;
    isRefused_ = piece.isRefused;
    // A source that gives nothing and calls it not the last would be asked for ever.
    isAtEnd_ = piece.isLast || piece.isRefused || piece.bytes.empty();
    if (!piece.isRefused) buffer_->insert(buffer_->end(), piece.bytes.begin(), piece.bytes.end());
}

bool ByteFeed::Pull(std::size_t position, std::size_t count) {
    const auto isThere = [&] {
        return position <= buffer_->size() && count <= buffer_->size() - position;
    };
    while (!isAtEnd_ && !isThere()) PullPiece();
    return isThere();
}

void ByteFeed::PullAll() {
    while (!isAtEnd_) PullPiece();
}

void ByteFeed::Replace(std::size_t kept, const ByteBuffer& tail) {
    buffer_->resize(kept);
    buffer_->insert(buffer_->end(), tail.begin(), tail.end());
    isAtEnd_ = true;
}

}  // namespace quorvex::dicom
