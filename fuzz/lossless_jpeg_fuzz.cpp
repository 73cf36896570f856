// Lossless JPEG through our own coder and through the library beside it: they must agree on every
// sample, line, warning and break, and on every byte that is written.
#include "tests/engines/lossless_test_streams.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

using namespace quorvex;
using testing::ByteVector;

constexpr std::size_t kFacts = 8;
constexpr std::size_t kMostSamples = 1 << 16;

/// A header drawn from the first bytes, or none: then the input is a whole stream.
ByteVector HeadFrom(const std::uint8_t* facts) {
    if (facts[0] % 4 == 0) return {};
    std::minstd_rand random(facts[1]);
    testing::LosslessShape shape{.columns = 1 + facts[2],
                                 .rows = 1 + facts[3] % 64,
                                 .samples = facts[0] % 4 == 1 ? 3 : 1,
                                 .precision = 2 + facts[4] % 15};
    shape.pointTransform = facts[5] % 4 == 0 ? facts[5] / 4 % shape.precision : 0;
    shape.rowsInInterval = facts[6] % 8;
    shape.tablesFirst = facts[7] % 2 == 0;
    shape.oneTable = facts[6] % 64 < 48;
    for (auto& table : shape.tables) table = testing::RandomTable(random);
    return testing::LosslessWriter(shape).Head();
}

/// The input as a picture.
void Encode(const std::uint8_t* facts, const std::uint8_t* pixels, std::size_t size) {
    auto coding =
        testing::LosslessCoding(1 + facts[2], 0, facts[1] % 2 == 0 ? 1 : 3, 2 + facts[4] % 15);
    if (facts[5] % 4 == 0) coding.bytesPerSample = 2;
    const auto rowBytes = std::size_t{coding.columns} * coding.samples * coding.bytesPerSample;
    coding.rows = static_cast<std::uint16_t>(size / rowBytes);
    if (coding.rows == 0) return;
    const ByteVector rows(pixels, pixels + rowBytes * coding.rows);
    const ByteVector ours = testing::Encode(MakeLosslessCoder, coding, rows.data());
    if (ours != testing::EncodeByLibrary(coding, rows.data())) std::abort();
    if (ours.empty()) return;
    const auto header = testing::LosslessHeader(ours);
    const auto decoded = testing::Decode(ours, *header, {.bytesPerSample = coding.bytesPerSample});
    if (!decoded.isOurs || decoded.pixels != rows) std::abort();
}

void Decode(const std::uint8_t* facts, const std::uint8_t* coded, std::size_t size) {
    ByteVector stream = HeadFrom(facts);
    stream.insert(stream.end(), coded, coded + size);
    const auto header = testing::LosslessHeader(stream);
    if (!header) return;
    const std::size_t samples =
        std::size_t{header->width} * header->height * header->componentCount;
    if (samples > kMostSamples || header->NeedsWholePicture()) return;
    const testing::LosslessDecoding how{
        .bytesPerSample = header->precision > 8 || facts[7] % 4 < 2 ? 2 : 1,
        .stripe = 1 + facts[7] % 5,
        .block = facts[7] % 3 == 0 ? std::size_t{7} : kJpegBufferBytes};
    const auto ours = testing::Decode(stream, *header, how);
    if (!ours.IsLike(testing::DecodeByLibrary(stream, *header, how))) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kFacts || size > 1 << 16) return 0;
    const bool isPicture = data[0] % 8 == 7;
    (isPicture ? Encode : Decode)(data, data + kFacts, size - kFacts);
    return 0;
}
