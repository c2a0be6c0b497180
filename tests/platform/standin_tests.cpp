// The stand-ins for the host platform: what every other test relies on.
#include "mfc/CString.h"
#include "olma_gui.h"
#include "olma_host.h"
#include "platform/standin/SimPanel.h"
#include "toolscom.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using sim::PanelState;
using sim::SimPanel;

namespace {

struct StandIn : testing::Test {
    SimPanel& panel = SimPanel::Instance();
    StandIn() { panel.Reset(); }
    ~StandIn() override { panel.Reset(); }
};

bool Load(const std::string& content, std::string& error) {
    static int number = 0;  // Qt may answer from its memory of a file of the same name and size
    const std::string path = testing::TempDir() + "panel" + std::to_string(++number) + ".ini";
    std::ofstream(path) << content;
    const bool taken = SimPanel::Instance().LoadIni(path, error);
    std::remove(path.c_str());
    return taken;
}

}  // namespace

TEST_F(StandIn, TheGuiDoesNotWaitAtAPipeInTheLocksPlace) {
    ASSERT_EQ(mkfifo("/tmp/olma_app_conf.lck", 0600), 0);
    std::ofstream("/usr/olma_app/config/olma_app_conf.ini") << "[DEVICE]\nbuzz_duration=70\n";
    EXPECT_EQ(__gui_get_buzzing_time(1), 70);
}

TEST(CStringText, PositionsOutsideTheTextAreDrawnToItsEnds) {
    const int most = std::numeric_limits<int>::max();
    const CString text("abcde");
    const std::pair<CString, const char*> cases[] = {
        {text.Left(2), "ab"},       {text.Left(-1), ""},         {text.Left(99), "abcde"},
        {text.Right(2), "de"},      {text.Right(-1), ""},        {text.Right(most), "abcde"},
        {text.Mid(2), "cde"},       {text.Mid(-most), "abcde"},  {text.Mid(99), ""},
        {text.Mid(2, 2), "cd"},     {text.Mid(1, most), "bcde"}, {text.Mid(1, -1), ""},
        {text.Mid(most, most), ""}, {text.Mid(-1, 2), "ab"}};
    for (const auto& c : cases)
        EXPECT_STREQ(c.second, c.first) << &c - cases;
    const CString repeated("a,b,a");
    EXPECT_EQ(4, repeated.Find("a", 1));
    EXPECT_EQ(0, repeated.Find('a', -5));
    EXPECT_EQ(-1, repeated.Find("a", 99));
}

TEST(CStringText, TrimsComparesAndFormatsItself) {
    EXPECT_STREQ("a b", CString("\t\r\n\v\f a b \t").Trim());
    EXPECT_STREQ("", CString(" \n ").Trim());
    EXPECT_EQ(0, CString("M\xe4x").CompareNoCase("m\xe4X"));
    EXPECT_LT(CString("a_").CompareNoCase("ab"), 0);
    EXPECT_STREQ("a\xe4.", CString("a") + '\xe4' + ".");
    EXPECT_EQ(3, CString("a\0b", 3).GetLength());
    CString text("ab");
    text.Format("%s%d", static_cast<const char*>(text), 5);
    EXPECT_STREQ("ab5", text);
}

TEST(SplitCsvStrPieces, AreOneMoreThanSeparators) {
    const std::pair<const char*, std::vector<FF::utils::String>> cases[] = {
        {"", {""}}, {"a", {"a"}}, {",", {"", ""}}, {" a,,b ,", {" a", "", "b ", ""}}};
    for (const auto& c : cases) {
        std::vector<FF::utils::String> pieces;
        EXPECT_EQ(static_cast<int>(c.second.size()), SplitCsvStr(c.first, ',', pieces)) << c.first;
        EXPECT_EQ(c.second, pieces);
    }
    EXPECT_EQ("a b", FF::utils::String("\v a b\r\n").trim());
}

TEST_F(StandIn, HeldClockWakesExactlyThoseWhoseTimeHasCome) {
    panel.HoldClock();
    const long long start = Olma_GetTickCount();
    std::thread late([] { Olma_Sleep(1000); });
    std::thread early([] { Olma_Sleep(200); });
    EXPECT_TRUE(panel.WaitForSleepers(2));
    panel.AdvanceClock(199);
    EXPECT_EQ(2, panel.Sleepers());
    panel.AdvanceClock(1);
    EXPECT_EQ(1, panel.Sleepers());
    early.join();
    EXPECT_EQ(start + 200, Olma_GetTickCount());
    panel.RunClock(100000.0);  // let run, the other one's 800 ms pass at the new speed
    late.join();
    EXPECT_GE(Olma_GetTickCount(), start + 1000);
}

