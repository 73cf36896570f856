#include "parser/source/file_window.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

constexpr std::size_t kPieceBytes = 16384;

}  // namespace

std::span<const unsigned char> FileWindow::Look(std::size_t offset, std::size_t count) {
    const std::size_t size = reading_.Size();
    if (offset > size || count > size - offset) return {};
    if (!Has(offset, count)) {
        const bool isSmall = offset == 0 && size <= kSmallFile;
        const std::size_t wanted = isSmall ? size : std::max(next_, count);
        bytes_ = reading_.Show(offset, std::min(wanted, size - offset), block_);
        start_ = offset;
        next_ = std::min(kMostBytes, std::max(kFirstBytes, offset));
    }
    return Has(offset, count) ? bytes_.subspan(offset - start_, count)
                              : std::span<const unsigned char>{};
}

std::span<const unsigned char> FileWindow::LookFar(std::size_t count) {
    if (Has(0, count)) return bytes_;
    // Twice as far each time: who looks here goes on from one element to the next.
    const std::size_t wanted = std::max({count, 2 * bytes_.size(), kFirstBytes});
    return Look(0, std::min(wanted, reading_.Size()));
}

bool FileWindow::Copy(std::size_t offset, std::span<unsigned char> bytes) {
    if (!Has(offset, bytes.size())) return reading_.Read(offset, bytes);
    std::ranges::copy(bytes_.subspan(offset - start_, bytes.size()), bytes.begin());
    return true;
}

HeapBlock FileWindow::TakeWhole() noexcept {
    if (start_ != 0 || !block_ || block_.Size() != reading_.Size()) return {};
    bytes_ = {};
    return std::move(block_);
}

MC_STATUS PieceReader::Deliver(bool isFirst, int* length, void** data, int* last) {
    if (isFirst) delivered_ = 0;
    const std::size_t remaining = total_ - delivered_;
    const std::size_t count = std::min(remaining, kPieceBytes);
    const auto piece = window_.Look(base_ + delivered_, count);
    if (piece.size() != count) return kMcRefuse;
    *last = remaining <= kPieceBytes ? 1 : 0;
    *length = static_cast<int>(count);
    *data = const_cast<unsigned char*>(piece.data());  // the object library only reads it
    delivered_ += count;
    return kMcContinue;
}

MC_STATUS PieceReader::ReadFromFile(const char* /*fileName*/, void* user, int* length, void** data,
                                    int first, int* last) {
    return static_cast<PieceReader*>(user)->Deliver(first != 0, length, data, last);
}

MC_STATUS PieceReader::ReadFromStream(int /*messageId*/, void* user, int first, int* length,
                                      void** data, int* last) {
    return static_cast<PieceReader*>(user)->Deliver(first != 0, length, data, last);
}

}  // namespace quorvex
