#include "tests/tools/run_command.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <png.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

int Spawn(const Arguments& arguments, const std::string& output, const std::string& complaints) {
    std::vector<char*> texts{const_cast<char*>(kCommand.c_str())};
    for (const auto& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), kFlags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, complaints.c_str(), kFlags, 0600);
    pid_t child = 0;
    const int failure = posix_spawn(&child, texts[0], &actions, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("cannot start the command");
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

}  // namespace

CommandResult RunCommand(const Arguments& arguments) {
    const ScratchFolder folder;
    CommandResult result;
    const auto start = std::chrono::steady_clock::now();
    result.status = Spawn(arguments, folder.Path("output"), folder.Path("complaints"));
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    result.seconds = taken.count();
    result.output = ReadAll(folder.Path("output"));
    result.complaints = ReadAll(folder.Path("complaints"));
    return result;
}

std::string OutputOf(const Arguments& arguments) {
    return ExpectStatus(0, arguments).output;
}

CommandResult ExpectStatus(int status, const Arguments& arguments, std::string_view part) {
    const auto result = RunCommand(arguments);
    const auto what = testing::PrintToString(arguments) + ' ' + result.complaints;
    EXPECT_EQ(result.status, status) << what;
    EXPECT_EQ(std::ranges::count(result.complaints, '\n'), status == 0 ? 0 : 1) << what;
    EXPECT_TRUE(Has(result.complaints, part)) << part << " in " << what;
    return result;
}

std::string InfoOf(const std::string& path) {
    return OutputOf({"info", path});
}

std::string FramesOf(const std::string& path) {
    return OutputOf({"frame", path, "--all", "-o", "-"});
}

std::set<std::string> FilesBelow(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) names.insert(entry.path().lexically_relative(folder).string());
    return names;
}

Arguments operator+(Arguments first, const Arguments& others) {
    first.insert(first.end(), others.begin(), others.end());
    return first;
}

ReadPicture ReadPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0)
        throw std::runtime_error(path + ": " + image.message);
    ReadPicture picture;
    picture.channels = (image.format & PNG_FORMAT_FLAG_COLOR) != 0 ? 3 : 1;
    image.format = picture.channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    picture.pixels.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error(path + ": " + image.message);
    return picture;
}

ReadPicture PictureBy(const Arguments& arguments) {
    const ScratchFolder folder;
    OutputOf(arguments + Arguments{"-o", folder.Path("picture.png")});
    EXPECT_EQ(folder.Names(), Arguments{"picture.png"});
    return ReadPng(folder.Path("picture.png"));
}

}  // namespace quorvex::test
