/// The inner loops of scaling, for whatever instructions the machine has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

/// What an image's pixels are: whole numbers of 1 or 2 bytes in this machine's byte order.
enum class ValueKind { kUnsignedByte, kSignedByte, kUnsignedWord, kSignedWord };

[[nodiscard]] constexpr std::size_t BytesOf(ValueKind kind) noexcept {
    return kind == ValueKind::kUnsignedByte || kind == ValueKind::kSignedByte ? 1 : 2;
}

/// Both ends included.
struct ValueLimits {
    float low = 0.0F;
    float high = 0.0F;
};

inline constexpr std::size_t kMostRowsAtOnce = 4;

/// How rows are weighed.
struct RowTask {
    bool adds = false;                 ///< to what the sums are already
    std::optional<ValueLimits> clamp;  ///< of every value, ahead of its weight
    std::ptrdiff_t ahead = 0;  ///< where it clamps: bytes from a value to one to be prefetched
};

/// The weighted sums of 1 to `kMostRowsAtOnce` rows of values. The length of `sums` decides. A sum
/// does not depend on where its row begins and ends.
void WeighRows(std::span<const unsigned char* const> rows, ValueKind kind,
               std::span<const float> weights, const RowTask& task, std::span<float> sums);
/// The lowest and the highest of `count` values in each of some rows, `rowBytes` apart; above 0.
[[nodiscard]] ValueLimits LimitsOf(const unsigned char* values, ValueKind kind,
                                   std::size_t rowBytes, std::size_t rowCount, std::size_t count);
/// `sums` = `row` x `weight`, or with `adds` that on top.
void WeighRow(std::span<const float> row, float weight, bool adds, std::span<float> sums);
/// Nearest bytes of numbers; what lies outside 0 .. 255 is clamped.
void RoundRow(std::span<const float> row, std::span<unsigned char> bytes);
/// The same of `gain` x (number - `zero`); halves go up, those too that a sum has missed by a hair.
/// @param ahead  numbers from each one to one to be prefetched
void RoundLine(std::span<const float> row, float gain, float zero, std::ptrdiff_t ahead,
               std::span<unsigned char> bytes);

}  // namespace quorvex
