// The SNTP message (RFC 4330) and the clock arithmetic on it.
//
// 48 bytes, big-endian. A timestamp is two words: seconds since 1900, and 2^-32 seconds.
//
//   offset size                                       sent
//        0    1  leap indicator, version, mode         none, 3, client
//        1    1  stratum                               0
//        2    1  poll interval, log2 seconds           4
//        3    1  precision, log2 seconds               -6
//        4    4  root delay, 16.16 seconds             1.0
//        8    4  root dispersion, 16.16 seconds        1.0
//       12    4  reference identifier                  0
//       16    8  reference timestamp                   0
//       24    8  originate timestamp   (answer: T1)    0
//       32    8  receive timestamp     (answer: T2)    0
//       40    8  transmit timestamp    (answer: T3)    the local time
#ifndef HXD_SNTPPACKET_H
#define HXD_SNTPPACKET_H

#include <sys/time.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace sntp {

constexpr std::uint16_t PORT = 123;
constexpr std::size_t PACKET_BYTES = 48;
constexpr std::size_t ORIGINATE_OFFSET = 24;
constexpr std::size_t RECEIVE_OFFSET = 32;
constexpr std::size_t TRANSMIT_OFFSET = 40;

using Packet = std::array<unsigned char, PACKET_BYTES>;

constexpr std::uint32_t SECONDS_1900_TO_1970 = 2208988800u;

// Microseconds (below 1,000,000) to a fraction, and back: approximations without 64-bit division.
constexpr std::uint32_t NTPFRAC(std::uint32_t microseconds) {
    return 4294u * microseconds + ((1981u * microseconds) >> 11);
}
constexpr std::uint32_t USEC(std::uint32_t fraction) {
    return (fraction >> 12) - 759u * (((fraction >> 10) + 32768u) >> 16);
}

struct Timestamp {
    std::uint32_t seconds;   // since 1900, modulo 2^32: starts again in 2036
    std::uint32_t fraction;  // 2^-32 seconds
};
Timestamp ReadTimestamp(const Packet& packet, std::size_t offset);
void WriteTimestamp(Packet& packet, std::size_t offset, Timestamp timestamp);
Timestamp ToTimestamp(const timeval& time);

Packet MakeRequest(const timeval& now);

struct CorrectedTime {
    std::int32_t seconds;       // since 1970
    std::int32_t microseconds;  // may be negative, or above 999,999
};

// The current time by an answer that arrived at the local time arrival. Any bytes are let pass: the
// answer is not validated, and what is missing of a short one counts as zero.
CorrectedTime CorrectTime(const Packet& answer, const timeval& arrival);

}  // namespace sntp

#endif
