#include "hxdpanel/panel/SavedFiles.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>

namespace {

const char* const ROOTS[] = {"/media/usb0", "/storage/user_dir"};
constexpr int MAX_FILES = 10000;  // a machine's own folder may hold any number

}  // namespace

SavedFiles::SavedFiles() : m_known(Look()) {}

std::map<std::string, SavedFiles::Stamp> SavedFiles::Look() {
    std::map<std::string, Stamp> files;
    for (const char* root : ROOTS) {
        QDirIterator iterator(QLatin1String(root), QDir::Files, QDirIterator::Subdirectories);
        for (int i = 0; i < MAX_FILES && iterator.hasNext(); ++i) {
            iterator.next();
            const QFileInfo file = iterator.fileInfo();
            files[QFile::encodeName(file.filePath()).constData()] = {
                file.lastModified().toMSecsSinceEpoch(), file.size()};
        }
    }
    return files;
}

std::vector<std::string> SavedFiles::TakeChanges() {
    std::vector<std::string> changed;
    std::map<std::string, Stamp> files = Look();
    for (const auto& file : files) {
        const auto known = m_known.find(file.first);
        if (known == m_known.end() || known->second != file.second)
            changed.push_back(file.first);
    }
    m_known.swap(files);
    return changed;
}
