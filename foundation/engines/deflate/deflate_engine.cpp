#include "foundation/engines/deflate/deflate_engine.h"

#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <array>
#include <new>
#include <zlib.h>

namespace quorvex {
namespace {

constexpr int kRawWindow = -15;
constexpr int kUsualMemory = 8;
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;  // zlib counts in 32 bits
constexpr std::size_t kAskedPiece = std::size_t{4} << 20;    // and is not asked to stop meanwhile

/// Gives the next piece to zlib, when it has used up the one before.
template <class Byte, class Place>
void Refill(std::span<Byte>& rest, Place& next, uInt& available, std::size_t most = kLargestPiece) {
    if (available != 0) return;
    const auto piece = rest.first(std::min(rest.size(), most));
    next = const_cast<unsigned char*>(piece.data());  // of input, which zlib only reads
    available = static_cast<uInt>(piece.size());
    rest = rest.subspan(piece.size());
}

class Inflating {
public:
    Inflating() {
        if (inflateInit2(&state_, kRawWindow) != Z_OK) throw std::bad_alloc();
    }
    Inflating(const Inflating&) = delete;
    Inflating& operator=(const Inflating&) = delete;
    ~Inflating() { inflateEnd(&state_); }

    [[nodiscard]] bool Run(std::span<const unsigned char> stream, std::span<unsigned char> frame) {
        std::array<unsigned char, 1> surplus{};
        const std::size_t whole = frame.size();
        int result = Z_OK;
        while (result == Z_OK) {
            Refill(stream, state_.next_in, state_.avail_in);
            TellProgress(whole - frame.size() - state_.avail_out, whole);
            Cancellation::OfThisThread().ThrowIfAsked();
            Refill(frame, state_.next_out, state_.avail_out, kAskedPiece);
            const bool isFull = state_.avail_out == 0;
            if (isFull) {
                state_.next_out = surplus.data();
                state_.avail_out = 1;
            }
            result = inflate(&state_, Z_NO_FLUSH);
            if (result == Z_MEM_ERROR) throw std::bad_alloc();
            if (isFull && state_.avail_out == 0) return false;
            if (isFull) state_.avail_out = 0;
        }
        return result == Z_STREAM_END && frame.empty() && state_.avail_out == 0;
    }

private:
    z_stream state_ = {};
};

class Deflating {
public:
    Deflating() {
        const int result = deflateInit2(&state_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kRawWindow,
                                        kUsualMemory, Z_DEFAULT_STRATEGY);
        if (result != Z_OK) throw std::bad_alloc();
    }
    Deflating(const Deflating&) = delete;
    Deflating& operator=(const Deflating&) = delete;
    ~Deflating() { deflateEnd(&state_); }

    [[nodiscard]] std::vector<unsigned char> Run(std::span<const unsigned char> frame) {
        std::vector<unsigned char> stream;
        std::array<unsigned char, 65536> out;
        const std::size_t whole = frame.size();
        int result = Z_OK;
        while (result == Z_OK) {
            TellProgress(whole - frame.size() - state_.avail_in, whole);
            Cancellation::OfThisThread().ThrowIfAsked();
            Refill(frame, state_.next_in, state_.avail_in, kAskedPiece);
            state_.next_out = out.data();
            state_.avail_out = static_cast<uInt>(out.size());
            result = deflate(&state_, frame.empty() ? Z_FINISH : Z_NO_FLUSH);
            stream.insert(stream.end(), out.data(), state_.next_out);
        }
        return stream;
    }

private:
    z_stream state_ = {};
};

}  // namespace

bool InflateFrame(std::span<const unsigned char> stream, std::span<unsigned char> frame) {
    return Inflating().Run(stream, frame);
}

std::vector<unsigned char> DeflateFrame(std::span<const unsigned char> frame) {
    return Deflating().Run(frame);
}

}  // namespace quorvex
