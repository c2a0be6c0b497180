#include "Adversity.h"
#include "SimPanel.h"
#include "SystemCalls.h"
#include "TestFiles.h"
#include "WaitStatus.h"
#include "common/AppSettings.h"
#include "common/File.h"
#include "common/FileLock.h"
#include "common/IniOperator.h"
#include "common/PublicFolder.h"
#include "common/ScratchFolder.h"
#include "common/SettingsFile.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QSettings>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <random>
#include <thread>

namespace {

const char* const FOLDER = "/usr/olma_app/config";
const char* const FILE_NAME = "/usr/olma_app/config/olma_app_conf.ini";
const QString INI = QLatin1String(FILE_NAME);
const QString SECTION = QLatin1String("DEVICE");
const char* const OWN_KEY[] = {hxd::KEY_BACKLIGHT_DURATION, hxd::KEY_BUZZ_DURATION};
constexpr int ROUNDS = 1000;

void Write(const char* key, const QString& value, const QString& file = INI) {
    EXPECT_EQ(IniOperator::FileIniWriteValue(file, SECTION, QLatin1String(key), value), 0);
}

QString Read(const char* key, const QString& file = INI) {
    QString value;
    EXPECT_EQ(
        IniOperator::FileIniReadValue(file, SECTION, QLatin1String(key), value, QLatin1String("-")),
        1);
    return value;
}

// Of one length, so that the file's size tells nothing.
QString Number(int number) {
    return QString::number(100000 + number);
}

struct stat StatusOf(const char* path) {
    struct stat status = {};
    EXPECT_EQ(::lstat(path, &status), 0) << path;
    return status;
}

// As the GUI has it, under the lock.
QVariant Plainly(const char* key, const QString& written = QString()) {
    QSettings settings(INI, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    const QString path = SECTION + QLatin1Char('/') + QLatin1String(key);
    if (!written.isNull())
        settings.setValue(path, written);
    return settings.value(path);
}

// Count their own key up. False if it is stale or lost to the other process.
bool CountUpAsDriver(const char* key) {
    hxd::AppSettings settings;
    QString value;
    for (int round = 1; round <= ROUNDS; ++round) {
        settings.Read(key, value);
        if (value != Number(round - 1))
            return false;
        settings.Write(key, Number(round));
    }
    return true;
}
bool CountUpAsGui(const char* key) {
    HXDCTRL::FileLock lock;
    lock.open(hxd::appCfgLckPath);
    for (int round = 1; round <= ROUNDS; ++round) {
        HXDCTRL::FileLocker locker(lock);
        if (Plainly(key).toString() != Number(round - 1))
            return false;
        Plainly(key, Number(round));
    }
    return true;
}

// Puts another text of the same length into the file and its time back, as a write within the same
// tick of the clock does.
void WriteUnseen(const std::string& from, const std::string& to) {
    std::string text = readFile(FILE_NAME);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << text;
    const struct stat before = StatusOf(FILE_NAME);
    writeFile(FILE_NAME, text.replace(at, from.size(), to));
    const struct timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, FILE_NAME, times, 0), 0);
}

std::size_t EntriesOf(const char* folder) {
    std::size_t count = 0;
    DIR* const listing = ::opendir(folder);
    while (::readdir(listing) != nullptr)
        ++count;
    ::closedir(listing);
    return count - 2;  // "." and ".."
}

// What two processes that are killed have certainly written.
struct Progress {
    std::atomic<int> written[2];
};

[[noreturn]] void WriteUntilKilled(int writer, Progress& progress) {
    hxd::AppSettings settings;
    for (int number = progress.written[writer] + 1;; ++number) {
        settings.Write(OWN_KEY[writer], Number(number));
        progress.written[writer] = number;
    }
}

class Settings : public testing::Test {
protected:
    ~Settings() override {
        ::unlink(FILE_NAME);
        sim::SimPanel::Instance().Reset();
    }
};

}  // namespace

