// What is parsed out of text or bytes, without a device.
#include "SimPanel.h"
#include "commands/Dispatcher.h"
#include "commands/Screenshot.h"
#include "commands/Sha256.h"
#include "driver/DeviceParameters.h"
#include "driver/RefreshCycle.h"
#include "driver/record/COwnerArchive.h"
#include "driver/record/Call.h"
#include "driver/record/DevContext.h"
#include "fuzz/Fuzz.h"
#include "network/InterfaceSettings.h"
#include "network/ResolverText.h"
#include "ntp/ClockText.h"
#include "storage/StringCommon.h"
#include "storage/Wear.h"
#include "sysinfo/CpuSample.h"
#include "sysinfo/MemInfo.h"
#include "sysinfo/ToolsBase.h"

#include <unistd.h>
#include <QStringList>

#include <algorithm>
#include <fstream>

namespace {

CString HostText(const std::string& text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

std::string Rest(Input& input) {
    return input.ConsumeRemainingBytesAsString();
}

void TextsOfCommands(const std::string& text, int choice) {
    olma_device::SplitCommand(HostText(text));
    const CommandRow& row = CommandOf(static_cast<Command>(choice % COMMAND_COUNT));
    OLMA_DATA record{};
    const Call call(record, row, HostText(text));
    FUZZ_EXPECT(!call.IsWellFormed() || static_cast<int>(call.Count()) <= row.ArgumentCount());
    std::vector<std::string> words;
    std::string plainName;
    ToolsBase().ParaCmd(plainName, words, text);
    std::vector<FF::utils::String> pieces;
    CDevBas::splitString(text.c_str(), static_cast<char>(choice), pieces);
}

void Numbers(const std::string& text, int choice) {
    const char* const formats[] = {"%d", "%u", "%ld", "%x", "%o", "%f", "%lf", "%LF", "%s"};
    double number = 0.0;
    CDevServer::cstringToNumeric(HostText(text), formats[choice % 9], &number);
    CDevServer::SvrStr2Double(HostText(text), choice);
    CDevServer::SvrStr2Double(HostText(text), static_cast<int>(text.size()));
    CDevBas::ParseSwitch(QString::fromLatin1(text.c_str()));
}

void PathsAndAddresses(const std::string& text) {
    if (const auto target = panel_actions::ParseScreenshotPath(text))
        FUZZ_EXPECT(("/" + target->subDirectory).find("/../") == std::string::npos &&
                    target->fileName != "..");
    panel_actions::ShellWord(text);
    CDevBas::IsAvailableIPAddr(text.c_str());
    CDevBas::IsAvailableMaskAddr(text.c_str());
}

void ResolverFile(const std::string& text) {
    std::vector<std::string> servers;
    FUZZ_EXPECT(ParseNameServers(text, servers) || servers.empty());
    for (const std::string& server : servers)
        FUZZ_EXPECT(IsDottedAddress(server));
}

}  // namespace

// Any order of operations: the size holds the position, and what was written is read again.
void fuzz::Archive(Input& input) {
    COwnerArchive archive;
    for (int step = 0; step < 64 && input.remaining_bytes() > 0; ++step) {
        const int operation = input.ConsumeIntegral<std::uint8_t>();
        const int count = input.ConsumeIntegral<std::int8_t>() * (operation >= 0xF0 ? 256 : 1);
        std::vector<unsigned char> bytes(static_cast<std::size_t>(std::max(count, 0)));
        switch (operation % 6) {
            case 0:
                archive.SvrWrite(bytes.data(), count);
                break;
            case 1:
                archive.SvrRead(bytes.data(), count);
                break;
            case 2:
                archive.SvrChangeMode(count % 2 == 0 ? ARCHIVE_LOAD : ARCHIVE_STORE);
                break;
            case 3:
                archive.SetPosition(std::min(std::max(count, 0), archive.GetSize()));
                break;
            case 4:
                archive.mfCheckBuffer(std::max(count, 0));
                break;
            default:
                bytes = input.ConsumeBytes<unsigned char>(bytes.size());
                archive.SvrWrite(bytes.data(), static_cast<int>(bytes.size()));
        }
        FUZZ_EXPECT(archive.GetPosition() <= archive.GetSize());
    }
    const std::vector<unsigned char> blob = input.ConsumeRemainingBytes<unsigned char>();
    archive.SvrWrite(blob.data(), static_cast<int>(blob.size()));
    archive.SetPosition(0);
    archive.SvrChangeMode(ARCHIVE_LOAD);
    OLMA_DATA record{};
    DEV_CONTEXT context;
    record.m_pArchive = &archive;
    record.m_pContext = &context;
    CDevBas::ReadDeviceParameters(record);
    FUZZ_EXPECT(context.m_arrDevParam.GetSize() <= 1000000);
}

void fuzz::Text(Input& input) {
    const int choice = input.ConsumeIntegral<std::uint8_t>();
    const std::string text = Rest(input);
    TextsOfCommands(text, choice);
    Numbers(text, choice);
    PathsAndAddresses(text);
    ResolverFile(text);
    SHA256 hash;
    unsigned char digest[SHA256::DIGEST_BYTES];
    const std::size_t half = text.size() * static_cast<std::size_t>(choice) / 255;
    hash.update(text.data(), half);
    hash.update(text.data() + half, text.size() - half);
    hash.finish(digest);
}

void fuzz::ProcFiles(Input& input) {
    const int number = input.ConsumeIntegral<int>();
    std::string text = Rest(input);
    const cpu_occupy_ sample = cpu::ParseSample(cpu::SplitAtBlanks(text));
    cpu::BusyHundredths(static_cast<double>(cpu::IdleJiffies(sample)) /
                        static_cast<double>(cpu::TotalJiffies(sample)));
    meminfo::ParseAvailable(text);
    const QString all = QString::fromLatin1(text.data(), static_cast<int>(text.size()));
    const QVector<QString> lines = all.split(QLatin1Char('\n')).toVector();
    const long long sectors = wear::SectorsWritten(lines);
    const long long erased = wear::EraseSum(lines);
    wear::LifeFromEstimates(all);
    wear::LifeFromPreEol(all);
    wear::NandLife(erased, sectors, number, number / 2);
    wear::HourlyAllowance(sectors, wear::EmmcEndurance(erased));
    const int gear = wear::Gear(wear::Increase(erased, sectors), wear::Sum(sectors, number));
    FUZZ_EXPECT(gear >= 1 && gear <= 4);
    meminfo::OldEstimate estimate;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string line = text.substr(start, end - start);
        if (estimate.Feed(&line[0]) != meminfo::OldEstimate::MORE)
            break;
        start = end + 1;
    }
}

void fuzz::PanelDescription(Input& input) {
    static const std::string path = "/tmp/panel.ini";
    std::ofstream(path, std::ios::binary) << Rest(input);
    std::string error;
    sim::SimPanel::Instance().Reset();
    const bool loaded = sim::SimPanel::Instance().LoadIni(path, error);
    FUZZ_EXPECT(loaded == error.empty());
    sim::Failure failure;
    sim::ParseFailure(error, failure);
}
