#include "Adversity.h"
#include "Record.h"
#include "TestFiles.h"
#include "commands/ChannelWrite.h"
#include "commands/Dispatcher.h"
#include "commands/Screenshot.h"
#include "common/AppSettings.h"
#include "common/IniOperator.h"
#include "driver/record/ChannelTable.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QDir>
#include <QImage>
#include <QImageWriter>
#include <thread>

namespace {

using Names = std::vector<std::string>;

class Dispatch : public RecordTest {
protected:
    double Run(const std::string& text) {
        CString cmd(text.data(), static_cast<int>(text.size()));
        record.m_arrValue[0] = -99;
        EXPECT_EQ(olma_device::SvrDevIOCtrl(record, cmd, record.m_arrValue, record.m_arrStrValue),
                  0);
        return record.m_arrValue[0];
    }
};

class ChannelWrites : public Dispatch {
protected:
    double Write(int channel, const std::string& value) {
        return Run("OLMA_WRITE(" + std::to_string(channel) + "=" + value + ")");
    }
    static std::string Stored(const char* key) {
        QString value;
        hxd::AppSettings().Read(key, value);
        return value.toUtf8().constData();
    }
    static Names GuiCalls() {
        const auto calls = Panel().guiCalls;
        return Names(calls.begin(), calls.end());
    }
};

class Screenshots : public Dispatch {
protected:
    double Save(const std::string& path, const std::string& region = "") {
        host.texts["path"] = path;
        return Run("SAVESCREEN(path" + region + ")");
    }
    static QImage Saved(const char* path) { return QImage(QString::fromLatin1(path)); }
};

bool Exists(const char* path) {
    return ::access(path, F_OK) == 0;
}

}  // namespace

TEST(CommandText, IsSplitAtTheFirstOfEachParenthesis) {
    const struct {
        const char* text;
        bool found;
        const char* name;
        const char* args;
    } cases[] = {
        {"  savescreen (a, b) ", true, "SAVESCREEN", "a, b"},
        {"F(a(b)c)", true, "F", "a(b"},
        {"F)x(a)", true, "F)X", ""},  // the first ")" precedes the "("
        {")(", true, ")", ""},
        {"(a)", true, "", "a"},
        {"F(a", false, "", ""},
        {"F a)", false, "", ""},
        {"", false, "", ""},
    };
    for (const auto& c : cases) {
        const auto parts = olma_device::SplitCommand(c.text);
        EXPECT_EQ(static_cast<bool>(parts), c.found) << c.text;
        EXPECT_STREQ(parts->name, c.name);
        EXPECT_STREQ(parts->args, c.args);
    }
}

TEST_F(Dispatch, SizesTheArraysAndLeavesEmptyOnesAlone) {
    record.m_arrValue.SetSize(1);
    record.m_arrStrValue.SetSize(41);
    EXPECT_EQ(Run("nothing"), 0.0);
    EXPECT_EQ(record.m_arrValue.GetSize(), 33);
    EXPECT_EQ(record.m_arrStrValue.GetSize(), 33);
    record.m_arrValue.RemoveAll();
    CString cmd = "REFLESH()";
    context.m_bRefreshed[0] = 1;
    EXPECT_EQ(olma_device::SvrDevIOCtrl(record, cmd, record.m_arrValue, record.m_arrStrValue), 0);
    EXPECT_EQ(record.m_arrValue.GetSize(), 0);
    EXPECT_EQ(context.m_bRefreshed[0], 1);
}

TEST_F(Dispatch, RoutesNamesWithoutRegardToCase) {
    context.m_bRefreshed[0] = context.m_bRefreshed[1] = 1;
    EXPECT_EQ(Run(" Reflesh ()"), 0.0);
    EXPECT_EQ(context.m_bRefreshed[0], 0);
    EXPECT_EQ(context.m_bRefreshed[1], 1);
    EXPECT_EQ(Run("backlightoff(whatever)"), 0.0);
    EXPECT_FALSE(Panel().lightOn);
    EXPECT_EQ(Run("BACKLIGHTON()"), 0.0);
    EXPECT_TRUE(Panel().lightOn);
    sim::SimPanel::Instance().Fail("hal_set_lcd_status", {});
    EXPECT_EQ(Run("BACKLIGHTOFF()"), 9.0);
}

