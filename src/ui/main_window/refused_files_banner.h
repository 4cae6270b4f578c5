// The banner of files that cannot be uploaded while the others are: each with its reason and "Retry".
//
// Main thread.
#pragma once

#include "app/profile_status.h"
#include "model/profile.h"

#include <QFrame>
#include <QVBoxLayout>

#include <string>
#include <vector>

namespace zembrastel::ui {

class WrapLabel;

class RefusedFilesBanner : public QFrame {
    Q_OBJECT

public:
    explicit RefusedFilesBanner(QWidget* parent = nullptr);

    // The files of the status that were refused.
    void setFiles(const ProfileStatus& status, const Profile& profile);

Q_SIGNALS:
    void retryRequested(const QString& path);

private:
    void showRows();
    [[nodiscard]] QWidget* makeRow(const Failure& failure);

    WrapLabel* heading;
    WrapLabel* text;
    QVBoxLayout* rows;
    std::vector<Failure> shown;
    Profile profile;
    bool showsAll = false;
};

} // namespace zembrastel::ui
