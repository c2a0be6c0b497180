// The command that hashes a text.
#ifndef HXD_STRINGHASH_H
#define HXD_STRINGHASH_H

#include "driver/record/OlmaData.h"
#include "mfc/CString.h"

namespace CDevBas {

// "STRSHA256(text,digest)": writes the SHA-256 of the text parameter's bytes as 64 lower-case
// hexadecimal digits. 0; RESULT_BAD_ARGUMENTS for one name only or an empty text. Called under the
// dispatcher's mutex.
int strSha256(OLMA_DATA& data, const CString& args);

}  // namespace CDevBas

#endif
