#include "transport/curl/curl_configuration.h"

#include "model/error.h"
#include "platform/text.h"

#include <algorithm>

namespace zembrastel {
namespace {

// A line break ends a command to the server; what follows would be a command of its own.
void requireOneLine(std::string_view text, const char* refusal) {
    if (containsLineBreak(text) || text.find('\0') != std::string_view::npos) throw SyncError(refusal);
}

std::vector<TransferOption> baseOptions(
    const Profile& profile, std::string_view password, std::string_view path, bool directory) {
    std::vector<TransferOption> options{
        {"silent"},
        {"show-error"},
        {"globoff"},
        {"connect-timeout", "15"},
        {"max-time", "600"},
        {"speed-time", "30"},
        {"speed-limit", "1"},
        {"ftp-pasv"},
        {"proxy", ""},
        {"proto", "=ftp,ftps"},
        {"user", (profile.username + ':').append(password)},
        {"url", url(profile, path, directory)},
        {"quote", "*OPTS UTF8 ON"},
    };
    if (profile.transport != TransferProtocol::ftp) options.push_back({"ssl-reqd"});
    if (const auto* trusted = profile.keyInForce()) {
        // Without verification of the certificate, but with this key alone.
        options.push_back({"insecure"});
        options.push_back({"pinnedpubkey", trusted->key.pin()});
    }
    return options;
}

void append(std::string& text, const std::vector<TransferOption>& options) {
    for (const auto& [key, value] : options) {
        if (key == "quote") requireOneLine(*value, "Invalid filename.");
        text += key;
        if (value) text += " = " + quote(*value);
        text += '\n';
    }
}

std::vector<std::string_view> pathComponents(std::string_view path) {
    if (path.empty()) return {};
    std::vector<std::string_view> components = split(path, '/');
    if (!std::ranges::all_of(components, validName)) throw SyncError("Unsafe file path: " + std::string(path));
    return components;
}

std::string_view scheme(TransferProtocol protocol) {
    return protocol == TransferProtocol::implicitTLS ? "ftps" : "ftp";
}

} // namespace

std::string curlConfiguration(
    const Profile& profile, std::string_view password, std::string_view path, bool directory,
    const std::vector<TransferOption>& options) {
    requireOneLine(password, "FTP passwords cannot contain line breaks or null characters.");
    // A saved profile that was edited by hand has passed no check of these yet.
    requireOneLine(profile.username, "The FTP username cannot contain a colon or a line break.");
    requireOneLine(profile.remoteFolder, "Enter a remote folder without . or .. path components.");
    std::string text;
    append(text, baseOptions(profile, password, path, directory));
    append(text, options);
    return text;
}

bool validName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos
           && name.find('\0') == std::string_view::npos && !containsLineBreak(name);
}

std::string quote(std::string_view value) {
    std::string quoted = "\"";
    for (const char byte : value) {
        switch (byte) {
        case '\0':
            throw SyncError("A setting contains an invalid null character.");
        case '\\':
            quoted += "\\\\";
            break;
        case '"':
            quoted += "\\\"";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\t':
            quoted += "\\t";
            break;
        default:
            quoted += byte;
        }
    }
    return quoted += '"';
}

std::string url(const Profile& profile, std::string_view path, bool directory) {
    std::string components;
    const auto append = [&](std::string_view component) {
        if (!components.empty()) components += '/';
        components += percentEncoded(component);
    };
    const std::vector<std::string_view> below = pathComponents(path);
    for (const std::string_view component : splitNonEmpty(profile.remoteFolder, '/')) append(component);
    for (const std::string_view component : below) append(component);

    std::string text;
    text += scheme(profile.transport);
    text += "://" + profile.host + ':' + std::to_string(profile.port) + '/';
    if (profile.remoteFolder.starts_with('/')) text += '/';
    text += components;
    if (directory && !components.empty()) text += '/';
    return text;
}

} // namespace zembrastel
