#include "commands/CommandNames.h"

const CString DEV_STR_OLMAWRITE = "OLMA_WRITE";
const CString DEV_STR_REFLESH = "REFLESH";
const CString DEV_STR_BLON = "BACKLIGHTON";
const CString DEV_STR_BLOFF = "BACKLIGHTOFF";
const CString DEV_STR_REBOOT = "REBOOT";
const CString DEV_STR_SAVESCREEN = "SAVESCREEN";
const CString DEV_STR_SHA256 = "STRSHA256";
const CString DEV_STR_MODVNCPWD = "ModVncPwd";
const CString GETMACINFO = "GetMacInfo";
const CString SET_NETWORK_MODE = "SetNetworkMode";

const CString DEV_STR_SETHIDDENPRO = "SetHiddenPro";
const CString DEV_STR_GETHIDDENPRO = "GetHiddenPro";
const CString DEV_STR_READ = "READ";
const CString DEV_STR_WRITE = "WRITE";
const CString DEV_STR_READWRITE[2] = {"READ", "WRITE"};
