// An object that has rendered before shows what one shows that renders for the first time.
#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"

#include <iterator>
#include <random>
#include <utility>

namespace quorvex::pipeline_test {
namespace {

constexpr CSize kSize{310, 230};  // enough pixels for every way to map them

struct Host {
    Host() {
        FillTheImage();
        CDcmItem voi;
        voi.SetValue(tag::kWindowCenter, "300");
        voi.SetValue(tag::kWindowWidth, "700");
        state.SetValue(tag::kSoftcopyVOILUTSequence, &voi);
        state.SetValue(tag::kImageRotation, static_cast<unsigned short>(90));
        state.SetValue(tag::kImageHorizontalFlip, "Y");
        state.SetValue(tag::kPresentationLUTShape, "INVERSE");
    }
    /// Two frames with a shutter.
    void FillTheImage() {
        std::mt19937 engine(7);
        Words words(2 * std::size_t{310} * 230);
        for (auto& word : words) word = static_cast<std::uint16_t>(engine() & 0xFFFU);
        for (const std::size_t first : {std::size_t{0}, words.size() / 2}) {
            words[first] = 0;  // both frames have the same range
            words[first + 1] = 0xFFF;
        }
        FillImage(image, {kSize}, words);
        image.SetValue(tag::kNumberOfFrames, 2);
        image.SetValue(tag::kRescaleIntercept, "-1024");
        image.SetValue(tag::kRescaleSlope, "1");
        image.SetValue(tag::kShutterShape, "CIRCULAR");
        image.SetValue(tag::kCenterOfCircularShutter, 110);
        image.SetNextValue(tag::kCenterOfCircularShutter, 150);
        image.SetValue(tag::kRadiusOfCircularShutter, 90);
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
         d.UpdatePan_Offset(CPoint{n, -n});
     }},
    {"turn", [](CXDIPP& d, Host&, int n) { d.UpdateRotate_Offset(n % 4 * 90); }},
    {"flip", [](CXDIPP& d, Host&, int) { d.UpdateHFlip_Toggle(); }},
    {"toggle", [](CXDIPP& d, Host&, int) { d.UpdatePresentationLUT_Toggle(); }},
    {"view",
     [](CXDIPP& d, Host&, int n) {
         d.UpdateViewSize(CSize{100 + n, 300 - n});
     }},
    {"shutter", [](CXDIPP& d, Host&, int n) { d.ShowShutter(n % 2); }},
    {"state", [](CXDIPP& d, Host& h, int) { d.ApllyGSPSObject(&h.app, &h.state); }},
    {"frame",
     [](CXDIPP& d, Host& h, int n) {
         d.Initialize(&h.app, CSize{200, 200}, n % 2);
     }},
    {"copy", [](CXDIPP& d, Host&, int) { d = CXDIPP(d); }},
    {"bytes",
     [](CXDIPP& d, Host&, int n) {
         Bytes grey(310 * 230);
         for (std::size_t i = 0; i < grey.size(); ++i)
             grey[i] = static_cast<unsigned char>(i * i >> n % 9);
         ShowBytes(d, grey, kSize, {200, 200});
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
}  // namespace quorvex::pipeline_test
