#include "ui/profile_editor/connection_check.h"

#include "model/error.h"
#include "transport/ftp_transport.h"

#include <optional>
#include <utility>

namespace zembrastel::ui {
namespace {

// Adds the certificate to a failure that is about it.
void addCertificate(ConnectionCheck::Result& result, const FTPTransport& transport) {
    if (!result.failure || !isOfCertificate(result.failure->code)) return;
    try {
        result.certificate = inspectCertificate(transport.profile, *transport.control, systemClock());
    } catch (const SyncError&) {
        // The failure of the check itself is reported.
    } catch (const Cancelled&) {
        // The result is dropped.
    }
}

// nullopt if the check was cancelled.
std::optional<ConnectionCheck::Result> runCheck(const FTPTransport& transport, bool creates) {
    try {
        if (creates) transport.createFolder();
        return ConnectionCheck::Result{.items = transport.test(), .failure = {}};
    } catch (const Cancelled&) {
        return std::nullopt;
    } catch (const std::exception& error) {
        ConnectionCheck::Result failed{.items = 0, .failure = failureOf(error)};
        addCertificate(failed, transport);
        return failed;
    }
}

} // namespace

void ConnectionCheck::start(const Profile& profile, const std::string& password, std::function<void(Result)> done) {
    run(profile, password, false, std::move(done));
}

void ConnectionCheck::createFolder(
    const Profile& profile, const std::string& password, std::function<void(Result)> done) {
    run(profile, password, true, std::move(done));
}

void ConnectionCheck::run(
    const Profile& profile, const std::string& password, bool creates, std::function<void(Result)> done) {
    cancel();
    current = std::make_shared<Running>(Running{std::make_shared<TransferControl>()});
    const auto deliver = [this, weak = std::weak_ptr(current), done = std::move(done)](const Result& result) {
        if (weak.expired()) return;
        current.reset();
        done(result);
    };
    const FTPTransport transport{.profile = profile, .password = password, .control = current->control};
    (void)tasks.start([&main = context, transport, creates, deliver](const std::stop_token&) {
        if (const auto result = runCheck(transport, creates))
            main.post([deliver, result = *result] { deliver(result); });
    });
}

void ConnectionCheck::cancel() {
    if (!current) return;
    current->control->cancel();
    current.reset();
}

} // namespace zembrastel::ui
