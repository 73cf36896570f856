#include "c/sources.h"

#include "foundation/types/undo.h"

#include <algorithm>

namespace quorvex::c {
namespace {

class MemorySource final : public FileSource {
public:
    explicit MemorySource(std::span<const unsigned char> bytes) noexcept : bytes_(bytes) {}
    [[nodiscard]] std::uint64_t Size() const override { return bytes_.size(); }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, std::span<unsigned char> bytes) override {
        if (offset > bytes_.size() || bytes.size() > bytes_.size() - offset) return false;
        std::ranges::copy(bytes_.subspan(offset, bytes.size()), bytes.begin());
        return true;
    }

private:
    std::span<const unsigned char> bytes_;
};

class HostSource final : public FileSource {
public:
    explicit HostSource(const quorvex_source& calls) noexcept : calls_(calls) {}
    HostSource(const HostSource&) = delete;
    HostSource& operator=(const HostSource&) = delete;
    ~HostSource() override {
        if (calls_.release != nullptr) calls_.release(calls_.user);
    }
    [[nodiscard]] std::uint64_t Size() const override { return calls_.size(calls_.user); }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, std::span<unsigned char> bytes) override {
        return calls_.read_at(calls_.user, offset, bytes.data(), bytes.size()) == 1;
    }

private:
    quorvex_source calls_;
};

}  // namespace

std::shared_ptr<FileSource> SourceOver(std::span<const unsigned char> bytes) {
    return std::make_shared<MemorySource>(bytes);
}

std::shared_ptr<FileSource> SourceOf(const quorvex_source& calls) {
    bool isOwned = false;
    const UndoUnlessKept release([&] {
        if (!isOwned && calls.release != nullptr) calls.release(calls.user);
    });
    auto source = std::make_shared<HostSource>(calls);
    isOwned = true;
    return source;
}

}  // namespace quorvex::c
