#include "commands/CommandNames.h"

#include "driver/record/CommandTable.h"

const CString DEV_STR_OLMAWRITE = CommandOf(COMMAND_OLMA_WRITE).name;
const CString DEV_STR_REFLESH = CommandOf(COMMAND_REFLESH).name;
const CString DEV_STR_BLON = CommandOf(COMMAND_BACKLIGHT_ON).name;
const CString DEV_STR_BLOFF = CommandOf(COMMAND_BACKLIGHT_OFF).name;
const CString DEV_STR_REBOOT = CommandOf(COMMAND_REBOOT).name;
const CString DEV_STR_SAVESCREEN = CommandOf(COMMAND_SAVE_SCREEN).name;
const CString DEV_STR_SHA256 = CommandOf(COMMAND_STR_SHA256).name;
const CString DEV_STR_MODVNCPWD = CommandOf(COMMAND_MOD_VNC_PWD).name;
const CString GETMACINFO = CommandOf(COMMAND_GET_MAC_INFO).name;
const CString SET_NETWORK_MODE = CommandOf(COMMAND_SET_NETWORK_MODE).name;

const CString DEV_STR_SETHIDDENPRO = "SetHiddenPro";
const CString DEV_STR_GETHIDDENPRO = "GetHiddenPro";
const CString DEV_STR_READ = "READ";
const CString DEV_STR_WRITE = "WRITE";
const CString DEV_STR_READWRITE[2] = {"READ", "WRITE"};
