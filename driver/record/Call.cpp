#include "driver/record/Call.h"

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

Arguments List(const CString& text, char separator) {
    std::vector<FF::utils::String> pieces;
    CDevBas::splitString(text, separator, pieces);
    Arguments arguments;
    for (const FF::utils::String& piece : pieces)
        arguments.emplace_back(piece.c_str());
    return arguments;
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

Arguments TakeApart(const CommandRow& row, const CString& text) {
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
        case CommandRow::IGNORED:
        case CommandRow::WORDS:
            break;
    }
    return Arguments();
}

}  // namespace

Call::Call(OLMA_DATA& data, const CommandRow& row, const CString& argumentText)
    : m_data(data), m_row(row), m_arguments(TakeApart(row, argumentText)) {}

bool Call::IsWellFormed() const {
    return m_arguments.size() >= static_cast<std::size_t>(m_row.RequiredCount()) &&
           m_arguments.size() <= static_cast<std::size_t>(m_row.ArgumentCount());
}

bool Call::WriteResult(int number) const {
    const std::size_t index = static_cast<std::size_t>(m_row.ArgumentCount()) - 1;
    return index >= m_arguments.size() || Write(index, number);
}
