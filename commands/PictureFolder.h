// The folder in which a screenshot is saved.
#ifndef HXD_PICTUREFOLDER_H
#define HXD_PICTUREFOLDER_H

#include "common/File.h"

#include <QImage>
#include <string>

// Whose folder it is: on the panel's own storage links are followed; what a stranger's USB stick
// holds must not lead anywhere else.
enum class FolderOwner { PANEL, STRANGER };

class PictureFolder {
public:
    // root is followed wherever it leads, the folders below it (each followed by "/") as the owner
    // says. False, with errno, when one of them is missing (ENOENT) or may not be entered.
    bool Open(const std::string& root, const std::string& below, FolderOwner owner);

    // Saves in the format that the name's extension says, through a file of another name, so that
    // what had the name, also a link, is replaced as a whole or stays as it was.
    bool Save(const QImage& picture, const std::string& fileName) const;

private:
    HXDCTRL::File m_folder;
};

#endif
