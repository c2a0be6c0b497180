#include "commands/VncPassword.h"

#include "common/AppSettings.h"
#include "common/File.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "common/SettingsFile.h"
#include "driver/record/CDevServer.h"

#include <QFile>
#include <QString>

#include <vector>

namespace {

QString PasswordKey() {
    return QLatin1String("VNCCONFIG/passwd");
}

bool Exists(const QString& file) {
    return HXDCTRL::File::is_file_exist(QFile::encodeName(file).constData());
}

// The settings file in use; empty when there is none.
QString PasswordFile() {
    const QString candidates[] = {QLatin1String("/etc/iot_cfg/vncConfig.ini"),
                                  hxd::AppConfigDirectory() + QLatin1String("/vncConfig.ini")};
    for (const QString& file : candidates) {
        if (Exists(file))
            return file;
    }
    return QString();
}

// No codec for this file, here or in the plug-in: a text beyond ASCII is written escaped.
constexpr const char* NO_CODEC = nullptr;

}  // namespace

CString ReadVncPwd() {
    const QString path = PasswordFile();
    if (path.isEmpty())
        return CString();
    hxd::SettingsFile file(path, NO_CODEC);
    file.Load();
    return hxd::ToHost(file.Value(PasswordKey()));
}

namespace CDevBas {

int writeVncPwd(const CString& password) {
    const QString path = PasswordFile();
    if (path.isEmpty())
        return RESULT_DONE;
    hxd::SettingsFile file(path, NO_CODEC);
    file.Load();
    const QString wanted = hxd::FromHost(password);
    if (file.Value(PasswordKey()) != wanted)
        file.Store({{PasswordKey(), wanted}});
    return RESULT_DONE;
}

int ModVncPwd(OLMA_DATA& data, const CString& args) {
    std::vector<FF::utils::String> names;
    if (CDevBas::splitString(args, ',', names) != 1 || names.empty() || names.size() > 2)
        return RESULT_BAD_ARGUMENTS;
    CString password;
    const bool read = CDevServer::SvrGetParaValue(data, names[0].c_str(), password) == 1;
    int result = read ? writeVncPwd(password) : RESULT_REFUSED;
    const bool reported =
        names.size() < 2 || CDevServer::SvrSetParaValue(data, names[1].c_str(), -result) == 1;
    return reported ? result : RESULT_REFUSED;
}

}  // namespace CDevBas
