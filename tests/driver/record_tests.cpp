#include "Record.h"
#include "commands/VNCLockProxy.h"
#include "driver/DeviceParameters.h"
#include "driver/record/CDevServer.h"
#include "driver/record/COwnerArchive.h"
#include "network/NetworkTask.h"
#include "ntp/NtpCtrl.h"
#include "storage/DiskInterface.h"

#include <cmath>
#include <functional>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Content(COwnerArchive& archive, int count) {
    Bytes bytes(static_cast<std::size_t>(count), 0xEE);
    archive.SvrRead(bytes.data(), count);
    return bytes;
}

class Blobs : public RecordTest {
protected:
    std::vector<int> Parameters(const Bytes& blob) {
        COwnerArchive archive;
        archive.SvrWrite(blob.data(), static_cast<int>(blob.size()));
        archive.SetPosition(0);
        archive.SvrChangeMode(ARCHIVE_LOAD);
        record.m_pArchive = &archive;
        CDevBas::ReadDeviceParameters(record);
        const CArray<int, int>& parameters = context.m_arrDevParam;
        return std::vector<int>(parameters.GetData(), parameters.GetData() + parameters.GetSize());
    }
};

// A service that tells of its end.
template <class SERVICE>
class Ending : public SERVICE {
public:
    template <class... ARGUMENTS>
    explicit Ending(std::function<void()> tell, ARGUMENTS... arguments)
        : SERVICE(arguments...), m_tell(std::move(tell)) {}
    ~Ending() override { m_tell(); }

private:
    const std::function<void()> m_tell;
};

struct NoDisk : DiskInterface {
    bool init() override { return false; }
    int getDiskLifeTime() override { return 0; }
    int getDiskIO() override { return 0; }
    void refresh() override {}
    bool refreshRes() override { return true; }
};

using Conversions = testing::Test;
using ParameterAccess = RecordTest;

}  // namespace

TEST_F(Blobs, GiveTheDeviceParameters) {
    const std::vector<int> defaults = {0, 200};
    const struct {
        Bytes blob;
        std::vector<int> parameters;
    } cases[] = {
        {{2, 0, 0, 0, 5, 0, 0, 0, 0x2C, 1, 0, 0}, {5, 300}},
        {{0x20, 0x4E, 2, 0, 0, 0, 5, 0, 0, 0, 0x2C, 1, 0, 0}, {5, 300}},
        {{0x21, 0x4E, 2, 0, 0, 0, 5, 0, 0, 0, 0x2C, 1, 0, 0}, defaults},
        {{0x1F, 0x4E, 0, 0}, std::vector<int>(19999)},  // one below the mark is a count
        {{0xFF, 0xFF, 0xFF, 0xFF}, defaults},
        {{5}, {0, 0, 0, 0, 0}},  // what is missing reads as zero
        {{1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}, {-2}},
        {{0, 0}, {}},
        {{0x20, 0x4E, 0xFF, 0xFF, 0xFF, 0xFF}, {}},  // a count of -1
        {{0x40, 0x42, 0x0F, 0}, std::vector<int>(1000000)},
        {{0x41, 0x42, 0x0F, 0}, {}},     // more than any device has
        {{0x00, 0x00, 0x00, 0x7F}, {}},  // more than any archive holds
    };
    for (const auto& c : cases)
        EXPECT_EQ(Parameters(c.blob), c.parameters) << testing::PrintToString(c.blob);
}

TEST(Context, ReleasesItsServicesInTheirOrder) {
    std::string left;  // at the end of each of three services
    {
        DEV_CONTEXT context;
        EXPECT_EQ(context.m_dWork2, -1.0);
        EXPECT_EQ(context.m_nWork7, 1);
        EXPECT_EQ(context.m_nWork3 | context.m_nWork4 | context.m_nWork5 | context.m_nWork6 |
                      context.m_nWork9 | context.m_nWork10 | context.m_nWork13,
                  0);
        EXPECT_EQ(context.m_dCpuUse + context.m_dMemAvail, 0.0);
        const auto tell = [&] {
            left += context.m_pNetworkTask != nullptr ? "network " : "";
            left += context.m_pVncLock != nullptr ? "lock " : "";
            left += context.m_pNtpCtrl != nullptr ? "time " : "";
            left += context.m_pDevManger != nullptr ? "registry; " : "; ";
        };
        context.m_pDisk = std::make_unique<Ending<NoDisk>>(tell);
        context.m_pNetworkTask = std::make_unique<NetworkTask>();
        context.m_pVncLock = std::make_unique<Ending<VNCLockProxy>>(tell, nullptr);
        context.m_pNtpCtrl = std::make_unique<NtpCtrl>();
        context.m_pDevManger = std::make_unique<Ending<DevManger>>(tell);
    }
    EXPECT_EQ(left, "network lock time registry; time registry; ; ");
}

