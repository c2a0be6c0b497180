// The names of the driver's own commands as the host's text type, out of the table of commands. The
// driver itself asks the table; these constants are fixed names, kept for what is built with them.
#ifndef HXD_COMMANDNAMES_H
#define HXD_COMMANDNAMES_H

#include "mfc/CString.h"

extern const CString DEV_STR_OLMAWRITE;
extern const CString DEV_STR_REFLESH;
extern const CString DEV_STR_BLON;
extern const CString DEV_STR_BLOFF;
extern const CString DEV_STR_REBOOT;
extern const CString DEV_STR_SAVESCREEN;
extern const CString DEV_STR_SHA256;
extern const CString DEV_STR_MODVNCPWD;
extern const CString GETMACINFO;
extern const CString SET_NETWORK_MODE;

// Known to the host's script editor; this driver gives them no behaviour of their own, so they end
// up at the registry like any name that nobody knows.
extern const CString DEV_STR_SETHIDDENPRO;
extern const CString DEV_STR_GETHIDDENPRO;
extern const CString DEV_STR_READ;
extern const CString DEV_STR_WRITE;
extern const CString DEV_STR_READWRITE[2];

#endif
