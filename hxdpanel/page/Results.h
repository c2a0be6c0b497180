// What a session prints while this object lives, for an answer over HTTP.
#ifndef HXDPANEL_RESULTS_H
#define HXDPANEL_RESULTS_H

#include "hxdpanel/console/Session.h"
#include "hxdpanel/page/HttpServer.h"
#include "hxdpanel/page/Witness.h"

#include <cstdio>
#include <string>

namespace page {

Response JsonResponse(const char* kind, const Json& members);

// Made in the session's turn, and gone with it.
class Results {
public:
    Results(Session& session, Witness& witness);
    ~Results();
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;

    // Once, after the session has worked: its one object, or what it has complained about.
    Response Answer();
    // The same for a line, which may lead to several objects and to none.
    Response AnswerToLine(const std::string& line);

private:
    Json TakeObjects();  // a list

    Session& m_session;
    Witness& m_witness;
    char* m_pText = nullptr;
    std::size_t m_nLength = 0;
    std::FILE* m_pOut;
    std::string m_strComplaint;
};

}  // namespace page

#endif
