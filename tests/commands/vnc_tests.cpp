#include "Record.h"
#include "TestFiles.h"
#include "commands/ChannelWrite.h"
#include "commands/VNCLockProxy.h"
#include "commands/VncPassword.h"

#include <sys/stat.h>
#include <QCoreApplication>

#include <functional>
#include <stdexcept>

namespace {

using CDevBas::ReadVncPwd;
using Calls = std::vector<std::string>;

const Calls UNLOCKING = {"HMI mouse 0", "HMI keyboard 0", "VNC mouse 0", "VNC keyboard 0"};

const char* const NO_PLUGIN = "Qt VNC plugin doesn't support lock\n";
const char* const NO_INTERFACE = "Qt VNC plugin doesn't implement IVNCLock interface\n";

// Writes down what it is told; each state can be read back.
class FakePlugin : public QObject, public IVNCLock {
    Q_OBJECT
    Q_INTERFACES(IVNCLock)

public:
    explicit FakePlugin(Calls& calls) : m_calls(calls) {}

    void setHMIMouseState(bool locked) override { Set("HMI mouse", m_states[0], locked); }
    bool getHMIMouseState() const override { return m_states[0]; }
    void setVNCMouseState(bool locked) override { Set("VNC mouse", m_states[1], locked); }
    bool getVNCMouseState() const override { return m_states[1]; }
    void setHMIKeyboardState(bool locked) override { Set("HMI keyboard", m_states[2], locked); }
    bool getHMIKeyboardState() const override { return m_states[2]; }
    void setVNCKeyboardState(bool locked) override { Set("VNC keyboard", m_states[3], locked); }
    bool getVNCKeyboardState() const override { return m_states[3]; }

    std::function<void()> onSet = [] {};

private:
    void Set(const std::string& name, bool& state, bool locked) {
        onSet();
        state = locked;
        m_calls.push_back(name + (locked ? " 1" : " 0"));
    }
    Calls& m_calls;
    bool m_states[4] = {true, true, true, true};
};

class VncLock : public testing::Test {
protected:
    // Below another child of the application, as a host's plug-in loader has it.
    void Install(QObject* object) {
        object->setObjectName(QLatin1String("olma.vnc.lock"));
        object->setParent(&loader);
        loader.setParent(QCoreApplication::instance());
    }
    static std::unique_ptr<VNCLockProxy> Make(const char* expectedOutput) {
        testing::internal::CaptureStdout();
        auto proxy = MakeVncLockProxy();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), expectedOutput);
        return proxy;
    }
    static void ExpectInert(VNCLockProxy& proxy) {
        proxy.setHMIMouseState(true);
        proxy.setHMIKeyboardState(true);
        proxy.setVNCMouseState(true);
        proxy.setVNCKeyboardState(true);
        EXPECT_FALSE(proxy.getHMIMouseState() || proxy.getHMIKeyboardState() ||
                     proxy.getVNCMouseState() || proxy.getVNCKeyboardState());
    }
    QObject loader;
    Calls calls;
};

class VncPassword : public RecordTest {
protected:
    static constexpr const char* FIRST = "/etc/iot_cfg/vncConfig.ini";
    static constexpr const char* SECOND = "/usr/olma_app/config/vncConfig.ini";

    static std::string Content(const char* password) {
        return std::string("[VNCCONFIG]\npasswd=") + password + "\n";
    }
    static long long ModifiedNs(const char* file) {
        struct stat status = {};
        ::stat(file, &status);
        return status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec;
    }
};
constexpr const char* VncPassword::FIRST;
constexpr const char* VncPassword::SECOND;

}  // namespace

