#include "foundation/dicom/reading/inflate.h"

#include "foundation/types/checked_size.h"

#include <algorithm>
#include <new>
#include <zlib.h>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kInflatePiece = std::size_t{1} << 18;
constexpr std::size_t kMostInput = std::size_t{1} << 30;  // zlib counts in 32 bits
constexpr int kRawStream = -MAX_WBITS;
constexpr int kWrappedStream = MAX_WBITS;

class Inflater {
public:
    explicit Inflater(int windowBits)
        : isGood_(HadMemory(inflateInit2(&stream_, windowBits)) == Z_OK) {}
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&stream_); }

    /// Appends what the input gives; false where that would pass `limit` bytes.
    bool Run(Bytes input, ByteBuffer& output, std::size_t limit) {
        while (isGood_ && Step(input, output)) {
            if (output.size() > limit) return RefuseBy(Limit::kMostInflated);
        }
        return true;
    }

private:
    static int HadMemory(int status) {
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
        return status;
    }

    /// One piece of output; false at the end of the stream, of the input or of sense.
    bool Step(Bytes& input, ByteBuffer& output) {
        const std::size_t given = std::min(input.size(), kMostInput);
        const std::size_t before = output.size();
        output.resize(before + kInflatePiece);
        stream_.next_in = const_cast<unsigned char*>(input.data());  // zlib only reads it
        stream_.avail_in = static_cast<uInt>(given);
        stream_.next_out = output.data() + before;
        stream_.avail_out = static_cast<uInt>(kInflatePiece);
        const int status = HadMemory(inflate(&stream_, Z_NO_FLUSH));
        output.resize(before + kInflatePiece - stream_.avail_out);
        input = input.subspan(given - stream_.avail_in);
        return status == Z_OK;
    }

    z_stream stream_{};
    bool isGood_;
};

}  // namespace

std::optional<ByteBuffer> Inflate(Bytes deflated) {
    const std::size_t limit = std::min(
        kLargestBlock,
        std::max(kInflatedAllowance,
                 CheckedProduct(deflated.size(), kMostInflatedPerByte).value_or(kLargestBlock)));
    for (const int windowBits : {kRawStream, kWrappedStream}) {
        ByteBuffer output;
        if (!Inflater(windowBits).Run(deflated, output, limit)) return std::nullopt;
        if (!output.empty()) return output;
    }
    return std::nullopt;
}

}  // namespace quorvex::dicom