TEST_F(Dispatch, HandsUnknownNamesToTheRegistryWhole) {
    EXPECT_EQ(Run("GetCpuUse(10) "), 0.0);  // no registry
    context.m_pDevManger = std::make_unique<DevManger>();
    EXPECT_EQ(Run("READ(1)"), 0.0);
    EXPECT_EQ(Run("SetHiddenPro(1) "), 5.0);  // the registry wants ")" at the very end
    EXPECT_EQ(Run("GetCpuUse"), 0.0);
}

TEST_F(Dispatch, NeedsNoContextForWhatUsesNoService) {
    const struct {
        const char* text;
        double status;
    } cases[] = {
        {"REFLESH()", 0},
        {"BACKLIGHTOFF()", 0},
        {"SAVESCREEN(a.png)", 0},
        {"STRSHA256(abc,digest)", 0},
        {"STRSHA256(abc)", 5},
        {"ModVncPwd(new)", 0},
        {"ModVncPwd(a,b,c)", 5},
        {"GetMacInfo(0,name,mac)", 0},
        {"GetMacInfo(0,name)", 5},
        {"OLMA_WRITE(1=10.1.2.3)", 0},
        {"OLMA_WRITE(4=7000)", 4},
        {"OLMA_WRITE(21=40)", 0},
        {"OLMA_WRITE(10=1)", 1},
        {"OLMA_WRITE(10)", 1},
        // These need one, and do nothing once the arguments have been counted.
        {"OLMA_WRITE(12=7)", 0},
        {"OLMA_WRITE(18=x)", 0},
        {"OLMA_WRITE(24=7)", 0},
        {"EnableNTP(7,r)", 0},
        {"EnableNTP(1,r,x)", 5},
        {"SetNTPServer(a,b,c,d,r)", 0},
        {"SetNTPServer(a)", 5},
        {"ExecNTP(r)", 0},
        {"ExecNTP()", 0},
        {"SetNetworkMode(0,7,r)", 0},
        {"SetNetworkMode(0,1)", 5},
        {"GetCpuUse(10)x", 0},
    };
    writeFile("/etc/iot_cfg/vncConfig.ini", "");
    host.texts = {{"digest", ""}, {"name", ""}, {"mac", ""}};
    host.ints["r"] = 99;
    record.m_pContext = nullptr;
    for (const auto& c : cases)
        EXPECT_EQ(Run(c.text), c.status) << c.text;
    EXPECT_FALSE(Panel().lightOn);
    EXPECT_TRUE(Exists("/media/usb0/a.png"));
    EXPECT_EQ(host.texts["digest"].size(), 64u);
    EXPECT_EQ(readFile("/etc/iot_cfg/vncConfig.ini"), "[VNCCONFIG]\npasswd=new\n");
    EXPECT_EQ(host.texts["name"], "eth0");
    EXPECT_EQ(Panel().appliedRecords.size(), 1u);
    EXPECT_EQ(Panel().brightness, 40);
    EXPECT_EQ(host.ints["r"], 99);
}

