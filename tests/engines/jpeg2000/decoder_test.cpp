// Whole codestreams: all of them, parts of them, and damaged ones.
#include "foundation/engines/jpeg2000/decoder/decoder.h"

#include "tests/engines/jpeg2000/mq_coding.h"

#include <gtest/gtest.h>
#include <random>
#include <thread>

namespace quorvex::j2k {
namespace {

using test::EncodeMq;
using test::MqCoding;
using test::Planes;
using test::Stream;

struct Shape {
    std::uint32_t width = 61, height = 47;
    int components = 1;
    int precision = 12;
    bool isSigned = false;
};

struct StreamCase {
    const char* what;
    Shape shape;
    MqCoding coding;
};

const std::vector<StreamCase>& Cases() {
    static const std::vector<StreamCase> cases = {
        {"plain", {}, {}},
        {"colour", {.components = 3, .precision = 8}, {.transformsColour = true}},
        {"all styles", {}, {.block = {32, 16}, .style = 63, .layers = 4}},
        {"bypass, signed 16 bits", {.precision = 16, .isSigned = true}, {.style = 1}},
        {"causal, terminated", {}, {.block = {16, 64}, .style = 12}},
        {"tiles off the origin",
         {.components = 2},
         {.origin = {5, 3}, .tile = {23, 17}, .tileOrigin = {2, 1}, .levels = 3}},
        {"precincts by position, subsampled",
         {.width = 130, .height = 70, .components = 3, .precision = 8},
         {.precincts = {64, 64},
          .levels = 4,
          .progression = 3,
          .layers = 2,
          .hasSop = true,
          .hasEph = true,
          .subsampling = {2, 2}}},
        {"by component, changed", {.components = 3}, {.progression = 4, .changedProgression = 1}},
        {"tile-parts with lengths", {}, {.hasPlt = true, .hasTlm = true, .hasTileParts = true}},
        {"long blocks", {.width = 300, .height = 5}, {.block = {1024, 4}, .levels = 1}},
        {"one bit", {.width = 3, .height = 5, .precision = 1}, {.levels = 1}},
        {"irreversible",
         {.components = 3, .precision = 8},
         {.rate = 4, .isReversible = false, .transformsColour = true}},
    };
    return cases;
}

Planes Draw(const StreamCase& row) {
    std::mt19937 random(static_cast<unsigned>(row.shape.width));
    const MqCoding& coding = row.coding;
    Planes picture;
    picture.precision = row.shape.precision;
    picture.isSigned = row.shape.isSigned;
    const int range = 1 << row.shape.precision;
    for (int i = 0; i < row.shape.components; ++i) {
        const test::Pair step = i == 0 ? test::Pair{1, 1} : coding.subsampling;
        Planes::Plane plane{
            (row.shape.width + step.x - 1) / step.x, (row.shape.height + step.y - 1) / step.y, {}};
        for (std::uint32_t k = 0; k < plane.width * plane.height; ++k) {
            const auto slope = static_cast<int>(k % plane.width * 3 + k / plane.width);
            const auto noise = static_cast<int>(random() % static_cast<unsigned>(range / 8 + 1));
            const int value = std::min(range - 1, (slope * range / 400 + noise) % range);
            plane.samples.push_back(row.shape.isSigned ? value - range / 2 : value);
        }
        picture.planes.push_back(plane);
    }
    return picture;
}

struct Decoded {
    Outcome outcome = Outcome::kRefused;
    std::vector<Rect> areas;
    std::vector<std::vector<std::int32_t>> planes;

