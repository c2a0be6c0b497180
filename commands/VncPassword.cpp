#include "commands/VncPassword.h"

#include "common/AppSettings.h"
#include "common/File.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "common/SettingsFile.h"
#include "driver/record/Call.h"

#include <QFile>
#include <QString>

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

namespace CDevBas {

CString ReadVncPwd() {
    const QString path = PasswordFile();
    if (path.isEmpty())
        return CString();
    hxd::SettingsFile file(path, NO_CODEC);
    file.Load();
    return hxd::ToHost(file.Value(PasswordKey()));
}

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
    return RunCall(data, COMMAND_MOD_VNC_PWD, args, [](const Call& call) {
        CString password;
        const int result = call.Read(0, password) ? writeVncPwd(password) : RESULT_REFUSED;
        return call.WriteResult(-result) ? result : RESULT_REFUSED;
    });
}

}  // namespace CDevBas