TEST_F(VncLock, IsReleasedAtTheStartAndAtTheEnd) {
    FakePlugin* const plugin = new FakePlugin(calls);
    Install(plugin);
    auto proxy = Make("");
    EXPECT_EQ(calls, UNLOCKING);

    calls.clear();
    // The host reaches it by its interface, too.
    IVNCLock* const lock = qobject_cast<IVNCLock*>(static_cast<QObject*>(proxy.get()));
    ASSERT_NE(lock, nullptr);
    EXPECT_TRUE(proxy->inherits("VNCLockProxy"));
    EXPECT_EQ(proxy->qt_metacast("olma.vnc.lock.interface/1.0"), lock);
    const struct {
        void (IVNCLock::*set)(bool);
        bool (IVNCLock::*get)() const;
        const char* call;
    } operations[] = {
        {&IVNCLock::setHMIMouseState, &IVNCLock::getHMIMouseState, "HMI mouse 1"},
        {&IVNCLock::setVNCMouseState, &IVNCLock::getVNCMouseState, "VNC mouse 1"},
        {&IVNCLock::setHMIKeyboardState, &IVNCLock::getHMIKeyboardState, "HMI keyboard 1"},
        {&IVNCLock::setVNCKeyboardState, &IVNCLock::getVNCKeyboardState, "VNC keyboard 1"},
    };
    for (const auto& operation : operations) {
        EXPECT_FALSE((lock->*operation.get)()) << operation.call;
        (lock->*operation.set)(true);
        EXPECT_TRUE((lock->*operation.get)()) << operation.call;
        EXPECT_EQ(calls.back(), operation.call);
    }

    calls.clear();
    proxy.reset();
    EXPECT_EQ(calls, UNLOCKING);
    proxy = Make("");
    plugin->onSet = [] { throw std::runtime_error("plug-in"); };
    proxy.reset();  // goes no further
}

TEST_F(VncLock, FollowsTheChannelsMouseBeforeKeyboard) {
    Install(new FakePlugin(calls));
    DEV_CONTEXT context;
    OLMA_DATA record{};
    record.m_pContext = &context;
    context.m_pVncLock = Make("");
    const struct {
        const char* write;
        int result;
        Calls expected;
    } cases[] = {
        {"24=1", 0, {"HMI mouse 1", "HMI keyboard 1"}},
        {"25=1", 0, {"VNC mouse 1", "VNC keyboard 1"}},
        {"24=0.9", 0, {"HMI mouse 0", "HMI keyboard 0"}},
        {"25=2", -4, {}},
        {"24=-1", -4, {}},
    };
    for (const auto& c : cases) {
        calls.clear();
        EXPECT_EQ(CDevBas::mfDevIOWriteChannel(record, c.write), c.result) << c.write;
        EXPECT_EQ(calls, c.expected) << c.write;
    }
}

TEST_F(VncLock, IsShownByTheChannels) {
    FakePlugin* const plugin = new FakePlugin(calls);
    Install(plugin);
    FakeHost host;
    CDevCtrl device("panel", &host);
    const unsigned char blob[] = {0, 0};
    const int channel = 1;
    plugin->onSet = [&] {
        device.CollectDevData(&channel, 1);
        EXPECT_EQ(device.InitDevice(blob, sizeof blob), HOST_OK);
    };
    device.InitDevice(blob, sizeof blob);
    plugin->onSet = [] {};
    device.CollectDevData(&channel, 1);
    EXPECT_GT(host.numberChannels[10], 0) << "memory is read though the plug-in had collected";
    const struct {
        void (IVNCLock::*set)(bool);
        double local, remote;
    } locks[] = {
        {&IVNCLock::setHMIMouseState, 1, 0},
        {&IVNCLock::setHMIKeyboardState, 1, 0},
        {&IVNCLock::setVNCMouseState, 0, 1},
        {&IVNCLock::setVNCKeyboardState, 0, 1},
    };
    for (const auto& lock : locks) {
        (plugin->*lock.set)(true);
        EXPECT_EQ(device.CollectDevData(&channel, 1), 0);
        EXPECT_EQ(host.numberChannels[23], lock.local) << &lock - locks;
        EXPECT_EQ(host.numberChannels[24], lock.remote) << &lock - locks;
        (plugin->*lock.set)(false);
    }
    device.CleanupDevice();
}

