// What becomes of a process when a frail library itself runs out of memory: each try in a process
// of its own. Deaths are the library's and are counted; a process that lives must answer right.
#include "tests/faults/failing_memory.h"
#include "tests/faults/fault_harness.h"

#include <map>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex {
namespace {

using namespace test;

enum End : int { kRefused, kDone, kWrong, kUnnoticed, kDied };

bool Draw(Host& s) {
    CDC context(&s.target);
    return IsDone(s.dipp.Draw(&context));
}

constexpr Operation kFrailOperations[] = {
    {"Cairo", On("native CT"), SeenSurface, Draw,
     DO(ShowUnderState(s), s.dipp.ShowAnnotations(1), s.dipp.Render())},
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
        _exit(Try(operation, n, expected));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<End>(WEXITSTATUS(status)) : kDied;
}

TEST(LibraryMemory, FrailLibrariesAnswerRightOrDie) {
    for (const Operation& operation : kFrailOperations) {
        Host whole(KindOf(operation.how.on));
        operation.prepare(whole);
        ASSERT_TRUE(operation.work(whole)) << operation.name;
        const std::string expected = operation.look(whole);
        std::map<End, int> ends;
        for (long n = 1; ends[kUnnoticed] == 0; ++n) ++ends[TryInChild(operation, n, expected)];
        EXPECT_EQ(ends[kWrong], 0) << operation.name << ": success with a wrong picture";
        std::printf("    %s: %d codes, %d done, %d deaths in the library\n", operation.name,
                    ends[kRefused], ends[kDone], ends[kDied]);
    }
}

}  // namespace
}  // namespace quorvex
