#include "hxdpanel/page/Files.h"

#include "common/File.h"
#include "hxdpanel/page/Gate.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace page {

namespace {

constexpr off_t MAX_FILE = 64 * 1024 * 1024;

struct Kind {
    const char* ending;
    const char* type;
    bool isPicture;
};
const Kind KINDS[] = {
    {".html", "text/html; charset=utf-8", false},
    {".css", "text/css; charset=utf-8", false},
    {".js", "text/javascript; charset=utf-8", false},
    {".json", "application/json", false},
    {".svg", "image/svg+xml", false},
    {".png", "image/png", true},
    {".bmp", "image/bmp", true},
    {".jpg", "image/jpeg", true},
    {".jpeg", "image/jpeg", true},
};

// Where Debian's packages put them.
const struct {
    const char* name;
    const char* path;
} LIBRARIES[] = {
    {"dygraph.min.js", "/usr/share/javascript/dygraphs/dygraph.min.js"},
    {"dygraph.min.css", "/usr/share/javascript/dygraphs/dygraph.min.css"},
};

// Null for a file that is none of the page's.
const Kind* KindOf(const std::string& name) {
    for (const Kind& kind : KINDS) {
        const std::size_t length = std::strlen(kind.ending);
        if (name.size() > length && name.compare(name.size() - length, length, kind.ending) == 0)
            return &kind;
    }
    return nullptr;
}

bool IsPlainName(const std::string& name) {
    return !name.empty() && name[0] != '.' &&
           name.find_first_not_of(
               "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
               "0123456789-_.") == std::string::npos;
}

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

// flags: O_NOFOLLOW where others may put a link in the file's place.
Response FileResponse(const std::string& path, const char* type, int flags) {
    HXDCTRL::File file;
    struct stat status = {};
    if (!file.open(path, O_RDONLY | O_NONBLOCK | flags) ||
        ::fstat(file.Descriptor(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > MAX_FILE)
        return ErrorResponse(404, "there is no such file any more");
    return {200, type, file.readAll()};
}

}  // namespace

Response PageFile(const std::string& folder, const std::string& name) {
    const Kind* const kind = KindOf(name);
    if (folder.empty() || kind == nullptr || !IsPlainName(name))
        return ErrorResponse(404, "the page has no such file");
    return FileResponse(folder + "/" + name, kind->type, 0);
}

Response LibraryFile(const std::string& name) {
    for (const auto& library : LIBRARIES) {
        if (name == library.name)
            return FileResponse(library.path, KindOf(name)->type, 0);
    }
    return ErrorResponse(404, "the page uses no such library");
}

std::vector<std::string> PictureNames(const std::vector<std::string>& paths) {
    std::vector<std::string> names;
    for (const std::string& path : paths) {
        const std::string name = NameOf(path);
        const Kind* const kind = KindOf(name);
        if (kind == nullptr || !kind->isPicture)
            continue;
        names.erase(std::remove(names.begin(), names.end(), name), names.end());
        names.push_back(name);
    }
    return names;
}

Response Picture(const std::vector<std::string>& paths, const std::string& name) {
    const Kind* const kind = KindOf(name);
    const auto found = std::find_if(paths.rbegin(), paths.rend(),
                                    [&](const std::string& path) { return NameOf(path) == name; });
    if (kind == nullptr || !kind->isPicture || found == paths.rend())
        return ErrorResponse(404, "no picture of this name was saved in this run");
    return FileResponse(*found, kind->type, O_NOFOLLOW);
}

}  // namespace page
