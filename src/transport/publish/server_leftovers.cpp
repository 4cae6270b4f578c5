#include "transport/publish/server_leftovers.h"

#include "transport/curl/dialogue.h"
#include "transport/ftp_transport.h"
#include "transport/publish/server_answers.h"

#include <map>
#include <vector>

namespace zembrastel {

void addRemovals(Dialogue& dialogue, const FTPTransport& transport) {
    std::map<std::string, std::vector<ServerTraits::Leftover>> folders;
    for (auto& left : transport.traits->leftovers(transport.profile)) folders[left.folder].push_back(left);
    for (const auto& [folder, files] : folders) {
        std::vector<std::string> commands;
        for (const auto& file : files) commands.push_back("DELE " + file.name);
        dialogue.add(
            commandsIn(folder, commands), [traits = transport.traits, tried = files](const BlockOutcome& outcome) {
                const Replies replies(outcome, tried.size());
                for (std::size_t i = 0; i < tried.size(); ++i) {
                    traits->triedToRemove(tried[i], bool(replies.after("250", i)));
                }
            });
    }
}

void removeLeftovers(const FTPTransport& transport) {
    Dialogue dialogue(transport, transport.traits->login());
    addRemovals(dialogue, transport);
    dialogue.hold({}, {});
}

} // namespace zembrastel
