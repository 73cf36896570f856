// The fuzz targets without a fuzzer: small pictures and every input that once found something,
// whole and cut, and some mutations of them. A target answers a fault by ending the process.
#include "tests/support/corpus.h"
#include "tests/support/dicom_builder.h"

#include <gtest/gtest.h>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#define QUORVEX_FUZZ_TARGET(name) \
    extern "C" int quorvex_##name(const std::uint8_t* data, std::size_t size);
#include "fuzz_targets.inc"
#undef QUORVEX_FUZZ_TARGET

namespace quorvex::test {
namespace {

struct Target {
    const char* name;
    int (*run)(const std::uint8_t* data, std::size_t size);
};

constexpr Target kTargets[] = {
#define QUORVEX_FUZZ_TARGET(name) {#name, quorvex_##name},
#include "fuzz_targets.inc"
#undef QUORVEX_FUZZ_TARGET
};

std::vector<std::filesystem::path> InputsOf(const std::string& target) {
    return FilesIn({QUORVEX_SOURCE_DIR "/tests/data/" + target});
}

class FuzzTargets : public testing::TestWithParam<Target> {};

TEST_P(FuzzTargets, BearSavedInputs) {
    constexpr std::size_t kCuts = 6;
    for (const auto& path : InputsOf(GetParam().name)) {
        std::cout << path.filename().string() << std::endl;  // the last one is it if this ends here
        const auto bytes = BytesOfFile(path);
        for (std::size_t cut = 0; cut < kCuts; ++cut) {
            const auto input = Beginning(bytes, bytes.size() - bytes.size() * cut / kCuts);
            EXPECT_EQ(GetParam().run(input.data(), input.size()), 0);
        }
    }
}

void Change(std::vector<unsigned char>& bytes, std::mt19937& random) {
    if (bytes.empty()) bytes.resize(64);
    for (unsigned i = random() % 8; i > 0; --i)
        bytes[random() % bytes.size()] = static_cast<unsigned char>(random());
    if (random() % 4 == 0) bytes.insert(bytes.end(), random() % 32, 0x55);
}

TEST_P(FuzzTargets, BearMutations) {
    constexpr int kRounds = 400;
    std::vector<std::vector<unsigned char>> inputs = {{}};
    inputs.push_back(BytesOfFile(QUORVEX_SOURCE_DIR "/samples/ct_state.dcm"));
    for (const auto& path : InputsOf(GetParam().name)) inputs.push_back(BytesOfFile(path));
    std::mt19937 random(20260);
    for (int i = 0; i < kRounds; ++i) {
        auto input = inputs[random() % inputs.size()];
        Change(input, random);
        EXPECT_EQ(GetParam().run(input.data(), input.size()), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(All, FuzzTargets, testing::ValuesIn(kTargets),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace quorvex::test
