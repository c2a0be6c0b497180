// One short text and one long one, beside OpenSSL's own fastest way in. Its scalar code is the peer
// (bench/main.cpp switches SHA instructions and vectors off).
#define OPENSSL_SUPPRESS_DEPRECATED  // the calls without the look-up of a provider

#include "commands/Sha256.h"

#include <benchmark/benchmark.h>
#include <openssl/sha.h>

#include <vector>

namespace {

void OwnDigest(const std::vector<unsigned char>& text, unsigned char (&digest)[32]) {
    class SHA256 hash;  // OpenSSL has a function of that name
    hash.update(text.data(), text.size());
    hash.finish(digest);
}

void OpensslDigest(const std::vector<unsigned char>& text, unsigned char (&digest)[32]) {
    SHA256_CTX context;
    SHA256_Init(&context);
    SHA256_Update(&context, text.data(), text.size());
    SHA256_Final(digest, &context);
}

using Hash = void(const std::vector<unsigned char>&, unsigned char (&)[32]);

template <Hash HASH>
void Sha256(benchmark::State& state) {
    const std::vector<unsigned char> text(static_cast<std::size_t>(state.range(0)), 0x5a);
    unsigned char digest[32];
    for (auto _ : state) {
        HASH(text, digest);
        benchmark::DoNotOptimize(digest);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK_TEMPLATE(Sha256, OwnDigest)->Name("sha256/own")->Arg(64)->Arg(1 << 20);
BENCHMARK_TEMPLATE(Sha256, OpensslDigest)->Name("sha256/openssl_scalar")->Arg(64)->Arg(1 << 20);

}  // namespace
