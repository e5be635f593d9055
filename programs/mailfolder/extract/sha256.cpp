#include "programs/mailfolder/extract/sha256.h"

#include "programs/mailfolder/failure.h"
#include "resident/core/windows_api.h"

#include <wincrypt.h>

namespace extract {

static HCRYPTPROV Provider() {
    static const HCRYPTPROV provider = [] {
        HCRYPTPROV made = 0;
        if (!CryptAcquireContextW(&made, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT))
            Fail("The system has no SHA-256.");
        return made;
    }();
    return provider;
}

Sha256::Sha256() : mHash(0) {
    HCRYPTHASH hash = 0;
    if (!CryptCreateHash(Provider(), CALG_SHA_256, 0, 0, &hash))
        Fail("The system has no SHA-256.");
    mHash = hash;
}

Sha256::~Sha256() { CryptDestroyHash(mHash); }

void Sha256::Add(std::string_view bytes) {
    CryptHashData(mHash, reinterpret_cast<const BYTE*>(bytes.data()), bytes.size(), 0);
}

Sha256::Digest Sha256::Finish() {
    Digest digest = {};
    DWORD size = digest.size();
    if (!CryptGetHashParam(mHash, HP_HASHVAL, digest.data(), &size, 0))
        Fail("The system cannot make a SHA-256.");
    return digest;
}

} // namespace extract
