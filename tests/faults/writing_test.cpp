// A full disk, an interrupted write and a killed process under the verbs that write.
#include "tests/tools/run_command.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace quorvex::test {
namespace {

const std::string kSamples = QUORVEX_SOURCE_DIR "/samples/";
const std::string kEarlier = "the output of an earlier run";
constexpr int kEnvironment = 3;

struct Verb {
    const char* name;
    std::vector<std::string> words;  ///< all but the output
};

const std::vector<Verb>& Verbs() {
    static const std::vector<Verb> verbs = {
        {"convert, native", {"convert", kSamples + "ct.dcm", "--to", "implicit", "-o"}},
        {"convert, coded", {"convert", kSamples + "ct.dcm", "--to", "jpeg-lossless", "-o"}},
        {"frame", {"frame", kSamples + "ct.dcm", "-o"}},
        {"render", {"render", kSamples + "ct.dcm", "-o"}},
        {"thumbnail", {"thumbnail", kSamples + "ct.dcm", "-o"}},
        {"state", {"state", kSamples + "ct.dcm", "--invert", "-o"}},
    };
    return verbs;
}

CommandResult RunVerb(const Verb& verb, const std::string& output) {
    auto words = verb.words;
    words.push_back(output);
    return RunCommand(words);
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
                   const std::string& what) {
    EXPECT_EQ(result.status, kEnvironment) << what << ": " << result.complaints;
    EXPECT_EQ(result.complaints.find("quorvex: "), 0U) << what << ": " << result.complaints;
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"output"}) << what;
    EXPECT_EQ(ReadAll(folder.Path("output")), kEarlier) << what;
}

TEST(Writing, OnAFullDiskKeepsTheEarlierOutput) {
    for (const Verb& verb : Verbs()) {
        int failed = 0;
        for (int n = 1; n < 400; n += 1 + n / 8) {
            const ScratchFolder folder;
            folder.Write("output", kEarlier);
            const Environment environment(n, "full");
            const auto result = RunVerb(verb, folder.Path("output"));
            if (result.status == 0) break;
            ++failed;
            ExpectRefusal(result, folder, verb.name + std::string(", write ") + std::to_string(n));
            EXPECT_NE(result.complaints.find("No space left on device"), std::string::npos)
                << verb.name << ": " << result.complaints;
        }
        EXPECT_GT(failed, 0) << verb.name;
        std::printf("    %-18s %3d writes failed\n", verb.name, failed);
    }
}

TEST(Writing, BeyondAFileSizeLimitKeepsTheEarlierOutput) {
    for (const Verb& verb : Verbs()) {
        const ScratchFolder whole;
        ASSERT_EQ(RunVerb(verb, whole.Path("output")).status, 0) << verb.name;
        const auto size = ReadAll(whole.Path("output")).size();
        for (std::size_t bytes : {std::size_t{700}, size / 2, size - 1}) {
            if (bytes >= size) continue;
            const ScratchFolder folder;
            folder.Write("output", kEarlier);
            CommandResult result;
            {
                const FileSizeLimit limit(bytes);
                result = RunVerb(verb, folder.Path("output"));
            }
            ExpectRefusal(result, folder, verb.name + std::string(", ") + std::to_string(bytes));
        }
    }
}

TEST(Writing, OntoAFullDeviceIsRefused) {
    for (const Verb& verb : Verbs()) {
        const auto result = RunVerb(verb, "/dev/full");
        EXPECT_EQ(result.status, kEnvironment) << verb.name;
        EXPECT_NE(result.complaints.find("No space left"), std::string::npos)
            << verb.name << ": " << result.complaints;
    }
}

TEST(Writing, InPiecesOrInterruptedIsWhole) {
    for (const Verb& verb : Verbs()) {
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

TEST(Writing, ThatIsKilledKeepsTheEarlierOutput) {
    for (const Verb& verb : Verbs()) {
        int killed = 0;
        for (int n = 1; n < 400; n += 1 + n / 4) {
            const ScratchFolder folder;
            folder.Write("output", kEarlier);
            const Environment environment(n, "kill");
            const auto result = RunVerb(verb, folder.Path("output"));
            if (result.status == 0) break;
            ++killed;
            EXPECT_EQ(result.status, 1000 + SIGKILL) << verb.name;
            EXPECT_EQ(ReadAll(folder.Path("output")), kEarlier) << verb.name << ", write " << n;
        }
        EXPECT_GT(killed, 0) << verb.name;
        std::printf("    %-18s %3d times killed\n", verb.name, killed);
    }
}

}  // namespace
}  // namespace quorvex::test
