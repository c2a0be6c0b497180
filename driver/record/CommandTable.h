// The commands, one row each: name, how its argument text is taken apart and what the arguments
// are. Dispatcher, registry, console and the reference in docs/ have what stands here, or do not
// compile or pass.
#ifndef HXD_COMMANDTABLE_H
#define HXD_COMMANDTABLE_H

enum Command : int {
    COMMAND_OLMA_WRITE,
    COMMAND_BACKLIGHT_ON,
    COMMAND_BACKLIGHT_OFF,
    COMMAND_REFLESH,
    COMMAND_REBOOT,
    COMMAND_SAVE_SCREEN,
    COMMAND_STR_SHA256,
    COMMAND_MOD_VNC_PWD,
    COMMAND_GET_MAC_INFO,
    COMMAND_SET_NETWORK_MODE,
    COMMAND_ENABLE_NTP,
    COMMAND_SET_NTP_MODE,
    COMMAND_SET_NTP_FREQ,
    COMMAND_SET_NTP_SERVER,
    COMMAND_EXEC_NTP,
    FIRST_REGISTRY_COMMAND,
    COMMAND_GET_CPU_USE = FIRST_REGISTRY_COMMAND,
    COMMAND_GET_MEM_USE,
    COMMAND_READ_APP_LOG,
    COMMAND_READ_SYS_LOG,
    COMMAND_COUNT,
};

// A name of a host parameter, unless it is a literal; a name that the host does not know is taken
// as a literal where it is read.
struct CommandArgument {
    enum Direction { IN, OUT };
    enum Kind {
        INTEGER,  // an int parameter, or a number as it stands
        NUMBER,   // an int or double parameter; for IN also a number as it stands
        TEXT,     // a text parameter; for IN also a text as it stands
        LITERAL,  // always as it stands
    };

    const char* name;  // null: none
    Direction direction;
    Kind kind;
    bool optional;
};

struct CommandRow {
    enum Split {
        IGNORED,   // the argument text is not looked at
        WHOLE,     // all of it is the one argument; an empty text is none
        HEADS,     // cut at the first separator, the rest again, until the last argument, which
                   // takes what is left; trimmed, but a text without separator stays as it is
        LIST,      // cut at every separator, each piece trimmed
        RAW_LIST,  // cut at every separator, blanks kept; what is beyond the arguments is dropped
        WORDS,     // cut at every separator, empty pieces vanish; the registry's, all of it
    };
    static constexpr int MAX_ARGUMENTS = 5;

    // Run by the registry of system-information operations, which knows this spelling only; the
    // dispatcher knows its own commands in any case and with blanks around the name.
    bool IsOfRegistry() const { return command >= FIRST_REGISTRY_COMMAND; }
    int ArgumentCount() const;  // how many may be given
    int RequiredCount() const;  // how many have to be

    Command command;
    const char* name;
    Split split;
    char separator;
    CommandArgument arguments[MAX_ARGUMENTS];
};

const CommandRow& CommandOf(Command command);
// The name without regard to case, no blanks around it; null for a name that the driver does not
// know.
const CommandRow* FindCommandRow(const char* name);

#endif
