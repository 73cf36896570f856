#include "foundation/platform/clock.h"
#include "foundation/platform/host.h"
#include "maker/configuration.h"
#include "quorvex/CxDcmMaker.h"

#include <atomic>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace quorvex {
namespace {

/// 2005-03-09, 04:05:06 and 12 ms, wherever the test runs.
Moment EarlyMorning() noexcept {
    std::tm parts{};
    parts.tm_year = 105;
    parts.tm_mon = 2;
    parts.tm_mday = 9;
    parts.tm_hour = 4;
    parts.tm_min = 5;
    parts.tm_sec = 6;
    parts.tm_isdst = -1;
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
    constexpr int kEach = 5'000;
    std::array<std::vector<std::string>, 4> made;
    std::vector<std::thread> threads;
    for (auto& uids : made) {
        threads.emplace_back([&uids] {
            for (int i = 0; i < kEach; ++i)
                uids.push_back(CxDcmMaker::GetSOPInstanceUID("1").ToUtf8());
        });
    }
    for (auto& thread : threads) thread.join();
    std::set<std::string> different;
    for (const auto& uids : made) different.insert(uids.begin(), uids.end());
    EXPECT_EQ(different.size(), std::size_t{4} * kEach);
    EXPECT_LE(different.begin()->size(), 64U);
}

struct ConfigurationCase {
    const char* what;
    const char* text;
    const char* prefix;
    const char* manufacturer;
    const char* model;
};

constexpr ConfigurationCase kConfigurations[] = {
    {"all three, LF",
     "[QUORVEX_UID_PREFIX]\n1.2.3\n[QUORVEX_MANUFACTURER]\nAcme\n[QUORVEX_MODEL_NAME]\nM 1\n",
     "1.2.3", "Acme", "M 1"},
    {"CR LF, no end of the last line",
     "[QUORVEX_UID_PREFIX]\r\n1.2.3\r\n[QUORVEX_MANUFACTURER]\r\nB", "1.2.3", "B", ""},
    {"an empty line swallows the next one and the pairs run out of step",
     "\n[QUORVEX_UID_PREFIX]\n[QUORVEX_MANUFACTURER]\n[QUORVEX_MODEL_NAME]\nlost", "",
     "[QUORVEX_MODEL_NAME]", ""},
    {"blank behind a tag, other case", "[QUORVEX_UID_PREFIX] \n1\n[quorvex_manufacturer]\nx\n", "",
     "", ""},
    {"a tag without its value", "[QUORVEX_MANUFACTURER]\nA\n[QUORVEX_UID_PREFIX]", "", "A", ""},
    {"the later one wins", "[QUORVEX_UID_PREFIX]\n1\n[QUORVEX_UID_PREFIX]\n2\n", "2", "", ""},
    {"UTF-8", "[QUORVEX_MANUFACTURER]\nM\xC3\xBCller\n", "", "M\xC3\xBCller", ""},
    {"nothing", "", "", "", ""},
};

TEST(Configuration, IsPairsOfLines) {
    for (const auto& c : kConfigurations) {
        const MakerConfiguration read = ParseConfiguration(c.text);
        EXPECT_EQ(read.uidPrefix.ToUtf8(), c.prefix) << c.what;
        EXPECT_EQ(read.manufacturer.ToUtf8(), c.manufacturer) << c.what;
        EXPECT_EQ(read.modelName.ToUtf8(), c.model) << c.what;
    }
}

TEST(Host, DirectoryIsThatOfTheProgram) {
    EXPECT_TRUE(HostDirectory().ends_with("/bin/")) << HostDirectory();
    EXPECT_EQ(MachineNumber(), MachineNumber());
}

}  // namespace
}  // namespace quorvex
