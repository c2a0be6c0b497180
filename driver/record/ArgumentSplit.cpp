#include "driver/record/ArgumentSplit.h"

#include "driver/record/CDevServer.h"

#include <algorithm>

namespace {

using Arguments = std::vector<CString>;

Arguments Whole(const CString& text) {
    return text.IsEmpty() ? Arguments() : Arguments{text};
}

Arguments Heads(CString rest, char separator, std::size_t most) {
    Arguments arguments;
    CString head;
    while (arguments.size() + 1 < most &&
           CDevServer::SvrGetCmdStr(rest, CString(&separator, 1), head, rest) == 1)
        arguments.push_back(head);
    arguments.push_back(rest);
    return arguments;
}

template <class PIECE>
Arguments FromPieces(const std::vector<PIECE>& pieces) {
    Arguments arguments;
    for (const PIECE& piece : pieces)
        arguments.emplace_back(piece.c_str());
    return arguments;
}

Arguments List(const CString& text, char separator) {
    std::vector<FF::utils::String> pieces;
    CDevBas::splitString(text, separator, pieces);
    return FromPieces(pieces);
}

Arguments Words(const CString& text, char separator) {
    std::vector<std::string> words;
    SplitWords(static_cast<const char*>(text), separator, words);
    return FromPieces(words);
}

Arguments RawList(const CString& text, char separator, std::size_t most) {
    Arguments arguments;
    int start = 0;
    while (arguments.size() < most && start >= 0) {
        const int end = text.Find(separator, start);
        arguments.push_back(end < 0 ? text.Mid(start) : text.Mid(start, end - start));
        start = end < 0 ? -1 : end + 1;
    }
    return arguments;
}

}  // namespace

std::vector<CString> SplitArguments(const CommandRow& row, const CString& text) {
    const auto most = static_cast<std::size_t>(row.ArgumentCount());
    switch (row.split) {
        case CommandRow::WHOLE:
            return Whole(text);
        case CommandRow::HEADS:
            return Heads(text, row.separator, most);
        case CommandRow::LIST:
            return List(text, row.separator);
        case CommandRow::RAW_LIST:
            return RawList(text, row.separator, most);
        case CommandRow::WORDS:
            return Words(text, row.separator);
        case CommandRow::IGNORED:
            break;
    }
    return Arguments();
}

void SplitWords(const std::string& text, char separator, std::vector<std::string>& words) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        if (end > start)
            words.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

int CDevServer::SvrGetCmdStr(const CString& text, const CString& separator, CString& left,
                             CString& right) {
    const int position = text.Find(separator);
    if (position < 0)
        return 0;
    CString head = text.Left(position);
    CString rest = text.Right(text.GetLength() - position - 1);
    left = head.Trim();
    right = rest.Trim();
    return 1;
}

int CDevBas::splitString(const char* text, char separator, std::vector<FF::utils::String>& pieces) {
    if (text == nullptr) {
        pieces.emplace_back();
        return 0;
    }
    const std::size_t first = pieces.size();
    SplitCsvStr(text, separator, pieces);
    for (std::size_t i = first; i < pieces.size(); ++i)
        pieces[i].trim();
    return 1;
}