TEST_F(VncLock, IsInertWithoutAPluginOrWithAnotherInterface) {
    ExpectInert(*Make(NO_PLUGIN));
    Install(new QObject);
    ExpectInert(*Make(NO_INTERFACE));
}

TEST_F(VncLock, OutlivesThePlugin) {
    FakePlugin* const plugin = new FakePlugin(calls);
    Install(plugin);
    auto proxy = Make("");
    calls.clear();
    delete plugin;
    ExpectInert(*proxy);
    proxy.reset();
    EXPECT_TRUE(calls.empty());
}

TEST_F(VncPassword, GoesToTheFirstFileThatExistsAndCreatesNone) {
    EXPECT_EQ(CDevBas::writeVncPwd("secret"), 0);
    EXPECT_STREQ(ReadVncPwd(), "");
    EXPECT_EQ(readFile(FIRST) + readFile(SECOND), "");

    ChangePanel([](sim::PanelState& state) { state.directories[1] = ""; });  // the usual one
    writeFile(SECOND, "[OTHER]\nkey=kept\n");
    CDevBas::writeVncPwd("secret");
    EXPECT_STREQ(ReadVncPwd(), "secret");
    EXPECT_EQ(readFile(SECOND), "[OTHER]\nkey=kept\n\n" + Content("secret"));

    writeFile(FIRST, Content("preferred"));
    EXPECT_STREQ(ReadVncPwd(), "preferred");
    CDevBas::writeVncPwd("changed");
    EXPECT_EQ(readFile(FIRST), Content("changed"));
    EXPECT_NE(readFile(SECOND).find("secret"), std::string::npos);
    EXPECT_EQ(CDevBas::mfDevIOWriteChannel(record, "19=a=b"), 0);  // the first "=" parts them
    EXPECT_STREQ(ReadVncPwd(), "a=b");
}

TEST_F(VncPassword, IsWrittenOnlyWhenItDiffers) {
    writeFile(FIRST, Content("Abc1"));
    const long long before = ModifiedNs(FIRST);
    CDevBas::writeVncPwd("Abc1");
    EXPECT_EQ(ModifiedNs(FIRST), before);
    CDevBas::writeVncPwd("abc1");
    EXPECT_EQ(readFile(FIRST), Content("abc1"));
    EXPECT_GT(ModifiedNs(FIRST), before);
    // Whatever the bytes, they come back.
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += {static_cast<char>(byte), 'a', static_cast<char>(byte)};
    for (const char* password : {"", bytes.c_str(), "a,b;c=\"d\\\"", "@Variant(x)", " blanks "}) {
        CDevBas::writeVncPwd(password);
        EXPECT_STREQ(ReadVncPwd(), password);
    }
}

TEST_F(VncPassword, CommandReportsThroughItsResultVariable) {
    writeFile(FIRST, Content("old"));
    host.texts["pw"] = "n\xe9w";
    host.ints["number"] = 5;
    const struct {
        const char* args;
        int result;
        int reported;
        const char* stored;
    } cases[] = {
        {"pw,r,x", -5, 99, "old"},
        {"number,r", -4, 4, "old"},
        {"number", -4, 99, "old"},
        {" pw , r ", 0, 0, "n\xe9w"},
        {"literal", 0, 99, "literal"},
        {"pw,nowhere", -4, 99, "n\xe9w"},  // stored all the same
        {"", 0, 99, ""},
    };
    for (const auto& c : cases) {
        host.ints["r"] = 99;
        EXPECT_EQ(CDevBas::ModVncPwd(record, c.args), c.result) << c.args;
        EXPECT_EQ(host.ints["r"], c.reported) << c.args;
        EXPECT_STREQ(ReadVncPwd(), c.stored) << c.args;
    }
}

#include "vnc_tests.moc"
