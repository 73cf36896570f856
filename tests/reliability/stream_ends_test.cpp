// Offsets of fragments and segments, and streams that end: every input lies in a block that ends
// exactly where memory ends.
#include "tests/pipeline/test_objects.h"
#include "tests/reliability/coded_frames.h"
#include "tests/reliability/guarded_bytes.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {
namespace {

/// A frame, or the one code that damage has.
void ExpectFrameOrRefusal(const _IMAGE_PROCESS_PARAM& param, const Bytes& stream,
                          std::size_t frameBytes) {
    const auto code = DecodeGuarded(param, stream, frameBytes).code;
    EXPECT_TRUE(code == QVM_SUCCESS || code == QVM_ERROR_FAILED_TO_DECOMPRESS) << code;
}

constexpr const Coding& kRleCoding = kCodings[1];
constexpr FrameForm kRleForms[] = {{.columns = 9, .rows = 7},
                                   {.columns = 9, .rows = 7, .samples = 3},
                                   {.columns = 8, .rows = 7, .bits = 16},
                                   {.columns = 150, .rows = 3, .samples = 3, .bits = 16}};

template <class Check>
void ForEachRle(Check check) {
    for (const FrameForm& form : kRleForms) {
        const Bytes stream = CodeFrame(kRleCoding, form);
        for (const unsigned planar : {0U, 1U}) {
            for (const unsigned bits : {8U, 16U, 32U}) {
                _IMAGE_PROCESS_PARAM param = DecodingParam(kRleCoding, form);
                param.planarConfiguration = static_cast<std::uint16_t>(planar);
                param.bitsAllocated = static_cast<std::uint16_t>(bits);
                check(param, stream,
                      std::size_t{form.columns} * form.rows * form.samples * bits / 8);
            }
        }
    }
}

TEST(StreamEnds, RleHeadersPointAnywhere) {
    ForEachRle([](const _IMAGE_PROCESS_PARAM& param, const Bytes& stream, std::size_t frameBytes) {
        const auto size = static_cast<std::uint32_t>(stream.size());
        for (std::size_t word = 0; word < 16; ++word) {
            for (const std::uint32_t value :
                 {0U, 1U, 15U, 16U, 63U, 64U, 65U, size - 1, size, size + 1, size + 64, 0x7FFFFFFFU,
                  0x80000000U, 0xFFFFFFFFU, 0U - size}) {
                Bytes damaged = stream;
                PutWord(damaged, 4 * word, value);
                ExpectFrameOrRefusal(param, damaged, frameBytes);
            }
        }
    });
}

TEST(StreamEnds, RleEndsAnywhereAndOnAnyControlByte) {
    ForEachRle([](const _IMAGE_PROCESS_PARAM& param, const Bytes& stream, std::size_t frameBytes) {
        for (std::size_t length = 0; length < stream.size(); length += length < 80 ? 1 : 7)
            ExpectFrameOrRefusal(param, Beginning(stream, length), frameBytes);
        for (int control = 0; control < 256; ++control) {
            Bytes ended = Beginning(stream, 64);  // the last segment: one byte
            const std::size_t segments = stream[0];
            for (std::size_t i = 1; i <= segments; ++i) PutWord(ended, 4 * i, 64);
            ended.push_back(static_cast<unsigned char>(control));
            ExpectFrameOrRefusal(param, ended, frameBytes);
        }
    });
}

TEST(StreamEnds, CodedFramesEndAnywhereAndOnAnEscape) {
    for (const Coding& coding : std::span(kCodings).subspan(2)) {
        const FrameForm form{.columns = 17, .rows = 13, .bits = coding.leastBits};
        const Bytes stream = CodeFrame(coding, form);
        const _IMAGE_PROCESS_PARAM param = DecodingParam(coding, form);
        for (std::size_t length = 0; length < stream.size(); length += length < 300 ? 1 : 5) {
            Bytes cut = Beginning(stream, length);
            ExpectFrameOrRefusal(param, cut, form.Bytes());
            for (const int last : {0xFF, 0xD8, 0xDA, 0x4F, 0x90}) {
                if (cut.size() < 2) continue;
                cut.back() = static_cast<unsigned char>(last);
                ExpectFrameOrRefusal(param, cut, form.Bytes());
                cut[cut.size() - 2] = 0xFF;
                ExpectFrameOrRefusal(param, cut, form.Bytes());
            }
        }
    }
}

/// What a walk over a foreign buffer gave: every piece inside it, none twice.
struct Walk {
    std::span<const unsigned char> value;
    std::vector<int> coveredBy = std::vector<int>(value.size());
    int frames = 0;

