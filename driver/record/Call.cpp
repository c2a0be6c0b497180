#include "driver/record/Call.h"

#include "driver/record/ArgumentSplit.h"

Call::Call(OLMA_DATA& data, const CommandRow& row, const CString& argumentText)
    : m_data(data), m_row(row), m_arguments(SplitArguments(row, argumentText)) {}

bool Call::IsWellFormed() const {
    return m_arguments.size() >= static_cast<std::size_t>(m_row.RequiredCount()) &&
           m_arguments.size() <= static_cast<std::size_t>(m_row.ArgumentCount());
}

bool Call::WriteResult(int number) const {
    const std::size_t index = static_cast<std::size_t>(m_row.ArgumentCount()) - 1;
    return index >= m_arguments.size() || Write(index, number);
}
