// What the command does where the disk, the memory, the user or its own input stands in the way.
#include "tests/tools/run_command.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMayLimitMemory = false;  // sanitizers reserve terabytes
#else
constexpr bool kMayLimitMemory = true;
#endif

struct ShellResult {
    int status;
    std::string output;
    std::string complaints;
};

// Runs the command by a shell, behind what `before` sets up.
ShellResult ByShell(const std::string& before, const Arguments& arguments) {
    const ScratchFolder folder;
    std::string line = before + ' ' + kCommand;
    for (const auto& argument : arguments) line += " '" + argument + '\'';
    line += " >" + folder.Path("output") + " 2>" + folder.Path("complaints") + " </dev/null";
    const auto script = folder.Write("script", line);
    const int status = std::system(("bash " + script).c_str());
    return {WEXITSTATUS(status), ReadAll(folder.Path("output")),
            ReadAll(folder.Path("complaints"))};
}

TEST(Environment, NoVerbWritesOverWhatItReads) {
    const ScratchFolder folder;
    const auto input = folder.Write("input.png", ReadAll(kSlice));
    const auto state = folder.Write("state.png", ReadAll(kState));
    fs::create_symlink(input, folder.Path("link.png"));
    fs::create_hard_link(input, folder.Path("hard.png"));
    for (const auto* name : {"input.png", "link.png", "hard.png", "./input.png"}) {
        const auto output = folder.Path(name);
        ExpectStatus(2, {"render", input, "-o", output}, "would replace the input");
        ExpectStatus(2, {"frame", input, "-o", output}, "would replace the input");
        ExpectStatus(1, {"thumbnail", input, "-o", output}, "would replace an input");
    }
    ExpectStatus(2, {"render", input, "--state", state, "-o", state}, "would replace the input");
    const auto appended = ByShell("cd " + folder.Path(".") + "; exec 7>>input.png;",
                                  {"frame", "input.png", "-o", "/proc/self/fd/7"});
    EXPECT_EQ(appended.status, 2) << appended.complaints;
    EXPECT_EQ(ReadAll(input), ReadAll(kSlice));
    EXPECT_EQ(ReadAll(state), ReadAll(kState));
    EXPECT_EQ(folder.Names().size(), 4U);
}

TEST(Environment, ALimitOfFileSizeIsALineAndStatusThree) {
    const ScratchFolder folder;
    fs::create_directory(folder.Path("out"));
    const Arguments kCases[] = {
        {"render", kSlice, "-o", folder.Path("out/a.png")},
        {"render", kSlice, "-o", folder.Path("out/a.jpg")},
        {"frame", kSlice, "-o", folder.Path("out/a.raw")},
        {"frame", kSlice, "-o", folder.Path("out/a.npy")},
        {"frame", kSlice, "-o", "-"},
        {"thumbnail", kSlice, "--size", "900x900", "-o", folder.Path("out/a.png")},
    };
    for (const auto& arguments : kCases) {
        const auto result = ByShell("ulimit -f 8;", arguments);
        EXPECT_EQ(result.status, 3) << result.complaints;
        EXPECT_TRUE(Has(result.complaints, "File too large\n")) << result.complaints;
        EXPECT_EQ(FilesBelow(folder.Path("out")).size(), 0U) << testing::PrintToString(arguments);
    }
}

/// The slice with nearly two gigabytes of Pixel Data, most of them a hole.
std::string LargeSlice(const ScratchFolder& folder) {
    constexpr std::string_view kPixelData("\xE0\x7F\x10\0OW\0\0", 8);
    std::string bytes = ReadAll(kSlice);
    bytes.replace(bytes.find(kPixelData) + kPixelData.size(), 4, std::string("\0\0\xFF\x7F", 4));
    const auto large = folder.Write("large.dcm", bytes);
    fs::resize_file(large, std::uintmax_t{2} << 30);
    return large;
}

