#include "commands/PictureFolder.h"

#include "common/Retry.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdio>

namespace {

constexpr int FOLDER = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

int OpenAt(int folder, const std::string& name, int flags) {
    return hxd::RetryInterrupted([&] { return ::openat(folder, name.c_str(), flags, 0666); });
}

bool WritePicture(const QImage& picture, int descriptor, const std::string& fileName) {
    const QFileInfo name(QFile::decodeName(fileName.c_str()));
    QFile file;
    return file.open(descriptor, QIODevice::WriteOnly) &&
           picture.save(&file, name.suffix().toLower().toLatin1().constData()) && file.flush() &&
           file.error() == QFile::NoError;
}

}  // namespace

bool PictureFolder::Open(const std::string& root, const std::string& below, FolderOwner owner) {
    const int flags = owner == FolderOwner::STRANGER ? FOLDER | O_NOFOLLOW : FOLDER;
    HXDCTRL::File folder(OpenAt(AT_FDCWD, root, FOLDER));
    for (std::size_t start = 0; folder.IsOpen() && start < below.size();) {
        const std::size_t end = std::min(below.find('/', start), below.size());
        if (end > start) {
            HXDCTRL::File next(
                OpenAt(folder.Descriptor(), below.substr(start, end - start), flags));
            folder.Swap(next);
        }
        start = end + 1;
    }
    m_folder.Swap(folder);
    return m_folder.IsOpen();
}

bool PictureFolder::Save(const QImage& picture, const std::string& fileName) const {
    // One process saves one picture at a time, under g_halMutex.
    const std::string part = ".hxdcontrol-" + std::to_string(::getpid()) + ".part";
    const int folder = m_folder.Descriptor();
    ::unlinkat(folder, part.c_str(), 0);
    const HXDCTRL::File file(
        OpenAt(folder, part, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC));
    if (file.IsOpen() && WritePicture(picture, file.Descriptor(), fileName) &&
        ::renameat(folder, part.c_str(), folder, fileName.c_str()) == 0)
        return true;
    ::unlinkat(folder, part.c_str(), 0);
    return false;
}
