#include "transport/certificate/certificate_inspection.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <set>
#include <sys/socket.h>

namespace zembrastel {
namespace {

struct FreeAddresses {
    void operator()(addrinfo* first) const { ::freeaddrinfo(first); }
};

// The IPv4 addresses, since curl may use any of them; empty if the name is unknown.
std::set<in_addr_t> addressesOf(const std::string& name) {
    addrinfo* first = nullptr;
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    if (::getaddrinfo(name.c_str(), nullptr, &wanted, &first) != 0) return {};
    const std::unique_ptr<addrinfo, FreeAddresses> owned(first);
    std::set<in_addr_t> addresses;
    for (const auto* each = first; each != nullptr; each = each->ai_next) {
        addresses.insert(reinterpret_cast<const sockaddr_in*>(each->ai_addr)->sin_addr.s_addr);
    }
    return addresses;
}

// Empty if it has none.
std::string nameOfAddress(in_addr_t address) {
    sockaddr_in socket{};
    socket.sin_family = AF_INET;
    socket.sin_addr.s_addr = address;
    std::array<char, NI_MAXHOST> name{};
    const auto failed = ::getnameinfo(
        reinterpret_cast<const sockaddr*>(&socket), sizeof socket, name.data(), name.size(), nullptr, 0, NI_NAMEREQD);
    return failed == 0 ? name.data() : "";
}

} // namespace

std::vector<std::string> otherNamesOf(const std::string& host, const ServerCertificate& certificate) {
    constexpr std::size_t mostNames = 20; // of which each costs a query
    const auto addresses = addressesOf(host);
    std::vector<std::string> candidates = certificate.names;
    candidates.resize(std::min(candidates.size(), mostNames));
    if (!addresses.empty()) candidates.push_back(nameOfAddress(*addresses.begin()));
    std::vector<std::string> names;
    for (const auto& candidate : candidates) {
        const bool usable = !candidate.empty() && candidate.find('*') == std::string::npos && isValidUtf8(candidate)
                            && std::ranges::find(names, candidate) == names.end();
        if (!usable || !certificate.isFor(candidate)) continue;
        const auto found = addressesOf(candidate);
        if (std::ranges::any_of(found, [&](auto address) { return addresses.contains(address); })) {
            names.push_back(candidate);
        }
    }
    return names;
}

} // namespace zembrastel
