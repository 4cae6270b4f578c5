#include "ui/profile_editor/connection_check.h"

#include "model/error.h"
#include "transport/ftp_transport.h"

#include <optional>
#include <utility>

namespace zembrastel::ui {
namespace {

// nullopt if it cannot be fetched.
std::optional<InspectedCertificate> certificateOf(const FTPTransport& transport) {
    try {
        return inspectCertificate(transport.profile, *transport.control, systemClock());
    } catch (const SyncError&) {
        return std::nullopt; // the failure of the check itself is reported
    }
}

// nullopt if the check was cancelled.
std::optional<ConnectionCheck::Result> runCheck(const FTPTransport& transport) {
    try {
        try {
            return ConnectionCheck::Result{.items = transport.test(), .failure = {}};
        } catch (const TransferError& error) {
            ConnectionCheck::Result result{.items = 0, .failure = describe(error)};
            if (isOfCertificate(error.code)) result.certificate = certificateOf(transport);
            return result;
        }
    } catch (const Cancelled&) {
        return std::nullopt;
    } catch (const std::exception& error) {
        return ConnectionCheck::Result{.items = 0, .failure = describe(error)};
    }
}

} // namespace

void ConnectionCheck::start(const Profile& profile, const std::string& password, std::function<void(Result)> done) {
    cancel();
    current = std::make_shared<Running>(Running{std::make_shared<TransferControl>()});
    const auto deliver = [this, weak = std::weak_ptr(current), done = std::move(done)](const Result& result) {
        if (weak.expired()) return;
        current.reset();
        done(result);
    };
    const FTPTransport transport{.profile = profile, .password = password, .control = current->control};
    (void)tasks.start([&main = context, transport, deliver](const std::stop_token&) {
        if (const auto result = runCheck(transport)) main.post([deliver, result = *result] { deliver(result); });
    });
}

void ConnectionCheck::cancel() {
    if (!current) return;
    current->control->cancel();
    current.reset();
}

} // namespace zembrastel::ui
