// What becomes of a process when a frail library itself runs out of memory: each try in a process
// of its own. Deaths are the library's and are counted; a process that lives must answer right.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "tests/faults/failing_memory.h"
#include "tests/faults/fault_kinds.h"
#include "tests/faults/given_block.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex {
namespace {

using namespace test;

enum End : int { kRefused, kDone, kWrong, kUnnoticed, kDied };

/// One operation, and what it gave.
struct Task {
    std::function<bool()> work;
    std::function<std::string()> look;
};

Task Fetching(const char* name) {
    struct State {
        CDcmApp app;
        CxDcmParser parser;
        GivenBlock frame;
    };
    auto s = std::make_shared<State>();
    static_cast<void>(s->parser.Initialize(&s->app, KindOf(name).path, 0));
    return {[s] { return s->parser.GetAFrame(0, s->frame.data, s->frame.size, 0) == QVM_SUCCESS; },
            [s] { return s->frame.Look(); }};
}

Task Drawing() {
    struct State {
        CDcmApp app;
        CXDIPP dipp;
        std::vector<unsigned char> pixels = std::vector<unsigned char>(80 * 60 * 4);
    };
    auto s = std::make_shared<State>();
    static_cast<void>(s->dipp.Initialize(&s->app, KindOf("native CT").path, {80, 60}, 0));
    static_cast<void>(s->dipp.ApllyGSPSObject(&s->app, KindOf("presentation state").path));
    static_cast<void>(s->dipp.ShowAnnotations(1));
    static_cast<void>(s->dipp.Render());
    return {[s] {
                DrawingSurface surface{s->pixels.data(), 80, 60, 80 * 4, 4};
                CDC context(&surface);
                return s->dipp.Draw(&context) == QVM_SUCCESS;
            },
            [s] { return std::string(s->pixels.begin(), s->pixels.end()); }};
}

End Try(const Task& task, long n, const std::string& expected) {
    FailingMemory memory(n, Failing::kOnce, Spares::kNobody);
    const bool isDone = task.work();
    if (memory.Stop() == 0) return kUnnoticed;
    if (!isDone) return kRefused;
    return task.look() == expected ? kDone : kWrong;
}

End TryInChild(const std::function<Task()>& make, long n, const std::string& expected) {
    const pid_t child = fork();
    if (child == 0) {
        constexpr rlimit kNoCore = {0, 0};
        setrlimit(RLIMIT_CORE, &kNoCore);
        static_cast<void>(freopen("/dev/null", "w", stderr));
        _exit(Try(make(), n, expected));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<End>(WEXITSTATUS(status)) : kDied;
}

void TryAll(const char* what, const std::function<Task()>& make) {
    const Task whole = make();
    ASSERT_TRUE(whole.work()) << what;
    const std::string expected = whole.look();
    std::map<End, int> ends;
    for (long n = 1;; ++n) {
        const End end = TryInChild(make, n, expected);
        if (end == kUnnoticed) break;
        ++ends[end];
    }
    EXPECT_EQ(ends[kWrong], 0) << what << ": success with a wrong picture";
    std::printf("    %s: %d codes, %d done, %d deaths in the library\n", what, ends[kRefused],
                ends[kDone], ends[kDied]);
}

TEST(LibraryMemory, OpenJpegAnswersRightOrDies) {
    TryAll("JPEG 2000", [] { return Fetching("JPEG 2000"); });
    TryAll("JPEG 2000 lossless", [] { return Fetching("JPEG 2000 lossless"); });
}

TEST(LibraryMemory, CairoAnswersRightOrDies) {
    TryAll("annotations", Drawing);
}

}  // namespace
}  // namespace quorvex
