// Files that shrink, vanish or fail under the library, and hosts whose callbacks stop giving.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "tests/faults/failing_reads.h"
#include "tests/faults/fault_kinds.h"
#include "tests/faults/given_block.h"
#include "tests/maker/maker_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

/// What opens a file, and what it shows of it then.
struct Opening {
    const char* name;
    bool (*open)(const std::string& path, std::string& seen);
};

bool ParseFile(const std::string& path, int readWhole, std::string& seen) {
    CDcmApp app;
    CxDcmParser parser;
    const bool isOpen = parser.Initialize(&app, path, readWhole) == QVM_SUCCESS;
    GivenBlock frame;
    seen = std::to_string(parser.GetAFrame(0, frame.data, frame.size, 0)) + frame.Look();
    return isOpen;
}

constexpr Opening kOpenings[] = {
    {"CxDcmParser::Initialize, header",
     [](const std::string& path, std::string& seen) { return ParseFile(path, 0, seen); }},
    {"CxDcmParser::Initialize, whole",
     [](const std::string& path, std::string& seen) { return ParseFile(path, 1, seen); }},
    {"CDcmObject::ReadFile",
     [](const std::string& path, std::string& seen) {
         CDcmObject object;
         object.Open(path);
         const bool isRead = object.ReadFile(nullptr, nullptr, nullptr) == kDcmSuccess;
         seen = Look(object);
         return isRead;
     }},
    {"CXDIPP::Initialize",
     [](const std::string& path, std::string& seen) {
         CDcmApp app;
         CXDIPP dipp;
         const bool isOpen = dipp.Initialize(&app, path, {64, 64}, 0) == QVM_SUCCESS;
         seen = std::to_string(dipp.Render());
         return isOpen;
     }},
};

constexpr ReadFault kFaults[] = {ReadFault::kTruncate, ReadFault::kVanish, ReadFault::kError,
                                 ReadFault::kShort, ReadFault::kInterrupt};

