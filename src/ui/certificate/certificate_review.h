// Fetches the certificate of a saved profile's server, without a login, and lets the user decide on its key.
//
// Main thread. One review at a time; a new one cancels the previous one. The destructor waits for the thread, which
// takes no longer than ending the connection.
#pragma once

#include "app/context/background_tasks.h"
#include "transport/certificate/certificate_inspection.h"
#include "transport/transfer_control.h"
#include "ui/bridge/model_bridge.h"

#include <QPointer>
#include <QWidget>

#include <memory>
#include <variant>

namespace zembrastel::ui {

class CertificateReview {
public:
    CertificateReview(ModelBridge& modelBridge, MainContext& mainContext)
        : bridge(modelBridge), context(mainContext), tasks(mainContext) {}
    CertificateReview(const CertificateReview&) = delete;
    CertificateReview& operator=(const CertificateReview&) = delete;
    ~CertificateReview() { cancel(); }

    // Shows the certificate in a sheet over `parent`, or a message if it cannot be fetched or can be verified. If the
    // user trusts the key, the profile is saved with it.
    void start(const Uuid& id, QWidget& parent);

private:
    using Result = std::variant<InspectedCertificate, std::string>; // or why it cannot be fetched

    void cancel();
    void show(const Profile& inspected, const Result& result, QWidget& parent);
    void trust(const Uuid& id, const TrustedKey& key);

    ModelBridge& bridge;
    MainContext& context;
    std::shared_ptr<TransferControl> current; // the only lasting owner; a result without it is dropped
    BackgroundTasks tasks;
};

} // namespace zembrastel::ui