    static MC_STATUS Take(int, unsigned long length, unsigned char* data, int, int event,
                          void* user) {
        Walk& walk = *static_cast<Walk*>(user);
        walk.frames += event == 1 ? 1 : 0;
        if (length == 0) return kMcContinue;
        const auto begin = static_cast<std::size_t>(data - walk.value.data());
        EXPECT_TRUE(begin < walk.value.size() && length <= walk.value.size() - begin);
        for (std::size_t i = begin; i < begin + length; ++i) EXPECT_EQ(walk.coveredBy[i]++, 0);
        return kMcContinue;
    }
};

void WalkGuarded(const CDcmObject& object, const Bytes& value, const std::string& what) {
    SCOPED_TRACE(what);
    const GuardedBytes block(value);
    Walk walk{block.Bytes()};
    object.GetValueEx(nullptr, value.size(), block.Data(), 1, 1, 0, &walk, Walk::Take);
    EXPECT_LE(walk.frames, 3 + 1);
}

CDcmObject ThreeFrames(const Bytes& extendedTable) {
    CDcmObject object;
    object.SetTransferSyntax(kJpegBaseline);
    object.SetValue(tag::kNumberOfFrames, "3");
    if (!extendedTable.empty())
        pipeline_test::SetBytes(object, tag::kExtendedOffsetTable, extendedTable, MC_VR_OV);
    return object;
}

TEST(StreamEnds, OffsetTablesPointAnywhere) {
    const Bytes fragments[] = {{0xFF, 0xD8, 0xFF, 1}, {2, 3}, {0xFF, 0xD8, 0xFF, 4, 5, 6}, {7, 8}};
    // Fragments begin at 0, 12, 22 and 36, and end at 46.
    const std::vector<std::uint64_t> kTables[] = {
        {0, 12, 22},    {0, 22, 36},        {0, 0, 0},           {0, 12, 12},
        {22, 12, 0},    {0, 22, 12},        {0, 46, 47},         {0, 12, 46},
        {0, 12, ~0ULL}, {~0ULL, 0, 12},     {8, 20, 30},         {1, 2, 3},
        {0, 12},        {0, 12, 22, 36},    {0, 36, 1ULL << 32}, {0},
        {12, 22, 36},   {0, 12, ~0ULL - 7}, {1ULL << 31, 0, 0},  {0, 13, 22}};
    for (const auto& offsets : kTables) {
        for (const bool isExtended : {false, true}) {
            DicomBuilder table;
            for (const auto offset : offsets) table.Number(offset, isExtended ? 8 : 4);
            const CDcmObject object = ThreeFrames(isExtended ? table.Bytes() : Bytes());
            std::vector<Bytes> contents = {isExtended ? Bytes() : table.Bytes()};
            contents.insert(contents.end(), std::begin(fragments), std::end(fragments));
            const Bytes value = DicomBuilder().Items(contents).Bytes();
            const std::string what = ::testing::PrintToString(offsets);
            for (std::size_t length = 1; length <= value.size(); ++length)
                WalkGuarded(object, Beginning(value, length),
                            what + " cut at " + std::to_string(length));
            for (std::size_t at = 4; at + 4 < value.size(); ++at) {
                Bytes damaged = value;
                PutWord(damaged, at, 0xFFFFFFFF);
                WalkGuarded(object, damaged, what + " damaged at " + std::to_string(at));
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
