// The sftp.json of a VS Code workspace: one connection or a list of them, each perhaps with variants under "profiles".
#include "model/error.h"
#include "model/import/profile_import.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

namespace zembrastel {
namespace {

using Json = rapidjson::Value;

// Accepts hand-written JSON with comments. Numbers stay text, and no nesting overflows the stack.
constexpr unsigned parseFlags = rapidjson::kParseCommentsFlag | rapidjson::kParseTrailingCommasFlag
                                | rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseIterativeFlag;

std::string_view textOf(const Json& value) { return {value.GetString(), value.GetStringLength()}; }

const Json* member(const Json& object, const char* key) {
    const auto found = object.FindMember(key);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

// A connection, and the variant whose values replace its own.
struct Connection {
    const Json& base;
    const Json* variant = nullptr;

    // A null in the variant removes the base's value.
    [[nodiscard]] const Json* value(const char* key) const {
        const Json* own = variant == nullptr ? nullptr : member(*variant, key);
        const Json* given = own == nullptr ? member(base, key) : own;
        return given == nullptr || given->IsNull() ? nullptr : given;
    }

    [[nodiscard]] std::string text(const char* key) const {
        const Json* found = value(key);
        if (found == nullptr || !found->IsString()) return "";
        if (!isValidUtf8(textOf(*found))) throw SyncError('"' + std::string(key) + "\" is not valid Unicode");
        return std::string(textOf(*found));
    }
};

std::string withoutDots(std::string_view path) {
    auto components = splitNonEmpty(path, '/');
    std::erase(components, ".");
    return (path.starts_with('/') ? "/" : "") + join(components, '/');
}

// A rule that excludes what a Git ignore pattern excludes, or more; nullopt if no rule can.
std::optional<std::string> ruleFor(std::string_view pattern) {
    constexpr std::string_view anyDepth = "**/";
    constexpr std::string_view contents = "/**";
    if (pattern.starts_with('!') || containsLineBreak(pattern)) return std::nullopt;
    const bool atAnyDepth = pattern.starts_with(anyDepth);
    if (atAnyDepth) pattern.remove_prefix(anyDepth.size());
    const bool withContents = pattern.ends_with(contents);
    if (withContents) pattern.remove_suffix(contents.size());
    pattern = pattern.substr(0, pattern.find_last_not_of('/') + 1);
    // A name that Git ignores only at the top is excluded at every depth: rules cannot be narrower.
    if (pattern.starts_with('/')) pattern.remove_prefix(1);
    const bool isName = pattern.find('/') == std::string_view::npos;
    if (pattern.empty() || pattern.find("**") != std::string_view::npos) return std::nullopt;
    if (atAnyDepth && !isName) return std::nullopt;
    return std::string(pattern);
}

void readIgnored(const Connection& connection, ProfileCandidate& candidate) {
    // It may contain the password, and belongs to no web site.
    std::string rules = candidate.profile.exclusions.text() + "\n.vscode";
    const Json* list = connection.value("ignore");
    if (list != nullptr && list->IsArray()) {
        for (const auto& entry : list->GetArray()) {
            const std::string pattern(entry.IsString() ? trimmed(textOf(entry)) : "");
            if (pattern.empty()) continue;
            const auto rule = isValidUtf8(pattern) ? ruleFor(pattern) : std::nullopt;
            if (rule) {
                rules += '\n' + *rule;
            } else {
                candidate.notes.push_back("What \"ignore\" says was not taken over: " + printable(pattern));
            }
        }
    }
    candidate.profile.exclusions = Exclusions(rules);
    if (connection.value("ignoreFile") != nullptr) {
        candidate.notes.emplace_back("The rules of its \"ignoreFile\" were not taken over.");
    }
}

void readFolders(const Connection& connection, const std::filesystem::path& file, ProfileCandidate& candidate) {
    const std::string remote = withoutDots(connection.text("remotePath"));
    candidate.profile.remoteFolder = remote.empty() ? "/" : remote;
    if (remote.empty()) candidate.notes.emplace_back("It names no remote folder; " + std::string(rootTakenNote));
    const auto around = std::filesystem::absolute(file).parent_path();
    if (around.filename() == ".vscode") {
        auto folder = (around.parent_path() / connection.text("context")).lexically_normal();
        if (!folder.has_filename()) folder = folder.parent_path(); // its trailing slash
        candidate.profile.localFolder = folder.string();
    }
}

TransferProtocol transportOf(const Connection& connection) {
    const Json* secure = connection.value("secure");
    if (secure == nullptr || secure->IsFalse()) return TransferProtocol::ftp;
    return connection.text("secure") == "implicit" ? TransferProtocol::implicitTLS : TransferProtocol::ftps;
}

std::int64_t portOf(const Connection& connection, TransferProtocol transport) {
    if (connection.value("port") == nullptr) return defaultPort(transport);
    const std::string text = connection.text("port");
    std::int64_t port = 0; // invalid in a profile
    const auto end = std::from_chars(text.data(), text.data() + text.size(), port).ptr;
    return end == text.data() + text.size() ? port : 0;
}

void addConnection(
    const Connection& connection, const std::string& suffix, const std::filesystem::path& file, ProfilesFound& found) {
    ProfileCandidate candidate;
    Profile& profile = candidate.profile;
    profile.host = trimmed(connection.text("host"));
    profile.name = trimmed(connection.text("name"));
    if (profile.name.empty()) profile.name = profile.host.empty() ? "Connection without a name" : profile.host;
    profile.name += suffix;
    const auto skip = [&](const char* reason) { found.skipped.push_back({.name = profile.name, .reason = reason}); };
    if (connection.text("protocol") != "ftp") return skip("It uses SFTP; only FTP and FTPS are supported.");
    if (profile.host.empty()) return skip("It names no server.");
    profile.transport = transportOf(connection);
    profile.port = portOf(connection, profile.transport);
    profile.username = connection.text("username");
    readFolders(connection, file, candidate);
    readIgnored(connection, candidate);
    if (profile.transport == TransferProtocol::ftp) {
        candidate.notes.emplace_back("It is not encrypted; choose FTPS if the server can.");
    }
    auto password = connection.text("password");
    const bool usable = !containsLineBreak(password) && password.find('\0') == std::string::npos;
    if (!usable) candidate.notes.emplace_back("Its password cannot be used and was not taken over.");
    if (usable && !password.empty()) candidate.password = std::move(password);
    found.candidates.push_back(std::move(candidate));
}

void addConnections(const Json& object, const std::filesystem::path& file, ProfilesFound& found) {
    const Json* variants = member(object, "profiles");
    if (variants == nullptr || !variants->IsObject() || variants->ObjectEmpty()) {
        addConnection({.base = object}, "", file, found);
        return;
    }
    for (const auto& [name, variant] : variants->GetObject()) {
        if (!isValidUtf8(textOf(name))) throw SyncError("a name under \"profiles\" is not valid Unicode");
        if (!variant.IsObject()) continue;
        addConnection({.base = object, .variant = &variant}, " (" + std::string(textOf(name)) + ')', file, found);
    }
}

} // namespace

ProfilesFound profilesFromWorkspace(std::string_view json, const std::filesystem::path& file) {
    if (!isValidUtf8(json)) throw SyncError("it is not valid UTF-8");
    rapidjson::Document document;
    document.Parse<parseFlags>(json.data(), json.size());
    if (document.HasParseError()) {
        std::string_view reason = rapidjson::GetParseError_En(document.GetParseError());
        reason.remove_suffix(1); // its full stop
        throw SyncError(
            "byte " + std::to_string(document.GetErrorOffset()) + " is not valid JSON: " + std::string(reason));
    }
    ProfilesFound found;
    if (document.IsObject()) {
        addConnections(document, file, found);
    } else if (document.IsArray()) {
        for (const auto& element : document.GetArray()) {
            if (element.IsObject()) addConnections(element, file, found);
        }
    } else {
        throw SyncError("it holds no connections");
    }
    return found;
}

} // namespace zembrastel
