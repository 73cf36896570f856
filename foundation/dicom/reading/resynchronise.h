/// Finds where a bare data set can begin in a stream that begins with something else.
///
/// That the bytes can be read is no test: from a random place of any file they often can. A data
/// set must begin in group 0008 with a value of 64 KiB at most, its tags must ascend, its lengths
/// be even and inside the data (undefined ones: closed by their delimiters), and the chain of at
/// least two elements must end exactly at the end of the data, at Pixel Data or at the trailing
/// padding. Items outside of any sequence do no harm. Elements of group 0002 in explicit VR may
/// stand ahead; behind those that name a transfer syntax nothing more is asked for.
#pragma once

#include "foundation/dicom/model/data_set.h"

#include <array>
#include <cstddef>
#include <vector>

namespace quorvex::dicom {

/// Whether a file can begin where it does, asked of its first bytes alone.
struct FileBeginning {
    bool canBegin = false;
    std::size_t needed = 0;  ///< more first bytes must be at hand to tell; 0 where `canBegin` tells
};

/// Remembers what failed, so that asking for every position of any data, in ascending order, takes
/// time in proportion to its length.
class DataSetFinder {
public:
    explicit DataSetFinder(Bytes data) noexcept : data_(data), size_(data.size()) {}

    /// True where a data set can begin. Position 0 is tested less strictly: behind group 0002
    /// nothing is asked for, lengths may be odd, tags in any order and the last value cut. After
    /// `kMostBeginnings` positive answers, which only hostile data give, all others are negative.
    [[nodiscard]] bool CanBeginAt(std::size_t position);

    /// What CanBeginAt(0) says of a file of `size` bytes, of which `start` is at hand.
    [[nodiscard]] static FileBeginning BeginningOf(Bytes start, std::size_t size);

private:
    friend class ChainWalk;

    /// Places from where a chain is known to fail: of elements of the main data set, of elements of
    /// an item, of items. One bit a byte of the data, in each encoding that was met.
    struct FailedPlaces {
        std::vector<bool> elements;
        std::vector<bool> nested;
        std::vector<bool> items;
    };

    [[nodiscard]] bool CanBegin(std::size_t position, Encoding encoding);
    [[nodiscard]] bool CanBeginFile();
    [[nodiscard]] FailedPlaces& FailedIn(Encoding encoding);

    /// Whether bytes are at hand; notes how many must be where they are not.
    [[nodiscard]] bool HasAtHand(std::size_t position, std::size_t count) noexcept {
        const bool isAtHand = position <= data_.size() && count <= data_.size() - position;
        if (!isAtHand) needed_ = position + count;
        return isAtHand;
    }

    Bytes data_;
    std::size_t size_;        ///< of all data, at hand or not
    std::size_t needed_ = 0;  ///< first bytes that were not at hand
    std::array<FailedPlaces, 4> failed_;
    int placesLeft_ = kMostBeginnings;
};

}  // namespace quorvex::dicom
