// What the text of an INI file holds. QSettings parses it, from a copy that has no name.
#ifndef HXD_PARSEDSETTINGS_H
#define HXD_PARSEDSETTINGS_H

#include <QString>
#include <QVariant>

#include <map>
#include <memory>
#include <string>

namespace hxd {

// By key path, "SECTION/key".
using SettingsValues = std::map<QString, QVariant>;

struct ParsedSettings {
    std::string content;
    std::string codec;
    SettingsValues values;
};

// False when there is no copy to parse, or it cannot be read. codec as in SettingsFile.
bool ParseAnew(const std::string& content, const char* codec, SettingsValues& values);

// The same, but a text that is among the last few of the process is not parsed again. Null when it
// cannot be parsed. For any thread.
std::shared_ptr<const ParsedSettings> ParseSettings(const std::string& content, const char* codec);

}  // namespace hxd

#endif