TEST(Archive, StepsThroughItsModes) {
    COwnerArchive archive;
    archive.SvrChangeMode(ARCHIVE_STORE);  // the same mode, but a fresh archive gets its header
    EXPECT_EQ(archive.GetPosition(), 2);
    EXPECT_EQ(archive.GetSize(), 16534);
    const unsigned char data[] = {7, 8, 9};
    archive.SvrWrite(data, 3);
    // Reading switches to load mode: cut to what was written, the header skipped.
    EXPECT_EQ(Content(archive, 3), (Bytes{7, 8, 9}));
    EXPECT_EQ(archive.GetSize(), 5);
    EXPECT_EQ(Content(archive, 1), Bytes{0xEE});  // refused: nothing is left
    // Writing switches back: cut at the read position, with a new header.
    archive.SetPosition(3);
    archive.SvrWrite(data, 1);
    EXPECT_EQ(archive.GetPosition(), 3);
    archive.SetPosition(0);
    archive.SvrChangeMode(ARCHIVE_LOAD);
    EXPECT_EQ(Content(archive, 1), Bytes{7});
    // No byte at all switches as well; fewer than none do nothing.
    archive.SvrWrite(nullptr, 0);
    EXPECT_EQ(archive.GetMode(), ARCHIVE_STORE);
    EXPECT_EQ(archive.GetPosition(), 2);
    archive.SvrRead(nullptr, 0);
    EXPECT_EQ(archive.GetMode(), ARCHIVE_LOAD);
    EXPECT_EQ(archive.GetSize(), 2);
    archive.SvrRead(nullptr, -1);
    EXPECT_EQ(archive.GetPosition(), 2);
    archive.SvrWrite(data, -1);
    EXPECT_EQ(archive.GetMode(), ARCHIVE_LOAD);
}

TEST(Archive, GrowsByItsStepOrByWhatIsNeeded) {
    COwnerArchive archive;
    const Bytes one(1), large(40000);
    archive.SvrWrite(one.data(), 1);
    EXPECT_EQ(archive.GetSize(), 16534);
    archive.SvrWrite(large.data(), 40000);
    EXPECT_EQ(archive.GetSize(), 40001);
}

TEST_F(Conversions, FollowTheTable) {
    const struct {
        const char* text;
        const char* format;
        double value;
    } cases[] = {
        {"-12", "%d", -12},  {"--5", "%d", 5},  // the parser understands the second sign
        {"12abc", "%u", 12}, {"abc", "%ld", 0}, {"", "%d", 0},         {"4294967297", "%d", 1},
        {"-1A", "%x", 26},   {"-17", "%o", 15}, {"-0.5", "%LF", -0.5}, {"1e3", "%lf", 1000},
    };
    for (const auto& c : cases) {
        double number = -99;
        int integer = -99;
        const bool isDouble = CString(c.format).CompareNoCase("%lf") == 0;
        void* const out = isDouble ? static_cast<void*>(&number) : &integer;
        EXPECT_EQ(CDevServer::cstringToNumeric(c.text, c.format, out), 0);
        EXPECT_EQ(isDouble ? number : integer, c.value) << c.text << " " << c.format;
    }
    float single = 0;
    EXPECT_EQ(CDevServer::cstringToNumeric("-2.5", "%f", &single), 0);
    EXPECT_EQ(single, -2.5f);
    int untouched = 7;
    EXPECT_EQ(CDevServer::cstringToNumeric("5", "%s", &untouched), 1);
    EXPECT_EQ(untouched, 7);
    EXPECT_EQ(CDevServer::SvrStr2Double("12.5xyz", 4), 12.5);
    EXPECT_EQ(CDevServer::SvrStr2Double("1", 2), 0.0);
}

TEST_F(Conversions, SplitAtTheFirstSeparator) {
    CString left = "l", right = "r";
    EXPECT_EQ(CDevServer::SvrGetCmdStr("abc", "=", left, right), 0);
    EXPECT_TRUE(left == "l" && right == "r");
    EXPECT_EQ(CDevServer::SvrGetCmdStr(" a = b = c ", "=", left, right), 1);
    EXPECT_STREQ(left, "a");
    EXPECT_STREQ(right, "b = c");
    CDevServer::SvrGetCmdStr("a==b", "==", left, right);
    EXPECT_STREQ(right, "=b");  // the rest of a longer separator stays
    CDevServer::SvrGetCmdStr(right, "=", left, right);
    EXPECT_STREQ(left, "");
    EXPECT_STREQ(right, "b");

    std::vector<FF::utils::String> pieces;
    EXPECT_EQ(CDevBas::splitString(" a ,, b\t", ',', pieces), 1);
    EXPECT_EQ(pieces, (std::vector<FF::utils::String>{"a", "", "b"}));
    pieces.clear();
    EXPECT_EQ(CDevBas::splitString(nullptr, ',', pieces), 0);
    EXPECT_EQ(pieces.size(), 1u);
}

