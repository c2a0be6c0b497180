// Who may ask for what. The panel can be rebooted from its page, so no other site that is open in
// the browser, and nobody on the network, may ask in the user's name.
#ifndef HXDPANEL_GATE_H
#define HXDPANEL_GATE_H

#include "common/Mutex.h"
#include "hxdpanel/page/HttpServer.h"

#include <chrono>
#include <string>

namespace page {

class Gate {
public:
    static constexpr double REQUESTS_A_SECOND = 50.0;  // of the interface, from all together ...
    static constexpr double REQUESTS_AT_ONCE = 150.0;  // ... after a pause

    // machine: a name by which it may be called, or empty. token: empty when everybody who reaches
    // the address may ask. port: in the name of the cookie, because cookies know no ports.
    Gate(const std::string& machine, const std::string& token, int port);

    // True when the request may go on; otherwise its answer is there.
    bool Admits(const Request& request, Response& refusal);
    // The answer to an address with the token in it: the browser keeps it as a cookie. False when
    // the request is none.
    bool TakesToken(const Request& request, Response& response) const;

private:
    bool NamesUs(const Request& request) const;
    bool HasToken(const Request& request) const;
    bool IsSameOrigin(const Request& request) const;
    bool IsInTime();

    const std::string m_strMachine;
    const std::string m_strToken;
    const std::string m_strCookie;

    hxd::Mutex m_lock;
    double m_dLeft HXD_GUARDED_BY(m_lock) = REQUESTS_AT_ONCE;
    std::chrono::steady_clock::time_point m_since HXD_GUARDED_BY(m_lock);
};

// 32 digits that nobody guesses; empty when the system gives none.
std::string NewToken();

// The answer to a request that is not carried out, with what is wrong for people.
Response ErrorResponse(int status, const std::string& message);

}  // namespace page

#endif
