#include "Adversity.h"
#include "SimPanel.h"
#include "WaitStatus.h"
#include "common/AppSettings.h"
#include "common/File.h"
#include "common/FileLock.h"
#include "common/IniOperator.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <fstream>
#include <functional>

namespace {

const QString INI = QLatin1String("/tmp/shared.ini");
const QString SECTION = QLatin1String("DEVICE");
const QString OWN_KEY[] = {QLatin1String("first"), QLatin1String("second")};

std::string FileText(const char* path) {
    HXDCTRL::File file;
    return file.open(path, O_RDONLY) ? file.readAll() : "<none>";
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int ROUNDS = 1000;
#else
constexpr int ROUNDS = 5000;
#endif

// Counts its own key up under the lock; the exit code tells what went wrong.
int CountUp(const QString& key) {
    HXDCTRL::FileLock lock;
    if (!lock.open("/tmp/shared.lck"))
        return 1;
    for (int round = 1; round <= ROUNDS; ++round) {
        QString value;
        {
            HXDCTRL::FileLocker locker(lock);
            IniOperator::FileIniReadValue(INI, SECTION, key, value, QLatin1String("0"));
        }
        if (value.toInt() != round - 1)
            return 2;  // stale, or lost to the other process
        HXDCTRL::FileLocker locker(lock);
        IniOperator::FileIniWriteValue(INI, SECTION, key, QString::number(round));
    }
    return 0;
}

}  // namespace

TEST(Settings, OfTwoProcessesAreNeverLostNorStale) {
    pid_t writers[2];
    for (int i = 0; i < 2; ++i) {
        writers[i] = ::fork();
        if (writers[i] == 0)
            ::_exit(CountUp(OWN_KEY[i]));
    }
    for (const pid_t writer : writers) {
        const int status = WaitStatus(writer);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    for (const QString& key : OWN_KEY) {
        QString value;
        IniOperator::FileIniReadValue(INI, SECTION, key, value, QString());
        EXPECT_EQ(value.toInt(), ROUNDS);
    }
}

TEST(Settings, AreReadWithDefaultsAndRefuseEmptyNames) {
    const QString ini = QLatin1String("/tmp/single.ini");
    QString value = QLatin1String("before");
    EXPECT_EQ(IniOperator::FileIniReadValue(ini, QString(), OWN_KEY[0], value, QString()), 0);
    EXPECT_EQ(value, QLatin1String("before"));
    EXPECT_EQ(IniOperator::FileIniWriteValue(ini, QString(), OWN_KEY[0], value), -1);
    EXPECT_EQ(IniOperator::FileIniWriteValue(QString(), SECTION, OWN_KEY[0], value), -1);
    EXPECT_EQ(IniOperator::FileIniReadValue(ini, SECTION, OWN_KEY[0], value, OWN_KEY[1]), 1);
    EXPECT_EQ(value, OWN_KEY[1]);
    EXPECT_FALSE(QFile::exists(ini));
    const QString text = QString::fromUtf8("grün, 1%=\";\n");
    EXPECT_EQ(IniOperator::FileIniWriteValue(ini, SECTION, OWN_KEY[0], text), 0);
    IniOperator::FileIniReadValue(ini, SECTION, OWN_KEY[0], value, QString());
    EXPECT_EQ(value, text);
    EXPECT_NE(FileText("/tmp/single.ini").find("[DEVICE]"), std::string::npos);
}

TEST(Settings, OfTheGuiLieWhereTheHostSays) {
    hxd::AppSettings settings;
    ASSERT_TRUE(settings.IsOpen());
    EXPECT_EQ(settings.Write(hxd::KEY_BUZZ_DURATION, QLatin1String("30")), 0);
    EXPECT_EQ(FileText("/usr/olma_app/config/olma_app_conf.ini"), "[DEVICE]\nbuzz_duration=30\n");
    sim::SimPanel::instance().change([](sim::PanelState& state) { state.directories.clear(); });
    EXPECT_EQ(hxd::AppConfigDirectory(), QLatin1String("/usr/olma_app/config"));
    sim::SimPanel::instance().reset();
}

TEST(LockFile, IsExclusiveBetweenOpeners) {
    HXDCTRL::FileLock lock;
    ASSERT_TRUE(lock.open("/tmp/x.lck"));
    const HXDCTRL::File other(::open("/tmp/x.lck", O_RDONLY));
    {
        HXDCTRL::FileLocker locker(lock);
        EXPECT_EQ(::flock(other.Descriptor(), LOCK_EX | LOCK_NB), -1);
    }
    EXPECT_EQ(::flock(other.Descriptor(), LOCK_EX | LOCK_NB), 0);
    struct stat status = {};
    ASSERT_EQ(::stat("/tmp/x.lck", &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0755u);  // 0777 less the umask
}

TEST(LockFile, TakesItsPlaceBackFromWhateverWasPlantedThere) {
    const char* const path = "/tmp/planted.lck";
    const std::function<int()> plants[] = {
        [&] { return ::symlink("/tmp/victim", path); },
        [&] { return ::mkfifo(path, 0600); },
        [&] { return ::mkdir(path, 0755); },
        [&] { return ::mkdir(path, 0755) + ::mkdir("/tmp/planted.lck/full", 0755); },
    };
    HXDCTRL::FileLock lock;
    for (const auto& plant : plants) {
        ASSERT_EQ(plant(), 0);
        {
            const FrozenTmp frozen;
            EXPECT_FALSE(lock.open(path));
            EXPECT_EQ(lock.Descriptor(), -1);
        }
        EXPECT_TRUE(lock.open(path));
        struct stat status = {};
        ASSERT_EQ(::lstat(path, &status), 0);
        EXPECT_TRUE(S_ISREG(status.st_mode));
        const ino_t inode = status.st_ino;
        EXPECT_TRUE(lock.open(path));
        ::lstat(path, &status);
        EXPECT_EQ(status.st_ino, inode);  // a lock file is never removed
        ::unlink(path);
    }
    EXPECT_NE(::access("/tmp/victim", F_OK), 0);
    EXPECT_FALSE(lock.open("/tmp/missing/x.lck"));
}

TEST(File, ReadsWholeFilesOfEveryKind) {
    std::ofstream("/tmp/content") << std::string(5000, 'x');
    HXDCTRL::File file;
    ASSERT_TRUE(file.open("/tmp/content", O_RDONLY));
    EXPECT_TRUE(file.seek(4000));
    EXPECT_EQ(file.readAll(), std::string(5000, 'x'));
    ASSERT_TRUE(file.open("/proc/self/status", O_RDONLY));  // reports size 0
    EXPECT_NE(file.readAll().find("VmRSS"), std::string::npos);
    ASSERT_TRUE(file.open("/tmp", O_RDONLY));
    EXPECT_EQ(file.readAll(), "");
    EXPECT_EQ(file.LastError(), EISDIR);
    EXPECT_FALSE(file.open("/tmp/none", O_RDONLY));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(HXDCTRL::File::is_file_exist("/tmp"));
    EXPECT_TRUE(HXDCTRL::File::is_file_exist("/tmp/content"));
}
