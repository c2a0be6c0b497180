// The page's server, asked as browsers and programs ask it, and as those do who should get nothing.
// The program runs in the sandbox of the case, so it opens its socket itself.
#include "HttpClient.h"
#include "JsonSchema.h"
#include "TestFiles.h"

#include "common/QtProcess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QStringList>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <set>
#include <thread>
#include <vector>

namespace {

using http::Answer;
using http::EventReader;
using http::Exchange;
using http::Text;
using Json = nlohmann::json;

// hxdpanel with a page; its console gets what Type() is given.
class Panel {
public:
    explicit Panel(const QStringList& more = QStringList()) {
        QStringList words;
        words << QLatin1String("--page") << more;
        m_process.start(QString::fromUtf8(HXD_PANEL_PROGRAM), words);
        const std::string said = AwaitError("the panel is at http://");
        const std::size_t port = said.find(':', said.find("http://") + 7) + 1;
        m_port = std::atoi(said.c_str() + port);
        const std::size_t token = said.find("?token=");
        if (token != std::string::npos)
            m_token = said.substr(token + 7, said.find('\n', token) - token - 7);
    }
    ~Panel() {
        m_process.terminate();
        EXPECT_TRUE(m_process.waitForFinished(20000));
    }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    int Port() const { return m_port; }
    const std::string& Token() const { return m_token; }
    int Process() const { return static_cast<int>(hxd::ProcessId(m_process)); }

    void Type(const char* line) {
        m_process.write(line);
        m_process.waitForBytesWritten(5000);
    }
    // All that has come on standard error, once this text is in it.
    std::string AwaitError(const std::string& text) {
        m_process.setReadChannel(QProcess::StandardError);
        while (m_errors.find(text) == std::string::npos && m_process.waitForReadyRead(20000))
            m_errors += m_process.readAllStandardError().constData();
        EXPECT_NE(m_errors.find(text), std::string::npos) << text << ": " << m_errors;
        return m_errors;
    }

    Answer Get(const std::string& path, const std::string& fields = "") const {
        return Exchange(m_port, Text("GET", path, "", fields));
    }
    Answer Put(const std::string& path, const Json& body) const {
        return Exchange(m_port, Text("PUT", path, body.dump()));
    }
    Answer Run(const std::string& line) const {
        return Exchange(m_port, Text("POST", "/api/run", Json{{"line", line}}.dump()));
    }

private:
    QProcess m_process;
    int m_port = 0;
    std::string m_token;
    std::string m_errors;
};

constexpr in_addr_t OTHER_ADDRESS = INADDR_LOOPBACK + 1;  // of this machine

// The objects of the description and those that it refers to, in one.
JsonSchema SchemaOf(const Json& description, Json objects) {
    const Json& own = description["components"]["schemas"];
    objects["$defs"].update(own);
    for (const auto& object : own.items())
        objects["oneOf"].push_back({{"$ref", "#/$defs/" + object.key()}});
    std::string text = objects.dump();
    for (const std::string place : {"json-schema.json#/$defs/", "#/components/schemas/"}) {
        for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place))
            text.replace(at, place.size(), "#/$defs/");
    }
    return JsonSchema(Json::parse(text));
}

// As a user of the description would fill it in.
std::string Filled(std::string path) {
    const std::pair<const char*, const char*> values[] = {
        {"{channel}", "21"}, {"/variables/{name}", "/variables/x"}, {"{name}", "shot.png"}};
    for (const auto& value : values) {
        const std::size_t place = path.find(value.first);
        if (place != std::string::npos)
            path.replace(place, std::string(value.first).size(), value.second);
    }
    return path;
}

std::string BodyFor(const std::string& path) {
    return path == "/api/run" ? "{\"line\": \"SAVESCREEN($OLMA_DIR_USR/shot.png)\"}"
                              : "{\"value\": 40}";
}

}  // namespace

