#include "app/context/background_tasks.h"

#include <system_error>

namespace zembrastel {

std::stop_source BackgroundTasks::start(Body body) {
    const auto place = threads.emplace(threads.end());
    const auto reap = lifetime.guard([this, place] { threads.erase(place); }); // joins
    try {
        *place = std::jthread([&main = context, body = std::move(body), reap](const std::stop_token& stop) {
            body(stop);
            main.post(reap);
        });
    } catch (const std::system_error&) {
        threads.erase(place);
        throw;
    }
    return place->get_stop_source();
}

void BackgroundTasks::stopAll() {
    for (auto& thread : threads) thread.request_stop();
    lifetime.renew();
    threads.clear();
}

} // namespace zembrastel