TEST(Environment, MissingMemoryIsToldAsThat) {
    if (!kMayLimitMemory) GTEST_SKIP();
    const ScratchFolder folder;
    const auto large = LargeSlice(folder);
    const Arguments kCases[] = {
        {"info", large, "--dicom-json"},
        {"convert", large, "-o", folder.Path("out.dcm"), "--to", "implicit"},
        {"render", kSlice, "--view", "16000x16000", "-o", folder.Path("out.png")},
    };
    for (const auto& arguments : kCases) {
        const auto result = ByShell("ulimit -v 500000;", arguments);
        EXPECT_EQ(result.status, 3) << result.complaints;
        EXPECT_TRUE(Has(result.complaints, "not enough memory\n")) << result.complaints;
    }
    EXPECT_EQ(folder.Names(), Arguments{"large.dcm"});
}

TEST(Environment, AFrameOfALargeFileTakesItsOwnMemoryAlone) {
    if (!kMayLimitMemory) GTEST_SKIP();
    const ScratchFolder folder;
    const auto large = LargeSlice(folder);
    const Arguments kCases[] = {
        {"info", large},
        {"frame", large, "-o", folder.Path("out.raw")},
        {"thumbnail", large, "-o", folder.Path("out.png")},
    };
    for (const auto& arguments : kCases)
        EXPECT_EQ(ByShell("ulimit -v 500000;", arguments).status, 0) << arguments.front();
}

TEST(Environment, FoldersThatAreLockedOrEmptyAreTold) {
    const ScratchFolder folder;
    folder.Write("study/a.dcm", ReadAll(kSlice));
    folder.Write("study/locked/b.dcm", ReadAll(kSlice));
    fs::create_directory(folder.Path("empty"));
    for (const auto* name : {".", "study", "empty"})
        fs::permissions(folder.Path(name), fs::perms::all);
    fs::permissions(folder.Path("study/locked"), fs::perms::none);
    const std::string asNobody =
        geteuid() == 0 ? "setpriv --reuid 65534 --regid 65534 --clear-groups" : "";
    if (ByShell(asNobody, {"--version"}).status != 0) GTEST_SKIP() << "no other user can run it";
    const auto locked =
        ByShell(asNobody, {"thumbnail", folder.Path("study"), "-o", folder.Path("out")});
    fs::permissions(folder.Path("study/locked"), fs::perms::owner_all);
    EXPECT_EQ(locked.status, 3);
    EXPECT_TRUE(Has(locked.complaints, "locked: it cannot be opened: Permission denied\n"));
    EXPECT_EQ(FilesBelow(folder.Path("out")), std::set<std::string>{"a.png"});
    const auto empty = ByShell("", {"thumbnail", folder.Path("empty"), "-o", folder.Path("out")});
    EXPECT_EQ(empty.status, 0);
    EXPECT_TRUE(Has(empty.complaints, "empty: warning: the folder has no files\n"));
}

TEST(Environment, AStoppedRunEndsAtOnceWithWholeFiles) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer keeps signals back";
#endif
    const ScratchFolder folder;
    fs::create_directory(folder.Path("in"));
    for (int i = 0; i < 400; ++i)
        fs::create_symlink(kSlice, folder.Path("in/" + std::to_string(i) + ".dcm"));
    const std::pair<const char*, Arguments> kCases[] = {
        {"TERM", {"thumbnail", folder.Path("in"), "--size", "3000x3000", "-o", folder.Path("out")}},
        {"INT", {"render", kSlice, "--view", "16000x16000", "-o", folder.Path("out/view.png")}},
    };
    for (const auto& [signal, arguments] : kCases) {
        const auto result =
            ByShell("timeout --preserve-status -k 3 -s " + std::string(signal) + " 1", arguments);
        EXPECT_EQ(result.status, 3) << signal << result.complaints;
        for (const auto& name : FilesBelow(folder.Path("out"))) {
            EXPECT_TRUE(name.ends_with(".png")) << name;
            EXPECT_EQ(ReadPng(folder.Path("out/" + name)).width, 3000) << name;
        }
    }
}

}  // namespace
}  // namespace quorvex::test
