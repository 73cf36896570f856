#include "tools/output/unfinished.h"

#include "tools/report.h"

#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvex::tools {
namespace {

constexpr std::array kStops = {SIGINT, SIGTERM, SIGHUP};

enum class SlotState : int { kFree, kBeingWritten, kReady };

struct Slot {
    std::atomic<SlotState> state = SlotState::kFree;
    std::array<char, PATH_MAX> path{};
};
std::array<Slot, 8> slots;

sigset_t StopSet() noexcept {
    sigset_t set{};
    sigemptyset(&set);
    for (const int number : kStops) sigaddset(&set, number);
    return set;
}

// Takes the names as the system gives them (getdents64): readdir() is not for signal handlers.
void RemoveFilesOf(int folder) noexcept {
    constexpr std::size_t kLengthPlace = 16;  // in an entry
    constexpr std::size_t kNamePlace = 19;
    std::array<char, 4096> entries{};
    for (;;) {
        const long bytes = syscall(SYS_getdents64, folder, entries.data(), entries.size());
        if (bytes <= 0) return;
        for (const char* entry = entries.data(); entry < entries.data() + bytes;) {
            std::uint16_t length = 0;
            std::memcpy(&length, entry + kLengthPlace, sizeof length);
            static_cast<void>(unlinkat(folder, entry + kNamePlace, 0));
            entry += length;
        }
    }
}

// A file, or a folder with its files.
void Remove(const char* path) noexcept {
    if (unlink(path) == 0) return;
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (folder < 0) return;
    RemoveFilesOf(folder);
    close(folder);
    rmdir(path);
}

void EndByStop(int) {
    constexpr std::string_view kClearLine = "\r\033[K";
    constexpr std::string_view kLine =
        "quorvex: stopped: what was not finished is removed, and the rest was not done\n";
    RemoveUnfinished();
    if (isatty(STDERR_FILENO) != 0)
        static_cast<void>(!write(STDERR_FILENO, kClearLine.data(), kClearLine.size()));
    static_cast<void>(!write(STDERR_FILENO, kLine.data(), kLine.size()));
    _exit(kEnvironment);
}

}  // namespace

void Unfinished::Remember(const std::string& path) {
    Forget();
    if (path.size() >= PATH_MAX) return;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        auto& slot = slots.at(i);
        auto expected = SlotState::kFree;
        if (!slot.state.compare_exchange_strong(expected, SlotState::kBeingWritten)) continue;
        std::memcpy(slot.path.data(), path.c_str(), path.size() + 1);
        slot.state = SlotState::kReady;
        slot_ = static_cast<int>(i);
        return;
    }
}

void Unfinished::Forget() noexcept {
    if (slot_ >= 0) slots[static_cast<std::size_t>(slot_)].state = SlotState::kFree;
    slot_ = -1;
}

StopsWait::StopsWait() noexcept {
    const sigset_t stops = StopSet();
    sigset_t before{};
    pthread_sigmask(SIG_BLOCK, &stops, &before);
    isBlocked_ = sigismember(&before, kStops.front()) != 1;
}

StopsWait::~StopsWait() {
    const sigset_t stops = StopSet();
    if (isBlocked_) pthread_sigmask(SIG_UNBLOCK, &stops, nullptr);
}

void RemoveUnfinished() noexcept {
    for (const auto& slot : slots) {
        if (slot.state == SlotState::kReady) Remove(slot.path.data());
    }
}

void EndCleanlyWhenStopped() noexcept {
    for (const int number : kStops)
        if (std::signal(number, EndByStop) == SIG_IGN) std::signal(number, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace quorvex::tools
