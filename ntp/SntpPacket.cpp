#include "ntp/SntpPacket.h"

namespace {

constexpr std::int64_t SECOND_US = 1000000;

std::uint32_t ReadWord(const sntp::Packet& packet, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word = word << 8 | packet[offset + i];
    return word;
}

void WriteWord(sntp::Packet& packet, std::size_t offset, std::uint32_t word) {
    for (std::size_t i = 0; i < 4; ++i)
        packet[offset + i] = static_cast<unsigned char>(word >> (24 - 8 * i));
}

// Since 1970. The difference is taken modulo 2^32, which carries the years after 2036 as well.
std::int64_t Microseconds(const sntp::Packet& packet, std::size_t offset) {
    const sntp::Timestamp timestamp = sntp::ReadTimestamp(packet, offset);
    const std::uint32_t seconds = timestamp.seconds - sntp::SECONDS_1900_TO_1970;
    return seconds * SECOND_US + sntp::USEC(timestamp.fraction);
}

}  // namespace

namespace sntp {

Timestamp ReadTimestamp(const Packet& packet, std::size_t offset) {
    return {ReadWord(packet, offset), ReadWord(packet, offset + 4)};
}

void WriteTimestamp(Packet& packet, std::size_t offset, Timestamp timestamp) {
    WriteWord(packet, offset, timestamp.seconds);
    WriteWord(packet, offset + 4, timestamp.fraction);
}

Timestamp ToTimestamp(const timeval& time) {
    return {static_cast<std::uint32_t>(time.tv_sec) + SECONDS_1900_TO_1970,
            NTPFRAC(static_cast<std::uint32_t>(time.tv_usec))};
}

Packet MakeRequest(const timeval& now) {
    Packet packet{};
    packet[0] = 0x1B;
    packet[2] = 4;
    packet[3] = 0xFA;
    WriteWord(packet, 4, 0x00010000);
    WriteWord(packet, 8, 0x00010000);
    WriteTimestamp(packet, TRANSMIT_OFFSET, ToTimestamp(now));
    return packet;
}

//   T1  request leaves here       T2  request arrives at the server
//   T4  answer arrives here       T3  answer leaves the server
// The server's clock is ahead of ours by ((T2 - T1) + (T3 - T4)) / 2.
CorrectedTime CorrectTime(const Packet& answer, const timeval& arrival) {
    const std::int64_t t1 = Microseconds(answer, ORIGINATE_OFFSET);
    const std::int64_t t2 = Microseconds(answer, RECEIVE_OFFSET);
    const std::int64_t t3 = Microseconds(answer, TRANSMIT_OFFSET);
    const std::int64_t t4 = arrival.tv_sec * SECOND_US + arrival.tv_usec;
    const std::int64_t twiceOffset = (t2 - t1) + (t3 - t4);

    const std::int64_t seconds = arrival.tv_sec + twiceOffset / (2 * SECOND_US);
    const std::int64_t microseconds =
        USEC(NTPFRAC(static_cast<std::uint32_t>(arrival.tv_usec))) + twiceOffset / 2 % SECOND_US;
    return {static_cast<std::int32_t>(seconds), static_cast<std::int32_t>(microseconds)};
}

}  // namespace sntp