TEST(Page, AnswersWhatItsDescriptionSays) {
    Panel panel;
    const Json all = panel.Get("/api/openapi.json").Json();
    const Json objects = panel.Get("/api/json-schema.json").Json();
    ASSERT_TRUE(all.is_object() && objects.is_object());
    const JsonSchema schema = SchemaOf(all, objects);
    std::set<std::string> operations;
    EXPECT_EQ(panel.Run("SAVESCREEN($OLMA_DIR_USR/shot.png)").status, 200);
    for (const auto& path : all["paths"].items()) {
        for (const auto& operation : path.value().items()) {
            const std::string method = operation.key() == "get"   ? "GET"
                                       : operation.key() == "put" ? "PUT"
                                                                  : "POST";
            operations.insert(method + " " + path.key());
            if (path.key() == "/api/events")
                continue;  // does not end
            const std::string at = method + " " + Filled(path.key());
            const Answer answer =
                Exchange(panel.Port(), Text(method, Filled(path.key()), BodyFor(path.key())));
            EXPECT_EQ(answer.status, 200) << at << answer.body;
            const Json& content = operation.value()["responses"]["200"]["content"];
            const std::string type = content.begin().key();
            if (content.begin().value().contains("schema")) {
                const std::string described = content.begin().value()["schema"]["$ref"];
                EXPECT_EQ(schema.Mismatch(answer.Json()), "") << at << ": " << answer.body;
                EXPECT_EQ(described.substr(described.rfind('/') + 1), answer.Json()["kind"]) << at;
            }
            const bool isOneOf = std::any_of(
                content.items().begin(), content.items().end(),
                [&answer](const auto& each) { return answer.Says("Content-Type: " + each.key()); });
            EXPECT_TRUE(isOneOf) << at << ": " << answer.head;
        }
    }
    std::set<std::string> known;
    const Json index = panel.Get("/api").Json();
    for (const Json& route : index["routes"])
        known.insert(route["method"].get<std::string>() + " " + route["path"].get<std::string>());
    EXPECT_EQ(operations, known);
}

TEST(Page, MistakesAreAnsweredWithTheirStatus) {
    Panel panel;
    const struct {
        const char* method;
        const char* path;
        const char* body;
        int status;
        const char* says;
    } cases[] = {
        {"GET", "/api/channels/99", "", 404, "99"},
        {"PUT", "/api/channels/21", "{\"value\": \"dark\"}", 400, "takes a number"},
        {"PUT", "/api/channels/21", "{\"value\": true}", 400, "needs a value"},
        {"PUT", "/api/channels/21", "{\"value\": 101}", 200, "\"code\":5"},
        {"PUT", "/api/channels/21", "{", 400, "no JSON object"},
        {"PUT", "/api/channels/21", "[1]", 400, "no JSON object"},
        {"PUT", "/api/variables/x", "{\"value\": \"a\", \"type\": \"int\"}", 400, "is not an int"},
        {"POST", "/api/run", "{\"line\": \"nonsense\"}", 400, "is no command"},
        {"POST", "/api/run", "{\"line\": \"fail nothing\"}", 400, "no function"},
        {"POST", "/api/run", "{\"line\": \"quit\"}", 400, "console only"},
        {"POST", "/api/run", "{\"line\": \" record x\"}", 400, "console only"},
        {"POST", "/api/run", "{\"line\": \"watch\"}", 400, "console only"},
        {"POST", "/api/run", "{\"line\": \"set a 1\\nset b 2\"}", 400, "control"},
        {"POST", "/api/run", "{\"line\": 5}", 400, "needs a line"},
        {"DELETE", "/api/channels/21", "{}", 405, "GET, PUT"},
        {"GET", "/api/nothing", "", 404, "nothing"},
        {"GET", "/api/channels?channel=21", "", 400, "only channels"},
        {"GET", "/api/panel?channels=21", "", 400, "no parameter channels"},
    };
    for (const auto& row : cases) {
        const Answer answer = Exchange(panel.Port(), Text(row.method, row.path, row.body));
        EXPECT_EQ(answer.status, row.status) << row.path << row.body;
        EXPECT_NE(answer.body.find(row.says), std::string::npos) << row.path << answer.body;
        if (row.status != 200) {
            EXPECT_EQ(answer.Json()["status"]["code"], row.status) << answer.body;
        }
    }
}