TEST_F(StandIn, FailsAsOftenAsItWasTold) {
    panel.Fail("Olma_Beep", {-7, 2});
    EXPECT_EQ(-7, Olma_Beep(900, 30));
    EXPECT_EQ(-7, Olma_Beep(900, 30));
    EXPECT_EQ(0, Olma_Beep(900, 30));
    EXPECT_EQ(1u, panel.State().beeps.size());
    panel.Fail("Olma_GetDirectory", {});
    EXPECT_STREQ("", Olma_GetDirectory(2));
    panel.Mend("Olma_GetDirectory");
    EXPECT_STREQ("/usr/olma_app", Olma_GetDirectory(2));
}

TEST_F(StandIn, PanelIniReplacesWhatItNamesAndReportsTheRest) {
    std::string error;
    EXPECT_TRUE(
        Load("[panel]\nbrightness=-19\nlight=off\n[interface1]\nname=lan\naddress=10.1.2.3\n"
             "mac=\n[uart3]\nfirst=4\n[failures]\nhal_set_ip_addr=-5, 3\n"
             "hal_get_network=slow,20\n",
             error))
        << error;
    PanelState state = panel.State();
    EXPECT_EQ(-19, state.brightness);
    EXPECT_FALSE(state.lightOn);
    ASSERT_EQ(1u, state.interfaces.size());
    EXPECT_STREQ("lan", state.interfaces[0].record.name);
    EXPECT_TRUE(state.uarts[0].present && state.uarts[2].present && !state.uarts[3].present);
    EXPECT_EQ(3, state.failures["hal_set_ip_addr"].times);
    EXPECT_EQ(-5, state.failures["hal_set_ip_addr"].result);
    EXPECT_FALSE(state.failures["hal_get_network"].fails);
    EXPECT_EQ("HX2024060017", state.serialNumber);

    for (const char* bad : {"[panel]\nbrightness=101", "[panel]\nlight=dim", "[panel]\ncolour=red",
                            "[interface2]\naddress=10.0.0.1", "[interface1]\naddress=10.0.0.256",
                            "[interface1]\nmac=02:1a", "[uart5]\nfirst=1", "[uart1]\nfirst=x",
                            "[directories]\nx=/tmp", "[failures]\nhal_x=-1", "stray=1",
                            "[failures]\nOlma_Beep=slow", "[failures]\nOlma_Beep=-1,0"}) {
        EXPECT_FALSE(Load(std::string(bad) + "\n[panel]\nserial=S7\n", error)) << bad;
        EXPECT_EQ(1, std::count(error.begin(), error.end(), '\n')) << error;
        EXPECT_EQ("S7", panel.State().serialNumber) << bad;
    }
    EXPECT_FALSE(panel.LoadIni("/does/not/exist", error));
}

TEST_F(StandIn, CaptureIsAPictureOfTheWholeScreen) {
    const std::string directory = testing::TempDir() + "captures";
    panel.Change([&](PanelState& state) {
        state.directories[8] = directory;
        state.screenRows = {{"CPU use", "3 %"}, {std::string(500, 'n'), std::string(500, 'v')}};
    });
    ASSERT_EQ(0, __gui_screen_capture("$OLMA_DIR_USER", "a b/s.bmp", 1, 10, 20, -10, -20));
    const QImage picture(QFile::decodeName((directory + "/a b/s.bmp").c_str()), "BMP");
    ASSERT_EQ(QSize(800, 480), picture.size());
    std::set<QRgb> colours;
    for (int x = 0; x < 800; ++x)
        colours.insert(picture.pixel(x, 60));
    EXPECT_GT(colours.size(), 2);
    EXPECT_EQ(-10, panel.State().captures.back().width);
    for (const char* path : {"", "../s.bmp", "a b/", "a b"})
        EXPECT_NE(0, __gui_screen_capture("$OLMA_DIR_USER", path, 1, 0, 0, 0, 0)) << path;
}
