#include "cli/session/profile_fields.h"

#include "cli/text/option_texts.h"

namespace zembrastel::cli {

std::vector<CLI::Option*> addProfileFields(CLI::App& command, ProfileOptions& options) {
    std::vector<CLI::Option*> fields;
    const auto field = [&](const char* name, auto& target, const char* type, const char* description) {
        auto* option = command.add_option(name, target, description)->type_name(type);
        fields.push_back(option);
        return option;
    };
    const auto list = [&](const char* name, std::vector<std::string>& target, const char* type, const char* text) {
        takeOneEach(*field(name, target, type, text));
    };
    const auto flag = [&](const char* name, bool& target, const char* description) {
        fields.push_back(command.add_flag(name, target, description));
    };
    field("--name", options.name, "NAME", "What to call the profile");
    field("--host", options.host, "HOST", "The FTP server: a host name or IPv4 address");
    field("--port", options.port, "PORT", "Its port, when not the usual one: 21, or 990 for implicit")
        ->check(portNumber());
    field(
        "--transport", options.transport, "KIND",
        "ftps (encrypted, the default), ftp (not encrypted)\nor implicit (FTPS of the old kind)")
        ->check(notEmpty());
    field("--username", options.username, "USER", "The FTP user name");
    field(
        "--remote-folder", options.remoteFolder, "PATH",
        "The site's folder on the server (default /public_html).\nWithout a leading \"/\" it starts in the login "
        "folder")
        ->check(notEmpty("must not be empty; / is the top of the server"));
    field("--local-folder", options.localFolder, "PATH", "The folder here that is to be published");
    list(
        "--exclude", options.exclude, "RULE",
        "Leave out what the rule matches, such as *.psd, besides the\nusual rules (repeatable)");
    field("--exclusions", options.exclusions, "TEXT", "All exclusion rules, one a line, in place of the usual ones");
    flag("--enabled", options.enabled, "Have watch, when it is given no name, watch this profile too");
    list("--sync", options.sync, "PATH", "Sync this file or folder and no others (repeatable)");
    list("--no-sync", options.noSync, "PATH", "Do not sync this file or folder (repeatable)");
    flag("--needs-download", options.needsDownload, "Download from the server before anything is uploaded");
    list("--download", options.download, "PATH", "Download this file or folder then; / is all (repeatable)");
    list("--no-download", options.noDownload, "PATH", "Do not download this file or folder (repeatable)");
    return fields;
}

} // namespace zembrastel::cli
