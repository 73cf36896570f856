#include "tools/output/work_folder.h"

#include "tools/report.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <unistd.h>

namespace quorvex::tools {
namespace {

namespace fs = std::filesystem;

// All of this machine's processes begin their folders' names so.
std::string PrefixOfThisMachine() {
    std::array<char, 256> host{};
    if (gethostname(host.data(), host.size() - 1) != 0) throw SystemFailure("host name");
    return ".quorvex-" + std::string(host.data()) + '-';
}

std::optional<pid_t> ProcessOf(const std::string& name, const std::string& prefix) {
    pid_t process = 0;
    if (!name.starts_with(prefix)) return std::nullopt;
    const char* end = name.data() + name.size();
    const auto read = std::from_chars(name.data() + prefix.size(), end, process);
    const bool isNumber = read.ec == std::errc{} && read.ptr == end && process > 0;
    return isNumber ? std::optional(process) : std::nullopt;
}

// Ended, though its parent has not collected its status: until then such a process stays.
bool IsZombie(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string status;
    std::getline(file, status);
    const auto nameEnd = status.rfind(')');
    return nameEnd != std::string::npos && status.substr(nameEnd).starts_with(") Z");
}

bool IsGone(pid_t process) {
    return (kill(process, 0) != 0 && errno == ESRCH) || IsZombie(process);
}

void RemoveWhatIsLeft(const fs::path& beside, const std::string& prefix) {
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(beside, failure)) {
        const auto process = ProcessOf(entry.path().filename().string(), prefix);
        if (process && (*process == getpid() || IsGone(*process)))
            fs::remove_all(entry.path(), failure);
    }
}

}  // namespace

WorkFolder::WorkFolder(const std::string& beside) {
    const fs::path folder = beside.empty() ? "." : beside;
    prefix_ = PrefixOfThisMachine();
    std::error_code failure;
    fs::create_directories(folder, failure);
    RemoveWhatIsLeft(folder, prefix_);
    path_ = (folder / (prefix_ + std::to_string(getpid()))).string();
    const StopsWait wait;
    fs::create_directory(path_, failure);
    if (!failure) unfinished_.Remember(path_);
    if (failure) throw PathFailure(folder, failure);
}

WorkFolder::~WorkFolder() {
    // One that was killed a moment ago may still have been dying when we began.
    std::error_code failure;
    fs::remove_all(path_, failure);
    RemoveWhatIsLeft(fs::path(path_).parent_path(), prefix_);
}

void WorkFolder::RemoveNow() noexcept {
    constexpr int kAttempts = 5;  // a file may come up while the others go
    std::error_code failure;
    for (int i = 0; i < kAttempts && fs::exists(path_, failure); ++i)
        fs::remove_all(path_, failure);
}

std::string WorkFolder::NewPath() {
    return path_ + '/' + std::to_string(++count_);
}

}  // namespace quorvex::tools
