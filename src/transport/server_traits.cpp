#include "transport/server_traits.h"

#include "transport/remote_url.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

std::string placeOf(const Profile& profile) { return profile.username + '@' + url(profile, "", true); }

} // namespace

ServerTraits::Login ServerTraits::login() const {
    const std::lock_guard guard(lock);
    return use;
}

bool ServerTraits::wasRefused(Login used) {
    const std::lock_guard guard(lock);
    if (use != used) return true; // another thread was first
    if (use == Login::oneTransfer) return false;
    use = use == Login::manyTransfers ? Login::manyWithTls12 : Login::oneTransfer;
    return true;
}

bool ServerTraits::hasMLSD() const {
    const std::lock_guard guard(lock);
    return mlsd;
}

void ServerTraits::lacksMLSD() {
    const std::lock_guard guard(lock);
    mlsd = false;
}

bool ServerTraits::confirmsSizes() const {
    const std::lock_guard guard(lock);
    return sizes;
}

void ServerTraits::confirmsNoSizes() {
    const std::lock_guard guard(lock);
    sizes = false;
}

bool ServerTraits::firstUnconfirmed() {
    const std::lock_guard guard(lock);
    return !std::exchange(unconfirmed, true);
}

void ServerTraits::leave(const Profile& profile, Leftover file) {
    constexpr std::size_t most = 1000; // of a server that is never reached again
    const std::lock_guard guard(lock);
    if (left.size() == most) left.erase(left.begin());
    left.push_back({.place = placeOf(profile), .file = std::move(file)});
}

std::vector<ServerTraits::Leftover> ServerTraits::leftovers(const Profile& profile) const {
    const std::string place = placeOf(profile);
    const std::lock_guard guard(lock);
    std::vector<Leftover> found;
    for (const auto& each : left) {
        if (each.place == place) found.push_back(each.file);
    }
    return found;
}

void ServerTraits::triedToRemove(const Leftover& tried, bool removed) {
    constexpr int enough = 3;
    const std::lock_guard guard(lock);
    std::erase_if(left, [&](Left& each) { return each.file == tried && (removed || ++each.tries == enough); });
}

} // namespace zembrastel
