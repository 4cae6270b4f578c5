#include "transport/curl/curl_configuration.h"

#include "model/error.h"
#include "platform/text.h"
#include "transport/curl/remote_url.h"

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

} // namespace

std::string curlConfiguration(
    const Profile& profile, std::string_view password, std::string_view path, bool directory,
    const std::vector<TransferOption>& options) {
    requireOneLine(password, "FTP passwords cannot contain line breaks or null characters.");
    // A saved profile that somebody edited by hand has passed no check of these yet.
    requireOneLine(profile.username, "The FTP username cannot contain a colon or a line break.");
    requireOneLine(profile.remoteFolder, "Enter a remote folder without . or .. path components.");
    std::string text;
    append(text, baseOptions(profile, password, path, directory));
    append(text, options);
    return text;
}

} // namespace zembrastel
