// Parser of command texts.
#ifndef HXD_TOOLSBASE_H
#define HXD_TOOLSBASE_H

#include <string>
#include <vector>

class ToolsBase {
public:
    virtual ~ToolsBase() = default;

    // Splits "NAME(A,B,...)": name is the text before the first "(", the arguments lie between it
    // and the last character, which must be ")". Nothing is trimmed, empty arguments vanish, and
    // parentheses within stay in the arguments. args is appended to: the caller empties both.
    // 0 = done; -5 = not of this form.
    virtual int ParaCmd(std::string& name, std::vector<std::string>& args, const std::string& cmd);
};

#endif
