#include "commands/VncPassword.h"

#include "common/AppSettings.h"
#include "common/File.h"
#include "common/IniOperator.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "driver/record/CDevServer.h"

#include <QFile>
#include <QSettings>
#include <QString>

#include <unistd.h>

#include <vector>

namespace {

QString PasswordKey() {
    return QLatin1String("/VNCCONFIG/passwd");
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

// No codec is set for this file, here or by the plug-in: a text beyond ASCII is written escaped.
QString StoredPassword(QSettings& settings) {
    return settings.value(PasswordKey()).toString();
}

}  // namespace

CString ReadVncPwd() {
    const QString file = PasswordFile();
    if (file.isEmpty())
        return CString();
    QSettings settings(file, QSettings::IniFormat);
    return hxd::ToHost(StoredPassword(settings));
}

namespace CDevBas {

int writeVncPwd(const CString& password) {
    const QString file = PasswordFile();
    if (file.isEmpty())
        return RESULT_DONE;
    QSettings settings(file, QSettings::IniFormat);
    const QString wanted = hxd::FromHost(password);
    if (StoredPassword(settings) == wanted)
        return RESULT_DONE;
    const hxd::ModificationMark mark(file);
    settings.setValue(PasswordKey(), wanted);
    settings.sync();
    mark.Settle();
    ::sync();  // a power cut must not bring the old password back
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
