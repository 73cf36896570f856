/// What a CXWindowing gives, as values.
#pragma once

#include "quorvex/CXWindowing.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace quorvex {

inline int ValueOf(CXWindowing& windowing, CXWindowing::Selector selector) {
    int value = -12345;
    EXPECT_EQ(windowing.GetValue(selector, &value, nullptr), 0);
    return value;
}

template <class Entry>
std::vector<Entry> TableOf(CXWindowing& windowing, CXWindowing::Selector table,
                           CXWindowing::Selector count) {
    std::vector<Entry> entries(static_cast<std::size_t>(ValueOf(windowing, count)));
    if (!entries.empty()) windowing.GetValue(table, entries.data(), nullptr);
    return entries;
}

inline std::vector<std::uint8_t> DisplayTableOf(CXWindowing& windowing) {
    return TableOf<std::uint8_t>(windowing, CXWindowing::kDisplayTable,
                                 CXWindowing::kDisplayTableCount);
}
inline std::vector<std::int32_t> ModalityTableOf(CXWindowing& windowing) {
    return TableOf<std::int32_t>(windowing, CXWindowing::kModalityTable,
                                 CXWindowing::kModalityTableCount);
}

struct Window {
    int level = 0;
    int width = 0;
    friend bool operator==(const Window&, const Window&) = default;
};

inline Window WindowOf(CXWindowing& windowing) {
    Window window;
    windowing.GetWindowingFactor(window.width, window.level);
    EXPECT_EQ(window.level, ValueOf(windowing, CXWindowing::kWindowLevel));
    EXPECT_EQ(window.width, ValueOf(windowing, CXWindowing::kWindowWidth));
    return window;
}

inline void SetWindow(CXWindowing& windowing, int width, int level) {
    int widthAndLevel[] = {width, level};
    ASSERT_EQ(windowing.SetValue(CXWindowing::kWindow, widthAndLevel, nullptr), 0);
}

}  // namespace quorvex
