#include "hxdcheck/host/HostChecks.h"

#include "common/File.h"
#include "network/ResolverText.h"
#include "ntp/ntpCfgParam.h"

#include <QFile>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>

#include <cstdlib>
#include <cstring>

namespace {

constexpr int LOOKUP_SECONDS = 60;

const char* const RESOLVER = "/etc/resolv.conf";

Finding CheckNameServer() {
    HXDCTRL::File file;
    std::vector<std::string> servers;
    if (!file.open(RESOLVER, O_RDONLY))
        return Look(std::string(RESOLVER) + ": " + std::strerror(file.LastError()),
                    "without it time servers can only be given as addresses");
    if (!ParseNameServers(file.readAll(), servers))
        return Look(std::string(RESOLVER) + " has a name server line that the driver cannot read",
                    "write each as \"nameserver ADDRESS\": nothing before it, one blank, IPv4");
    if (servers.empty())
        return Look(std::string(RESOLVER) + " names no server", "add \"nameserver ADDRESS\"");
    return Ok(servers[0] + (servers.size() > 1 ? " and others" : "") +
              "; it must answer a ping, too");
}

// What a name server says to a name: an address, or why there is none.
bool LookUp(const std::string& name, std::string& answer) {
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    const int error = ::getaddrinfo(name.c_str(), "123", &wanted, &found);
    if (error != 0) {
        answer = ::gai_strerror(error);
        return false;
    }
    char text[INET_ADDRSTRLEN] = "";
    sockaddr_in address = {};
    std::memcpy(&address, found->ai_addr, sizeof address);
    ::freeaddrinfo(found);
    ::inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    answer = text;
    return true;
}

Finding CheckTimeServers() {
    ::setenv("RES_OPTIONS", "timeout:2 attempts:1", 0);
    ntpCfgParam settings;
    settings.ReadCfg();
    std::string text = settings.ntpSwitch == 1 ? "" : "synchronisation is off; ";
    bool allFound = true;
    for (int i = 0; i < settings.servers.size(); ++i) {
        const std::string name = QFile::encodeName(settings.servers[i]).constData();
        std::string answer = "none";
        allFound = (name.empty() || LookUp(name, answer)) && allFound;
        if (!name.empty() && name != answer)
            answer.insert(0, ": ").insert(0, name);
        text.append(i > 0 ? "; " : "").append(answer);
    }
    if (allFound || settings.ntpSwitch != 1)
        return Ok(text);
    return Look(text,
                "the name server does not know it, or does not answer; name another server, "
                "or its address (channels 15 to 18)");
}

}  // namespace

void CheckNames(Findings& findings) {
    findings.Group("Name server and time servers");
    findings.Run("name server", CheckNameServer);
    findings.Run(
        "time servers", [] { return Timed(5000.0F, CheckTimeServers); }, LOOKUP_SECONDS,
        "the name server does not answer");
}
