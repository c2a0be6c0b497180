// The part of Qt 4.8 that this project uses, declared as Qt 4.8 declares it and with
// nothing that came later: what compiles against this compiles on a panel. Debian has no Qt 4 to
// build with. Only to compile against; nothing is defined. A declaration is added here after a look
// at whether both Qt 4.8 and Qt 5 have it; the conversions between QString and char* are left out,
// as QT_NO_CAST_FROM_ASCII and QT_NO_CAST_TO_ASCII do.
#ifndef HXD_QT48_H
#define HXD_QT48_H

#include <cstddef>

#define QT_VERSION 0x040800
#define QT_VERSION_STR "4.8.0"
const char* qVersion();

#define Q_OBJECT                            \
public:                                     \
    virtual void* qt_metacast(const char*); \
                                            \
private:
#define Q_INTERFACES(names)
#define Q_SLOTS
#define Q_SIGNALS protected
#define Q_INVOKABLE
#define Q_DISABLE_COPY(Class) \
    Class(const Class&);      \
    Class& operator=(const Class&);
#define Q_DECLARE_INTERFACE(Interface, id)                 \
    template <>                                            \
    inline Interface* qobject_cast<Interface*>(QObject*) { \
        return static_cast<void>(id), nullptr;             \
    }
#define Q_UNUSED(name) (void)name;

typedef unsigned char uchar;
typedef unsigned int uint;
typedef unsigned short ushort;
typedef signed char qint8;
typedef unsigned char quint8;
typedef short qint16;
typedef unsigned short quint16;
typedef int qint32;
typedef unsigned int quint32;
typedef long long qint64;
typedef unsigned long long quint64;
typedef qint64 qlonglong;
typedef quint64 qulonglong;
typedef double qreal;
typedef qint64 Q_PID;

void qDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));
void qWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
enum QtMsgType { QtDebugMsg, QtWarningMsg, QtCriticalMsg, QtFatalMsg };
typedef void (*QtMsgHandler)(QtMsgType type, const char* message);
QtMsgHandler qInstallMsgHandler(QtMsgHandler handler);

class QString;
class QStringList;
class QVariant;
template <typename T>
class QList;
template <typename T>
class QVector;

namespace Qt {
enum CaseSensitivity { CaseInsensitive, CaseSensitive };
}

struct QLatin1Char {
    explicit QLatin1Char(char c);
};

class QChar {
public:
    QChar();
    QChar(QLatin1Char c);
    QChar(ushort code);
    bool isSpace() const;
    bool isDigit() const;
    ushort unicode() const;
    char toLatin1() const;
};
bool operator==(QChar a, QChar b);
bool operator!=(QChar a, QChar b);

class QLatin1String {
public:
    explicit QLatin1String(const char* text);
    QLatin1String& operator=(const QLatin1String& other);
    const char* latin1() const;
};

class QBool {
public:
    operator const void*() const;
};

class QByteArray {
public:
    QByteArray();
    QByteArray(const char* text);
    QByteArray(const char* data, int size);
    QByteArray(int size, char fill);
    int size() const;
    int length() const;
    bool isEmpty() const;
    const char* constData() const;
    const char* data() const;
    char* data();
    char at(int index) const;
    QByteArray& append(const char* text);
    QByteArray& append(const QByteArray& other);
    QByteArray& operator+=(const QByteArray& other);
    bool startsWith(const char* text) const;
    bool startsWith(char c) const;
    bool endsWith(char c) const;
    QBool contains(const char* text) const;
    int count(char c) const;
    QList<QByteArray> split(char separator) const;
    QByteArray left(int length) const;
    QByteArray right(int length) const;
    QByteArray mid(int position, int length = -1) const;
    QByteArray trimmed() const;
    QByteArray toHex() const;
    int indexOf(char c, int from = 0) const;
    int toInt(bool* ok = 0, int base = 10) const;
};
QByteArray qgetenv(const char* name);
bool qputenv(const char* name, const QByteArray& value);
bool operator==(const QByteArray& a, const QByteArray& b);
bool operator==(const QByteArray& a, const char* b);

class QString {
public:
    enum SplitBehavior { KeepEmptyParts, SkipEmptyParts };
    typedef const QChar* const_iterator;

    QString();
    QString(QChar c);
    QString(const QChar* characters, int size);
    QString(int size, QChar fill);
    QString(const QLatin1String& text);
    QString& operator=(const QLatin1String& text);

