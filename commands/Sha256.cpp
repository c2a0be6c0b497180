#include "commands/Sha256.h"

#include <algorithm>
#include <cstring>

namespace {

using Word = std::uint32_t;

constexpr std::size_t LENGTH_OFFSET = 56;  // the last 8 bytes of the last block hold the length

constexpr Word INITIAL_CHAIN[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                   0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

constexpr Word K[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

inline Word RotateRight(Word value, unsigned count) {
    return (value >> count) | (value << (32 - count));
}

inline Word LoadBigEndian(const unsigned char* bytes) {
    return static_cast<Word>(bytes[0]) << 24 | static_cast<Word>(bytes[1]) << 16 |
           static_cast<Word>(bytes[2]) << 8 | static_cast<Word>(bytes[3]);
}

inline void StoreBigEndian(unsigned char* bytes, Word value) {
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(value >> (24 - 8 * i));
}

// The standard's functions. A nested rotation needs fewer instructions, separate ones a shorter
// chain of them; each function has what is faster where it stands.
inline Word BigSigma0(Word a) {
    return RotateRight(a ^ RotateRight(a ^ RotateRight(a, 9), 11), 2);  // 2, 13 and 22
}
inline Word BigSigma1(Word e) {
    return RotateRight(e, 6) ^ RotateRight(e, 11) ^ RotateRight(e, 25);
}
inline Word SmallSigma0(Word w) {
    return RotateRight(w ^ RotateRight(w, 11), 7) ^ (w >> 3);  // 7 and 18
}
inline Word SmallSigma1(Word w) {
    return RotateRight(w, 17) ^ RotateRight(w, 19) ^ (w >> 10);
}

// One step. The caller passes the eight variables rotated by one place instead of moving them.
// Maj(a, b, c) = ((a ^ b) & (b ^ c)) ^ b, where b ^ c is the step before's a ^ b.
inline void Step(Word a, Word b, Word& d, Word e, Word f, Word g, Word& h, Word& bXorC,
                 Word keyAndWord) {
    h += keyAndWord + BigSigma1(e) + (((f ^ g) & e) ^ g);
    d += h;
    const Word aXorB = a ^ b;
    h += BigSigma0(a) + ((aXorB & bXorC) ^ b);
    bXorC = aXorB;
}

// Where the word of step I comes from: the message, or the schedule, which keeps the last 16 words
// in a ring.
struct MessageWords {
    Word (&ring)[16];
    const unsigned char* block;
    template <int I>
    Word Next() const {
        return ring[I] = LoadBigEndian(block + 4 * I);
    }
};
struct ScheduleWords {
    Word (&ring)[16];
    template <int I>
    Word Next() const {
        return ring[I] += SmallSigma1(ring[(I + 14) % 16]) + ring[(I + 9) % 16] +
                          SmallSigma0(ring[(I + 1) % 16]);
    }
};

struct Variables {
    Word a, b, c, d, e, f, g, h;
};

// After eight steps the variables are back in their places.
template <int I, class WORDS>
inline void EightSteps(Variables& v, Word& bXorC, const WORDS& words, const Word* k) {
    Word a = v.a, b = v.b, c = v.c, d = v.d, e = v.e, f = v.f, g = v.g, h = v.h, x = bXorC;
    Step(a, b, d, e, f, g, h, x, k[I] + words.template Next<I>());
    Step(h, a, c, d, e, f, g, x, k[I + 1] + words.template Next<I + 1>());
    Step(g, h, b, c, d, e, f, x, k[I + 2] + words.template Next<I + 2>());
    Step(f, g, a, b, c, d, e, x, k[I + 3] + words.template Next<I + 3>());
    Step(e, f, h, a, b, c, d, x, k[I + 4] + words.template Next<I + 4>());
    Step(d, e, g, h, a, b, c, x, k[I + 5] + words.template Next<I + 5>());
    Step(c, d, f, g, h, a, b, x, k[I + 6] + words.template Next<I + 6>());
    Step(b, c, e, f, g, h, a, x, k[I + 7] + words.template Next<I + 7>());
    v = {a, b, c, d, e, f, g, h};
    bXorC = x;
}

void Compress(Word (&chain)[8], const unsigned char* block) {
    Word ring[16];
    Variables v = {chain[0], chain[1], chain[2], chain[3], chain[4], chain[5], chain[6], chain[7]};
    Word bXorC = v.b ^ v.c;
    const MessageWords message = {ring, block};
    EightSteps<0>(v, bXorC, message, K);
    EightSteps<8>(v, bXorC, message, K);
    const ScheduleWords schedule = {ring};
    for (int t = 16; t < 64; t += 16) {
        EightSteps<0>(v, bXorC, schedule, K + t);
        EightSteps<8>(v, bXorC, schedule, K + t);
    }
    chain[0] += v.a;
    chain[1] += v.b;
    chain[2] += v.c;
    chain[3] += v.d;
    chain[4] += v.e;
    chain[5] += v.f;
    chain[6] += v.g;
    chain[7] += v.h;
}

}  // namespace

constexpr std::size_t SHA256::BLOCK_BYTES;
constexpr std::size_t SHA256::DIGEST_BYTES;

void SHA256::reset() {
    m_nBuffered = 0;
    m_nBits = 0;
    std::copy(INITIAL_CHAIN, INITIAL_CHAIN + 8, m_chain);
}

void SHA256::transform() {
    Compress(m_chain, m_block);
    m_nBuffered = 0;
}

void SHA256::update(const void* data, std::size_t length) {
    if (length == 0)
        return;  // data may be null
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    m_nBits += static_cast<std::uint64_t>(length) * 8;
    if (m_nBuffered != 0) {
        const std::size_t taken = std::min(length, BLOCK_BYTES - m_nBuffered);
        std::memcpy(m_block + m_nBuffered, bytes, taken);
        m_nBuffered += taken;
        bytes += taken;
        length -= taken;
        if (m_nBuffered == BLOCK_BYTES)
            transform();
    }
    // Whole blocks go straight from the message, without a copy.
    for (; length >= BLOCK_BYTES; bytes += BLOCK_BYTES, length -= BLOCK_BYTES)
        Compress(m_chain, bytes);
    if (length != 0) {
        std::memcpy(m_block, bytes, length);
        m_nBuffered = length;
    }
}

void SHA256::finish(unsigned char (&digest)[DIGEST_BYTES]) {
    m_block[m_nBuffered++] = 0x80;
    if (m_nBuffered > LENGTH_OFFSET) {
        std::memset(m_block + m_nBuffered, 0, BLOCK_BYTES - m_nBuffered);
        transform();
    }
    std::memset(m_block + m_nBuffered, 0, LENGTH_OFFSET - m_nBuffered);
    StoreBigEndian(m_block + LENGTH_OFFSET, static_cast<Word>(m_nBits >> 32));
    StoreBigEndian(m_block + LENGTH_OFFSET + 4, static_cast<Word>(m_nBits));
    transform();
    for (int i = 0; i < 8; ++i)
        StoreBigEndian(digest + 4 * i, m_chain[i]);
}