TEST(Page, WhoeverActsAllSeeIt) {
    Panel panel;
    EventReader first(panel.Port());
    EventReader second(panel.Port());
    for (EventReader* reader : {&first, &second}) {
        EXPECT_EQ(reader->Next().name, "hello");
        EXPECT_EQ(reader->Await("channels").data["channels"].size(), 32U);
    }
    panel.Type("write 21 40\n");
    for (EventReader* reader : {&first, &second}) {
        const Json acted = reader->Await("acted").data;
        EXPECT_EQ(acted["by"], "console") << acted;
        EXPECT_EQ(acted["line"], "write 21 40");
        EXPECT_EQ(acted["status"]["code"], 0);
        const auto shows40 = [](const Json& data) {
            return std::any_of(data["channels"].begin(), data["channels"].end(),
                               [](const Json& channel) {
                                   return channel["number"] == 21 && channel["value"] == 40;
                               });
        };
        EXPECT_EQ(reader->Await("channels", shows40).name, "channels");
    }
    EXPECT_EQ(panel.Put("/api/channels/7", {{"value", 50}}).status, 200);
    panel.AwaitError("page: write 7 50: 0 (done)");
    const auto isBeep = [](const Json& data) { return data["kind"] == "beep"; };
    EXPECT_EQ(first.Await("did", isBeep).data["milliseconds"], 50);
    panel.Run("light off");
    EXPECT_EQ(second.Await("panel", [](const Json& data) { return data["light"] == false; }).name,
              "panel");
    const Json run = panel.Run("OLMA_WRITE(4=7000)").Json();
    EXPECT_EQ(run["status"]["code"], 4) << run;
    EXPECT_EQ(run["results"][0]["command"], "OLMA_WRITE(4=7000)");
}

TEST(Page, ARebootRestartsThePanelAndSaysSo) {
    Panel panel;
    EventReader events(panel.Port());
    events.Await("channels");
    EXPECT_EQ(panel.Run("REBOOT()").status, 200);
    const Json restarted = events.Await("restarted").data;
    EXPECT_EQ(restarted["why"], "reboot");
    EXPECT_EQ(restarted["restarts"], 1);
    EXPECT_EQ(panel.Get("/api/channels/20").status, 200);
    EXPECT_EQ(EventReader(panel.Port()).Next().data["restarts"], 1);
}

// A listener is told what it has missed, if that is remembered, or everything.
TEST(Page, AListenerThatComesBackGoesOn) {
    Panel panel;
    std::string last;
    {
        EventReader events(panel.Port());
        last = events.Await("panel").id;
    }
    panel.Run("set missed 1");
    EventReader back(panel.Port(), "Last-Event-ID: " + last + "\r\n");
    EXPECT_EQ(back.Next().name, "hello");
    EXPECT_EQ(back.Await("acted").data["line"], "set missed");
    EventReader stranger(panel.Port(), "Last-Event-ID: 1.1-1\r\n");
    EXPECT_EQ(stranger.Next().name, "hello");
    EXPECT_EQ(stranger.Next().data["channels"].size(), 32U);
}

TEST(Page, AListenerThatDoesNotReadHoldsNobodyUp) {
    Panel panel;
    EventReader slow(panel.Port(), "", 4096);
    slow.Await("channels");
    const std::string large(60000, 'x');
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 120; ++i)
        ASSERT_EQ(panel.Run("set x \"" + large + "\"").status, 200) << i;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    int acted = 0;
    EventReader::Event event;
    while ((event = slow.Next()).name == "acted" || event.name == "did" || event.name == "log" ||
           (event.name == "channels" && event.data["channels"].size() < 32) ||
           event.name == "screen" || event.name == "panel")
        acted += event.name == "acted" ? 1 : 0;
    EXPECT_EQ(event.name, "channels") << "everything anew";
    EXPECT_LT(acted, 120);
}

