#include "commands/StringHash.h"

#include "commands/Sha256.h"
#include "common/ResultCodes.h"
#include "driver/record/CDevServer.h"

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

}  // namespace

namespace CDevBas {

int strSha256(OLMA_DATA& data, const CString& args) {
    CString textName;
    CString digestName;
    if (CDevServer::SvrGetCmdStr(args, ",", textName, digestName) != 1)
        return RESULT_BAD_ARGUMENTS;
    CString text;
    CDevServer::SvrGetParaValue(data, textName, text);
    if (text.IsEmpty())
        return RESULT_BAD_ARGUMENTS;
    CDevServer::SvrSetParaValue(data, digestName, HexDigest(text));
    return RESULT_DONE;
}

}  // namespace CDevBas
