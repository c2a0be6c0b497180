#include "storage/DiskCommon.h"

#include "common/File.h"
#include "common/QtText.h"

#include <fcntl.h>
#include <QFile>
#include <algorithm>
#include <cstdio>

bool DiskCommon::readFileOfLine(const QString& path, QVector<QString>& lines) {
    HXDCTRL::File file;
    if (!file.open(QFile::encodeName(path).constData(), O_RDONLY)) {
        std::printf("can not load file!");
        return false;
    }
    const std::string content = file.readAll();
    for (std::size_t start = 0; start < content.size();) {
        const std::size_t end = std::min(content.find('\n', start), content.size());
        lines.append(hxd::FromHost(&content[start], static_cast<int>(end - start)).trimmed());
        start = end + 1;
    }
    return true;
}

hxd::Maybe<QString> DiskCommon::FirstLineOf(const QString& path) {
    QVector<QString> lines;
    if (!readFileOfLine(path, lines) || lines.isEmpty())
        return {};
    return lines.first();
}
