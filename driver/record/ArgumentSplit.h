// The rules by which the argument text of a command is taken apart: for the driver, and for the
// console, which says what the driver made of a text.
#ifndef HXD_ARGUMENTSPLIT_H
#define HXD_ARGUMENTSPLIT_H

#include "driver/record/CommandTable.h"
#include "mfc/CString.h"

#include <string>
#include <vector>

// By the rule of the command's row.
std::vector<CString> SplitArguments(const CommandRow& row, const CString& text);

// The rule WORDS; appends. The registry takes a text apart before it looks whether it knows the
// command, and up to the last ")" instead of the first.
void SplitWords(const std::string& text, char separator, std::vector<std::string>& words);

#endif
