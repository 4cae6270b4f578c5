#include "transport/certificate/server_certificate.h"

#include "model/error.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <ctime>
#include <memory>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <optional>

namespace zembrastel {
namespace {

struct Free {
    void operator()(BIO* memory) const { BIO_free(memory); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
    void operator()(unsigned char* bytes) const { OPENSSL_free(bytes); }
};
template <class T>
using Owned = std::unique_ptr<T, Free>;

[[noreturn]] void refuse() { throw SyncError("The server's certificate cannot be read."); }

Owned<X509> readPem(std::string_view pem) {
    const Owned<BIO> memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    Owned<X509> certificate(memory ? PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr) : nullptr);
    if (!certificate) refuse();
    return certificate;
}

std::string utf8(const ASN1_STRING* value) {
    unsigned char* bytes = nullptr;
    const int size = ASN1_STRING_to_UTF8(&bytes, value);
    const Owned<unsigned char> owned(size < 0 ? nullptr : bytes);
    return owned ? std::string(reinterpret_cast<char*>(bytes), static_cast<std::size_t>(size)) : "";
}

std::string nameOf(const X509_NAME* name) {
    const int at = X509_NAME_get_index_by_NID(name, NID_commonName, -1);
    if (at >= 0) return utf8(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, at)));
    const Owned<BIO> memory(BIO_new(BIO_s_mem()));
    char* text = nullptr;
    if (!memory || X509_NAME_print_ex(memory.get(), name, 0, XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB) < 0) refuse();
    const auto size = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

std::chrono::sys_seconds instant(const ASN1_TIME* time) {
    std::tm parts{};
    if (ASN1_TIME_to_tm(time, &parts) != 1) refuse();
    return std::chrono::sys_seconds(std::chrono::seconds(::timegm(&parts)));
}

std::optional<std::string> hostIn(const GENERAL_NAME& name) {
    if (name.type == GEN_DNS) return utf8(name.d.dNSName);
    if (name.type != GEN_IPADD) return std::nullopt;
    std::array<char, INET6_ADDRSTRLEN> text{};
    const auto* address = name.d.iPAddress;
    const int family = address->length == sizeof(in_addr) ? AF_INET : AF_INET6;
    if (family == AF_INET6 && address->length != sizeof(in6_addr)) return std::nullopt;
    return ::inet_ntop(family, address->data, text.data(), text.size());
}

std::vector<std::string> hostsOf(const X509& certificate) {
    const Owned<GENERAL_NAMES> names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(&certificate, NID_subject_alt_name, nullptr, nullptr)));
    std::vector<std::string> hosts;
    for (int at = 0; names && at < sk_GENERAL_NAME_num(names.get()); ++at) {
        if (auto host = hostIn(*sk_GENERAL_NAME_value(names.get(), at))) hosts.push_back(*std::move(host));
    }
    return hosts;
}

KeyHash keyOf(const X509& certificate) {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(&certificate), &bytes);
    const Owned<unsigned char> owned(size < 0 ? nullptr : bytes);
    KeyHash key;
    unsigned length = 0;
    if (!owned
        || EVP_Digest(bytes, static_cast<std::size_t>(size), key.bytes.data(), &length, EVP_sha256(), nullptr) != 1
        || length != key.bytes.size()) {
        refuse();
    }
    return key;
}

} // namespace

ServerCertificate ServerCertificate::parse(std::string_view pem) {
    const auto read = readPem(pem);
    return {
        .issuedFor = nameOf(X509_get_subject_name(read.get())),
        .issuedBy = nameOf(X509_get_issuer_name(read.get())),
        .validFrom = instant(X509_get0_notBefore(read.get())),
        .validUntil = instant(X509_get0_notAfter(read.get())),
        .names = hostsOf(*read),
        .key = keyOf(*read),
        .selfSigned = X509_self_signed(read.get(), 1) == 1,
        .pem = std::string(pem)};
}

bool ServerCertificate::isFor(const std::string& host) const {
    const auto read = readPem(pem);
    return X509_check_ip_asc(read.get(), host.c_str(), 0) == 1
           || X509_check_host(read.get(), host.data(), host.size(), 0, nullptr) == 1;
}

} // namespace zembrastel
