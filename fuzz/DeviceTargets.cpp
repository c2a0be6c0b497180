// What goes through a living device: commands, channel writes, and the files that it reads.
#include "SimPanel.h"
#include "driver/record/ChannelTable.h"
#include "fuzz/FuzzDevice.h"
#include "fuzz/Machine.h"
#include "olma_host.h"
#include "storage/EmmcDiskMgr.h"
#include "storage/NandDiskMgr.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace {

void Put(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// What is refused before it is a command leaves the last status as it was.
void WriteChannel(FuzzDevice& fuzz, Input& input) {
    int channel = input.ConsumeIntegralInRange(-1, 33);
    if (channel == 33)
        channel = input.ConsumeIntegral<int>();
    const int type = input.ConsumeIntegralInRange(0, 4);
    int integer = input.ConsumeIntegral<std::int16_t>();
    double number = integer / 4.0;
    std::string text = input.ConsumeRandomLengthString(300);
    void* const values[] = {&integer, &integer, &number, &text[0], nullptr};
    fuzz.mayBeOn |= channel == CHANNEL_NTP_SWITCH - 1;
    const int result = fuzz.device.WriteChannel(channel, static_cast<DATATYPE>(type), values[type]);
    if (channel >= 0 && values[type] != nullptr)
        fuzz.status = result;
}

// What may lie where a log is expected.
void PutLog(const std::string& path, Input& input) {
    const int kind = input.ConsumeIntegral<std::uint8_t>();
    std::remove(path.c_str());
    if (kind == 0xFE)
        ::mkdir(path.c_str(), 0755);
    else if (kind == 0xFD)
        ::mkfifo(path.c_str(), 0644);
    else if (kind != 0xFC)
        Put(path, input.ConsumeRandomLengthString());
}

constexpr const char* SYSTEM_FILES[] = {
    "/proc/stat",
    "/proc/meminfo",
    "/proc/diskstats",
    "/sys/devices/platform/erase_size",
    "/sys/devices/platform/life_time",
    "/sys/devices/platform/pre_eol_info",
    "/sys/class/block/mmcblk0/size",
    "/sys/class/block/mmcblk0gp0/size",
    "/sys/class/ubi/ubi0/total_eraseblocks",
    "/sys/class/ubi/ubi0/bad_peb_count",
    "/sys/class/ubi/ubi0/reserved_for_bad",
    "/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info",
};
constexpr std::size_t PROC_FILES = 3;
constexpr std::size_t FOR_HOURS = 0xF0;  // among the numbers of the files

// The first use makes the folders; those of the attributes are empty then.
void ClearSystemFiles() {
    static const bool made = [] {
        for (const char* path : SYSTEM_FILES) {
            const std::string folder(path, std::string(path).rfind('/'));
            FUZZ_EXPECT(std::system(("mkdir -p " + folder).c_str()) == 0);
        }
        return true;
    }();
    static_cast<void>(made);
    for (std::size_t i = PROC_FILES; i < sizeof SYSTEM_FILES / sizeof *SYSTEM_FILES; ++i)
        ::unlink(SYSTEM_FILES[i]);
}

void Refresh(DiskInterface& storage) {
    storage.refresh();
    while (!storage.refreshRes())
        Olma_Sleep(200);
}

template <class STORAGE>
void Measure(bool forHours) {
    STORAGE storage;
    if (!storage.init())
        return;
    Refresh(storage);
    if (forHours) {
        sim::SimPanel::Instance().AdvanceClock(2 * 3600000);
        Refresh(storage);
    }
    FUZZ_EXPECT(storage.getDiskIO() >= 1 && storage.getDiskIO() <= 4 &&
                storage.getDiskLifeTime() <= 100);
}

}  // namespace

void fuzz::Commands(Input& input) {
    FuzzDevice::Fresh(input).RunCommands(input);
}

void fuzz::Writes(Input& input) {
    FuzzDevice& fuzz = FuzzDevice::Fresh(input);
    for (int step = 0; step < FuzzDevice::MOST_STEPS && input.remaining_bytes() > 0; ++step) {
        const bool asText = !input.ConsumeBool();
        if (asText)
            fuzz.Run("OLMA_WRITE(" + input.ConsumeRandomLengthString(300) + ")");
        else
            WriteChannel(fuzz, input);
    }
    FUZZ_EXPECT(fuzz.Collect() == fuzz.status);
}

void fuzz::Logs(Input& input) {
    FuzzDevice& fuzz = FuzzDevice::Fresh(input);
    for (const char* path :
         {"/storage/log/restart.log", "/storage/log/dmesg.log", "/storage/log/signal_recieved.log"})
        PutLog(path, input);
    machine::kernelLog = input.ConsumeRandomLengthString();
    fuzz.RunCommands(input);
}

void fuzz::SystemFiles(Input& input) {
    FuzzDevice& fuzz = FuzzDevice::Fresh(input);
    ClearSystemFiles();
    bool forHours = false;
    while (input.remaining_bytes() > 0) {
        const std::size_t file = input.ConsumeIntegral<std::uint8_t>();
        forHours |= file >= FOR_HOURS;
        Put(SYSTEM_FILES[file % (sizeof SYSTEM_FILES / sizeof *SYSTEM_FILES)],
            input.ConsumeRandomLengthString());
    }
    fuzz.Run("REFLESH()");
    fuzz.Collect();
    Measure<EmmcDiskMgr>(forHours);
    Measure<NandDiskMgr>(forHours);
}
