/// A number that stands for bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

namespace quorvex::test {

/// FNV-1a over whatever is added.
class Digest {
public:
    void Add(std::span<const unsigned char> bytes) noexcept {
        for (const unsigned char byte : bytes) value_ = (value_ ^ byte) * 0x100000001B3U;
    }
    void Add(std::string_view text) noexcept {
        for (const char c : text) Add(static_cast<std::uint64_t>(c));
    }
    void Add(std::uint64_t number) noexcept { value_ = (value_ ^ number) * 0x100000001B3U; }
    [[nodiscard]] std::uint64_t Value() const noexcept { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

}  // namespace quorvex::test