TEST_F(ParameterAccess, ReadsByTypeOrAsLiteral) {
    host.ints["i"] = 41;
    host.doubles = {{"half", 2.5}, {"minus", -2.5}, {"huge", 1e300}, {"nan", std::nan("")}};
    host.texts["t"] = "text";
    const struct {
        const char* name;
        int asIntResult, asInt, asDoubleResult;
        double asDouble;
        int asTextResult;
        const char* asText;
    } cases[] = {
        {"i", 1, 41, 1, 41.0, 0, ""},
        {"half", 1, 3, 1, 2.5, 0, ""},
        {"minus", 1, -3, 1, -2.5, 0, ""},
        {"huge", 1, 2147483647, 1, 1e300, 0, ""},
        {"t", 0, 0, 0, 0.0, 1, "text"},
        {"25", 1, 25, 1, 25.0, 1, "25"},
        {"  3.25 ", 1, 3, 1, 3.25, 1, "  3.25 "},
        {" --5", 1, 0, 1, 5.0, 1, " --5"},  // only the double is trimmed
        {"   ", 1, 0, 1, 0.0, 1, "   "},
        {"abc", 1, 0, 1, 0.0, 1, "abc"},
        {"", 1, 0, 1, 0.0, 1, ""},
    };
    for (const auto& c : cases) {
        int integer = -99;
        double number = -99;
        CString text = "before";
        EXPECT_EQ(CDevServer::SvrGetParaValue(record, c.name, integer), c.asIntResult) << c.name;
        EXPECT_EQ(integer, c.asInt) << c.name;
        EXPECT_EQ(CDevServer::SvrGetParaValue(record, c.name, number), c.asDoubleResult) << c.name;
        EXPECT_EQ(number, c.asDouble) << c.name;
        EXPECT_EQ(CDevServer::SvrGetParaValue(record, c.name, text), c.asTextResult) << c.name;
        EXPECT_STREQ(text, c.asText);
    }
    int integer = -99;
    CDevServer::SvrGetParaValue(record, "nan", integer);
    EXPECT_EQ(integer, 0);
}

TEST_F(ParameterAccess, WritesOnlyWhatFits) {
    host.ints["i"] = 0;
    host.doubles["d"] = 0;
    host.texts["t"] = "";
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "i", 5), 1);
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "d", 6), 1);
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "t", 7), 0);
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "t", CString("new")), 1);
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "i", CString("8")), 0);
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "unknown", 5), 0);
    EXPECT_EQ(host.ints["i"], 5);
    EXPECT_EQ(host.doubles["d"], 6.0);
    EXPECT_EQ(host.texts["t"], "new");
    EXPECT_EQ(host.texts.size() + host.ints.size() + host.doubles.size(), 3u);
    record.m_pfnGetParamType = nullptr;
    EXPECT_EQ(CDevServer::SvrSetParaValue(record, "i", 9), 0);
    EXPECT_EQ(CDevServer::SvrGetParaValue(record, "12", host.ints["i"]), 1);
    EXPECT_EQ(host.ints["i"], 12);
}

TEST_F(ParameterAccess, ChecksTheNameBeforeTheHost) {
    int value = 0;
    DATATYPE type = DATATYPE_INTEGER;
    record.m_pParamHost = nullptr;
    EXPECT_EQ(CDevCtrl::GetParamValue_Fun(record, "", DATATYPE_INTEGER, &value), HOST_BAD_ARGUMENT);
    EXPECT_EQ(CDevCtrl::GetParamValue_Fun(record, "a", DATATYPE_INTEGER, nullptr),
              HOST_BAD_ARGUMENT);
    EXPECT_EQ(CDevCtrl::GetParamType_Fun(record, "a", type), HOST_NO_PARAM_HOST);
    EXPECT_EQ(CDevCtrl::SetParamValue_Fun(record, "a", DATATYPE_TEXT, &value), HOST_NO_PARAM_HOST);
    record.m_pParamHost = &host;
    EXPECT_EQ(CDevCtrl::SetParamValue_Fun(record, "a", static_cast<DATATYPE>(9), &value),
              HOST_BAD_ARGUMENT);
}
