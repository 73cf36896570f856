/// Pictures of several components, for tests of JPEG 2000.
#pragma once

#include <cstdint>
#include <vector>

namespace quorvex::test {

/// A picture's components, all of one precision.
struct Planes {
    struct Plane {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::vector<std::int32_t> samples;
        bool operator==(const Plane&) const = default;
    };
    std::vector<Plane> planes;
    int precision = 8;
    bool isSigned = false;

    bool operator==(const Planes&) const = default;
};

struct Pair {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
};

using Stream = std::vector<unsigned char>;

}  // namespace quorvex::test
