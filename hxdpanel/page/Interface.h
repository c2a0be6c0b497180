// The interface for programs, of which the page in the browser is one: a table of paths and what
// each answers. docs/api.md and openapi.json describe it.
#ifndef HXDPANEL_INTERFACE_H
#define HXDPANEL_INTERFACE_H

#include "hxdpanel/console/Session.h"
#include "hxdpanel/page/EventHub.h"
#include "hxdpanel/page/Gate.h"
#include "hxdpanel/page/HttpServer.h"
#include "hxdpanel/page/Readings.h"
#include "hxdpanel/page/Witness.h"

#include <string>
#include <vector>

namespace page {

class Interface {
public:
    // What is passed outlives the object. session: the page's own. folder: of the page's files.
    // documents: folder of the descriptions.
    Interface(Session& session, HostDatabase& database, SharedRun& shared, EventHub& hub,
              Witness& witness, Readings& readings, Gate& gate, const std::string& folder,
              const std::string& documents);

    // From any thread; waits while somebody else acts on the device.
    Response Answer(const Request& request);

private:
    struct Call {
        const Request& request;
        std::string name;  // what stands in the path for the part in braces
        Json body;         // of a request that has one
    };
    struct Route {
        const char* method;
        const char* path;  // may end with a part in braces, which stands for any text
        Response (Interface::*answer)(const Call& call);
        const char* parameter = nullptr;  // of the query; null: it takes none
    };
    static const std::vector<Route>& Routes();
    Response Dispatch(const Request& request);

    Response Index(const Call& call);
    Response Channels(const Call& call);
    Response ReadChannel(const Call& call);
    Response WriteChannel(const Call& call);
    Response RunLine(const Call& call);
    Response Variables(const Call& call);
    Response SetVariable(const Call& call);
    Response Help(const Call& call);
    Response Complete(const Call& call);
    Response Panel(const Call& call);
    Response Faults(const Call& call);
    Response Time(const Call& call);
    Response Screen(const Call& call);
    Response Captures(const Call& call);
    Response Capture(const Call& call);
    Response Events(const Call& call);
    Response Metrics(const Call& call);
    Response Description(const Call& call);
    Response Objects(const Call& call);
    Response FirstFile(const Call& call);
    Response File(const Call& call);
    Response Library(const Call& call);

    Response AnswerTo(const char* line);
    bool KnowsChannel(const std::string& word, Response& error) const;

    Session& m_session;
    HostDatabase& m_database;
    SharedRun& m_shared;
    EventHub& m_hub;
    Witness& m_witness;
    Readings& m_readings;
    Gate& m_gate;
    const std::string m_strFolder;
    const std::string m_strDocuments;
};

}  // namespace page

#endif
