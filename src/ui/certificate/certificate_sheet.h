// The sheet that shows a certificate that cannot be verified, or a key other than the trusted one, and asks whether to
// trust the key.
//
// Main thread. Changes nothing itself. 640 points wide and as high as its content. Cancel has the focus, and trusting
// asks once more. Show it with open().
#pragma once

#include "model/profile.h"
#include "transport/certificate/certificate_inspection.h"

#include <QDialog>

#include <chrono>
#include <functional>
#include <optional>

class QVBoxLayout;

namespace zembrastel::ui {

class CertificateSheet : public QDialog {
    Q_OBJECT

public:
    using Trust = std::function<void(const TrustedKey& key)>;

    struct Times {
        std::chrono::system_clock::time_point now = std::chrono::system_clock::now();
        // When the server first showed another key than the trusted one; nullopt for now.
        std::optional<std::chrono::system_clock::time_point> firstSeen = std::nullopt;
    };

    // `inspected` is what the profile's server shows now. Calls `trust` if the user decides to trust its key.
    CertificateSheet(Profile shown, InspectedCertificate inspected, Times times, Trust trust, QWidget* parent);

private:
    [[nodiscard]] QLayout* makeHead();
    [[nodiscard]] QWidget* makeCard();
    [[nodiscard]] QLayout* makeConsequences();
    [[nodiscard]] QWidget* makeFoot();
    void addFacts(QVBoxLayout& rows);
    void addKeys(QVBoxLayout& rows);
    void askToTrust();

    const Profile profile;
    const InspectedCertificate seen;
    const std::chrono::system_clock::time_point now;
    const std::chrono::system_clock::time_point firstSeen;
    const Trust onTrust;
    QPushButton* dismissButton = nullptr;
};

} // namespace zembrastel::ui
