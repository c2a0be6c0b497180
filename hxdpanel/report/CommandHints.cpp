#include "hxdpanel/report/CommandHints.h"

#include "common/ResultCodes.h"
#include "driver/record/ArgumentSplit.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/CommandReference.h"

#include <algorithm>
#include <cctype>

namespace {

using Hints = std::vector<std::string>;

// "mac" is meant as a variable more likely than as a text; "$OLMA_DIR_USR/a.png" or "64" is not.
bool LooksLikeVariable(const std::string& text) {
    const auto isWord = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
    return !text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) == 0 &&
           std::all_of(text.begin(), text.end(), isWord);
}

bool Fits(CommandArgument::Kind kind, DATATYPE type) {
    switch (kind) {
        case CommandArgument::INTEGER:
            return type == DATATYPE_INTEGER;
        case CommandArgument::NUMBER:
            return type != DATATYPE_TEXT;
        case CommandArgument::TEXT:
            return type == DATATYPE_TEXT;
        case CommandArgument::LITERAL:
            return true;
    }
    return false;
}

std::string UnknownVariableHint(const CommandArgument& argument, const std::string& name) {
    const bool isText = argument.kind == CommandArgument::TEXT;
    const std::string subject = "there is no variable " + Quoted(name);
    if (argument.direction == CommandArgument::OUT)
        return subject + " to receive the " + argument.name + "; make it with: set " +
               Trimmed(name) + (isText ? ":text" : " 0");
    if (!LooksLikeVariable(name))
        return "";
    return subject + (isText ? ", so the driver took it as the text itself"
                             : ", so the driver took it as a number, 0");
}

std::string ArgumentHint(const CommandArgument& argument, const std::string& name,
                         const HostDatabase& database, const HostDatabase::Trace& trace) {
    HostValue value;
    if (trace.unknown.count(name) != 0)
        return UnknownVariableHint(argument, name);
    if (!database.FindVariable(name, value) || Fits(argument.kind, value.type))
        return "";
    return "the variable " + Quoted(name) + " is of type " + TypeName(value.type) + ", but " +
           argument.name + " needs " + (argument.kind == CommandArgument::NUMBER ? "a " : "") +
           KindName(argument.kind);
}

std::string UnknownCommandHint(const std::string& name, int status) {
    std::vector<std::string> names;
    for (const CommandInfo& command : CommandReference())
        names.emplace_back(command.name);
    const std::string closest = Closest(Trimmed(name), names);
    return "the driver has no command " + Quoted(name) +
           (status == RESULT_DONE ? " and answers 0 to that" : "") +
           (closest.empty() ? "" : "; did you mean " + closest + "?");
}

bool LacksArguments(const CommandText& command, const CommandInfo& info) {
    return command.arguments.size() < static_cast<std::size_t>(info.row.RequiredCount());
}

}  // namespace

bool ParseCommandText(const std::string& text, CommandText& parsed) {
    const std::size_t open = text.find('(');
    const std::size_t close = text.find(')');
    if (open == std::string::npos || close == std::string::npos || close < open)
        return false;
    parsed.name = text.substr(0, open);
    parsed.arguments.clear();
    const CommandRow* const row = FindCommandRow(Trimmed(parsed.name).c_str());
    if (row == nullptr)
        return true;
    const std::size_t end = row->IsOfRegistry() ? text.rfind(')') : close;
    const std::string inner = text.substr(open + 1, end - open - 1);
    for (const CString& argument : SplitArguments(*row, inner.c_str()))
        parsed.arguments.emplace_back(static_cast<const char*>(argument));
    if (inner.empty())  // to the driver mostly one that is empty
        parsed.arguments.clear();
    return true;
}

Hints CommandHints(const CommandText& command, const CommandInfo* info, int status,
                   const HostDatabase& database, const HostDatabase::Trace& trace) {
    if (info == nullptr)
        return {UnknownCommandHint(command.name, status)};
    if (info->row.IsOfRegistry() && command.name != info->name)
        return {"the driver knows " + std::string(info->name) +
                " in exactly this spelling only, and did nothing"};
    Hints hints;
    if (status == -RESULT_BAD_ARGUMENTS)
        hints.push_back("usage: " + CommandSignature(*info));
    else if (LacksArguments(command, *info))
        hints.push_back("fewer arguments than meant; usage: " + CommandSignature(*info));
    const std::size_t count = std::min(command.arguments.size(), info->arguments.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::string hint =
            ArgumentHint(info->arguments[i], command.arguments[i], database, trace);
        if (!hint.empty())
            hints.push_back(hint);
    }
    return hints;
}
