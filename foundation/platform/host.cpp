#include "foundation/platform/host.h"

#include "foundation/types/answer.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
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

std::string HostName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::uint32_t OwnMachineNumber() noexcept {
    return Answer(std::uint32_t{0}, [] {
        std::string name;
        std::getline(std::ifstream("/etc/machine-id"), name);
        if (name.empty()) name = HostName();
        return name.empty() ? 0 : HashOf(name);
    });
}

unsigned RandomStart() noexcept {
    return Answer(static_cast<unsigned>(getpid()), [] { return std::random_device()(); });
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
