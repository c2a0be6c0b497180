// The panel's page: what a browser, or a script, asks over HTTP. docs/api.md describes it.
#ifndef HXDPANEL_PAGE_H
#define HXDPANEL_PAGE_H

#include "hxdpanel/console/Session.h"

#include <memory>
#include <string>

struct PageSetup {
    int socket = -1;        // listening; the page closes it
    std::string machine;    // a name under which it may be asked for, beside its addresses
    bool isOpen = false;    // to other machines; then only with a token
    std::string folder;     // of the files that a browser is shown
    std::string documents;  // folder of the descriptions of the interface
};

// Shares the device with the console: see SharedRun.
class Page {
public:
    // Serves until it is destroyed, on threads of its own. Null, with the reason, when it cannot.
    static std::unique_ptr<Page> Start(const SessionParts& parts, const PageSetup& setup,
                                       std::string& error);
    // Waits for what is being done for a browser.
    ~Page();
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    const std::string& Address() const { return m_strAddress; }  // what is typed into a browser

private:
    struct Parts;
    explicit Page(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> m_parts;
    std::string m_strAddress;
};

#endif
