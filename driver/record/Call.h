// One command on its way to its handler: the device's record and the arguments, taken apart by the
// rule of the command's row.
#ifndef HXD_CALL_H
#define HXD_CALL_H

#include "common/ResultCodes.h"
#include "driver/record/CDevServer.h"
#include "driver/record/CommandTable.h"
#include "driver/record/DevContext.h"

#include <cstddef>
#include <vector>

// Lives for the one command, on the calling thread.
class Call {
public:
    Call(OLMA_DATA& data, const CommandRow& row, const CString& argumentText);

    // Whether the number of arguments is the row's.
    bool IsWellFormed() const;

    std::size_t Count() const { return m_arguments.size(); }
    const CString& Argument(std::size_t index) const { return m_arguments[index]; }

    // The parameter that argument index names, or the literal; false when it cannot be read so.
    // VALUE: int, double or CString.
    template <class VALUE>
    bool Read(std::size_t index, VALUE& value) const {
        return CDevServer::SvrGetParaValue(m_data, m_arguments[index], value) == 1;
    }

    // False when there is no such parameter of a fitting type. VALUE: int or CString.
    template <class VALUE>
    bool Write(std::size_t index, const VALUE& value) const {
        return CDevServer::SvrSetParaValue(m_data, m_arguments[index], value) == 1;
    }

    // Into the last argument of the row, which receives the outcome; true also when it was left
    // out.
    bool WriteResult(int number) const;

private:
    OLMA_DATA& m_data;
    const CommandRow& m_row;
    std::vector<CString> m_arguments;
};

// The handler's result; RESULT_BAD_ARGUMENTS without calling it when the number of arguments is
// wrong. HANDLER: int (const Call&).
template <class HANDLER>
int RunCall(OLMA_DATA& data, Command command, const CString& argumentText, HANDLER handler) {
    const Call call(data, CommandOf(command), argumentText);
    return call.IsWellFormed() ? handler(call) : RESULT_BAD_ARGUMENTS;
}

// The same for a handler that needs one of the device's services: int (const Call&, SERVICE&).
// RESULT_DONE without calling it when the device has no such service.
template <class SERVICE, class HANDLER>
int RunCall(OLMA_DATA& data, Command command, const CString& argumentText,
            std::unique_ptr<SERVICE> DEV_CONTEXT::*service, HANDLER handler) {
    return RunCall(data, command, argumentText, [&](const Call& call) {
        SERVICE* const found = ServiceOf(data, service);
        return found != nullptr ? handler(call, *found) : RESULT_DONE;
    });
}

#endif