TEST_F(ChannelWrites, KeepToTheirRanges) {
    const struct {
        int channel;
        const char* value;
        double status;
        const char* key;
        const char* stored;
    } cases[] = {
        {4, "6500", 0, hxd::KEY_BUZZ_DURATION, "6500"},
        {4, "6501", 4, hxd::KEY_BUZZ_DURATION, "6500"},
        {4, "-1", 4, hxd::KEY_BUZZ_DURATION, "6500"},
        {3, "1.000000", 0, hxd::KEY_BUZZ_DURATION, "30"},
        {3, "2", 4, hxd::KEY_BUZZ_DURATION, "30"},
        {3, "-0.9", 0, hxd::KEY_BUZZ_DURATION, "0"},  // truncated toward zero
        {5, "1", 0, hxd::KEY_BACKLIGHT_STATUS, "1"},
        {5, "-1", 4, hxd::KEY_BACKLIGHT_STATUS, "1"},
        {6, "15", 0, hxd::KEY_BACKLIGHT_DURATION, "15000"},
        {6, "14", 4, hxd::KEY_BACKLIGHT_DURATION, "15000"},
        {6, "1800", 0, hxd::KEY_BACKLIGHT_DURATION, "1800000"},
        {6, "1801", 4, hxd::KEY_BACKLIGHT_DURATION, "1800000"},
        {6, "1e99", 4, hxd::KEY_BACKLIGHT_DURATION, "1800000"},
        {21, "42", 0, hxd::KEY_BACKLIGHT_BRIGHTNESS, "40"},
        {21, "43", 0, hxd::KEY_BACKLIGHT_BRIGHTNESS, "45"},
        {21, "100", 0, hxd::KEY_BACKLIGHT_BRIGHTNESS, "100"},
        {21, "101", 5, hxd::KEY_BACKLIGHT_BRIGHTNESS, "100"},
        {21, "-1", 5, hxd::KEY_BACKLIGHT_BRIGHTNESS, "100"},
        {10, "1", 1, hxd::KEY_BUZZ_DURATION, "0"},
        {32, "1", 1, hxd::KEY_BUZZ_DURATION, "0"},
        {33, "1", 0, hxd::KEY_BUZZ_DURATION, "0"},
        {0, "1", 0, hxd::KEY_BUZZ_DURATION, "0"},
        {-2147483647, "1", 0, hxd::KEY_BUZZ_DURATION, "0"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Write(c.channel, c.value), c.status) << c.channel << "=" << c.value;
        EXPECT_EQ(Stored(c.key), c.stored) << c.channel << "=" << c.value;
    }
    EXPECT_EQ(Panel().brightness, 100);
    EXPECT_EQ(Run("OLMA_WRITE(4 6)"), 1.0);
}

TEST_F(ChannelWrites, HaveAWriterWhereTheTableSaysSo) {
    for (int number = 1; number <= CHANNEL_COUNT; ++number)
        EXPECT_EQ(Write(number, "") != 1.0, FindChannel(number)->IsWritable())
            << "WRITERS in commands/ChannelWrite.cpp: channel " << number;
}

TEST_F(ChannelWrites, TellTheGuiAndExpireTheValues) {
    const struct {
        int channel;
        Names calls;
    } cases[] = {
        {3, {"__gui_get_buzzing_time(1)", "__gui_get_buzzing_time(0)"}},
        {4, {"__gui_get_buzzing_time(1)", "__gui_get_buzzing_time(0)"}},
        {5, {"__gui_get_lcdlight_status(1)", "__gui_reset_lcdlight_timer()"}},
        {6, {"__gui_get_lcdlight_time(1)", "__gui_reset_lcdlight_timer()"}},
    };
    for (const auto& c : cases) {
        ChangePanel([](sim::PanelState& state) { state.guiCalls.clear(); });
        context.m_bRefreshed[0] = 1;
        EXPECT_EQ(Write(c.channel, c.channel == 6 ? "20" : "1"), 0.0);
        EXPECT_EQ(GuiCalls(), c.calls) << c.channel;
        EXPECT_EQ(context.m_bRefreshed[0], 0);
    }
    for (const int channel : {10, 33}) {  // also after a write that is refused or to no channel
        context.m_bRefreshed[0] = 1;
        EXPECT_EQ(Write(channel, "1"), channel == 10 ? 1.0 : 0.0);
        EXPECT_EQ(context.m_bRefreshed[0], 0);
    }
}