TEST_F(Settings, OfDriverAndGuiAreNeverLostNorStale) {
    for (const char* key : OWN_KEY)
        Write(key, Number(0));
    pid_t writers[2];
    for (int i = 0; i < 2; ++i) {
        writers[i] = ::fork();
        if (writers[i] == 0)
            ::_exit((i == 0 ? CountUpAsDriver : CountUpAsGui)(OWN_KEY[i]) ? 0 : 1);
    }
    for (const pid_t writer : writers) {
        const int status = WaitStatus(writer);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    for (const char* key : OWN_KEY)
        EXPECT_EQ(Read(key), Number(ROUNDS));
}

TEST_F(Settings, OfOthersAreSeenAndKeptHoweverTheyCame) {
    Write(OWN_KEY[0], QLatin1String("aaa"));
    Write(OWN_KEY[1], QLatin1String("bbb"));
    WriteUnseen("bbb", "ccc");  // behind our write
    Write(OWN_KEY[0], QLatin1String("ddd"));
    EXPECT_EQ(readFile(FILE_NAME), "[DEVICE]\nbacklight_duration=ddd\nbuzz_duration=ccc\n");
    EXPECT_EQ(Read(OWN_KEY[1]), QLatin1String("ccc"));
    WriteUnseen("ccc", "eee");  // behind our reading
    EXPECT_EQ(Read(OWN_KEY[1]), QLatin1String("eee"));
    Write(OWN_KEY[0], QLatin1String("fff"));
    EXPECT_EQ(readFile(FILE_NAME), "[DEVICE]\nbacklight_duration=fff\nbuzz_duration=eee\n");

    g_systemCalls.flushes = false;  // many within a tick: others see them by the file's time alone
    for (int number = 0; number < 50; ++number) {
        Write(OWN_KEY[0], Number(number));
        EXPECT_EQ(Plainly(OWN_KEY[0]).toString(), Number(number));
    }
    g_systemCalls.flushes = true;
}

TEST_F(Settings, SurviveTheEndOfProcessesInAWrite) {
    constexpr int KILL_ROUNDS = 150;
    void* const shared = ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    Progress& progress = *new (shared) Progress();
    hxd::AppSettings settings;
    writeFile(FILE_NAME, "[GUI]\nlanguage=" + std::string(5000, 'x') + "\n");
    for (const char* key : OWN_KEY)
        Write(key, Number(0));
    std::minstd_rand random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    std::chrono::steady_clock::duration slowest{};
    for (int round = 0; round < KILL_ROUNDS; ++round) {
        pid_t writers[2];
        for (int i = 0; i < 2; ++i) {
            writers[i] = ::fork();
            if (writers[i] == 0)
                WriteUntilKilled(i, progress);
        }
        for (const pid_t writer : writers) {
            ::usleep(static_cast<useconds_t>(random() % 5000));
            ASSERT_EQ(::kill(writer, SIGKILL), 0);
            ASSERT_TRUE(WIFSIGNALED(WaitStatus(writer)));
        }
        const auto start = std::chrono::steady_clock::now();
        settings.Write(hxd::KEY_BACKLIGHT_STATUS, Number(round));
        slowest = std::max(slowest, std::chrono::steady_clock::now() - start);
        for (int i = 0; i < 2; ++i) {
            const int number = Read(OWN_KEY[i]).toInt() - Number(0).toInt();
            const int written = progress.written[i];
            ASSERT_TRUE(number == written || number == written + 1) << number << ", " << written;
            progress.written[i] = number;
        }
        ASSERT_NE(readFile(FILE_NAME).find(std::string(5000, 'x') + "\n"), std::string::npos);
        ASSERT_EQ(EntriesOf(FOLDER), 1u);
    }
    const auto slowestMs = std::chrono::duration_cast<std::chrono::milliseconds>(slowest).count();
    RecordProperty("slowest_write_ms", static_cast<int>(slowestMs));
    EXPECT_LT(slowestMs, 10000) << "for the lock of a dead process Qt would wait 30 s";
    ::munmap(shared, sizeof(Progress));
}

// On a disk with room for ever more of the new file's pages.
TEST_F(Settings, ThatTheDiskRefusesLeaveNoTrace) {
    sim::SimPanel::Instance().Change(
        [](sim::PanelState& state) { state.directories[1] = "/storage"; });
    const char* const file = "/storage/olma_app_conf.ini";
    const char* const filler = "/storage/filler";
    const std::string foreign = "[GUI]\nkey=" + std::string(20000, 'x') + "\n";
    const std::string before = "[DEVICE]\nbuzz_duration=1\n\n" + foreign;
    int refused = 0;
    int stored = 0;
    for (off_t freePages = 0; freePages < 16; ++freePages) {
        writeFile(file, before);
        const HXDCTRL::File disk(::open(filler, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        const std::string block(1 << 16, 'x');
        while (::write(disk.Descriptor(), block.data(), block.size()) > 0) {
        }
        ASSERT_EQ(::ftruncate(disk.Descriptor(), StatusOf(filler).st_size - freePages * 4096), 0);
        const bool said = hxd::SettingsFile(QLatin1String(file), hxd::CODEC_UTF8)
                              .Store({{QLatin1String("DEVICE/buzz_duration"), 2}});
        const std::string after = readFile(file);
        EXPECT_EQ(said, after != before);
        ASSERT_TRUE(after == before || after == "[DEVICE]\nbuzz_duration=2\n\n" + foreign) << after;
        ++(after == before ? refused : stored);
        ASSERT_EQ(EntriesOf("/storage"), 4u) << "log, user_dir, the filler and the file";

        ::unlink(filler);
        writeFile(file, "[DEVICE]\nbuzz_duration=3\n");
        QString value;
        hxd::AppSettings().Read(hxd::KEY_BUZZ_DURATION, value);
        EXPECT_EQ(value, QLatin1String("3"));
        hxd::AppSettings().Write(hxd::KEY_BACKLIGHT_STATUS, QLatin1String("1"));
        EXPECT_EQ(readFile(file), "[DEVICE]\nbacklight_status=1\nbuzz_duration=3\n");
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(stored, 0);
}

TEST_F(Settings, KeepModeTimeLinksAndForeignKeys) {
    const std::string foreign =
        "[%General]\na=1\n\n[Z]\nbytes=@ByteArray(\\0\\xff)\nlist=a, b\npoint=@Point(1 2)\n"
        "sub\\key=\"x;y\"\n";
    writeFile(FILE_NAME, "; comment\n" + foreign);
    ::chmod(FILE_NAME, 0640);
    const struct timespec future[] = {{2000000000, 0}, {2000000000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, FILE_NAME, future, 0), 0);
    Write(OWN_KEY[0], QLatin1String("1"));
    EXPECT_EQ(StatusOf(FILE_NAME).st_mode & 07777, 0640u);
    const struct timespec written = StatusOf(FILE_NAME).st_mtim;
    EXPECT_GT(std::make_pair(written.tv_sec, written.tv_nsec),
              std::make_pair(future[1].tv_sec, future[1].tv_nsec));
    EXPECT_GT(StatusOf(FILE_NAME).st_atime, 1500000000) << "left alone";
    EXPECT_EQ(readFile(FILE_NAME), "[DEVICE]\nbacklight_duration=1\n\n" + foreign);
    const struct timespec past[] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, FILE_NAME, past, 0), 0);
    Write(OWN_KEY[0], QLatin1String("3"));
    EXPECT_GT(StatusOf(FILE_NAME).st_mtime, 1500000000) << "the present";
    // Not even by keys that Qt does not find again.
    for (const char* odd :
         {"[GUI]\nfoo/=1\n", "[GUI]\nQUJD/==\n", "[/]\n=1\n", "[DEVICE]\n/=1\n", "a=1\n[\na=2\n"}) {
        writeFile("/tmp/odd", odd);
        Write(OWN_KEY[0], QLatin1String("7"), QLatin1String("/tmp/odd"));
        EXPECT_EQ(Read(OWN_KEY[0], QLatin1String("/tmp/odd")), QLatin1String("7")) << odd;
    }
    Write(OWN_KEY[0], QLatin1String("8"), QLatin1String("/tmp/new/folder/file"));
    EXPECT_EQ(Read(OWN_KEY[0], QLatin1String("/tmp/new/folder/file")), QLatin1String("8"));

    const mode_t umask = ::umask(0);
    ::mkdir("/tmp/links", 0755);
    ASSERT_EQ(::symlink("links/two", "/tmp/one"), 0);
    ASSERT_EQ(::symlink("../links/three", "/tmp/links/two"), 0);
    Write(OWN_KEY[0], QLatin1String("2"), QLatin1String("/tmp/one"));
    ::umask(umask);
    EXPECT_EQ(StatusOf("/tmp/links/three").st_mode, S_IFREG | 0644u);
    EXPECT_TRUE(S_ISLNK(StatusOf("/tmp/one").st_mode) &&
                S_ISLNK(StatusOf("/tmp/links/two").st_mode));
}

TEST_F(Settings, AreOnTheStorageBeforeTheyTakeTheirPlaceAndTheirPlaceAfterwards) {
    Write(OWN_KEY[0], QLatin1String("old"));
    std::string calls;
    g_systemCalls.onFlush = [&](const std::string& call) {
        calls += call + ": " + readFile(FILE_NAME).substr(28);
    };
    Write(OWN_KEY[0], QLatin1String("new"));
    g_systemCalls.onFlush = nullptr;
    EXPECT_EQ(calls, "fsync: old\nsync: new\n");
}

TEST_F(Settings, AreNotLostWhereCallsAreInterruptedOrFail) {
    const QString value = QString(5000, QLatin1Char('x'));
    QString read;
    hxd::AppSettings settings;
    g_systemCalls.interrupts = true;
    settings.Write(OWN_KEY[0], value);
    settings.Write(OWN_KEY[1], QLatin1String("1"));
    const long long before = g_systemCalls.written;
    settings.Read(OWN_KEY[0], read);
    EXPECT_EQ(g_systemCalls.written - before, StatusOf(FILE_NAME).st_size) << "in a copy to parse";
    g_systemCalls.interrupts = false;
    EXPECT_EQ(read, value);
    EXPECT_EQ(readFile(FILE_NAME),
              "[DEVICE]\nbacklight_duration=" + std::string(5000, 'x') + "\nbuzz_duration=1\n");
    // A setting that once could not be read is read again.
    settings.Read(OWN_KEY[1], read);
    Write(OWN_KEY[1], QLatin1String("2"));
    g_systemCalls.diskFull = true;
    settings.Read(OWN_KEY[1], read);
    g_systemCalls.diskFull = false;
    EXPECT_EQ(read, QString());
    settings.Read(OWN_KEY[1], read);
    EXPECT_EQ(read, QLatin1String("2"));
    Write(OWN_KEY[1], QLatin1String("3"));
    {
        const int next = ::dup(0);
        ::close(next);
        const DescriptorLimit oneMore(next + 1);  // for the driver, and none for Qt
        settings.Read(OWN_KEY[1], read);
        EXPECT_EQ(read, QString());
    }
    settings.Read(OWN_KEY[1], read);
    EXPECT_EQ(read, QLatin1String("3"));

    // A file that cannot be given to its owner is stored, one that the storage fails is not.
    for (const int error : {EPERM, EINVAL, ENOSYS, EOPNOTSUPP, EIO}) {
        g_systemCalls.chownError = error;
        Write(OWN_KEY[1], QString::number(error));
        EXPECT_EQ(Read(OWN_KEY[1]), QString::number(error == EIO ? EOPNOTSUPP : error));
    }
    g_systemCalls.chownError = 0;

    HXDCTRL::FileLock lock;
    const HXDCTRL::File other(::open("/tmp/y.lck", O_RDONLY | O_CREAT, 0600));
    ASSERT_TRUE(lock.open("/tmp/y.lck"));
    g_systemCalls.interrupts = true;
    const HXDCTRL::FileLocker locker(lock);
    g_systemCalls.interrupts = false;
    EXPECT_EQ(::flock(other.Descriptor(), LOCK_EX | LOCK_NB), -1) << "held by the driver";
}

TEST_F(Settings, AreNeitherReadFromNorWrittenToWhatIsNoFile) {
    writeFile("/tmp/huge", "");
    ASSERT_TRUE(::mkfifo("/tmp/pipe", 0600) == 0 && ::symlink("loop", "/tmp/loop") == 0 &&
                ::truncate("/tmp/huge", 1LL << 40) == 0);
    for (const char* path : {"/tmp/loop", "/tmp/pipe", "/tmp/huge", "/etc"}) {
        Write(OWN_KEY[0], QLatin1String("1"), QLatin1String(path));
        EXPECT_EQ(Read(OWN_KEY[0], QLatin1String(path)), QLatin1String("-")) << path;
    }
    std::string largest = "[DEVICE]\nbacklight_duration=1\n;";
    largest.resize(4 << 20, '-');
    writeFile("/tmp/huge", largest);
    EXPECT_EQ(Read(OWN_KEY[0], QLatin1String("/tmp/huge")), QLatin1String("1"));
}

TEST(ScratchFolder, IsRemovedByOthersOnlyWhenItsOwnerIsDead) {
    ASSERT_EQ(::mkdir("/tmp/.x.hxd-DEAD00", 0700), 0);
    writeFile("/tmp/.x.hxd-DEAD00/1.lock", "");
    ASSERT_EQ(::symlink("/etc", "/tmp/.x.hxd-LINK00"), 0);
    const hxd::ScratchFolder first("/tmp/x");
    const hxd::ScratchFolder second("/tmp/x");
    EXPECT_EQ(::access(first.Path().c_str(), F_OK), 0);
    EXPECT_EQ(StatusOf(second.Path().c_str()).st_mode, S_IFDIR | 0700u);
    EXPECT_EQ(::access("/tmp/.x.hxd-DEAD00", F_OK), -1);
    EXPECT_EQ(::access("/etc/iot_cfg", F_OK), 0);
    g_systemCalls.onLock = [] { const hxd::ScratchFolder takesItForAbandoned("/tmp/z"); };
    EXPECT_EQ(::access(hxd::ScratchFolder("/tmp/z").Path().c_str(), F_OK), 0) << "made again";
    const DescriptorLimit none(0);
    EXPECT_EQ(::access(hxd::ScratchFolder("/tmp/y").Path().c_str(), F_OK), -1)
        << "not to be locked";
}

TEST_F(Settings, AreReadWithDefaultsAndRefuseEmptyNames) {
    const QString key = QLatin1String("key");
    QString value = QLatin1String("before");
    EXPECT_EQ(IniOperator::FileIniReadValue(INI, QString(), key, value, QString()), 0);
    EXPECT_EQ(value, QLatin1String("before"));
    EXPECT_EQ(IniOperator::FileIniWriteValue(INI, QString(), key, value), -1);
    EXPECT_EQ(IniOperator::FileIniWriteValue(QString(), SECTION, key, value), -1);
    EXPECT_EQ(Read(OWN_KEY[0]), QLatin1String("-"));
    EXPECT_FALSE(QFile::exists(INI));
    const QString text = QString::fromUtf8("grün, 1%=\";\n");
    Write(OWN_KEY[0], text);
    Write(OWN_KEY[0], QString(QChar(0xD83D)));  // half a character, which no codec can hold
    EXPECT_EQ(Read(OWN_KEY[0]), text);
    EXPECT_NE(readFile(FILE_NAME).find("[DEVICE]"), std::string::npos);

    const int input = ::dup(0);
    ::close(0);  // a host need not have a standard input
    Write(OWN_KEY[1], QLatin1String("1"));
    EXPECT_EQ(Read(OWN_KEY[1]), QLatin1String("1"));
    EXPECT_EQ(::fcntl(0, F_GETFD), -1) << "left open";
    ::dup2(input, 0);
    ::close(input);
}

// The same bytes mean something else in another codec, and a text that was there before is read
// as it was.
TEST_F(Settings, OfTheSameBytesFollowTheirCodecAndWhatTheFileHoldsNow) {
    const char* const texts[] = {"[DEVICE]\nname=\"\xc3\xa9\"\n", "[DEVICE]\nname=other\n"};
    for (int round = 0; round < 3; ++round) {
        for (const char* text : texts) {
            writeFile(FILE_NAME, text);
            hxd::SettingsFile utf8(INI, hxd::CODEC_UTF8), escaped(INI, nullptr);
            utf8.Load();
            escaped.Load();
            const bool accented = text == texts[0];
            const QString key = QLatin1String("DEVICE/name");
            EXPECT_EQ(utf8.Value(key).size(), accented ? 1 : 5);
            EXPECT_EQ(escaped.Value(key).size(), accented ? 2 : 5);
        }
    }
}

TEST_F(Settings, LieInThePanelsFolderWhereTheHostNamesNone) {
    sim::SimPanel::Instance().Change([](sim::PanelState& state) { state.directories.clear(); });
    EXPECT_EQ(hxd::AppSettings().Write(hxd::KEY_BUZZ_DURATION, QLatin1String("30")), 0);
    EXPECT_EQ(readFile(FILE_NAME), "[DEVICE]\nbuzz_duration=30\n");
}

TEST(LockFile, IsExclusiveBetweenOpeners) {
    HXDCTRL::FileLock lock;
    ASSERT_TRUE(lock.open(hxd::appCfgLckPath));
    const HXDCTRL::File other(::open(hxd::appCfgLckPath, O_RDONLY));
    {
        HXDCTRL::FileLocker locker(lock);
        EXPECT_EQ(::flock(other.Descriptor(), LOCK_EX | LOCK_NB), -1);
    }
    EXPECT_EQ(::flock(other.Descriptor(), LOCK_EX | LOCK_NB), 0);
    std::atomic<bool> read{false};
    std::thread reader([&] {
        QString value;
        hxd::AppSettings().Read(OWN_KEY[0], value);
        read = true;
    });
    ::usleep(50000);
    EXPECT_FALSE(read) << "settings are read under their lock";
    ::flock(other.Descriptor(), LOCK_UN);
    reader.join();
    ::flock(other.Descriptor(), LOCK_EX);
    std::thread holder([&] {
        ::usleep(50000);
        ::flock(other.Descriptor(), LOCK_UN);
    });
    const std::atomic<bool> wanted{true};
    EXPECT_TRUE(HXDCTRL::FileLocker(lock, wanted).IsHeld());
    holder.join();
    struct stat status = {};
    ASSERT_EQ(::stat(hxd::appCfgLckPath, &status), 0);
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
            EXPECT_FALSE(hxd::RemoveUnlessRegular(path));
        }
        EXPECT_TRUE(lock.open(path));
        struct stat status = {};
        ASSERT_EQ(::lstat(path, &status), 0);
        EXPECT_TRUE(S_ISREG(status.st_mode));
        const ino_t inode = status.st_ino;
        EXPECT_TRUE(lock.open(path));
        ::lstat(path, &status);
        EXPECT_EQ(status.st_ino, inode);  // a lock file is never removed
        EXPECT_FALSE(hxd::RemoveUnlessRegular(path));
        EXPECT_EQ(::access(path, F_OK), 0);
        ::unlink(path);
        EXPECT_FALSE(hxd::RemoveUnlessRegular(path)) << "nothing is there";
    }
    EXPECT_NE(::access("/tmp/victim", F_OK), 0);
    EXPECT_EQ(QDir(QLatin1String("/tmp"), QLatin1String("planted.lck*")).count(), 1u)
        << "the full folder, aside";
    EXPECT_FALSE(lock.open("/tmp/missing/x.lck"));
}

