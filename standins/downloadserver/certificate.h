#pragma once

// A certificate for a test server, made on the spot.

#include <memory>
#include <string>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace kst::standin {

struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct FreeCertificate {
    void operator()(X509* certificate) const { X509_free(certificate); }
};

struct TestCertificate {
    std::unique_ptr<EVP_PKEY, FreeKey> key;
    std::unique_ptr<X509, FreeCertificate> certificate;
};

/// Makes a key and a self-signed certificate for "localhost" and 127.0.0.1, valid for a day from an hour ago.
/// Throws std::runtime_error when the library refuses.
TestCertificate makeTestCertificate();

/// Reads a key and a certificate from PEM files. Throws std::runtime_error when that fails.
TestCertificate readCertificate(const std::string& certificateFile, const std::string& keyFile);

/// The certificate in PEM form: what a client has to trust.
std::string certificatePem(const TestCertificate& pair);

} // namespace kst::standin
