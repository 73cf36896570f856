#include "foundation/platform/clock.h"
#include "foundation/platform/host.h"
#include "maker/configuration.h"
#include "quorvex/CxDcmMaker.h"

#include <ctime>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace quorvex {
namespace {

/// 2005-03-09, 04:05:06 and 12 ms, wherever the test runs.
Moment EarlyMorning() noexcept {
    std::tm parts{.tm_sec = 6,
                  .tm_min = 5,
                  .tm_hour = 4,
                  .tm_mday = 9,
                  .tm_mon = 2,
                  .tm_year = 105,
                  .tm_wday = 0,
                  .tm_yday = 0,
                  .tm_isdst = -1,
                  .tm_gmtoff = 0,
                  .tm_zone = nullptr};
    return std::chrono::system_clock::from_time_t(std::mktime(&parts)) +
           std::chrono::milliseconds(12);
}

class Identity : public testing::Test {
protected:
    void SetUp() override {
        SetClock(EarlyMorning);
        SetMachineNumber(2'882'400'018U);
    }
    void TearDown() override {
        SetClock(nullptr);
        SetMachineNumber(std::nullopt);
        SetRandomSource(nullptr);
    }
};

TEST_F(Identity, FollowsClockMachineAndRandomSource) {
    SetRandomSource([]() noexcept { return 4711; });
    EXPECT_EQ(CxDcmMaker::GetTime(), CString("040506.000012"));
    EXPECT_EQ(CxDcmMaker::GetDate(), CString("20050309"));
    EXPECT_EQ(CxDcmMaker::GetSeriesUID("1.2.3").ToUtf8(), "1.2.3.2882400018.050309.040506.004711");
    EXPECT_EQ(CxDcmMaker::GetSOPInstanceUID("1.2.3").ToUtf8(),
              "1.2.3.2882400018.050309.040506.000012.004711");
    EXPECT_EQ(CxDcmMaker::GetSeriesUID("").ToUtf8(), ".2882400018.050309.040506.004711");
}

TEST_F(Identity, RandomPartHasSixDigitsWhateverTheSourceGives) {
    SetRandomSource([]() noexcept { return 2'147'483'647; });
    EXPECT_EQ(CxDcmMaker::GetSeriesUID("1").Right(7), CString(".483647"));
    SetRandomSource([]() noexcept { return -1; });
    EXPECT_EQ(CxDcmMaker::GetSeriesUID("1").Right(7)[0], u'.');
}

TEST_F(Identity, NoTwoObjectsOfOneMillisecondShareAUid) {
    std::array<std::vector<std::string>, 4> made;
    std::vector<std::jthread> threads;
    for (auto& uids : made) {
        threads.emplace_back([&uids] {
            while (uids.size() < 5'000) uids.push_back(CxDcmMaker::GetSOPInstanceUID("1").ToUtf8());
        });
    }
    threads.clear();
    std::set<std::string> different;
    for (const auto& uids : made) different.insert(uids.begin(), uids.end());
    EXPECT_EQ(different.size(), 20'000U);
    EXPECT_LE(different.begin()->size(), 64U);
}

TEST(Configuration, IsPairsOfLines) {
    const std::string prefix = "[QUORVEX_UID_PREFIX]";
    const std::string maker = "[QUORVEX_MANUFACTURER]";
    const std::string model = "[QUORVEX_MODEL_NAME]";
    const struct {
        const char* what;
        std::string text;
        std::string read[3];  ///< prefix, manufacturer, model
    } kCases[] = {
        {"all three, LF",
         prefix + "\n1.2.3\n" + maker + "\nAcme\n" + model + "\nM 1\n",
         {"1.2.3", "Acme", "M 1"}},
        {"CR LF, no end", prefix + "\r\n1.2.3\r\n" + maker + "\r\nB", {"1.2.3", "B", ""}},
        {"an empty line swallows the next one and the pairs run out of step",
         "\n" + prefix + "\n" + maker + "\n" + model + "\nlost",
         {"", model, ""}},
        {"blank behind a tag, other case", prefix + " \n1\n[quorvex_manufacturer]\nx\n", {}},
        {"a tag without its value", maker + "\nA\n" + prefix, {"", "A", ""}},
        {"the later one wins", prefix + "\n1\n" + prefix + "\n2\n", {"2", "", ""}},
        {"UTF-8", maker + "\nM\xC3\xBCller\n", {"", "M\xC3\xBCller", ""}},
        {"nothing", "", {}},
    };
    for (const auto& c : kCases) {
        const MakerConfiguration read = ParseConfiguration(c.text);
        EXPECT_EQ(read.uidPrefix.ToUtf8(), c.read[0]) << c.what;
        EXPECT_EQ(read.manufacturer.ToUtf8(), c.read[1]) << c.what;
        EXPECT_EQ(read.modelName.ToUtf8(), c.read[2]) << c.what;
    }
}

TEST(Host, DirectoryIsThatOfTheProgram) {
    EXPECT_TRUE(HostDirectory().ends_with("/bin/")) << HostDirectory();
    EXPECT_EQ(MachineNumber(), MachineNumber());
}

}  // namespace
}  // namespace quorvex
