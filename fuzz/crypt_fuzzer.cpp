// The security layer on fuzzed Encrypt parameters: key derivation and password tests of every
// revision, crypt filter selection, and the decrypting string and stream paths on fuzzed data.
//
// Input layout: R, V, key-size selector, flags, P (4 bytes, little endian), the lengths of O, U,
// OE, UE, Perms and the password (one byte each), those strings in that order, then the data to
// decrypt. Missing bytes count as zero or empty.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Common/UString.h"
#include "Filters/ExtBufInputFilter.h"
#include "SDF/CryptFilters.h"
#include "SDF/CryptHandler.h"
#include "SDF/Obj.h"
#include "SDF/SecurityHandlerSetup.h"

namespace {

using namespace lum;

class Input {
public:
    Input(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    uint8_t Byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
    std::vector<UInt8> Bytes(size_t n) {
        n = std::min(n, m_size - m_pos);
        std::vector<UInt8> out(m_data + m_pos, m_data + m_pos + n);
        m_pos += n;
        return out;
    }
    std::vector<UInt8> Rest() { return Bytes(m_size - m_pos); }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos = 0;
};

void PutString(SDF::Obj* dict, const char* key, const std::vector<UInt8>& bytes) {
    dict->Put(SDF::Name(key), new SDF::Str(bytes.data(), bytes.size()));
}

void Drain(Filters::Filter& f) {
    for (size_t n; (n = f.Size()) > 0;) f.Consume(n);
}

void DecryptAll(SDF::SecurityHandler& h, const std::vector<UInt8>& data) {
    std::vector<UInt8> s = data;
    h.DecryptString(s, 7, 0);
    auto chain = h.CreateDecryptFilter(std::make_unique<Filters::ExtBufInputFilter>(data.data(), data.size()), 7, 0);
    Drain(*chain);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in(data, size);
    const int rev = in.Byte() % 8;
    const int version = in.Byte() % 7;
    static const int kBits[] = {40, 128, 256, 48, 0, -8, 1024, 136};
    const int bits = kBits[in.Byte() % 8];
    const uint8_t flags = in.Byte();
    Int32 p = 0;
    for (int i = 0; i < 4; ++i) p |= Int32(UInt32(in.Byte()) << (8 * i));
    size_t lens[6];
    for (size_t& len : lens) len = in.Byte();
    const auto o = in.Bytes(lens[0]), u = in.Bytes(lens[1]), oe = in.Bytes(lens[2]), ue = in.Bytes(lens[3]),
               perms = in.Bytes(lens[4]), password = in.Bytes(lens[5]);
    const auto payload = in.Rest();

    auto trailer = std::make_unique<SDF::Dict>();
    auto* encrypt = new SDF::Dict();
    trailer->Put(SDF::Name("Encrypt"), encrypt);
    if (flags & 1) {
        auto* id = new SDF::Array();
        id->PushBack(new SDF::Str(payload.data(), std::min<size_t>(payload.size(), 16)));
        trailer->Put(SDF::Name("ID"), id);
    }
    encrypt->PutName(SDF::Name("Filter"), "Standard");
    encrypt->PutNumber(SDF::Name("R"), rev);
    encrypt->PutNumber(SDF::Name("V"), version);
    encrypt->PutNumber(SDF::Name("Length"), bits);
    encrypt->PutNumber(SDF::Name("P"), p);
    PutString(encrypt, "O", o);
    PutString(encrypt, "U", u);
    PutString(encrypt, "OE", oe);
    PutString(encrypt, "UE", ue);
    PutString(encrypt, "Perms", perms);
    encrypt->PutBool(SDF::Name("EncryptMetadata"), flags & 2);
    if (flags & 4) {
        static const char* kCFM[] = {"V2", "AESV2", "AESV3", "None"};
        SDF::Obj* cf = encrypt->PutDict(SDF::Name("CF"));
        SDF::Obj* std_cf = cf->PutDict(SDF::Name("StdCF"));
        std_cf->PutName(SDF::Name("CFM"), kCFM[(flags >> 3) & 3]);
        if (flags & 0x20) std_cf->PutName(SDF::Name("AuthEvent"), "EFOpen");
        encrypt->PutName(SDF::Name("StmF"), flags & 0x40 ? "Identity" : "StdCF");
        encrypt->PutName(SDF::Name("StrF"), flags & 0x80 ? "Identity" : "StdCF");
    }

    std::unique_ptr<SDF::SecurityHandler> sec, crypt;
    try {
        const char* bytes = password.empty() ? "" : reinterpret_cast<const char*>(password.data());
        const UString pwd(bytes, int(password.size()), enc_ascii);
        if (SDF::InitStdSecurityHandler(trailer.get(), {sec, crypt}, pwd) && crypt) DecryptAll(*crypt, payload);
    } catch (const std::exception&) {
        // Refused key sizes and passwords are failures the caller sees; nothing more to do.
    }

    // The decrypting stages on their own, whatever the password test said.
    static const UInt8 kKey[32] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16,
                                   17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32};
    for (size_t key_len : {size_t(16), size_t(32)}) {
        std::vector<UInt8> s = payload;
        SDF::DecryptAESString(kKey, key_len, s);
        Filters::AESDecryptFilter aes(std::make_unique<Filters::ExtBufInputFilter>(payload.data(), payload.size()),
                                      kKey, key_len);
        Drain(aes);
    }
    Filters::CryptoFilter rc4(std::make_unique<Filters::ExtBufInputFilter>(payload.data(), payload.size()), kKey,
                              5);
    Drain(rc4);
    return 0;
}
