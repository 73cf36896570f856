/// The zigzag order of a block's coefficients (ITU-T T.81 Figure A.6).
#pragma once

#include <array>
#include <cstddef>

namespace quorvex {

/// Natural place (row * 8 + column) of the coefficient at each zigzag place.
inline constexpr auto kNaturalFromZigzag = [] {
    std::array<std::size_t, 64> order{};
    std::size_t place = 0;
    for (int diagonal = 0; diagonal < 15; ++diagonal) {
        for (int step = 0; step <= diagonal; ++step) {
            const int row = diagonal % 2 == 0 ? diagonal - step : step;
            const int column = diagonal - row;
            if (row > 7 || column > 7) continue;
            order[place++] = static_cast<std::size_t>(row) * 8 + static_cast<std::size_t>(column);
        }
    }
    return order;
}();
static_assert(kNaturalFromZigzag[1] == 1 && kNaturalFromZigzag[2] == 8 &&
              kNaturalFromZigzag[63] == 63);

}  // namespace quorvex
