// The row of the profile editor for the trusted key: shows it, and forgets it when the profile is saved.
//
// Main thread.
#pragma once

#include "model/profile.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/wrap_label.h"

#include <QWidget>

#include <optional>

namespace zembrastel::ui {

class TrustedKeyRow : public QWidget {
    Q_OBJECT

public:
    explicit TrustedKeyRow(std::optional<TrustedKey> key, QWidget* parent = nullptr);

    // The key to save; nullopt if there is none or the user wants it forgotten.
    [[nodiscard]] std::optional<TrustedKey> key() const { return forgotten ? std::nullopt : trusted; }
    void setKey(const TrustedKey& key);

    // Hides the row if there is no key for the server of this draft.
    void fitTo(const Profile& draft);

Q_SIGNALS:
    // The user pressed "Forget" or "Undo".
    void edited();

private:
    void toggle();
    void show();

    std::optional<TrustedKey> trusted;
    bool forgotten = false;
    QLabel* heading;
    WrapLabel* text;
    PushButton* button;
};

} // namespace zembrastel::ui