TEST_F(ChannelWrites, PauseBeforeTheTestTone) {
    sim::SimPanel& panel = sim::SimPanel::Instance();
    const struct {
        const char* stored;
        long long pauseMs;
    } cases[] = {{"250", 250}, {"6501", 30}, {"-1", 30}, {"abc", 0}};
    for (const auto& c : cases) {
        IniOperator::FileIniWriteValue(QLatin1String("/usr/olma_app/config/olma_app_conf.ini"),
                                       QLatin1String("DEVICE"), QLatin1String("buzz_duration"),
                                       QString::fromLatin1(c.stored));
        panel.RunClock(1000.0);
        panel.HoldClock();
        const long long start = panel.Tick();
        const std::size_t beeped = Panel().beeps.size();
        std::thread writer([&] { EXPECT_EQ(Write(7, "2.9"), 0.0); });
        for (int i = 0; i < c.pauseMs; ++i) {
            while (panel.Sleepers() == 0)
                std::this_thread::yield();
            EXPECT_EQ(Panel().beeps.size(), beeped);  // not yet
            panel.AdvanceClock(1);
        }
        writer.join();
        EXPECT_EQ(panel.Tick() - start, c.pauseMs) << c.stored;
    }
    EXPECT_EQ(Write(7, "-1"), 4.0);
    const auto beeps = Panel().beeps;
    ASSERT_EQ(beeps.size(), 4u);
    EXPECT_EQ(beeps[0].frequencyHz, 900u);
    EXPECT_EQ(beeps[0].milliseconds, 2u);
}

TEST_F(ChannelWrites, AreDroppedWithoutTheLockFile) {
    ::unlink("/tmp/olma_app_conf.lck");
    const FrozenTmp frozen;
    EXPECT_EQ(Write(1, "not an address"), 0.0);
    EXPECT_EQ(Write(21, "40"), 0.0);
    EXPECT_EQ(Panel().brightness, 80);
}

TEST_F(ChannelWrites, SetAddressesOfTheInterfaceTheyMean) {
    const struct {
        int channel;
        const char* value;
        double status;
    } cases[] = {
        {1, "192.168.7.8", 0}, {2, "255.255.0.0", 0}, {8, "1.2.3.4", 0}, {9, "255.0.0.0", 0},
        {1, "224.0.0.1", 4},   {2, "128.0.0.0", 4},   {8, "10.0.0", 4},  {1, "", 4},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Write(c.channel, c.value), c.status) << c.channel << "=" << c.value;
    const auto applied = Panel().appliedRecords;
    ASSERT_EQ(applied.size(), 4u);
    for (std::size_t i = 0; i < applied.size(); ++i)
        EXPECT_STREQ(applied[i].name, i < 2 ? "eth0" : "eth1");
    EXPECT_EQ(applied[3].address, 0x04030201u);
    EXPECT_EQ(applied[1].netmask, 0x0000FFFFu);
    ChangePanel([](sim::PanelState& state) { state.interfaces.resize(1); });
    EXPECT_EQ(Write(8, "10.1.2.3"), 8.0);
    sim::SimPanel::Instance().Fail("hal_set_ip_addr", {});
    EXPECT_EQ(Write(1, "10.1.2.3"), 7.0);
    sim::SimPanel::Instance().Fail("hal_get_network_count", {});
    EXPECT_EQ(Write(1, "10.1.2.3"), 6.0);
}

TEST_F(ChannelWrites, ReportTheBrightnessHardware) {
    sim::SimPanel::Instance().Fail("hal_display_set_backlight_brightness", {});
    EXPECT_EQ(Write(21, "40"), 15.0);
    EXPECT_EQ(Stored(hxd::KEY_BACKLIGHT_BRIGHTNESS), "");
    ChangePanel([](sim::PanelState& state) { state.brightness = -19; });
    EXPECT_EQ(Write(21, "101"), 16.0);  // the probe comes before the range
}

