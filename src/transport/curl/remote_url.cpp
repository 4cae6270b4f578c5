#include "transport/curl/remote_url.h"

#include "model/error.h"
#include "platform/text.h"

#include <algorithm>

namespace zembrastel {
namespace {

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
