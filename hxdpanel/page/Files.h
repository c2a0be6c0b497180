// The files that the page is made of, and pictures that the driver has saved.
#ifndef HXDPANEL_FILES_H
#define HXDPANEL_FILES_H

#include "hxdpanel/page/HttpServer.h"

#include <string>
#include <vector>

namespace page {

// A file of the page's folder by its name alone, or of the libraries that it uses: 404 for all
// else.
Response PageFile(const std::string& folder, const std::string& name);
Response LibraryFile(const std::string& name);

// Names of the pictures among these paths, the newest last.
std::vector<std::string> PictureNames(const std::vector<std::string>& paths);
// The newest of this name.
Response Picture(const std::vector<std::string>& paths, const std::string& name);

}  // namespace page

#endif
