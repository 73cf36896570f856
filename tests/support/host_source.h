/// File sources as hosts make them, good ones and bad ones.
#pragma once

#include "quorvex/FileSource.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace quorvex::test {

/// Bytes in memory. Counts what is asked for; may fail once, and may say another size.
class HostSource final : public FileSource {
public:
    enum Wrong { kRefuses, kGivesHalf, kThrows, kHasNoMemory };

    explicit HostSource(std::vector<unsigned char> file) : bytes(std::move(file)) {}

    [[nodiscard]] std::uint64_t Size() const override {
        if (throwsForSize) throw std::runtime_error("no size");
        return bytes.size() + addedSize;
    }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, std::span<unsigned char> to) override {
        taken += to.size();
        const bool fails = ++reads == failAt;
        if (fails && wrong == kThrows) throw std::runtime_error("the archive is gone");
        if (fails && wrong == kHasNoMemory) throw std::bad_alloc();
        if (offset > bytes.size() || to.size() > bytes.size() - offset) return false;
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
        const std::size_t count = !fails ? to.size() : wrong == kGivesHalf ? to.size() / 2 : 0;
        std::copy_n(from, count, to.begin());
        return !fails;
    }

    std::vector<unsigned char> bytes;
    std::uint64_t addedSize = 0;
    bool throwsForSize = false;
    long failAt = 0;  ///< counted from 1; 0 for never
    Wrong wrong = kRefuses;
    std::atomic<long> reads = 0;
    std::atomic<std::uint64_t> taken = 0;
};

/// A header, and frames of one length behind it that are computed when they are read: a file of any
/// size that takes no place.
class EndlessSource final : public FileSource {
public:
    /// Writes what frame `index` begins with, its item header included, over zeros.
    using Start = std::function<std::vector<unsigned char>(std::uint64_t index)>;

    EndlessSource(std::vector<unsigned char> header, std::uint64_t frameCount,
                  std::uint64_t frameBytes, Start start)
        : header_(std::move(header)),
          frameCount_(frameCount),
          frameBytes_(frameBytes),
          start_(std::move(start)) {}

    [[nodiscard]] std::uint64_t Size() const override {
        return header_.size() + frameCount_ * frameBytes_;
    }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, std::span<unsigned char> to) override {
        ++reads;
        taken += to.size();
        std::ranges::fill(to, static_cast<unsigned char>(0));
        Put(header_, 0, offset, to);
        const std::uint64_t end = offset + to.size();
        if (end <= header_.size()) return true;
        const std::uint64_t from = std::max<std::uint64_t>(offset, header_.size());
        for (std::uint64_t i = (from - header_.size()) / frameBytes_; i < frameCount_; ++i) {
            const std::uint64_t place = header_.size() + i * frameBytes_;
            if (place >= end) break;
            Put(start_(i), place, offset, to);
        }
        return true;
    }

    std::uint64_t reads = 0;
    std::uint64_t taken = 0;

private:
    /// Those of `bytes`, which lie at `place`, that fall into what is read at `offset`.
    static void Put(const std::vector<unsigned char>& bytes, std::uint64_t place,
                    std::uint64_t offset, std::span<unsigned char> to) {
        const std::uint64_t first = std::max(place, offset);
        const std::uint64_t end = std::min(place + bytes.size(), offset + to.size());
        for (std::uint64_t at = first; at < end; ++at) to[at - offset] = bytes[at - place];
    }

    std::vector<unsigned char> header_;
    std::uint64_t frameCount_;
    std::uint64_t frameBytes_;
    Start start_;
};

}  // namespace quorvex::test
