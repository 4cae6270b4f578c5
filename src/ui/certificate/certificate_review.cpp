#include "ui/certificate/certificate_review.h"

#include "model/error.h"
#include "ui/certificate/certificate_sheet.h"
#include "ui/theme/qt_text.h"
#include "ui/widgets/confirm_dialog.h"

#include <optional>

namespace zembrastel::ui {

namespace {

// When the server was first refused for its key, as far as the log shows it.
std::optional<std::chrono::system_clock::time_point> firstRefusal(const ProfileStatus& status) {
    std::optional<std::chrono::system_clock::time_point> first;
    for (const auto& line : status.activity) {
        if (line.failure && line.failure->code == CurlCode::wrongKey) first = line.date; // the newest line is first
    }
    return first;
}

} // namespace

void CertificateReview::start(const Uuid& id, QWidget& parent) {
    const Profile* const saved = bridge.model().profile(id);
    if (saved == nullptr) return; // removed meanwhile
    cancel();
    current = std::make_shared<TransferControl>();
    const auto deliver = [this, weak = std::weak_ptr(current), profile = *saved,
                          over = QPointer(&parent)](const Result& result) {
        if (const auto control = weak.lock(); !control || control != current || !over) return;
        current.reset();
        show(profile, result, *over);
    };
    (void)tasks.start([&main = context, profile = *saved, control = current, deliver](const std::stop_token&) mutable {
        std::optional<Result> result;
        try {
            result = inspectCertificate(profile, *control, systemClock());
        } catch (const Cancelled&) {
            return;
        } catch (const std::exception& error) {
            result = describe(error);
        }
        main.post([deliver, result = *std::move(result)] { deliver(result); });
    });
}

void CertificateReview::cancel() {
    if (current) current->cancel();
    current.reset();
}

void CertificateReview::show(const Profile& inspected, const Result& result, QWidget& parent) {
    const Profile* const now = bridge.model().profile(inspected.id);
    if (now == nullptr || now->host != inspected.host || now->port != inspected.port) return;
    const QString host = onOneLine(toQString(now->host));
    const QString title = CertificateSheet::tr("Certificate of %1").arg(host);
    if (const auto* const failure = std::get_if<std::string>(&result)) {
        ConfirmDialog::showMessage(&parent, title, toQString(*failure));
        return;
    }
    const auto& seen = std::get<InspectedCertificate>(result);
    const auto* const trusted = now->keyInForce();
    if (trusted == nullptr ? seen.faults.empty() : trusted->key == seen.certificate.key) {
        ConfirmDialog::showMessage(
            &parent, title, CertificateSheet::tr("The server can be verified now. The server check is repeated."),
            [&model = bridge.model()] { model.retryNow(); });
        return;
    }
    auto* const sheet = new CertificateSheet(
        *now, seen, {.firstSeen = firstRefusal(bridge.model().status(now->id))},
        [this, id = now->id](const TrustedKey& key) { trust(id, key); }, &parent);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void CertificateReview::trust(const Uuid& id, const TrustedKey& key) {
    const Profile* const saved = bridge.model().profile(id);
    if (saved == nullptr) return;
    Profile changed = *saved;
    changed.trustedKey = key;
    try {
        bridge.model().save(changed, std::nullopt);
    } catch (const std::exception& error) {
        bridge.model().setAlert(describe(error));
    }
}

} // namespace zembrastel::ui
