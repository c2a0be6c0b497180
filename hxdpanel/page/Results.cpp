#include "hxdpanel/page/Results.h"

#include "common/ResultCodes.h"
#include "hxdpanel/page/Gate.h"

#include <cstdlib>
#include <new>
#include <sstream>

namespace page {

namespace {

// Of the last thing that the line did, if it has one.
Json StatusOf(const Json& objects) {
    Json status = JsonStatus(HOST_OK, StatusMeaning(HOST_OK));
    for (const Json& object : objects) {
        if (object.contains("status"))
            status = object["status"];
    }
    return status;
}

}  // namespace

Response JsonResponse(const char* kind, const Json& members) {
    return {200, "application/json", JsonLine(JsonObject(kind, members)) + "\n"};
}

Results::Results(Session& session, Witness& witness)
    : m_session(session), m_witness(witness), m_pOut(::open_memstream(&m_pText, &m_nLength)) {
    if (m_pOut == nullptr)
        throw std::bad_alloc();
    m_session.PrintTo(m_pOut, &m_strComplaint);
    m_witness.CollectLines();
}

Results::~Results() {
    m_session.PrintTo(stderr, nullptr);
    m_witness.TakeLines();
    std::fclose(m_pOut);
    std::free(m_pText);
}

Json Results::TakeObjects() {
    std::fflush(m_pOut);
    std::istringstream lines(std::string(m_pText, m_nLength));
    Json objects = Json::array();
    for (std::string line; std::getline(lines, line);)
        objects.push_back(Json::parse(line));
    return objects;
}

Response Results::Answer() {
    const Json objects = TakeObjects();
    if (objects.empty())
        return ErrorResponse(400, m_strComplaint);
    return {200, "application/json", JsonLine(objects.back()) + "\n"};
}

Response Results::AnswerToLine(const std::string& line) {
    const Json objects = TakeObjects();
    if (!m_strComplaint.empty())
        return ErrorResponse(400, m_strComplaint);
    return JsonResponse("run", {{"line", line},
                                {"known", m_session.Result().isKnown},
                                {"status", StatusOf(objects)},
                                {"results", objects},
                                {"log", m_witness.TakeLines()}});
}

}  // namespace page