    [[nodiscard]] std::int32_t At(std::size_t plane, std::uint32_t x, std::uint32_t y) const {
        const Rect& area = areas[plane];
        return planes[plane][std::size_t{y - area.y0} * area.Width() + (x - area.x0)];
    }
};

Decoded Decode(const Stream& stream, const Wanted& wanted = {}) {
    Decoder decoder;
    Decoded decoded;
    decoded.outcome = decoder.Open(stream);
    if (decoded.outcome != Outcome::kDone) return decoded;
    std::vector<OutputPlane> outputs;
    const auto count = static_cast<unsigned>(decoder.Size().components.size());
    decoded.planes.resize(count);
    for (unsigned i = 0; i < count; ++i) {
        const Rect area = decoder.Area(i, wanted);
        const std::uint64_t size = std::uint64_t{area.Width()} * area.Height();
        if (size > 1000000) return {};  // a damaged header's claim
        decoded.areas.push_back(area);
        decoded.planes[i].resize(static_cast<std::size_t>(size) + 1, 77);
        outputs.push_back({.data = reinterpret_cast<unsigned char*>(decoded.planes[i].data()),
                           .rowStride = static_cast<std::ptrdiff_t>(area.Width()) * 4,
                           .sampleStride = 4,
                           .bytesPerSample = 4,
                           .keepsSign = true,
                           .width = area.Width(),
                           .height = area.Height()});
    }
    decoded.outcome = decoder.Decode(wanted, outputs);
    return decoded;
}

Executor Threads() {
    return {.threads = 3, .run = [](unsigned count, const std::function<void(unsigned)>& task) {
                std::vector<std::thread> threads;
                for (unsigned i = 1; i < count; ++i) threads.emplace_back([&task, i] { task(i); });
                task(0);
                for (std::thread& thread : threads) thread.join();
            }};
}

TEST(Jpeg2000Decoder, GivesTheSource) {
    for (const StreamCase& row : Cases()) {
        SCOPED_TRACE(row.what);
        const Planes picture = Draw(row);
        const Decoded decoded = Decode(EncodeMq(picture, row.coding));
        ASSERT_EQ(decoded.outcome, Outcome::kDone);
        for (std::size_t i = 0; i < picture.planes.size() && row.coding.isReversible; ++i) {
            auto samples = picture.planes[i].samples;
            samples.push_back(77);
            EXPECT_EQ(decoded.planes[i], samples) << i;
        }
    }
}

// Every resolution, regions of it, with one layer and all, with threads: equal to the whole.
TEST(Jpeg2000Decoder, PartsAreEqualToTheWhole) {
    std::mt19937 random(1);
    for (const StreamCase& row : Cases()) {
        const Stream stream = EncodeMq(Draw(row), row.coding);
        for (unsigned down = 0; down <= row.coding.levels; ++down) {
            Wanted wanted;
            wanted.discardedLevels = down;
            wanted.layers = down % 2 == 0 ? 65535 : 1;
            const Decoded whole = Decode(stream, wanted);
            ASSERT_EQ(whole.outcome, Outcome::kDone) << row.what;
            for (int i = 0; i < 6; ++i) {
                if (i % 2 != 0) wanted.executor = Threads();
                if (i > 0) {
                    wanted.region.x0 = static_cast<std::uint32_t>(random() % row.shape.width);
                    wanted.region.y0 = static_cast<std::uint32_t>(random() % row.shape.height);
                    wanted.region.x1 =
                        wanted.region.x0 + 1 + static_cast<std::uint32_t>(random() % 40);
                    wanted.region.y1 =
                        wanted.region.y0 + 1 + static_cast<std::uint32_t>(random() % 40);
                }
                const Decoded part = Decode(stream, wanted);
                ASSERT_EQ(part.outcome, Outcome::kDone) << row.what;
                for (std::size_t p = 0; p < part.planes.size(); ++p) {
                    const Rect& area = part.areas[p];
                    for (std::uint32_t y = area.y0; y < area.y1; ++y) {
                        for (std::uint32_t x = area.x0; x < area.x1; ++x) {
                            ASSERT_EQ(part.At(p, x, y), whole.At(p, x, y))
                                << row.what << ", " << down << " down, plane " << p;
                        }
                    }
                }
            }
        }
    }
}

// A stream cut anywhere behind its header is told as incomplete, but for its end marker.
TEST(Jpeg2000Decoder, CutsAreTold) {
    constexpr std::size_t kEnd = 2;
    for (const StreamCase& row : Cases()) {
        const Stream whole = EncodeMq(Draw(row), row.coding);
        for (std::size_t size = 0; size + kEnd < whole.size(); size += 1 + size / 50) {
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
            EXPECT_NE(Decode(Stream(whole.begin(), end)).outcome, Outcome::kDone)
                << row.what << " cut to " << size << " of " << whole.size();
        }
        const Stream endless(whole.begin(), whole.end() - kEnd);
        EXPECT_EQ(Decode(endless).outcome, Outcome::kDone) << row.what;
    }
}

// Whatever is changed in a stream, decoding ends, and writes all that it should and nothing beside.
TEST(Jpeg2000Decoder, DamageIsHarmless) {
    std::mt19937 random(2);
    for (const StreamCase& row : Cases()) {
        const Stream whole = EncodeMq(Draw(row), row.coding);
        for (int i = 0; i < 150; ++i) {
            Stream damaged = whole;
            const std::size_t reach =
                i % 2 == 0 ? std::min<std::size_t>(whole.size(), 150) : whole.size();
            for (unsigned k = 0; k <= random() % 4; ++k) {
                damaged[random() % reach] = static_cast<unsigned char>(random());
            }
            const Decoded decoded = Decode(damaged);
            for (const auto& plane : decoded.planes) {
                if (!plane.empty()) {
                    EXPECT_EQ(plane.back(), 77);
                }
            }
        }
    }
}

// Samples that nothing is known of are written all the same.
TEST(Jpeg2000Decoder, MissingTilesAreZero) {
    MqCoding coding{.tile = {23, 17}, .levels = 2};
    const StreamCase row{"tiles", {}, coding};
    const Stream whole = EncodeMq(Draw(row), coding);
    Stream cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2));
    const Decoded decoded = Decode(cut);
    EXPECT_EQ(decoded.outcome, Outcome::kIncomplete);
    EXPECT_EQ(decoded.At(0, 60, 46), 0);
}

}  // namespace
}  // namespace quorvex::j2k
