#pragma once

#include <array>
#include <string_view>

namespace extract {

// SHA-256, by the system.
class Sha256 {
public:
    typedef std::array<unsigned char, 32> Digest;

    Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256();

    void Add(std::string_view bytes);
    Digest Finish();

private:
    unsigned long mHash; // HCRYPTHASH
};

} // namespace extract
