// Files that shrink, vanish or fail under the library, and hosts whose callbacks stop giving.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "tests/faults/failing_reads.h"
#include "tests/faults/fault_kinds.h"
#include "tests/support/answers.h"
#include "tests/support/memory_file.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

/// Whether a file opens, and what is seen of it then.
struct Opened {
    bool isOpen;
    std::string seen;
    bool operator==(const Opened&) const = default;
};

Opened ParseFile(const std::string& path, int readWhole) {
    CDcmApp app;
    CxDcmParser parser;
    const bool isOpen = parser.Initialize(&app, path, readWhole) == QVM_SUCCESS;
    const Answered frame = FrameOf(parser);
    return {isOpen,
            std::to_string(frame.code) + std::string(frame.bytes.begin(), frame.bytes.end())};
}

Opened ReadObject(const std::string& path) {
    CDcmObject object;
    object.Open(path);
    const bool isRead = object.ReadFile(nullptr, nullptr, nullptr) == kDcmSuccess;
    return {isRead, Look(object)};
}

Opened ShowFile(const std::string& path) {
    CDcmApp app;
    CXDIPP dipp;
    const bool isOpen = dipp.Initialize(&app, path, {64, 64}, 0) == QVM_SUCCESS;
    return {isOpen, std::to_string(dipp.Render())};
}

/// A file of which the header alone is read when it is opened: its frames come later.
const Kind& LargeKind() {
    static const ScratchFolder folder;
    static const Kind large = [] {
        Kind kind = KindOf("RLE");
        CDcmObject object = kind.object;
        Bytes frame = StoredFrames(object).front();
        std::vector<unsigned char*> frames(100, frame.data());
        const std::vector<unsigned long> lengths(frames.size(), frame.size());
        object.SetValue(tag::kNumberOfFrames, "100");
        object.SetValueEx(tag::kPixelData, static_cast<int>(frames.size()), lengths.data(),
                          frames.data());
        kind.name = "large";
        kind.path = folder.Path("large.dcm");
        object.WriteFile(kind.path);
        kind.bytes = BytesOfFile(kind.path);
        return kind;
    }();
    return large;
}

struct Opening {
    const char* name;
    Opened (*open)(const std::string& path);
};

constexpr Opening kOpenings[] = {
    {"CxDcmParser::Initialize, header", [](const std::string& path) { return ParseFile(path, 0); }},
    {"CxDcmParser::Initialize, whole", [](const std::string& path) { return ParseFile(path, 1); }},
    {"CDcmObject::ReadFile", ReadObject},
    {"CXDIPP::Initialize", ShowFile},
};

constexpr ReadFault kFaults[] = {ReadFault::kTruncate, ReadFault::kVanish, ReadFault::kError,
                                 ReadFault::kShort, ReadFault::kInterrupt};

/// Lets the fault strike at each read in turn; gives how many there were.
int StrikeEachRead(const Opening& opening, const Kind& kind, ReadFault fault) {
    const ScratchFolder folder;
    const auto restored = [&] { return folder.Write("changing.dcm", kind.bytes); };
    const Opened whole = opening.open(restored());
    const bool isHarmless = fault == ReadFault::kShort || fault == ReadFault::kInterrupt;
    for (int n = 1;; ++n) {
        SCOPED_TRACE(std::string(opening.name) + ", " + kind.name + ", fault " +
                     std::to_string(static_cast<int>(fault)) + ", read " + std::to_string(n));
        const std::string path = restored();
        Opened opened;
        {
            const FailingReads reads(path, n, fault);
            opened = opening.open(path);
            if (!reads.HasStruck()) return n - 1;
        }
        if (isHarmless) {
            EXPECT_TRUE(opened == whole);
            return n;  // it went on to the end
        }
        // A frame that is read later may be refused, and is never another one.
        const bool isLate = &kind == &LargeKind() && opened.seen.size() <= 2;
        const bool isChecked = &kind == &LargeKind() && opening.open != ReadObject;
        const bool isExact = fault == ReadFault::kError || isChecked;
        EXPECT_FALSE(isExact && opened.isOpen && opened.seen != whole.seen && !isLate);
        EXPECT_TRUE(opening.open(restored()) == whole);
    }
}

TEST(Reading, OfAFileThatChangesGivesACode) {
    for (const Opening& opening : kOpenings) {
        int struck = 0;
        for (const Kind& kind : AllKinds())
            for (const ReadFault fault : kFaults) struck += StrikeEachRead(opening, kind, fault);
        for (const ReadFault fault : kFaults) struck += StrikeEachRead(opening, LargeKind(), fault);
        std::printf("    %-35s %d reads failed\n", opening.name, struck);
    }
}

DCMRESULT ReadFrom(PieceGiver& giver, const Kind& kind, CDcmObject& object) {
    if (kind.name != "bare data set") return object.ReadFile(nullptr, &giver, PieceGiver::File);
    unsigned long offset = 0;
    return object.ReadStream2(kFromTheStart, kToTheEnd, kImplicitLittleEndian, nullptr, &offset,
                              &giver, PieceGiver::Stream);
}

constexpr PieceGiver::Wrong kWrongs[] = {PieceGiver::kRefuses, PieceGiver::kNoData,
                                         PieceGiver::kNegative, PieceGiver::kNothingMore};

TEST(Reading, FromACallbackThatStopsGivesACode) {
    int struck = 0;
    for (const Kind& kind : AllKinds()) {
        PieceGiver good{.bytes = kind.bytes};
        CDcmObject whole;
        ASSERT_EQ(ReadFrom(good, kind, whole), kDcmSuccess) << kind.name;
        const long calls = good.calls;
        for (const auto wrong : kWrongs) {
            for (long n = 1; n <= calls; ++n, ++struck) {
                SCOPED_TRACE(kind.name + ' ' + std::to_string(wrong) + ' ' + std::to_string(n));
                PieceGiver giver{.bytes = kind.bytes, .failAt = n, .wrong = wrong};
                CDcmObject object;
                const DCMRESULT result = ReadFrom(giver, kind, object);
                EXPECT_TRUE(result != kDcmSuccess || wrong == PieceGiver::kNothingMore);
                EXPECT_EQ(ReadFrom(good, kind, object), kDcmSuccess);
                EXPECT_TRUE(Look(object) == Look(whole));
            }
        }
    }
    std::printf("    callbacks of files and streams: %d calls failed\n", struck);
}

TEST(Reading, OfAValueFromACallbackThatStopsChangesNothing) {
    const std::vector<unsigned char> value(1000, 3);
    int struck = 0;
    for (const auto wrong : kWrongs) {
        if (wrong == PieceGiver::kNothingMore) continue;
        for (long n = 1; n <= 5; ++n, ++struck) {
            CDcmObject object = AllKinds().front().object;
            PieceGiver giver{.bytes = value, .failAt = n, .wrong = wrong};
            EXPECT_NE(object.SetValue(tag::kPixelData, &giver, PieceGiver::Value), kDcmSuccess);
            EXPECT_TRUE(Look(object) == Look(AllKinds().front().object)) << wrong << ' ' << n;
        }
    }
    std::printf("    callbacks of values: %d calls failed\n", struck);
}

}  // namespace
}  // namespace quorvex
