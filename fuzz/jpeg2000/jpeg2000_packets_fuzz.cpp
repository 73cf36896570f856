// Packets of any bytes behind a sound main header that the last bytes choose.
#include "fuzz/jpeg2000/jpeg2000_pictures.h"

namespace quorvex::fuzz {
namespace {

using Stream = std::vector<unsigned char>;

void Put(Stream& stream, std::uint32_t number, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        stream.push_back(static_cast<unsigned char>(number >> shift));
}

// SIZ: a picture of up to 120 x 120 in tiles, of one to four components.
unsigned PutSize(Stream& stream, Options& options) {
    const unsigned components = 1 + options.Below(4);
    const unsigned width = 1 + options.Below(120);
    const unsigned height = 1 + options.Below(120);
    const unsigned x = options.Below(20);
    const unsigned y = options.Below(20);
    Put(stream, 0xFF51, 2);
    Put(stream, 38 + 3 * components, 2);
    Put(stream, 0, 2);
    for (const unsigned number : {x + width, y + height, x, y}) Put(stream, number, 4);
    for (int i = 0; i < 2; ++i) Put(stream, x + y + 1 + options.Below(400), 4);
    for (int i = 0; i < 2; ++i) Put(stream, 0, 4);
    Put(stream, components, 2);
    for (unsigned c = 0; c < components; ++c) {
        Put(stream, options.Below(16) + 128 * options.Below(2), 1);
        for (int i = 0; i < 2; ++i) Put(stream, 1 + options.Below(2), 1);
    }
    return components;
}

// COD and QCD; the steps are enough for all levels.
void PutStyle(Stream& stream, unsigned components, Options& options) {
    const unsigned levels = options.Below(7);
    const bool hasPrecincts = options.Flag();
    Put(stream, 0xFF52, 2);
    Put(stream, 12 + (hasPrecincts ? levels + 1 : 0), 2);
    Put(stream, options.Below(4) * 2 + (hasPrecincts ? 1 : 0), 1);
    Put(stream, options.Below(5), 1);
    Put(stream, 1 + options.Below(5), 2);
    Put(stream, components >= 3 ? options.Below(2) : 0, 1);
    Put(stream, levels, 1);
    for (int i = 0; i < 2; ++i) Put(stream, options.Below(5), 1);
    Put(stream, options.Below(3) == 0 ? 0x40 + options.Below(16) : options.Below(64), 1);
    const bool isReversible = options.Flag();
    Put(stream, isReversible ? 1 : 0, 1);
    for (unsigned i = 0; hasPrecincts && i <= levels; ++i)
        Put(stream, 0x11 + options.Byte() / 2, 1);
    Put(stream, 0xFF5C, 2);
    const unsigned steps = 3 * levels + 1;
    Put(stream, 3 + steps * (isReversible ? 1 : 2), 2);
    Put(stream, 0x40 + (isReversible ? 0 : 2), 1);
    for (unsigned i = 0; i < steps; ++i)
        isReversible ? Put(stream, (4 + options.Below(20)) << 3, 1)
                     : Put(stream, (options.Below(20) << 11) + options.Below(2048), 2);
}

}  // namespace
}  // namespace quorvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    return fuzz::Run(data, size, {.options = 64}, [](fuzz::Options& options) {
        const auto packets = options.Front();
        fuzz::Stream stream{0xFF, 0x4F};
        fuzz::PutStyle(stream, fuzz::PutSize(stream, options), options);
        fuzz::Put(stream, 0xFF90000A, 4);
        fuzz::Put(stream, 0, 2);
        fuzz::Put(stream, static_cast<std::uint32_t>(packets.size()) + 14, 4);
        fuzz::Put(stream, 0x0001FF93, 4);
        stream.insert(stream.end(), packets.begin(), packets.end());
        fuzz::Put(stream, 0xFFD9, 2);
        fuzz::DecodeInEveryWay(stream, options);
    });
}