void Restore(const std::string& path, const std::vector<unsigned char>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

TEST(Reading, OfAFileThatChangesGivesACode) {
    const ScratchFile file("changing.dcm");
    for (const Opening& opening : kOpenings) {
        int struck = 0;
        for (const Kind& kind : AllKinds()) {
            Restore(file.Path(), kind.bytes);
            std::string whole;
            const bool opens = opening.open(file.Path(), whole);
            for (const ReadFault fault : kFaults) {
                for (long n = 1;; ++n) {
                    Restore(file.Path(), kind.bytes);
                    std::string seen;
                    bool isOpen = false;
                    {
                        const FailingReads reads(file.Path(), n, fault);
                        isOpen = opening.open(file.Path(), seen);
                        if (!reads.HasStruck()) break;
                    }
                    ++struck;
                    const std::string what = std::string(opening.name) + ", " + kind.name +
                                             ", fault " + std::to_string(static_cast<int>(fault)) +
                                             ", read " + std::to_string(n);
                    const bool isHarmless =
                        fault == ReadFault::kShort || fault == ReadFault::kInterrupt;
                    if (isHarmless) {
                        EXPECT_EQ(isOpen, opens) << what;
                        EXPECT_TRUE(seen == whole) << what;
                        break;  // it went on to the end
                    }
                    EXPECT_FALSE(fault == ReadFault::kError && isOpen && seen != whole) << what;
                    Restore(file.Path(), kind.bytes);
                    EXPECT_EQ(opening.open(file.Path(), seen), opens) << what;
                    EXPECT_TRUE(seen == whole) << what;
                }
            }
        }
        std::printf("    %-35s %d reads failed\n", opening.name, struck);
    }
}

/// Gives a block in small pieces until the n-th call, which goes wrong in one of several ways.
struct FailingGiver {
    enum Wrong { kRefuses, kNoData, kNegative, kNothingMore, kWays };

    const std::vector<unsigned char>& bytes;
    long failAt;
    Wrong wrong;
    long calls = 0;
    std::size_t at = 0;

    MC_STATUS Give(int* length, void** data, int first, int* last) {
        constexpr std::size_t kPiece = 200;
        if (first != 0) at = 0;
        const std::size_t count = std::min(kPiece, bytes.size() - at);
        *length = static_cast<int>(count);
        *data = const_cast<unsigned char*>(bytes.data()) + at;
        at += count;
        *last = at == bytes.size() ? 1 : 0;
        if (++calls != failAt) return kMcContinue;
        if (wrong == kRefuses) return kMcRefuse;
        if (wrong == kNoData) *data = nullptr;
        if (wrong == kNegative) *length = -5;
        if (wrong == kNothingMore) {
            *length = 0;
            *last = 1;
        }
        return kMcContinue;
    }
    static MC_STATUS File(const char*, void* user, int* length, void** data, int first, int* last) {
        return static_cast<FailingGiver*>(user)->Give(length, data, first, last);
    }
    static MC_STATUS Stream(int, void* user, int first, int* length, void** data, int* last) {
        return static_cast<FailingGiver*>(user)->Give(length, data, first, last);
    }
    static MC_STATUS Value(int, std::uint32_t, void* user, int first, int* length, void** data,
                           int* last) {
        return static_cast<FailingGiver*>(user)->Give(length, data, first, last);
    }
};

DCMRESULT ReadFrom(FailingGiver& giver, const Kind& kind, CDcmObject& object) {
    if (kind.name != "bare data set") return object.ReadFile(nullptr, &giver, FailingGiver::File);
    unsigned long offset = 0;
    return object.ReadStream2(0x00080000, 0xFFFFFFFF, kImplicitLittleEndian, nullptr, &offset,
                              &giver, FailingGiver::Stream);
}

TEST(Reading, FromACallbackThatStopsGivesACode) {
    int struck = 0;
    for (const Kind& kind : AllKinds()) {
        FailingGiver good{kind.bytes, 0, FailingGiver::kRefuses};
        CDcmObject whole;
        ASSERT_EQ(ReadFrom(good, kind, whole), kDcmSuccess) << kind.name;
        const long calls = good.calls;
        for (int wrong = 0; wrong < FailingGiver::kWays; ++wrong) {
            for (long n = 1; n <= calls; ++n, ++struck) {
                FailingGiver giver{kind.bytes, n, static_cast<FailingGiver::Wrong>(wrong)};
                CDcmObject object;
                const DCMRESULT result = ReadFrom(giver, kind, object);
                EXPECT_TRUE(result != kDcmSuccess || wrong == FailingGiver::kNothingMore)
                    << kind.name << ' ' << wrong << ' ' << n;
                EXPECT_EQ(ReadFrom(good, kind, object), kDcmSuccess) << kind.name;
                EXPECT_TRUE(Look(object) == Look(whole)) << kind.name << ' ' << wrong << ' ' << n;
            }
        }
    }
    std::printf("    callbacks of files and streams: %d calls failed\n", struck);
}

TEST(Reading, OfAValueFromACallbackThatStopsChangesNothing) {
    const std::vector<unsigned char> value(1000, 3);
    int struck = 0;
    for (int wrong = 0; wrong < FailingGiver::kNothingMore; ++wrong) {
        for (long n = 1; n <= 5; ++n, ++struck) {
            CDcmObject object = AllKinds().front().object;
            FailingGiver giver{value, n, static_cast<FailingGiver::Wrong>(wrong)};
            EXPECT_NE(object.SetValue(0x7FE00010, &giver, FailingGiver::Value), kDcmSuccess);
            EXPECT_TRUE(Look(object) == Look(AllKinds().front().object)) << wrong << ' ' << n;
        }
    }
    std::printf("    callbacks of values: %d calls failed\n", struck);
}

}  // namespace
}  // namespace quorvex
