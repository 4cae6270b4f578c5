#include "transport/server_traits.h"

#include "transport/curl/curl_configuration.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

std::string placeOf(const Profile& profile) { return profile.username + '@' + url(profile, "", true); }

} // namespace

ServerTraits::ServerTraits(TemporaryJournal used) : journal(std::move(used)) {
    for (auto& entry : journal->read()) addLeft(std::move(entry));
}

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

void ServerTraits::learnFromFailedMLSD(FtpReply reply) {
    if (!isUnknownCommand(reply)) return;
    const std::lock_guard guard(lock);
    mlsd = false;
    // MLST and MLSD belong to one standard.
    if (listsSingly == Support::untried) listsSingly = Support::missing;
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

ServerTraits::Support ServerTraits::mlst() const {
    const std::lock_guard guard(lock);
    return listsSingly;
}

void ServerTraits::learnMlst(Support learnt) {
    const std::lock_guard guard(lock);
    listsSingly = learnt;
}

ServerTraits::Support ServerTraits::statusListing() const {
    const std::lock_guard guard(lock);
    return listsAsStatus;
}

void ServerTraits::learnStatusListing(Support learnt) {
    const std::lock_guard guard(lock);
    listsAsStatus = learnt;
}

std::optional<std::chrono::nanoseconds> ServerTraits::replyTime() const {
    const std::lock_guard guard(lock);
    return commandTook ? commandTook : commandTookLess;
}

// A line that became slow counts at once, one that became fast little by little, unless many commands show it.
void ServerTraits::learnReplyTime(std::chrono::nanoseconds measured, std::size_t commands) {
    constexpr std::size_t many = 16;
    const std::lock_guard guard(lock);
    const bool little = commandTook && measured < *commandTook && commands < many;
    commandTook = little ? (3 * *commandTook + measured) / 4 : measured;
}

void ServerTraits::repliesWithin(std::chrono::nanoseconds bound) {
    const std::lock_guard guard(lock);
    commandTookLess = std::min(bound, commandTookLess.value_or(bound));
}

std::optional<std::chrono::nanoseconds> ServerTraits::listingTime() const {
    const std::lock_guard guard(lock);
    return listingTook;
}

void ServerTraits::learnListingTime(std::chrono::nanoseconds measured) {
    const std::lock_guard guard(lock);
    listingTook = measured;
}

bool ServerTraits::appends() const {
    const std::lock_guard guard(lock);
    return appendsFiles;
}

void ServerTraits::refusedToAppend() {
    const std::lock_guard guard(lock);
    appendsFiles = false;
}

bool ServerTraits::changesModes() const {
    const std::lock_guard guard(lock);
    return modes;
}

void ServerTraits::refusedToChangeModes() {
    const std::lock_guard guard(lock);
    modes = false;
}

void ServerTraits::announce(const Profile& profile, const std::vector<Leftover>& files) {
    const std::string place = placeOf(profile);
    std::vector<TemporaryJournal::Entry> entries;
    for (const auto& file : files) entries.push_back({.place = place, .file = file});
    const std::lock_guard guard(lock);
    sent.insert(sent.end(), entries.begin(), entries.end());
    if (journal) journal->add(entries);
}

void ServerTraits::isGone(const Profile& profile, const Leftover& file) {
    const TemporaryJournal::Entry entry{.place = placeOf(profile), .file = file};
    const std::lock_guard guard(lock);
    std::erase(sent, entry);
    if (sent.empty()) writeJournal();
}

void ServerTraits::leave(const Profile& profile, Leftover file) {
    TemporaryJournal::Entry entry{.place = placeOf(profile), .file = std::move(file)};
    const std::lock_guard guard(lock);
    std::erase(sent, entry);
    addLeft(std::move(entry));
}

std::vector<ServerTraits::Leftover> ServerTraits::leftovers(const Profile& profile) const {
    const std::string place = placeOf(profile);
    const std::lock_guard guard(lock);
    std::vector<Leftover> found;
    for (const auto& [entry, tries] : left) {
        if (entry.place == place) found.push_back(entry.file);
    }
    return found;
}

void ServerTraits::triedToRemove(const Leftover& tried, bool removed) {
    constexpr int enough = 3;
    const std::lock_guard guard(lock);
    std::erase_if(left, [&](Left& each) { return each.entry.file == tried && (removed || ++each.tries == enough); });
    if (sent.empty()) writeJournal();
}

void ServerTraits::keep(const Profile& profile, const std::string& path, Beginning beginning) {
    const std::lock_guard guard(lock);
    kept.push_back({.place = placeOf(profile), .path = path, .beginning = std::move(beginning)});
}

std::optional<ServerTraits::Beginning> ServerTraits::continues(
    const Profile& profile, const std::string& path, const Fingerprint& version) {
    const std::string place = placeOf(profile);
    const std::lock_guard guard(lock);
    const auto found =
        std::ranges::find_if(kept, [&](const Kept& each) { return each.place == place && each.path == path; });
    if (found == kept.end()) return std::nullopt;
    Beginning beginning = std::move(found->beginning);
    kept.erase(found);
    if (beginning.version == version) return beginning;
    TemporaryJournal::Entry entry{.place = place, .file = std::move(beginning.file)};
    std::erase(sent, entry);
    addLeft(std::move(entry));
    return std::nullopt;
}

void ServerTraits::addLeft(TemporaryJournal::Entry entry) {
    constexpr std::size_t maxLeft = 1000; // for a server that is never reached again
    if (left.size() == maxLeft) left.erase(left.begin());
    left.push_back({.entry = std::move(entry)});
}

void ServerTraits::writeJournal() {
    if (!journal) return;
    std::vector<TemporaryJournal::Entry> entries = sent;
    for (const auto& each : left) entries.push_back(each.entry);
    journal->replace(entries);
}

} // namespace zembrastel