TEST(File, ReadsWholeFilesOfEveryKind) {
    writeFile("/tmp/content", std::string(5000, 'x'));
    HXDCTRL::File file;
    ASSERT_TRUE(file.open("/tmp/content", O_RDONLY));
    EXPECT_TRUE(file.seek(0) && file.seek(4000));
    EXPECT_EQ(file.readAll(), std::string(5000, 'x'));
    const int first = file.Descriptor();
    ASSERT_TRUE(file.open("/proc/self/status", O_RDONLY));  // reports size 0
    EXPECT_EQ(file.Descriptor(), first) << "the one before was closed";
    EXPECT_NE(file.readAll().find("VmRSS"), std::string::npos);
    ASSERT_TRUE(file.open("/tmp", O_RDONLY));
    EXPECT_TRUE(file.seek(1));
    EXPECT_EQ(file.readAll(), "");
    EXPECT_EQ(::lseek(file.Descriptor(), 0, SEEK_CUR), 1) << "stays where it was";
    EXPECT_EQ(file.LastError(), EISDIR);
    EXPECT_FALSE(file.open("/tmp/none", O_RDONLY));
    EXPECT_FALSE(file.IsOpen());
    HXDCTRL::File closed, other, third;
    char byte = 0;
    EXPECT_FALSE(closed.seek(0));
    EXPECT_EQ(closed.LastError(), EBADF);
    EXPECT_EQ(other.Read(&byte, 1), 0u);
    EXPECT_EQ(other.LastError(), EBADF);
    EXPECT_FALSE(third.Write("x"));
    EXPECT_EQ(third.LastError(), EBADF);
    EXPECT_FALSE(HXDCTRL::File::is_file_exist("/tmp"));
    EXPECT_TRUE(HXDCTRL::File::is_file_exist("/tmp/content"));
}

TEST(File, IsReadOnAfterAnInterruption) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    HXDCTRL::File reading(ends[0]);
    HXDCTRL::File writing(ends[1]);
    std::thread writer([&] {
        ::usleep(50000);
        EXPECT_EQ(::write(writing.Descriptor(), "a", 1), 1);
        ::usleep(50000);
        EXPECT_EQ(::write(writing.Descriptor(), "bcd", 3), 3);
    });
    char bytes[5] = {};
    const InterruptingTimer timer;
    EXPECT_EQ(reading.Read(bytes, 2), 2u);
    EXPECT_EQ(reading.Read(bytes + 2, 2), 2u);
    EXPECT_STREQ(bytes, "abcd");
    writer.join();
    writing.close();
    errno = EIO;
    EXPECT_EQ(reading.Read(bytes, 2), 0u);
    EXPECT_EQ(reading.LastError(), 0) << "the end is no error";
}
