/// Pictures for the matrices of JPEG 2000 streams, and children that libraries run in.
#pragma once

#include "tests/stress/jpeg2000_codecs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {

class Random {
public:
    explicit Random(unsigned number) : engine_(number * 7919 + 13) {}
    int Between(int low, int high) {
        return low + static_cast<int>(engine_() % static_cast<unsigned>(high - low + 1));
    }
    bool OneIn(int count) { return Between(1, count) == 1; }
    std::uint32_t Side(int low, int high) { return static_cast<std::uint32_t>(Between(low, high)); }

private:
    std::mt19937 engine_;
};

/// Noise, slopes with noise, a flat field with spikes, or stripes, over the whole range.
inline void Draw(Planes::Plane& plane, std::int32_t least, std::int32_t greatest, Random& random) {
    const int kind = random.Between(0, 3);
    const double range = static_cast<double>(greatest) - least;
    const double wave = 0.02 * random.Between(1, 60);
    for (std::uint32_t y = 0; y < plane.height; ++y) {
        for (std::uint32_t x = 0; x < plane.width; ++x) {
            const double noise = random.Between(0, 999) / 999.0;
            double value = noise;
            if (kind == 1) value = 0.5 + 0.4 * std::sin(wave * (x + 2 * y)) + 0.02 * noise;
            if (kind == 2) value = random.OneIn(40) ? noise : 0.5;
            if (kind == 3) value = (x / 5 + y / 3) % 2 == 0 ? 0.1 : 0.9;
            const auto sample = static_cast<std::int32_t>(std::floor(least + value * range));
            plane.samples.push_back(std::clamp(sample, least, greatest));
        }
    }
}

/// The largest difference of two samples; -1 where the shapes differ.
inline std::int64_t Difference(const Planes& a, const Planes& b) {
    if (a.planes.size() != b.planes.size()) return -1;
    std::int64_t most = 0;
    for (std::size_t i = 0; i < a.planes.size(); ++i) {
        const auto& one = a.planes[i];
        const auto& other = b.planes[i];
        if (one.width != other.width || one.height != other.height) return -1;
        for (std::size_t k = 0; k < one.samples.size(); ++k) {
            most = std::max(most, std::abs(std::int64_t{one.samples[k]} - other.samples[k]));
        }
    }
    return most;
}

/// Numbers that a child process hands over. The libraries end their process on some sound streams:
/// they run in children.
class Handover {
public:
    Handover() {
        void* memory = mmap(nullptr, kNumbers * sizeof(std::int32_t), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) std::abort();
        numbers_ = static_cast<std::int32_t*>(memory);
    }

    /// What `decode` gives in a child; no planes where the child ends by a signal.
    template <class Decode>
    Planes Ask(const Decode& decode) {
        constexpr unsigned kMostSeconds = 20;
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            alarm(kMostSeconds);
            Put(decode());
            _exit(0);
        }
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child || status != 0) return {};
        return Get();
    }

private:
    static constexpr std::size_t kNumbers = std::size_t{1} << 20;

    void Put(const Planes& picture) {
        std::int32_t* at = numbers_;
        *at++ = static_cast<std::int32_t>(picture.planes.size());
        for (const auto& plane : picture.planes) {
            *at++ = static_cast<std::int32_t>(plane.width);
            *at++ = static_cast<std::int32_t>(plane.height);
            at = std::copy(plane.samples.begin(), plane.samples.end(), at);
        }
    }
    [[nodiscard]] Planes Get() const {
        Planes picture;
        const std::int32_t* at = numbers_;
        picture.planes.resize(static_cast<std::size_t>(*at++));
        for (auto& plane : picture.planes) {
            plane.width = static_cast<std::uint32_t>(*at++);
            plane.height = static_cast<std::uint32_t>(*at++);
            const std::size_t count = std::size_t{plane.width} * plane.height;
            plane.samples.assign(at, at + count);
            at += count;
        }
        return picture;
    }

    std::int32_t* numbers_;
};

}  // namespace quorvex::test
