// Jobs that take their tables from a windowing that another thread changes.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

/// Two records whose tables are of very different lengths.
void Prepare(CXWindowing& windowing, bool isLong) {
    CXGSPSInfo record;
    record.pixelBitDepth = isLong ? 8 : 4;
    record.rescaleSlope = isLong ? 3.0 : 1.0;
    windowing.PrepareGSPSProcessing(&record);
}

Bytes Rendered(CXWindowing& windowing) {
    Bytes pixels = {0, 9, 15, 200};
    Bytes output(4);
    _IMAGE_INFO info;
    info.bytesPerPixel = 1;
    info.bitsStored = 8;
    info.imageWidth = info.outputWidth = 4;
    info.imageHeight = info.outputHeight = 1;
    info.roi = {0, 0, 4, 1};
    info.pixels = pixels.data();
    info.output = output.data();
    info.windowing = &windowing;
    EXPECT_EQ(CXImageCreator().GetImageWithInfo(info), 0);
    return output;
}

Bytes ModalityBytes(CXWindowing& windowing) {
    Bytes pixels = {0, 9, 200, 255};
    EXPECT_EQ(CXImageCreator().ApplyModalityLUT(&windowing, pixels.data(), {4, 1}, 1), 0);
    return pixels;
}

TEST(SharedWindowing, EveryJobHasTheTablesOfOneMoment) {
    for (auto* const work : {&Rendered, &ModalityBytes}) {
        CXWindowing windowing;
        Prepare(windowing, false);
        const Bytes ofShort = work(windowing);
        Prepare(windowing, true);
        const Bytes ofLong = work(windowing);
        ASSERT_NE(ofShort, ofLong);
        std::atomic<bool> isDone = false;
        const std::jthread changes([&] {
            for (bool isLong = false; !isDone; isLong = !isLong) Prepare(windowing, isLong);
        });
        int mixed = 0;
        for (int round = 0; round < 50000; ++round) {
            const Bytes made = work(windowing);
            if (made != ofShort && made != ofLong) ++mixed;
        }
        isDone = true;
        EXPECT_EQ(mixed, 0);
    }
}

}  // namespace
}  // namespace quorvex