    static QString fromAscii(const char* text, int size = -1);
    static QString fromLatin1(const char* text, int size = -1);
    static QString fromUtf8(const char* text, int size = -1);
    static QString fromLocal8Bit(const char* text, int size = -1);
    QByteArray toAscii() const;
    QByteArray toLatin1() const;
    QByteArray toUtf8() const;
    QByteArray toLocal8Bit() const;

    static QString number(int number, int base = 10);
    static QString number(uint number, int base = 10);
    static QString number(long number, int base = 10);
    static QString number(qlonglong number, int base = 10);
    static QString number(qulonglong number, int base = 10);
    static QString number(double number, char format = 'g', int precision = 6);
    int toInt(bool* ok = 0, int base = 10) const;
    uint toUInt(bool* ok = 0, int base = 10) const;
    qlonglong toLongLong(bool* ok = 0, int base = 10) const;
    qulonglong toULongLong(bool* ok = 0, int base = 10) const;
    double toDouble(bool* ok = 0) const;

    int size() const;
    int length() const;
    bool isEmpty() const;
    bool isNull() const;
    void clear();
    void swap(QString& other);
    const QChar at(int index) const;
    const QChar operator[](int index) const;
    const QChar* constData() const;
    const_iterator begin() const;
    const_iterator end() const;
    QString& append(const QString& other);
    QString& append(QChar c);
    QString& operator+=(const QString& other);
    QString& operator+=(const QLatin1String& other);
    QString& operator+=(QChar c);
    QString arg(const QString& text, int width = 0, const QChar& fill = QChar()) const;
    QString arg(int number, int width = 0, int base = 10, const QChar& fill = QChar()) const;
    QBool contains(const QString& text, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    QBool contains(QChar c, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    bool startsWith(const QString& text, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    bool startsWith(const QLatin1String& text, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    bool endsWith(const QString& text, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    bool endsWith(const QChar& c, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    int indexOf(const QString& text, int from = 0, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    int indexOf(QChar c, int from = 0, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    QString left(int length) const;
    QString right(int length) const;
    QString mid(int position, int length = -1) const;
    QString section(QChar separator, int start, int end = -1) const;
    QStringList split(QChar separator, SplitBehavior = KeepEmptyParts,
                      Qt::CaseSensitivity = Qt::CaseSensitive) const;
    QString trimmed() const;
    QString simplified() const;
    QString toLower() const;
    QString toUpper() const;
    bool operator==(const QLatin1String& other) const;
    bool operator!=(const QLatin1String& other) const;
};
bool operator==(const QString& a, const QString& b);
bool operator!=(const QString& a, const QString& b);
bool operator<(const QString& a, const QString& b);
const QString operator+(const QString& a, const QString& b);
const QString operator+(const QString& a, QChar b);
const QString operator+(QChar a, const QString& b);

template <typename T>
class QList {
public:
    typedef const T* const_iterator;
    typedef T* iterator;
    int size() const;
    int count() const;
    bool isEmpty() const;
    void clear();
    void append(const T& value);
    void removeLast();
    const T& at(int index) const;
    const T& operator[](int index) const;
    T& operator[](int index);
    const T& first() const;
    const T& last() const;
    T value(int index) const;
    QVector<T> toVector() const;
    const_iterator begin() const;
    const_iterator end() const;
    iterator begin();
    iterator end();
    const_iterator constBegin() const;
    const_iterator constEnd() const;
    bool contains(const T& value) const;
    bool operator==(const QList& other) const;
    bool operator!=(const QList& other) const;
};

class QStringList : public QList<QString> {
public:
    QStringList();
    explicit QStringList(const QString& text);
    QString join(const QString& separator) const;
    QBool contains(const QString& text, Qt::CaseSensitivity = Qt::CaseSensitive) const;
    int indexOf(const QString& text, int from = 0) const;
    QStringList& operator<<(const QString& text);
    QStringList& operator<<(const QStringList& texts);
};

template <typename T>
class QVector {
public:
    typedef const T* const_iterator;
    typedef T* iterator;
    QVector();
    explicit QVector(int size);
    QVector(int size, const T& value);
    int size() const;
    int count() const;
    bool isEmpty() const;
    void clear();
    void resize(int size);
    void reserve(int size);
    void append(const T& value);
    void push_back(const T& value);
    const T& at(int index) const;
    const T& operator[](int index) const;
    T& operator[](int index);
    T value(int index) const;
    const T& first() const;
    const T& last() const;
    QVector& operator<<(const T& value);
    const_iterator begin() const;
    const_iterator end() const;
    iterator begin();
    iterator end();
};

class QVariant {
public:
    QVariant();
    QVariant(int value);
    QVariant(double value);
    QVariant(bool value);
    QVariant(const QString& value);
    QVariant(const QLatin1String& value);
    QVariant(const QStringList& value);
    bool isValid() const;
    int toInt(bool* ok = 0) const;
    double toDouble(bool* ok = 0) const;
    bool toBool() const;
    QString toString() const;
    QStringList toStringList() const;
};

class QObject {
public:
    explicit QObject(QObject* parent = 0);
    virtual ~QObject();
    QString objectName() const;
    void setObjectName(const QString& name);
    QObject* parent() const;
    void setParent(QObject* parent);
    bool inherits(const char* className) const;
    template <typename T>
    T findChild(const QString& name = QString()) const;
};
template <typename T>
T qobject_cast(QObject* object);

class QCoreApplication : public QObject {
public:
    QCoreApplication(int& count, char** arguments);
    static QCoreApplication* instance();
    static QString applicationDirPath();
};

template <typename T>
class QPointer {
public:
    QPointer();
    QPointer(T* object);
    T* data() const;
    bool isNull() const;
    operator T*() const;
};

class QIODevice : public QObject {
public:
    enum OpenModeFlag {
        ReadOnly = 1,
        WriteOnly = 2,
        ReadWrite = 3,
        Append = 4,
        Truncate = 8,
        Text = 16
    };
    typedef int OpenMode;
    virtual void close();
    virtual bool atEnd() const;
    QString errorString() const;
    qint64 read(char* data, qint64 size);
    QByteArray read(qint64 size);
    QByteArray readAll();
    QByteArray readLine(qint64 size = 0);
    qint64 write(const char* data, qint64 size);
    qint64 write(const QByteArray& data);
};

class QFile : public QIODevice {
public:
    enum Permission { ReadOwner = 0x4000, WriteOwner = 0x2000 };
    typedef int Permissions;
    enum FileError { NoError };
    QFile();
    explicit QFile(const QString& name);
    bool open(OpenMode mode);
    bool open(int descriptor, OpenMode mode);
    bool flush();
    FileError error() const;
    bool exists() const;
    bool remove();
    static bool exists(const QString& name);
    static bool remove(const QString& name);
    static QString symLinkTarget(const QString& name);
    static bool rename(const QString& from, const QString& to);
    static Permissions permissions(const QString& name);
    static bool setPermissions(const QString& name, Permissions permissions);
    static QByteArray encodeName(const QString& name);
    static QString decodeName(const QByteArray& name);
    static QString decodeName(const char* name);
};

class QDateTime {
public:
    qint64 toMSecsSinceEpoch() const;
};

class QFileInfo {
public:
    explicit QFileInfo(const QString& file);
    bool exists() const;
    bool isDir() const;
    bool isFile() const;
    QString path() const;
    QString fileName() const;
    QString filePath() const;
    QString suffix() const;
    QString absolutePath() const;
    QString absoluteFilePath() const;
    QString canonicalFilePath() const;
    qint64 size() const;
    QDateTime lastModified() const;
};

class QDir {
public:
    enum Filter { Dirs = 1, Files = 2, AllEntries = 7, Hidden = 0x100, NoDotAndDotDot = 0x1000 };
    typedef int Filters;
    enum SortFlag { Name = 0, IgnoreCase = 0x10 };
    typedef int SortFlags;
    QDir(const QString& path = QString());
    QDir(const QString& path, const QString& nameFilter,
         SortFlags sort = SortFlags(Name | IgnoreCase), Filters filters = AllEntries);
    uint count() const;
    QStringList entryList(Filters filters) const;
    bool exists() const;
    bool mkpath(const QString& path) const;
    QString filePath(const QString& name) const;
};

class QDirIterator {
public:
    enum IteratorFlag { NoIteratorFlags = 0, FollowSymlinks = 1, Subdirectories = 2 };
    QDirIterator(const QString& path, QDir::Filters filters, IteratorFlag flags = NoIteratorFlags);
    bool hasNext() const;
    QString next();
    QString fileName() const;
    QString filePath() const;
    QFileInfo fileInfo() const;
};

class QCryptographicHash {
public:
    enum Algorithm { Md4, Md5, Sha1 };
    static QByteArray hash(const QByteArray& data, Algorithm method);
};

class QSettings : public QObject {
public:
    enum Status { NoError, AccessError, FormatError };
    enum Format { NativeFormat, IniFormat };
    QSettings(const QString& file, Format format, QObject* parent = 0);
    void setIniCodec(const char* codec);
    void sync();
    Status status() const;
    void setValue(const QString& key, const QVariant& value);
    QVariant value(const QString& key, const QVariant& defaultValue = QVariant()) const;
    bool contains(const QString& key) const;
    void remove(const QString& key);
    QStringList allKeys() const;
    QStringList childGroups() const;
    QStringList childKeys() const;
    void beginGroup(const QString& prefix);
    void endGroup();
};

class QBuffer : public QIODevice {
public:
    explicit QBuffer(QByteArray* bytes, QObject* parent = 0);
    virtual bool open(OpenMode mode);
};

class QProcess : public QIODevice {
public:
    enum ProcessError { FailedToStart, Crashed, Timedout, ReadError, WriteError, UnknownError };
    enum ProcessChannel { StandardOutput, StandardError };
    enum ProcessState { NotRunning, Starting, Running };
    enum ExitStatus { NormalExit, CrashExit };
    explicit QProcess(QObject* parent = 0);
    static int execute(const QString& program, const QStringList& arguments);
    void setWorkingDirectory(const QString& folder);
    void start(const QString& program, const QStringList& arguments, OpenMode mode = ReadWrite);
    Q_PID pid() const;
    ProcessState state() const;
    bool waitForStarted(int ms = 30000);
    bool waitForFinished(int ms = 30000);
    int exitCode() const;
    ExitStatus exitStatus() const;
    QByteArray readAllStandardOutput();
    QByteArray readAllStandardError();
    bool waitForReadyRead(int ms = 30000);
    bool waitForBytesWritten(int ms = 30000);
    void closeWriteChannel();
    void setReadChannel(ProcessChannel channel);
    void kill();
    void terminate();

protected:
    void setProcessState(ProcessState state);
    virtual void setupChildProcess();
};

class QXmlStreamWriter {
public:
    explicit QXmlStreamWriter(QByteArray* text);
    explicit QXmlStreamWriter(QString* text);
    void setAutoFormatting(bool on);
    void writeStartDocument();
    void writeEndDocument();
    void writeStartElement(const QString& name);
    void writeEndElement();
    void writeAttribute(const QString& name, const QString& value);
    void writeCharacters(const QString& text);
};

class QRegExp {
public:
    QRegExp();
    explicit QRegExp(const QString& pattern, Qt::CaseSensitivity = Qt::CaseSensitive);
    bool exactMatch(const QString& text) const;
    int indexIn(const QString& text, int offset = 0) const;
    QString cap(int number = 0) const;
    bool isValid() const;
};

class QSemaphore {
public:
    explicit QSemaphore(int available = 0);
    void acquire(int count = 1);
    bool tryAcquire(int count = 1);
    bool tryAcquire(int count, int ms);
    void release(int count = 1);
    int available() const;
};

class QSize {
public:
    QSize();
    QSize(int width, int height);
    bool isEmpty() const;
};
bool operator==(const QSize& a, const QSize& b);

class QRect {
public:
    QRect();
    QRect(int left, int top, int width, int height);
    int width() const;
    int height() const;
    bool contains(int x, int y) const;
};

typedef unsigned int QRgb;
QRgb qRgb(int red, int green, int blue);
int qRed(QRgb colour);
int qGreen(QRgb colour);
int qBlue(QRgb colour);

class QImage {
public:
    enum Format {
        Format_Invalid,
        Format_Mono,
        Format_MonoLSB,
        Format_Indexed8,
        Format_RGB32,
        Format_ARGB32
    };
    QImage();
    explicit QImage(const QString& file, const char* format = 0);
    QSize size() const;
    QImage(int width, int height, Format format);
    bool isNull() const;
    int width() const;
    int height() const;
    QRect rect() const;
    void fill(uint pixel);
    void setPixel(int x, int y, uint pixel);
    uchar* scanLine(int line);
    const uchar* scanLine(int line) const;
    QRgb pixel(int x, int y) const;
    QImage copy(const QRect& area = QRect()) const;
    bool load(const QString& file, const char* format = 0);
    bool save(const QString& file, const char* format = 0, int quality = -1) const;
    bool save(QIODevice* device, const char* format = 0, int quality = -1) const;
};

class QImageReader {
public:
    static QList<QByteArray> supportedImageFormats();
};
class QImageWriter {
public:
    static QList<QByteArray> supportedImageFormats();
};

#endif
