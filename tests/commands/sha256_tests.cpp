#include "Record.h"
#include "commands/Sha256.h"
#include "commands/StringHash.h"

#include <openssl/evp.h>
#include <random>

namespace {

std::string Hex(const unsigned char* digest) {
    std::string hex;
    for (std::size_t i = 0; i < SHA256::DIGEST_BYTES; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", digest[i]);
        hex += digits;
    }
    return hex;
}

// Feeds the text in pieces of the given length.
std::string OwnDigest(const std::string& text, std::size_t piece) {
    SHA256 hash;
    hash.update("another", 7);
    hash.reset();
    for (std::size_t at = 0; at < text.size(); at += piece)
        hash.update(text.data() + at, std::min(piece, text.size() - at));
    struct {
        unsigned char digest[SHA256::DIGEST_BYTES];
        unsigned char behind;
    } out = {{}, 0xa5};
    hash.finish(out.digest);
    EXPECT_EQ(out.behind, 0xa5);
    return Hex(out.digest);
}

std::string ReferenceDigest(const std::string& text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    EVP_Digest(text.data(), text.size(), digest, nullptr, EVP_sha256(), nullptr);
    return Hex(digest);
}

class StringHash : public RecordTest {};

}  // namespace

TEST(Sha256, HasTheStandardsDigests) {
    const struct {
        std::string text;
        const char* digest;
    } cases[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1000000, 'a'),
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(OwnDigest(c.text, 4096), c.digest) << c.text.size();
}

// Every length around the block and padding boundaries, and random ones beyond.
TEST(Sha256, AgreesWithOpensslWhateverTheLengthAndThePieces) {
    std::mt19937 random(20240607);
    for (std::size_t i = 0; i < 500; ++i) {
        std::string text(i < 200 ? i : random() % 4097, '\0');
        for (char& character : text)
            character = static_cast<char>(random());
        const std::size_t piece = 1 + random() % 200;
        ASSERT_EQ(OwnDigest(text, piece), ReferenceDigest(text))
            << text.size() << " bytes in pieces of " << piece;
    }
}

TEST_F(StringHash, WritesTheDigestOfTheTextsBytes) {
    const std::string bytes = "p\xc3\xa4ss\xff";
    host.texts = {{"text", bytes}, {"digest", ""}, {"empty", ""}};
    EXPECT_EQ(CDevBas::strSha256(record, " text , digest "), 0);
    EXPECT_EQ(host.texts["digest"], ReferenceDigest(bytes));
    EXPECT_EQ(CDevBas::strSha256(record, "abc,digest"), 0);  // an unknown name stands for itself
    EXPECT_EQ(host.texts["digest"], ReferenceDigest("abc"));
    EXPECT_EQ(CDevBas::strSha256(record, "text,nowhere"), 0);

    host.ints["number"] = 1;
    host.texts["digest"] = "as before";
    for (const char* args : {"text", "", "empty,digest", "number,digest", ",digest"})
        EXPECT_EQ(CDevBas::strSha256(record, args), -5) << args;
    EXPECT_EQ(host.texts["digest"], "as before");
}
