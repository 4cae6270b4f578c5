#include "transport/download/arrival.h"

#include <exception>
#include <memory>
#include <vector>

namespace zembrastel {

void FTPTransport::replaceLocal(const std::vector<RemoteChange>& changes, const ReplaceEvents& events) const {
    for (std::size_t done = 0; done < changes.size();) {
        std::vector<std::unique_ptr<Arrival>> arrivals;
        std::vector<const RemoteChange*> chosen;
        for (; done < changes.size() && arrivals.size() < maxFetchedTogether; ++done) {
            control->check();
            try {
                arrivals.push_back(std::make_unique<Arrival>(profile.localFolder, changes[done]));
                chosen.push_back(&changes[done]);
            } catch (const ChangedMeanwhile& refusal) {
                events.refused(changes[done], refusal);
            }
        }
        const auto refusing = [&](std::size_t file, const auto& work) {
            try {
                work();
            } catch (const ChangedMeanwhile& refusal) {
                events.refused(*chosen[file], refusal);
            }
        };
        fetchAll(
            *this, arrivals,
            {.begins = [](std::size_t) {},
             .fetched =
                 [&](std::size_t file) {
                     refusing(file, [&] { events.replaced(*chosen[file], arrivals[file]->replace(*this)); });
                 },
             .failed = [&](std::size_t file,
                           const std::exception_ptr& why) { refusing(file, [&] { std::rethrow_exception(why); }); }});
    }
}

Fingerprint FTPTransport::replaceLocal(const RemoteChange& change) const {
    Fingerprint installed;
    replaceLocal(
        {change}, {.replaced = [&](const RemoteChange&, const Fingerprint& fingerprint) { installed = fingerprint; },
                   .refused = [](const RemoteChange&, const ChangedMeanwhile& refusal) { throw refusal; }});
    return installed;
}

} // namespace zembrastel
