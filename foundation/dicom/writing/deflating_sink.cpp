#include "foundation/dicom/writing/deflating_sink.h"

#include <algorithm>
#include <array>
#include <new>
#include <zlib.h>

namespace quorvex::dicom {
namespace {

constexpr int kRawWindow = -15;
constexpr int kUsualMemory = 8;
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;  // zlib counts in 32 bits

}  // namespace

struct DeflatingSink::Stream {
    z_stream state = {};
    std::array<unsigned char, 65536> out = {};
    std::size_t total = 0;
};

DeflatingSink::DeflatingSink(ByteSink& target)
    : target_(target), stream_(std::make_unique<Stream>()) {
    const int result = deflateInit2(&stream_->state, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kRawWindow,
                                    kUsualMemory, Z_DEFAULT_STRATEGY);
    if (result != Z_OK) throw std::bad_alloc();
}

DeflatingSink::~DeflatingSink() {
    deflateEnd(&stream_->state);
}

void DeflatingSink::Run(int flush) {
    z_stream& state = stream_->state;
    do {
        state.next_out = stream_->out.data();
        state.avail_out = static_cast<uInt>(stream_->out.size());
        deflate(&state, flush);
        const std::size_t made = stream_->out.size() - state.avail_out;
        target_.Put(Bytes(stream_->out).first(made));
        stream_->total += made;
    } while (state.avail_out == 0);
}

void DeflatingSink::Put(Bytes bytes) {
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(bytes.size(), kLargestPiece));
        stream_->state.next_in = const_cast<unsigned char*>(piece.data());  // zlib only reads it
        stream_->state.avail_in = static_cast<uInt>(piece.size());
        Run(Z_NO_FLUSH);
        bytes = bytes.subspan(piece.size());
    }
}

void DeflatingSink::Finish() {
    Run(Z_FINISH);
    constexpr unsigned char kPad[] = {0};
    if (stream_->total % 2 != 0) target_.Put(kPad);
}

}  // namespace quorvex::dicom
