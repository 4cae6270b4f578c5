// The question about a profile whose server or remote folder was changed: what is in the new place?
//
// Main thread. The user answers by a row and "Save changes"; Up and Down choose, Enter saves, Escape cancels. Show it
// with open().
#pragma once

#include "app/app_model.h"
#include "model/profile.h"

#include <QDialog>
#include <QRadioButton>

#include <cstddef>
#include <functional>

namespace zembrastel::ui {

// A place on a server, as far as needed to distinguish it from the other one: "/www on ftp.example.net".
[[nodiscard]] QString placeText(const Profile& profile, const Profile& other);

class NewPlaceDialog : public QDialog {
    Q_OBJECT

public:
    // `files` are recorded as uploaded to the old place. `answered` receives the answer if the user saves.
    NewPlaceDialog(
        const Profile& before, const Profile& now, std::size_t files, std::function<void(NewPlace)> answered,
        QWidget* parent = nullptr);

private:
    [[nodiscard]] QLayout* makeHead(const QString& explanation);
    [[nodiscard]] QWidget* makeRows(int files);

    NewPlace chosen = NewPlace::unknown;
    QRadioButton* first = nullptr;
};

} // namespace zembrastel::ui
