#include "hxdpanel/panel/PanelFile.h"

#include "common/File.h"
#include "hxdpanel/sandbox/GuardedCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include <QDirIterator>
#include <QFile>

bool panelfile::Read(const std::string& path, std::string& text) {
    HXDCTRL::File file;
    if (!file.open(path, O_RDONLY | O_NONBLOCK))
        return false;
    text = file.readAll();
    return true;
}

bool panelfile::Write(const std::string& path, const std::string& text) {
    HXDCTRL::File file;
    if (guard::Enabled() || !file.open(path, O_WRONLY | O_CREAT))
        return false;
    const auto length = static_cast<ssize_t>(text.size());
    return ::pwrite(file.Descriptor(), text.data(), text.size(), 0) == length &&
           ::ftruncate(file.Descriptor(), length) == 0;
}

bool panelfile::Remove(const std::string& path) {
    return !guard::Enabled() && std::remove(path.c_str()) == 0;
}

std::vector<std::string> panelfile::Find(const std::string& folder, const std::string& name) {
    std::vector<std::string> paths;
    QDirIterator iterator(QFile::decodeName(folder.c_str()), QDir::Files | QDir::Hidden,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        iterator.next();
        if (iterator.fileName() == QFile::decodeName(name.c_str()))
            paths.emplace_back(QFile::encodeName(iterator.filePath()).constData());
    }
    return paths;
}
