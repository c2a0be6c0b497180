// The password of the remote view, kept as plain text in the plug-in's settings file:
// "/etc/iot_cfg/vncConfig.ini" or, when that is missing, vncConfig.ini in the host's settings
// directory. Called under the dispatcher's mutex or by the collection. The plug-in knows no lock
// for the file: of two that write it in the same moment, the later one wins.
#ifndef HXD_VNCPASSWORD_H
#define HXD_VNCPASSWORD_H

#include "driver/record/OlmaData.h"
#include "mfc/CString.h"

namespace CDevBas {

// Empty when there is no file or no password in it.
CString ReadVncPwd();

// Stores the password if it differs from the stored one; on return it has reached the storage. The
// file is never created. Always 0: without a file the password is dropped.
int writeVncPwd(const CString& password);

// "ModVncPwd(password[,result])": the parameter's text becomes the password; result receives 0 or
// the positive error code. 0, RESULT_BAD_ARGUMENTS or RESULT_REFUSED.
int ModVncPwd(OLMA_DATA& data, const CString& args);

}  // namespace CDevBas

#endif
