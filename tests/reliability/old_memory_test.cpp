// Old memory shown in the picture: what a cut or damaged frame does not give is filled the same way
// every time, whatever lay in the memory before.
#include "tests/reliability/coded_frames.h"
#include "tests/support/every_route.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <memory>
#include <string>

namespace quorvex::test {
namespace {

/// Leaves blocks of every size behind that are full of one byte, and has the allocator fill others.
void SoilMemory(unsigned char byte) {
    mallopt(M_PERTURB, byte);
    std::vector<std::unique_ptr<unsigned char[]>> blocks;
    for (std::size_t size = 16; size <= (1U << 16); size = size < 1100 ? size + 16 : size * 2) {
        for (int i = 0; i < 8; ++i) {
            blocks.push_back(std::make_unique_for_overwrite<unsigned char[]>(size));
            std::fill_n(blocks.back().get(), size, byte);
        }
    }
}

/// Runs twice in memory that was soiled differently.
template <class Ask>
void ExpectSameTwice(const std::string& what, Ask ask) {
    SoilMemory(0x5A);
    const auto first = ask();
    SoilMemory(0xC3);
    const auto second = ask();
    mallopt(M_PERTURB, 0);
    EXPECT_TRUE(first == second) << what;
}

/// Cuts of a frame: fragments of odd lengths would be padded, so lengths are even.
std::vector<Bytes> CutsOf(const Bytes& frame) {
    std::vector<Bytes> cuts;
    for (std::size_t part = 0; part <= 16; ++part)
        cuts.push_back(Beginning(frame, frame.size() * part / 16 / 2 * 2));
    for (std::size_t at = frame.size() / 3; at < frame.size(); at += frame.size() / 5) {
        cuts.push_back(frame);
        cuts.back()[at] ^= 0x55;
    }
    return cuts;
}

constexpr FrameForm kForms[] = {{.columns = 33, .rows = 27},
                                {.columns = 33, .rows = 27, .samples = 3},
                                {.columns = 40, .rows = 25, .bits = 12},
                                {.columns = 40, .rows = 25, .samples = 3, .bits = 16}};

TEST(OldMemory, NeverShowsInADamagedFrame) {
    for (const Coding& coding : kCodings) {
        for (const FrameForm& form : kForms) {
            const Bytes frame = CodeFrame(coding, form);
            if (frame.empty()) continue;
            for (const Bytes& cut : CutsOf(frame)) {
                const std::string what = std::string(coding.name) + ", " +
                                         std::to_string(cut.size()) + " of " +
                                         std::to_string(frame.size()) + " bytes";
                const Bytes file = FileOf(coding, form, cut);
                ExpectSameTwice(what, [&] { return AskEverything(file); });
                for (const auto decoder : kBlindDecoders) {
                    ExpectSameTwice(what, [&] {
                        Bytes source = cut;
                        return BlindlyDecoded(decoder, source);
                    });
                }
            }
        }
    }
}

/// Rows, columns and samples that a frame does not have, under every photometric interpretation.
TEST(OldMemory, NeverShowsInAFrameOfAnotherShape) {
    for (const char* photometric : {"MONOCHROME1", "PALETTE COLOR", "RGB", "YBR_FULL",
                                    "YBR_FULL_422", "YBR_PARTIAL_422", "YBR_ICT", "HSV"}) {
        for (const unsigned bits : {1U, 8U, 12U, 16U, 24U, 32U}) {
            for (const std::size_t bytes : {2U, 50U, 300U, 5000U}) {
                const ImageFacts facts{
                    .rows = 17, .columns = 23, .bits = bits, .photometric = photometric};
                Bytes pixels(bytes);
                for (std::size_t i = 0; i < bytes; ++i)
                    pixels[i] = static_cast<unsigned char>(i * 7);
                const std::string what = std::string(photometric) + ", " + std::to_string(bits) +
                                         " bits, " + std::to_string(bytes) + " bytes";
                for (const auto uid : {kExplicitUid, kBigEndianUid}) {
                    const Bytes file = NativeFile(uid, facts, pixels);
                    ExpectSameTwice(what, [&] { return AskEverything(file); });
                }
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
