#include "certificate.h"

#include <cstdio>
#include <stdexcept>

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

namespace kst::standin {

namespace {

constexpr long anHour = 3600;
constexpr long aDay = 86400;
constexpr long version3 = 2;

void check(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("test certificate: ") + what + " failed");
    }
}

void addExtension(X509* certificate, int kind, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value);
    check(extension != nullptr, "extension");
    const int added = X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
    check(added == 1, "adding an extension");
}

struct FreeBio {
    void operator()(BIO* bio) const { BIO_free(bio); }
};
using Bio = std::unique_ptr<BIO, FreeBio>;

} // namespace

TestCertificate makeTestCertificate() {
    TestCertificate pair;
    pair.key.reset(EVP_EC_gen("P-256"));
    check(pair.key != nullptr, "key");
    pair.certificate.reset(X509_new());
    X509* certificate = pair.certificate.get();
    check(certificate != nullptr, "certificate");

    std::uint64_t serial = 0;
    check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1, "serial number");
    check(X509_set_version(certificate, version3) == 1, "version");
    check(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1U) == 1, "serial number");
    check(X509_gmtime_adj(X509_getm_notBefore(certificate), -anHour) != nullptr, "begin");
    check(X509_gmtime_adj(X509_getm_notAfter(certificate), aDay) != nullptr, "end");
    X509_NAME* name = X509_get_subject_name(certificate);
    const auto* text = reinterpret_cast<const unsigned char*>("Kestrane test server");
    check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0) == 1, "name");
    check(X509_set_issuer_name(certificate, name) == 1, "issuer");
    check(X509_set_pubkey(certificate, pair.key.get()) == 1, "public key");
    addExtension(certificate, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
    check(X509_sign(certificate, pair.key.get(), EVP_sha256()) > 0, "signature");
    return pair;
}

TestCertificate readCertificate(const std::string& certificateFile, const std::string& keyFile) {
    TestCertificate pair;
    const Bio certificate(BIO_new_file(certificateFile.c_str(), "r"));
    check(certificate != nullptr, "opening the certificate file");
    pair.certificate.reset(PEM_read_bio_X509(certificate.get(), nullptr, nullptr, nullptr));
    check(pair.certificate != nullptr, "reading the certificate file");
    const Bio key(BIO_new_file(keyFile.c_str(), "r"));
    check(key != nullptr, "opening the key file");
    pair.key.reset(PEM_read_bio_PrivateKey(key.get(), nullptr, nullptr, nullptr));
    check(pair.key != nullptr, "reading the key file");
    return pair;
}

std::string certificatePem(const TestCertificate& pair) {
    const Bio memory(BIO_new(BIO_s_mem()));
    check(memory != nullptr && PEM_write_bio_X509(memory.get(), pair.certificate.get()) == 1, "writing");
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

} // namespace kst::standin
