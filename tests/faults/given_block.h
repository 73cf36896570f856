/// What operations hand over, given back in time, and what they are given.
#pragma once

#include "quorvex/Types.h"

#include <string>
#include <utility>
#include <vector>

namespace quorvex::test {

struct GivenBlock {
    GivenBlock() = default;
    GivenBlock(const GivenBlock&) = delete;
    GivenBlock& operator=(const GivenBlock&) = delete;
    ~GivenBlock() { Drop(); }

    void Drop() { delete[] std::exchange(data, nullptr); }
    [[nodiscard]] std::string Look() const {
        if (data == nullptr) return "no block";
        return {data, data + size};
    }

    unsigned char* data = nullptr;
    unsigned long size = 0;
};

/// A text for operations that take it by value: copies of it are made ahead, as a host would.
class GivenText {
public:
    explicit GivenText(const CString& text) : copies_(6, text) {}
    [[nodiscard]] CString Give() {
        CString copy = std::move(copies_.back());
        copies_.pop_back();
        return copy;
    }

private:
    std::vector<CString> copies_;
};

}  // namespace quorvex::test