TEST(ScreenshotPath, ChoosesTheRoot) {
    const struct {
        const char* path;
        bool known;
        const char* root;
        const char* directory;
        const char* file;
    } cases[] = {
        {"$OLMA_DIR_USR/shots/a.bmp", true, "/storage/user_dir/", "shots/", "a.bmp"},
        {"$olma_dir_usr/a/b/c.png", true, "/storage/user_dir/", "a/b/", "c.png"},
        {"a.png", true, "/media/usb0/", "", "a.png"},
        {"x/y $z/a.png", true, "/media/usb0/", "x/y $z/", "a.png"},
        {"", true, "/media/usb0/", "", ""},
        {"$OLMA_DIR_USER/a.png", false, "", "", ""},
        {"x$/a.png", false, "", "", ""},
        {"..", false, "", "", ""},
        {"shots/../../etc/a.bmp", false, "", "", ""},
        {"$OLMA_DIR_USR/../log/a.bmp", false, "", "", ""},
        {"..a/b..c/a..png", true, "/media/usb0/", "..a/b..c/", "a..png"},
    };
    for (const auto& c : cases) {
        const auto target = panel_actions::ParseScreenshotPath(c.path);
        ASSERT_EQ(static_cast<bool>(target), c.known) << c.path;
        if (!c.known)
            continue;
        EXPECT_EQ(target->root, c.root) << c.path;
        EXPECT_EQ(target->subDirectory, c.directory) << c.path;
        EXPECT_EQ(target->fileName, c.file) << c.path;
    }
    const std::string harmless =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._/-";
    EXPECT_EQ(panel_actions::ShellWord(harmless), harmless);
    for (const char character : std::string(" \t\n!\"#$%&()*+,:;<=>?@[\\]^`{|}~\x7f\xe9")) {
        const std::string word(1, character);
        EXPECT_EQ(panel_actions::ShellWord(word), "'" + word + "'");
    }
    EXPECT_EQ(panel_actions::ShellWord("/a b/it's"), "'/a b/it'\\''s'");
}

TEST_F(Screenshots, AreSavedWhereAndAsThePathSays) {
    host.ints = {{"x1", 10}, {"y1", 20}, {"x2", 110}, {"y2", 220}};
    EXPECT_EQ(Save("$OLMA_DIR_USR/shots/a.bmp"), 0.0);
    EXPECT_EQ(Saved("/storage/user_dir/shots/a.bmp").size(), QSize(800, 480));
    EXPECT_EQ(Save("b.png", ",x1,y1,x2,y2"), 0.0);
    EXPECT_EQ(Saved("/media/usb0/b.png").size(), QSize(100, 200));
    EXPECT_EQ(Saved("/media/usb0/b.png").pixel(0, 0),
              Saved("/storage/user_dir/shots/a.bmp").pixel(10, 20));
    EXPECT_EQ(Save("$OTHER/d.png"), 0.0);
    EXPECT_EQ(Panel().captures.size(), 2u);
    if (QImageWriter::supportedImageFormats().contains("jpg")) {  // by a plug-in of Qt
        EXPECT_EQ(Save("c.jpg"), 0.0);
        EXPECT_FALSE(Saved("/media/usb0/c.jpg").isNull());
    }
    const sim::Capture capture = Panel().captures[1];
    EXPECT_EQ(capture.dirMacro, "$OLMA_DIR_USER");
    EXPECT_EQ((std::vector<int>{capture.flag, capture.x, capture.y, capture.width, capture.height}),
              (std::vector<int>{1, 10, 20, 100, 200}));
    const sim::Capture whole = Panel().captures[0];
    EXPECT_EQ((std::vector<int>{whole.x, whole.y, whole.width, whole.height}),
              (std::vector<int>(4)));
}

TEST_F(Screenshots, TakeARectangleOnlyFromAllFourCorners) {
    for (const char* region : {",10", ",10,20", ",10,20,110"}) {
        EXPECT_EQ(Save("q.png", region), 0.0);
        const sim::Capture capture = Panel().captures.back();
        EXPECT_EQ(capture.width, -10) << region;
        EXPECT_EQ(capture.height, std::string(region) == ",10" ? 0 : -20) << region;
        EXPECT_FALSE(Exists("/media/usb0/q.png")) << region;
    }
    EXPECT_EQ(Save("whole.png", ",0,0,5"), 0.0);  // an empty rectangle at the origin
    EXPECT_EQ(Saved("/media/usb0/whole.png").size(), QSize(800, 480));
}

