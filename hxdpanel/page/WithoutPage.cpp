// Where the server's library is missing: HXD_PAGE=OFF.
#include "hxdpanel/page/Page.h"

struct Page::Parts {};

Page::~Page() = default;

std::unique_ptr<Page> Page::Start(const SessionParts&, const PageSetup&, std::string& error) {
    error = "this hxdpanel was built without the page (HXD_PAGE)";
    return nullptr;
}
