#include "run_command.h"

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <png.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

constexpr const char* kCommand = QUORVEX_BINARY_DIR "/bin/quorvex";

int Spawn(const std::vector<std::string>& arguments, const std::string& output,
          const std::string& complaints) {
    std::vector<char*> texts{const_cast<char*>(kCommand)};
    for (const auto& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), kFlags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, complaints.c_str(), kFlags, 0600);
    pid_t child = 0;
    const int failure = posix_spawn(&child, kCommand, &actions, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("cannot start the command");
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

}  // namespace

CommandResult RunCommand(const std::vector<std::string>& arguments) {
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

ScratchFolder::ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "quorvex_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
    path_ = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code failure;
    std::filesystem::remove_all(path_, failure);
}

std::string ScratchFolder::Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
}

std::vector<std::string> ScratchFolder::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    return names;
}

std::string ReadAll(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
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

std::string Number16(unsigned value) {
    return {static_cast<char>(value & 255), static_cast<char>(value >> 8 & 255)};
}

std::string Number32(std::uint32_t value) {
    return Number16(value & 0xFFFF) + Number16(value >> 16);
}

std::string Element(std::uint32_t tag, const std::string& vr, const std::string& value) {
    const bool isLong = vr == "OB" || vr == "OW" || vr == "SQ" || vr == "UN";
    const auto length = static_cast<std::uint32_t>(value.size());
    return Number16(tag >> 16) + Number16(tag & 0xFFFF) + vr +
           (isLong ? Number16(0) + Number32(length) : Number16(length)) + value;
}

std::string Part10(const std::string& syntax, const std::string& dataSet) {
    const std::string padding(syntax.size() % 2, '\0');
    const auto meta = Element(0x00020010, "UI", syntax + padding);
    return std::string(128, '\0') + "DICM" +
           Element(0x00020000, "UL", Number32(static_cast<std::uint32_t>(meta.size()))) + meta +
           dataSet;
}

}  // namespace quorvex::test
