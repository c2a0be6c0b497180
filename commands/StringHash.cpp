#include "commands/StringHash.h"

#include "commands/Sha256.h"
#include "common/ResultCodes.h"
#include "driver/record/Call.h"

namespace {

CString HexDigest(const CString& text) {
    SHA256 hash;
    hash.update(static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength()));
    unsigned char digest[SHA256::DIGEST_BYTES];
    hash.finish(digest);

    CString hex;
    for (const unsigned char byte : digest) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 0xf];
    }
    return hex;
}

int HashText(const Call& call) {
    CString text;
    call.Read(0, text);
    if (text.IsEmpty())
        return RESULT_BAD_ARGUMENTS;
    call.Write(1, HexDigest(text));  // not looked at: 0 also without a place for it
    return RESULT_DONE;
}

}  // namespace

namespace CDevBas {

int strSha256(OLMA_DATA& data, const CString& args) {
    return RunCall(data, COMMAND_STR_SHA256, args, HashText);
}

}  // namespace CDevBas