TEST_F(Screenshots, AreSavedUpToALimit) {
    const struct {
        const char* region;
        QSize size;  // empty: nothing is saved
    } cases[] = {
        {",-5,-7", QSize(5, 7)},  // ends at (0, 0)
        {",3,4,3,4", QSize(800, 480)},
        {",3,4,3,9", QSize()},
        {",0,0,32767,1", QSize(32767, 1)},
        {",0,0,1,32767", QSize(1, 32767)},
        {",0,0,32768,1", QSize()},
        {",0,0,4096,4096", QSize(4096, 4096)},
        {",0,0,4096,4097", QSize()},
        {",2147483600,-2147483648,2147483647,-2147483600", QSize(47, 48)},
        {",2147483647,0,-2147483648,5", QSize()},
        {",0,0,1e99,1e99", QSize()},
    };
    for (const auto& c : cases) {
        ::unlink("/media/usb0/a.png");
        EXPECT_EQ(Save("a.png", c.region), 0.0);
        EXPECT_EQ(Exists("/media/usb0/a.png"), !c.size.isEmpty()) << c.region;
        EXPECT_EQ(Saved("/media/usb0/a.png").size(), c.size.isEmpty() ? QSize(0, 0) : c.size)
            << c.region;
    }
    Names asked;
    host.onParameter = [&] { asked.push_back(host.asked); };
    Save("a.png", ",1,2,3,4");
    EXPECT_EQ(asked, (Names{"path", "1", "2", "3", "4"}));
}

TEST_F(Screenshots, GoNowhereElseThanToTheStick) {
    ASSERT_EQ(::mkdir("/tmp/target", 0755), 0);
    writeFile("/tmp/target/a.bmp", "precious");
    ASSERT_EQ(::symlink("/tmp/target", "/media/usb0/link"), 0);
    ASSERT_EQ(::symlink("/tmp/target/a.bmp", "/media/usb0/a.bmp"), 0);
    for (const char* path : {"link/a.bmp", "link/new/a.bmp", "./link//new/a.bmp", "a.bmp"})
        EXPECT_EQ(Save(path), 0.0);
    EXPECT_EQ(Panel().captures.size(), 1u);
    EXPECT_EQ(readFile("/tmp/target/a.bmp"), "precious");
    EXPECT_FALSE(Exists("/tmp/target/new"));
    EXPECT_EQ(Saved("/media/usb0/a.bmp").size(), QSize(800, 480));  // in the link's place

    // What a capture has left that was cut short is in nobody's way.
    writeFile("/media/usb0/.hxdcontrol-" + std::to_string(::getpid()) + ".part", "x");
    EXPECT_EQ(Save("b.bmp"), 0.0);
    EXPECT_TRUE(Exists("/media/usb0/b.bmp"));

    // Links on the panel's own storage are its owner's; files there are replaced as a whole, too.
    ASSERT_EQ(::symlink("/tmp/target", "/storage/user_dir/link"), 0);
    Save("$OLMA_DIR_USR//link//b.png");
    EXPECT_FALSE(Saved("/tmp/target/b.png").isNull());
    const std::string before = readFile("/tmp/target/b.png");
    Save("$OLMA_DIR_USR/link/b.png", ",5");  // nothing to save
    EXPECT_EQ(readFile("/tmp/target/b.png"), before);
    Save("$OLMA_DIR_USR/link/b.unknown");
    ASSERT_EQ(::mkdir("/tmp/target/c.bmp", 0755), 0);
    Save("$OLMA_DIR_USR/link/c.bmp");  // a folder is not replaced
    EXPECT_EQ(QDir(QLatin1String("/tmp/target")).entryList(QDir::AllEntries | QDir::Hidden).size(),
              3 + 2)
        << "a.bmp, b.png and c.bmp, and nothing half-written";
}

TEST_F(Screenshots, NeverRunWhatAPathHolds) {
    for (const char* path :
         {"a b;touch /tmp/ran/x.png", "$(touch /tmp/ran)", "`touch /tmp/ran`/x.png",
          "q'; touch /tmp/ran; '/x.png", "n\ntouch /tmp/ran\n/x.png"}) {
        Save(path);
        EXPECT_FALSE(Exists("/tmp/ran")) << path;
    }
    Save("it's a \"dir\"/x.png");
    EXPECT_TRUE(Exists("/media/usb0/it's a \"dir\"/x.png"));
}
