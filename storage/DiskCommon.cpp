#include "storage/DiskCommon.h"

#include "common/QtText.h"

#include <QFile>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};

// A line of any length; the buffer grows with the longest one.
class LineReader {
public:
    explicit LineReader(FILE* file) : m_file(file) {}
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;
    ~LineReader() { std::free(m_buffer); }

    bool Next(QString& line) {
        const ssize_t length = ::getline(&m_buffer, &m_capacity, m_file);
        if (length >= 0)
            line = hxd::FromHost(m_buffer, static_cast<int>(length));
        return length >= 0;
    }

private:
    FILE* m_file;  // not owned
    char* m_buffer = nullptr;
    std::size_t m_capacity = 0;
};

}  // namespace

bool DiskCommon::readFileOfLine(const QString& path, QVector<QString>& lines) {
    const std::unique_ptr<FILE, FileCloser> file(
        std::fopen(QFile::encodeName(path).constData(), "re"));
    if (file == nullptr) {
        std::printf("can not load file!");
        return false;
    }
    LineReader reader(file.get());
    QString line;
    while (reader.Next(line))
        lines.append(line.trimmed());
    return true;
}

bool DiskCommon::readFirstLine(const QString& path, QString& line) {
    QVector<QString> lines;
    if (!readFileOfLine(path, lines) || lines.isEmpty())
        return false;
    line = lines.first();
    return true;
}
