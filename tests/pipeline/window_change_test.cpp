// An object that has rendered before shows what one shows that renders for the first time.
#include "quorvex/CXDIPP.h"
#include "tests/pipeline/inspector.h"
#include "tests/pipeline/test_objects.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::FillImage;
using pipeline_test::Rendered;

constexpr CSize kSize{310, 230};  // enough pixels for every way to map them

/// Two frames with an overlay and a shutter.
void FillImageToShow(CDcmObject& image) {
    std::mt19937 engine(7);
    std::vector<std::uint16_t> words(2 * std::size_t{310} * 230);
    for (auto& word : words) word = static_cast<std::uint16_t>(engine() & 0xFFFU);
    for (const std::size_t first : {std::size_t{0}, words.size() / 2}) {
        words[first] = 0;  // both frames have the same range
        words[first + 1] = 0xFFF;
    }
    FillImage(image, {kSize}, words);
    image.SetValue(0x00280008, 2);
    image.SetValue(0x00281052, "-1024");
    image.SetValue(0x00281053, "1");
    image.SetValue(0x00181600, "CIRCULAR");
    image.SetValue(0x00181610, 110);
    image.SetNextValue(0x00181610, 150);
    image.SetValue(0x00181612, 90);
}

void FillState(CDcmObject& state) {
    CDcmItem voi;
    voi.SetValue(0x00281050, "300");
    voi.SetValue(0x00281051, "700");
    state.SetValue(0x00283110, &voi);
    state.SetValue(0x00700042, static_cast<unsigned short>(90));
    state.SetValue(0x00700041, "Y");
    state.SetValue(0x20500020, "INVERSE");
}

struct Host {
    Host() {
        FillImageToShow(image);
        FillState(state);
    }
    CDcmApp app;
    CDcmObject image;
    CDcmObject state;
};

/// Something that a user does, with a number that says how much.
struct Act {
    const char* name;
    void (*perform)(CXDIPP&, Host&, int amount);
};

const Act kActs[] = {
    {"window", [](CXDIPP& d, Host&, int n) { d.UpdateVOILUT_ABS(n * 9 - 900, 1 + n * n / 5); }},
    {"window offset", [](CXDIPP& d, Host&, int n) { d.UpdateVOILUT_Offset(n - 50, 60 - n); }},
    {"zoom", [](CXDIPP& d, Host&, int n) { d.UpdateZoom_ABS(0.1 + n * 0.02); }},
    {"zoom 1", [](CXDIPP& d, Host&, int n) { d.UpdateZoom_ABS(n % 2 != 0 ? 1.0 : 0.5); }},
    {"pan",
     [](CXDIPP& d, Host&, int n) {
         d.UpdatePan_Offset({n, -n});
     }},
    {"turn", [](CXDIPP& d, Host&, int n) { d.UpdateRotate_Offset(n % 4 * 90); }},
    {"flip", [](CXDIPP& d, Host&, int) { d.UpdateHFlip_Toggle(); }},
    {"toggle", [](CXDIPP& d, Host&, int) { d.UpdatePresentationLUT_Toggle(); }},
    {"view",
     [](CXDIPP& d, Host&, int n) {
         d.UpdateViewSize({100 + n, 300 - n});
     }},
    {"shutter", [](CXDIPP& d, Host&, int n) { d.ShowShutter(n % 2); }},
    {"state", [](CXDIPP& d, Host& h, int) { d.ApllyGSPSObject(&h.app, &h.state); }},
    {"frame",
     [](CXDIPP& d, Host& h, int n) {
         d.Initialize(&h.app, {200, 200}, n % 2);
     }},
    {"copy",
     [](CXDIPP& d, Host&, int) {
         CXDIPP copy(d);
         d = copy;
     }},
    {"bytes",
     [](CXDIPP& d, Host&, int n) {
         std::vector<unsigned char> grey(310 * 230);
         for (std::size_t i = 0; i < grey.size(); ++i)
             grey[i] = static_cast<unsigned char>(i * i >> n % 9);
         d.Initialize(grey.data(), {200, 200}, kSize, 1, 255, 0, 0);
     }},
};

TEST(WindowChange, EarlierRendersNeverShow) {
    Host host;
    std::mt19937 engine(11);
    for (int sequence = 0; sequence < 6; ++sequence) {
        CXDIPP lasting;
        ASSERT_EQ(lasting.Initialize(&host.app, &host.image, {250, 200}, 0), QVM_SUCCESS);
        std::vector<std::pair<const Act*, int>> done;
        for (int i = 0; i < 25; ++i) {
            done.emplace_back(&kActs[engine() % std::size(kActs)],
                              static_cast<int>(engine() % 100));
            done.back().first->perform(lasting, host, done.back().second);
            CXDIPP fresh;
            fresh.Initialize(&host.app, &host.image, {250, 200}, 0);
            for (const auto& [act, amount] : done) act->perform(fresh, host, amount);
            ASSERT_EQ(Rendered(lasting), Rendered(fresh))
                << done.back().first->name << ' ' << done.back().second << ", act " << i
                << " of sequence " << sequence;
        }
    }
}

}  // namespace
}  // namespace quorvex
