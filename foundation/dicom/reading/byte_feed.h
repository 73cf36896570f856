/// The bytes of a file or stream, pulled piece by piece into one growing buffer.
#pragma once

#include "foundation/dicom/model/element.h"

#include <cstddef>
#include <memory>

namespace quorvex::dicom {

/// Where the pieces come from.
class PieceSource {
public:
    struct Piece {
        Bytes bytes{};
        bool isLast = false;
        bool isRefused = false;
    };
    virtual ~PieceSource() = default;
    virtual Piece Next(bool isFirst) = 0;

protected:
    PieceSource() = default;
    PieceSource(const PieceSource&) = default;
    PieceSource& operator=(const PieceSource&) = default;
};

/// Never asks for more than what somebody wants to look at, and never allocates ahead of what came.
class ByteFeed {
public:
    explicit ByteFeed(PieceSource& source) : source_(source) {}

    /// Pulls until `count` bytes from `position` on are there; false where the data end before.
    [[nodiscard]] bool Has(std::size_t position, std::size_t count) {
        if (position <= buffer_->size() && count <= buffer_->size() - position) return true;
        return Pull(position, count);
    }
    void PullAll();
    /// Puts other bytes behind the first `kept` ones, in place of all that came or would come.
    void Replace(std::size_t kept, const ByteBuffer& tail);

    /// Valid until the next pull.
    [[nodiscard]] const unsigned char* At(std::size_t position) const noexcept {
        return buffer_->data() + position;
    }
    [[nodiscard]] std::size_t Size() const noexcept { return buffer_->size(); }
    [[nodiscard]] bool IsRefused() const noexcept { return isRefused_; }
    /// What the data sets that are read share.
    [[nodiscard]] std::shared_ptr<const ByteBuffer> Buffer() const noexcept { return buffer_; }

private:
    bool Pull(std::size_t position, std::size_t count);
    void PullPiece();

    PieceSource& source_;
    std::shared_ptr<ByteBuffer> buffer_ = std::make_shared<ByteBuffer>();
    bool isFirst_ = true;
    bool isAtEnd_ = false;
    bool isRefused_ = false;
};

}  // namespace quorvex::dicom
