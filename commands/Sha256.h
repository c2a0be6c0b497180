// The SHA-256 hash of FIPS 180-4.
#ifndef HXD_SHA256_H
#define HXD_SHA256_H

#include <cstddef>
#include <cstdint>

// Hashes one message, fed in pieces of any length. Not for two threads at once; never throws.
class SHA256 {
public:
    static constexpr std::size_t BLOCK_BYTES = 64;
    static constexpr std::size_t DIGEST_BYTES = 32;

    SHA256() { reset(); }

    void reset();  // forgets everything; a new message begins
    void update(const void* data, std::size_t length);
    // Ends the message; only reset() may follow.
    void finish(unsigned char (&digest)[DIGEST_BYTES]);

private:
    void transform();  // compresses the buffered block

    unsigned char m_block[BLOCK_BYTES] = {};
    std::size_t m_nBuffered = 0;  // bytes in the block
    std::uint64_t m_nBits = 0;    // length of the message so far
    std::uint32_t m_chain[8] = {};
};

#endif
