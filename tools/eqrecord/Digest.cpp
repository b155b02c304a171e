#include "tools/eqrecord/Digest.h"

#include <array>
#include <memory>
#include <new>
#include <openssl/evp.h>
#include <stdexcept>
#include <string_view>

#include "record/ByteSource.h"
#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

std::string sha256Of(record::RecordReader& record) {
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                          &EVP_MD_CTX_free);
    if (!context) {
        throw std::bad_alloc();
    }
    bool isGood = EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
    for (std::uint64_t offset = 0; isGood && offset < record.size();) {
        const std::string_view piece = record.view(offset, record::ByteSource::windowSize);
        isGood = EVP_DigestUpdate(context.get(), piece.data(), piece.size()) == 1;
        offset += piece.size();
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (!isGood || EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1) {
        throw std::runtime_error("the SHA-256 of the record can't be worked out");
    }
    return hexOf({reinterpret_cast<const char*>(digest.data()), length});
}

}  // namespace eqrecord