TEST(Page, OthersMayNotAsk) {
    // Whoever answers for the machine's name in its network could lead here by it.
    Panel panel(QStringList() << QLatin1String("--machine") << QLatin1String("bench"));
    const std::string reboot = "{\"line\": \"REBOOT()\"}";
    const std::string large(70000, 'x');
    const struct {
        std::string request;
        int status;
    } cases[] = {
        {Text("GET", "/api/channels", "", "Host: evil.example\r\n"), 421},
        {Text("GET", "/api/channels", "", "Host: evil.example:80\r\nHost: localhost\r\n"), 421},
        {Text("GET", "/api/channels", "", "Host: localhost:1\r\nHost: evil.example\r\n"), 421},
        {Text("GET", "/", "", "Host: 127.0.0.1.evil.example\r\n"), 421},
        {Text("GET", "/", "", "Host: bench\r\n"), 421},
        {Text("GET", "/api/channels", "", "Host: \r\n"), 421},
        {Text("GET", "/api/channels/21", "", "Host: localhost:1\r\n"), 200},  // a tunnel's port
        {Text("POST", "/api/run", reboot, "Origin: http://evil.example\r\n"), 403},
        {Text("POST", "/api/run", reboot, "Origin: null\r\n"), 403},
        {Text("POST", "/api/run", reboot, "Sec-Fetch-Site: cross-site\r\n"), 403},
        {Text("GET", "/api/events", "", "Sec-Fetch-Site: cross-site\r\n"), 403},
        {"POST /api/run HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n"
         "Content-Type: text/plain\r\nContent-Length: 20\r\n\r\n" +
             reboot,
         415},
        {"POST /api/run HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n"
         "Content-Length: 20\r\n\r\n" +
             reboot,
         415},
        {"POST /api/run HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n"
         "Content-Type: application/json\r\nContent-Length: 99999999999\r\n\r\n",
         413},
        {"POST /api/run HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nTransfer-Encoding: "
         "chunked\r\nContent-Type: application/json\r\n\r\n11170\r\n" +
             large + "\r\n0\r\n\r\n",
         0},
        {Text("GET", "/page/../main.cpp"), 404},
        {Text("GET", "/page/%2e%2e%2fmain.cpp"), 404},
        {Text("GET", "/page/Page.cpp"), 404},
        {Text("GET", "/page/"), 404},
        {Text("GET", "/vendor/..%2f..%2fpasswd"), 404},
        {Text("GET", "/api/captures/..%2f..%2fetc%2fpasswd"), 404},
        {Text("GET", "/api/captures/unsaved.png"), 404},
        {Text("POST", "/api/run", std::string(60000, '[')), 400},
    };
    for (const auto& row : cases)
        EXPECT_EQ(Exchange(panel.Port(), row.request).status, row.status)
            << row.request.substr(0, 200);
    EXPECT_FALSE(http::Connection(panel.Port(), 0, OTHER_ADDRESS).IsOpen());
    // Refused before it is all read, so the answer may get lost.
    EXPECT_NE(Exchange(panel.Port(), Text("GET", "/", "", "X: " + large + "\r\n")).status, 200);
    const Answer answer = panel.Get("/api/panel");
    EXPECT_EQ(answer.status, 200);
    for (const char* field :
         {"Content-Security-Policy: default-src 'self'", "X-Content-Type-Options: nosniff",
          "Cache-Control: no-store", "Cross-Origin-Resource-Policy: same-origin"})
        EXPECT_TRUE(answer.Says(field)) << field;
    EXPECT_EQ(EventReader(panel.Port()).Next().data["restarts"], 0);
}

// What was saved is shown, what somebody has put in its place is not.
TEST(Page, APictureIsNoWayToOtherFiles) {
    Panel panel;
    writeFile("/etc/secret.png", "secret");
    panel.Run("SAVESCREEN($OLMA_DIR_USR/shot.png)");
    const Answer picture = panel.Get("/api/captures/shot.png");
    EXPECT_EQ(picture.status, 200);
    EXPECT_EQ(picture.body.substr(1, 3), "PNG");
    ASSERT_EQ(std::remove("/storage/user_dir/shot.png"), 0);
    ASSERT_EQ(::symlink("/etc/secret.png", "/storage/user_dir/shot.png"), 0);
    EXPECT_EQ(panel.Get("/api/captures/shot.png").status, 404);
}

TEST(Page, AFloodIsBounded) {
    Panel panel;
    std::vector<std::unique_ptr<EventReader>> listeners;
    for (int i = 0; i < 16; ++i) {
        listeners.push_back(std::make_unique<EventReader>(panel.Port()));
        ASSERT_EQ(listeners.back()->Next().name, "hello");
    }
    EXPECT_EQ(panel.Get("/api/events").status, 503);
    std::atomic<int> refused{0};
    std::vector<std::thread> flood;
    flood.reserve(8);
    for (int i = 0; i < 8; ++i)
        flood.emplace_back([&] {
            for (int request = 0; request < 100; ++request)
                refused += panel.Get("/api/complete").status == 429 ? 1 : 0;
        });
    for (std::thread& thread : flood)
        thread.join();
    EXPECT_GT(refused, 0);
    std::vector<std::unique_ptr<http::Connection>> idle;
    idle.reserve(100);
    for (int i = 0; i < 100; ++i)
        idle.push_back(std::make_unique<http::Connection>(panel.Port()));
    int threads = 0;
    const std::string status = readFile("/proc/" + std::to_string(panel.Process()) + "/status");
    std::sscanf(status.c_str() + status.find("Threads:"), "Threads: %d", &threads);
    EXPECT_GT(threads, 16);
    EXPECT_LT(threads, 64 + 16);
    idle.clear();
    listeners.clear();
    panel.Type("write 21 40\n");
    EXPECT_EQ(panel.Get("/page/nothing.css").status, 404) << "and it goes on";
}

