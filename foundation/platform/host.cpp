#include "foundation/platform/host.h"

#include "foundation/types/answer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <random>
#include <span>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace quorvex {
namespace {

constexpr unsigned kDraws = 1'000'000;

/// FNV-1a.
std::uint32_t HashOf(std::string_view text) noexcept {
    std::uint32_t hash = 2'166'136'261U;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16'777'619U;
    return hash;
}

std::size_t ReadStart(const char* path, std::span<char> text) noexcept {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return 0;
    const ssize_t count = read(file, text.data(), text.size());
    close(file);
    return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}

/// Asked once and kept for the life of the process, so a lack of memory here would last too.
std::uint32_t OwnMachineNumber() noexcept {
    std::array<char, 256> text{};
    std::string_view name(text.data(), ReadStart("/etc/machine-id", text));
    name = name.substr(0, name.find('\n'));
    if (name.empty() && gethostname(text.data(), text.size() - 1) == 0) name = text.data();
    return name.empty() ? 0 : HashOf(name);
}

unsigned RandomStart() noexcept {
    return Contain(static_cast<unsigned>(getpid()), [] { return std::random_device()(); });
}

/// Steps through all six-digit numbers: the stride has no factor in common with their count.
int NextDraw() noexcept {
    constexpr unsigned kStride = 514'229;
    static std::atomic<unsigned> draws{0};
    static const unsigned start = RandomStart() % kDraws;
    const std::uint64_t draw = draws.fetch_add(1) % kDraws;
    return static_cast<int>((start + draw * kStride) % kDraws);
}

using Source = int (*)() noexcept;
std::atomic<Source> currentSource{NextDraw};

/// Above the range of a machine number: none is set.
constexpr std::uint64_t kNoNumber = std::uint64_t{1} << 32U;
std::atomic<std::uint64_t> setNumber{kNoNumber};

std::mutex directoryLock;
std::optional<std::string> setDirectory;

std::string OwnDirectory() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : (program.parent_path() / "").string();
}

}  // namespace

std::uint32_t MachineNumber() noexcept {
    static const std::uint32_t own = OwnMachineNumber();
    const std::uint64_t number = setNumber;
    return number == kNoNumber ? own : static_cast<std::uint32_t>(number);
}

void SetMachineNumber(std::optional<std::uint32_t> number) noexcept {
    setNumber = number ? *number : kNoNumber;
}

int RandomSixDigits() noexcept {
    return static_cast<int>(static_cast<unsigned>(currentSource.load()()) % kDraws);
}

void SetRandomSource(Source source) noexcept {
    currentSource = source == nullptr ? NextDraw : source;
}

std::string HostDirectory() {
    const std::lock_guard hold(directoryLock);
    return setDirectory ? *setDirectory : OwnDirectory();
}

void SetHostDirectory(std::optional<std::string> directory) {
    const std::lock_guard hold(directoryLock);
    setDirectory = std::move(directory);
}

}  // namespace quorvex
