// FileZilla's sitemanager.xml: <FileZilla3><Servers> with <Server> elements, in <Folder> elements or not.
#include "model/error.h"
#include "model/import/profile_import.h"
#include "platform/text.h"

#include <charconv>
#include <cstdint>
#include <pugixml.hpp>

namespace zembrastel {
namespace {

// FileZilla's protocol numbers.
enum class SiteProtocol { encryptedWherePossible = 0, sftp = 1, implicitTLS = 3, explicitTLS = 4, plain = 6 };

constexpr int anonymousLogon = 0;

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    text = trimmed(text);
    Number number{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string textOf(const pugi::xml_node& element, const char* name) {
    std::string text = element.child_value(name);
    if (!isValidUtf8(text)) throw SyncError("<" + std::string(name) + "> is not valid UTF-8");
    return text;
}

// The first `length` characters as FileZilla counts them: code points, or UTF-16 units.
std::size_t bytesOf(std::string_view text, std::size_t length, bool inUnits) {
    constexpr unsigned char firstOfFour = 0xF0;
    constexpr unsigned char topBits = 0xC0;
    constexpr unsigned char continuation = 0x80;
    std::size_t at = 0;
    while (at < text.size() && length > 0) {
        const bool isPair = inUnits && static_cast<unsigned char>(text[at]) >= firstOfFour;
        length -= std::min<std::size_t>(length, isPair ? 2 : 1);
        do ++at;
        while (at < text.size() && (static_cast<unsigned char>(text[at]) & topBits) == continuation);
    }
    return at;
}

// "1 0 11 public_html 3 www" as "/public_html/www": the kind of server, the length of a prefix, then each component
// behind its length.
std::optional<std::string> remoteFolderIn(std::string_view text, bool inUnits) {
    const auto number = [&text]() -> std::optional<std::size_t> {
        const auto word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        return numberIn<std::size_t>(word);
    };
    const auto kind = number();
    const auto prefixLength = number();
    if (!kind || *kind > 1 || prefixLength != std::size_t{0}) return std::nullopt; // not a Unix path
    std::string folder;
    while (!text.empty()) {
        const auto length = number();
        if (!length || *length == 0) return std::nullopt;
        const auto size = bytesOf(text, *length, inUnits);
        const auto component = text.substr(0, size);
        if (component.find('/') != std::string_view::npos) return std::nullopt;
        text.remove_prefix(size);
        if (!text.empty() && text.front() != ' ') return std::nullopt;
        text.remove_prefix(text.empty() ? 0 : 1);
        folder += '/';
        folder += component;
    }
    return folder.empty() ? "/" : folder;
}

// Older versions have the name as the text of the element itself.
std::string nameOf(const pugi::xml_node& site) {
    for (const auto& name : {textOf(site, "Name"), std::string(site.text().get()), textOf(site, "Host")}) {
        if (!trimmed(name).empty() && isValidUtf8(name)) return std::string(trimmed(name));
    }
    return "Site without a name";
}

void readPassword(const pugi::xml_node& site, ProfileCandidate& candidate) {
    const auto element = site.child("Pass");
    if (!element) return;
    const std::string_view encoding = element.attribute("encoding").value();
    const std::string_view stored = element.child_value();
    std::optional<std::string> password;
    if (encoding == "base64") password = decodedBase64(stored);
    if (encoding.empty()) password = std::string(stored);
    if (password && password->empty()) return;
    const bool usable = password && isValidUtf8(*password) && !containsLineBreak(*password)
                        && password->find('\0') == std::string::npos;
    if (usable) {
        candidate.password = std::move(password);
    } else {
        candidate.notes.emplace_back(
            encoding == "crypt" ? "Its password is locked by FileZilla's master password and was not taken over."
                                : "Its password cannot be read and was not taken over.");
    }
}

void readFolders(const pugi::xml_node& site, ProfileCandidate& candidate) {
    const std::string remote = textOf(site, "RemoteDir");
    auto folder = remoteFolderIn(remote, false);
    if (!folder) folder = remoteFolderIn(remote, true);
    if (!folder) {
        candidate.notes.emplace_back(
            remote.empty() ? "The site names no remote folder; " + std::string(rootTakenNote)
                           : "The site's remote folder cannot be read; " + std::string(rootTakenNote));
    }
    candidate.profile.remoteFolder = folder.value_or("/");
    const std::string local = textOf(site, "LocalDir");
    if (local.starts_with('/')) {
        candidate.profile.localFolder = local;
    } else if (!local.empty()) {
        candidate.notes.push_back("The local folder " + printable(local) + " is one of another system.");
    }
}

void readTransport(SiteProtocol protocol, ProfileCandidate& candidate) {
    auto& transport = candidate.profile.transport;
    transport = TransferProtocol::ftps;
    if (protocol == SiteProtocol::implicitTLS) transport = TransferProtocol::implicitTLS;
    if (protocol == SiteProtocol::plain) transport = TransferProtocol::ftp;
    if (protocol == SiteProtocol::encryptedWherePossible) {
        candidate.notes.emplace_back("FileZilla encrypts where the server can; here the server has to.");
    }
}

// Why a site with this protocol is skipped; empty if it is supported.
std::string refusal(std::optional<int> protocol) {
    if (!protocol) return "Its protocol cannot be read.";
    switch (static_cast<SiteProtocol>(*protocol)) {
    case SiteProtocol::encryptedWherePossible:
    case SiteProtocol::implicitTLS:
    case SiteProtocol::explicitTLS:
    case SiteProtocol::plain:
        return "";
    case SiteProtocol::sftp:
        return "It uses SFTP; only FTP and FTPS are supported.";
    }
    return "It uses neither FTP nor FTPS.";
}

void addSite(const pugi::xml_node& site, ProfilesFound& found) {
    ProfileCandidate candidate;
    Profile& profile = candidate.profile;
    profile.name = nameOf(site);
    profile.host = trimmed(textOf(site, "Host"));
    const auto given = textOf(site, "Protocol");
    const auto protocol = given.empty() ? 0 : numberIn<int>(given);
    if (const auto reason = refusal(protocol); !reason.empty()) {
        found.skipped.push_back({.name = profile.name, .reason = reason});
        return;
    }
    readTransport(static_cast<SiteProtocol>(*protocol), candidate);
    const auto port = textOf(site, "Port");
    profile.port = port.empty() ? defaultPort(profile.transport) : numberIn<std::int64_t>(port).value_or(0);
    profile.username = numberIn<int>(textOf(site, "Logontype")) == anonymousLogon ? "anonymous" : textOf(site, "User");
    readFolders(site, candidate);
    readPassword(site, candidate);
    found.candidates.push_back(std::move(candidate));
}

} // namespace

ProfilesFound profilesFromSiteManager(std::string_view xml) {
    pugi::xml_document document;
    // Reads no document type, and so no entities but the five of XML itself.
    const auto result = document.load_buffer(xml.data(), xml.size(), pugi::parse_default, pugi::encoding_auto);
    if (!result) {
        throw SyncError(
            "byte " + std::to_string(result.offset) + " is not valid XML: " + std::string(result.description()));
    }
    const auto sites = document.child("FileZilla3").child("Servers");
    if (!sites) throw SyncError("it is not a site manager file of FileZilla");
    ProfilesFound found;
    // Without recursion, however deep the folders are nested.
    for (auto node = sites.first_child(); node;) {
        if (std::string_view(node.name()) == "Server") {
            addSite(node, found);
        } else if (std::string_view(node.name()) == "Folder" && node.first_child()) {
            node = node.first_child();
            continue;
        }
        while (node != sites && !node.next_sibling()) node = node.parent();
        node = node == sites ? pugi::xml_node() : node.next_sibling();
    }
    return found;
}

} // namespace zembrastel