TEST(Page, WithListenTheTokenIsNeeded) {
    Panel panel(QStringList() << QLatin1String("--listen") << QLatin1String("0.0.0.0"));
    EXPECT_TRUE(http::Connection(panel.Port(), 0, OTHER_ADDRESS).IsOpen());
    ASSERT_EQ(panel.Token().size(), 32U);
    const std::string cookie =
        "Cookie: hxdpanel-" + std::to_string(panel.Port()) + "=" + panel.Token() + "\r\n";
    const std::string wrong = panel.Token().substr(1) + "0";
    EXPECT_EQ(panel.Get("/api/channels").status, 401);
    EXPECT_EQ(panel.Get("/").status, 401);
    EXPECT_EQ(panel.Get("/metrics", "Authorization: Bearer " + wrong + "\r\n").status, 401);
    EXPECT_EQ(panel.Get("/metrics", "Authorization: Bearer \r\n").status, 401);
    EXPECT_EQ(panel.Get("/?token=" + wrong).status, 401);
    EXPECT_EQ(panel.Get("/api/events?token=" + panel.Token()).status, 401);
    EXPECT_EQ(panel.Get("/metrics", "Authorization: Bearer " + panel.Token() + "\r\n").status, 200);
    const Answer opened = panel.Get("/?token=" + panel.Token());
    EXPECT_EQ(opened.status, 303);
    EXPECT_TRUE(opened.Says("Set-" + cookie.substr(0, cookie.size() - 2) +
                            "; Path=/; HttpOnly; SameSite=Strict"))
        << opened.head;
    EXPECT_EQ(panel.Get("/api/channels", cookie).status, 200);
}

// Only numbers that mean something.
TEST(Page, MetricsAreReadable) {
    Panel panel;
    panel.Run("fail hal_uart_info -5");
    panel.Put("/api/channels/21", {{"value", 40}});
    const Answer open = panel.Get("/metrics", "Accept: application/openmetrics-text\r\n");
    EXPECT_TRUE(open.Says("Content-Type: application/openmetrics-text; version=1.0.0"));
    for (const char* line :
         {"# TYPE hxdpanel_brightness_ratio gauge\n# UNIT hxdpanel_brightness_ratio ratio\n",
          "\nhxdpanel_brightness_ratio 0.4\n", "\n# TYPE hxdpanel_restarts counter\n",
          "\nhxdpanel_restarts_total 0\n", "hxdpanel_fault_hits_total{function=\"hal_uart_info\"} ",
          "\nhxdpanel_panel_info{serial_number=\"HX", "\n# EOF\n"})
        EXPECT_NE(open.body.find(line), std::string::npos) << line << open.body;
    EXPECT_EQ(open.body.find("com1_use"), std::string::npos) << "-2: cannot be queried";
}

namespace {

// How often each thread of a process has been woken.
std::map<std::string, long> Wakings(int process) {
    std::map<std::string, long> wakings;
    const std::string folder = "/proc/" + std::to_string(process) + "/task";
    const QDir tasks(QString::fromUtf8(folder.c_str()));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const std::string status = readFile(folder + "/" + task.toUtf8().constData() + "/status");
        const std::size_t count = status.find("voluntary_ctxt_switches:");
        if (count != std::string::npos)
            wakings[task.toUtf8().constData()] = std::atol(status.c_str() + count + 24);
    }
    return wakings;
}

}  // namespace

TEST(Page, WithoutAListenerNothingIsRead) {
    Panel panel;
    const auto collections = [&panel] {
        const std::string body = panel.Get("/metrics").body;
        const std::string name = "\nhxdpanel_collections_total ";
        return std::atoi(body.c_str() + body.find(name) + name.size());
    };
    { EventReader(panel.Port()).Await("panel"); }
    const auto collectionsInASecond = [&collections] {
        const int before = collections();
        ::usleep(1000000);
        return collections() - before;
    };
    // The end of the connection is noticed with an event.
    for (int tries = 0; tries < 20 && collectionsInASecond() != 1; ++tries)
        panel.Run("set a 1");
    EXPECT_EQ(collectionsInASecond(), 1) << "that of the question itself";
    const std::map<std::string, long> wakings = Wakings(panel.Process());
    ::usleep(1500000);
    int awake = 0;
    for (const auto& thread : Wakings(panel.Process()))
        awake += wakings.count(thread.first) == 0 || wakings.at(thread.first) != thread.second;
#if defined(__SANITIZE_THREAD__)
    --awake;  // the sanitizer's
#endif
    EXPECT_LE(awake, 2) << "the driver's own";
}
