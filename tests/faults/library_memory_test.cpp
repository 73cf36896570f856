// What becomes of a process when a frail library itself runs out of memory: each try in a process
// of its own. Deaths are the library's and are counted; a process that lives must answer right.
#include "tests/faults/failing_memory.h"
#include "tests/faults/fault_harness.h"
#include "tests/maker/maker_objects.h"

#include <cstdlib>
#include <map>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex {
namespace {

using namespace test;

enum End : int { kRefused, kDone, kWrong, kUnnoticed, kThrown, kDied };

bool Draw(Host& s) {
    CDC context(&s.target);
    return IsDone(s.dipp.Draw(&context));
}

bool Decode(Host& s) {
    s.block.Drop();
    return IsDone(s.parser.GetAFrame(0, s.block.data, s.block.size, 0));
}

void OpenObject(Host& s) {
    static_cast<void>(s.parser.Initialize(&s.app, &s.object, nullptr, 0, 0));
}

template <std::uint32_t form>
bool Convert(Host& s) {
    s.maker.SetRules(Rules::kStandard);
    s.settings.compressionType = static_cast<std::int32_t>(form);
    return IsDone(s.maker.MakeDcmObject(&s.app, &s.object, &s.settings)) &&
           IsDone(s.maker.GetOutcome());
}

std::string SeenFrame(Host& s) {
    const auto frames = FramesOf(s.object);
    return frames.empty() ? std::string() : TextOf(frames.front());
}

constexpr Operation kFrailOperations[] = {
    {"Cairo", On("native CT"), SeenSurface, Draw,
     DO(ShowUnderState(s), s.dipp.ShowAnnotations(1), s.dipp.Render())},
    {"libjxl, samples read", On("JPEG XL"), SeenBlock, Decode, OpenObject, kJpegXl},
    {"libjxl, samples written", On("native CT"), SeenFrame, Convert<kXferJpegXlLossless>,
     [](Host&) {}, kJpegXl},
    {"libjxl, JPEG kept", On("JPEG baseline"), SeenFrame, Convert<kXferJpegXlOfJpeg>, [](Host&) {},
     kJpegXl},
    {"libjxl, JPEG given back", On("JPEG XL of JPEG"), SeenFrame, Convert<kXferJpegOriginal>,
     [](Host&) {}, kJpegXl},
};

End Try(const Operation& operation, long n, const std::string& expected) {
    Host host(KindOf(operation.how.on));
    operation.prepare(host);
    FailingMemory memory(n, Failing::kOnce, Spares::kNobody);
    const bool isDone = operation.work(host);
    if (memory.Stop() == 0) return kUnnoticed;
    if (!isDone) return kRefused;
    return operation.look(host) == expected ? kDone : kWrong;
}

End TryInChild(const Operation& operation, long n, const std::string& expected) {
    const pid_t child = fork();
    if (child == 0) {
        constexpr rlimit kNoCore = {0, 0};
        setrlimit(RLIMIT_CORE, &kNoCore);
        static_cast<void>(freopen("/dev/null", "w", stderr));
        std::atexit(
            [] { _exit(kDied); });  // a library that gives up by exit(), ahead of the folders
        try {
            _exit(Try(operation, n, expected));
        } catch (...) {
            _exit(kThrown);
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<End>(WEXITSTATUS(status)) : kDied;
}

TEST(LibraryMemory, FrailLibrariesAnswerRightOrDie) {
    for (const Operation& operation : kFrailOperations) {
        if (!IsWritten(operation.writes)) continue;
        Host whole(KindOf(operation.how.on));
        operation.prepare(whole);
        ASSERT_TRUE(operation.work(whole)) << operation.name;
        const std::string expected = operation.look(whole);
        std::map<End, int> ends;
        std::fflush(stdout);  // or children that die write it once more
        // Every one of the first, then ever fewer.
        for (long n = 1; ends[kUnnoticed] == 0; n += 1 + n / 20)
            ++ends[TryInChild(operation, n, expected)];
        EXPECT_EQ(ends[kWrong], 0) << operation.name << ": success with a wrong picture";
        EXPECT_EQ(ends[kThrown], 0) << operation.name << ": an exception gets out";
        std::printf("    %s: %d codes, %d done, %d deaths in the library\n", operation.name,
                    ends[kRefused], ends[kDone], ends[kDied]);
    }
}

}  // namespace
}  // namespace quorvex
