#include "ui/main_window/details_copy.h"

#include "app/diagnosis/support_details.h"

#include <QClipboard>
#include <QGuiApplication>

#include <utility>

namespace zembrastel::ui {

void copyDetails(ModelBridge& bridge, const Uuid& id, std::function<void()> copied) {
    const auto copy = [&model = bridge.model(), id, copied = std::move(copied)](const std::string& password) {
        const Profile* const profile = model.profile(id);
        if (profile == nullptr) return; // removed meanwhile
        const auto failure = model.checkFailures().find(id);
        QGuiApplication::clipboard()->setText(QString::fromStdString(supportDetails(
            {.program = "zembrastel " ZEMBRASTEL_VERSION,
             .profile = *profile,
             .password = password,
             .status = &model.status(id),
             .failure = failure == model.checkFailures().end() ? std::nullopt : std::optional(failure->second)})));
        copied();
    };
    bridge.model().withPassword(id, copy, [copy](const std::string&) { copy(std::string()); });
}

} // namespace zembrastel::ui
