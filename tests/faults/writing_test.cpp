// A full disk, an interrupted write and a killed process under the verbs that write.
#include "tests/tools/run_command.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace quorvex::test {
namespace {

const std::string kEarlier = "the output of an earlier run";
constexpr int kOfTheEnvironment = 3;

struct Verb {
    const char* name;
    Arguments words;  ///< all but the output
};

const Verb kVerbs[] = {{"convert, native", {"convert", kSlice, "--to", "implicit", "-o"}},
                       {"convert, coded", {"convert", kSlice, "--to", "jpeg-lossless", "-o"}},
                       {"frame", {"frame", kSlice, "-o"}},
                       {"render", {"render", kSlice, "-o"}},
                       {"thumbnail", {"thumbnail", kSlice, "-o"}},
                       {"state", {"state", kSlice, "--invert", "-o"}}};

CommandResult RunVerb(const Verb& verb, const std::string& output) {
    return RunCommand(verb.words + Arguments{output});
}

/// An environment for the commands that run while it lives.
class Environment {
public:
    Environment(int n, const char* how) {
        setenv("LD_PRELOAD", QUORVEX_FAILING_WRITES, 1);
        setenv("QUORVEX_FAILING_WRITE", std::to_string(n).c_str(), 1);
        setenv("QUORVEX_FAILING_HOW", how, 1);
        const char* options = std::getenv("ASAN_OPTIONS");
        former_ = options != nullptr ? options : "";
        setenv("ASAN_OPTIONS", (former_ + ":verify_asan_link_order=0").c_str(), 1);
    }
    ~Environment() {
        setenv("ASAN_OPTIONS", former_.c_str(), 1);
        for (const char* name : {"LD_PRELOAD", "QUORVEX_FAILING_WRITE", "QUORVEX_FAILING_HOW"})
            unsetenv(name);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::string former_;
};

/// No file of those commands may grow beyond this.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit = {bytes, former_.rlim_max};
        signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &former_);
        signal(SIGXFSZ, SIG_DFL);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit former_{};
};

/// Status 3 and a line that says why; nothing but the earlier output in the folder.
void ExpectRefusal(const CommandResult& result, const ScratchFolder& folder,
                   const std::string& why) {
    EXPECT_EQ(result.status, kOfTheEnvironment) << result.complaints;
    EXPECT_EQ(result.complaints.find("quorvex: "), 0U) << result.complaints;
    EXPECT_TRUE(Has(result.complaints, why)) << result.complaints;
    EXPECT_EQ(folder.Names(), Arguments{"output"});
}

/// Each write in turn goes wrong; the earlier output stays.
template <class Check>
void FailEachWrite(const char* how, int steps, Check check) {
    for (const Verb& verb : kVerbs) {
        int failed = 0;
        for (int n = 1; n < 400; n += 1 + n / steps) {
            SCOPED_TRACE(verb.name + std::string(", write ") + std::to_string(n));
            const ScratchFolder folder;
            folder.Write("output", kEarlier);
            const Environment environment(n, how);
            const auto result = RunVerb(verb, folder.Path("output"));
            if (result.status == 0) break;
            ++failed;
            check(result, folder);
            EXPECT_EQ(ReadAll(folder.Path("output")), kEarlier);
        }
        EXPECT_GT(failed, 0) << verb.name;
        std::printf("    %-18s %3d writes failed: %s\n", verb.name, failed, how);
    }
}

TEST(Writing, OnAFullDiskKeepsTheEarlierOutput) {
    FailEachWrite("full", 8, [](const CommandResult& result, const ScratchFolder& folder) {
        ExpectRefusal(result, folder, "No space left on device");
    });
}

TEST(Writing, ThatIsKilledKeepsTheEarlierOutput) {
    FailEachWrite("kill", 4, [](const CommandResult& result, const ScratchFolder&) {
        EXPECT_EQ(result.status, 1000 + SIGKILL);
    });
}

TEST(Writing, BeyondAFileSizeLimitKeepsTheEarlierOutput) {
    for (const Verb& verb : kVerbs) {
        const ScratchFolder whole;
        ASSERT_EQ(RunVerb(verb, whole.Path("output")).status, 0) << verb.name;
        const auto size = ReadAll(whole.Path("output")).size();
        // new UIDs, and with them a state, are some characters longer or shorter each time
        for (std::size_t bytes : {std::size_t{700}, size / 2, size - size / 8}) {
            if (bytes >= size) continue;
            SCOPED_TRACE(verb.name + std::string(", ") + std::to_string(bytes));
            const ScratchFolder folder;
            folder.Write("output", kEarlier);
            CommandResult result;
            {
                const FileSizeLimit limit(bytes);
                result = RunVerb(verb, folder.Path("output"));
            }
            ExpectRefusal(result, folder, "");
            EXPECT_EQ(ReadAll(folder.Path("output")), kEarlier);
        }
    }
}

TEST(Writing, OntoAFullDeviceIsRefused) {
    for (const Verb& verb : kVerbs) {
        const auto result = RunVerb(verb, "/dev/full");
        EXPECT_EQ(result.status, kOfTheEnvironment) << verb.name;
        EXPECT_TRUE(Has(result.complaints, "No space left")) << verb.name << result.complaints;
    }
}

TEST(Writing, InPiecesOrInterruptedIsWhole) {
    for (const Verb& verb : kVerbs) {
        if (std::string(verb.name) == "state") continue;  // new UIDs each time
        const ScratchFolder folder;
        ASSERT_EQ(RunVerb(verb, folder.Path("whole")).status, 0) << verb.name;
        for (const char* how : {"short", "interrupt"}) {
            const Environment environment(1, how);
            EXPECT_EQ(RunVerb(verb, folder.Path(how)).status, 0) << verb.name << ", " << how;
            EXPECT_TRUE(ReadAll(folder.Path(how)) == ReadAll(folder.Path("whole")))
                << verb.name << ", " << how;
        }
    }
}

}  // namespace
}  // namespace quorvex::test
