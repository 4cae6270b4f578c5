#include "ui/keyring_access.h"

#include "model/error.h"

#include <QCoreApplication>

namespace zembrastel::ui {
namespace {

struct KeyringAccess {
    Q_DECLARE_TR_FUNCTIONS(KeyringAccess)

public:
    static QString remedyOfReading() {
        return tr("Unlock the desktop's keyring, or install one such as GNOME Keyring or KWallet, and start watching "
                  "again. You can also enter the password again with Edit profile.");
    }
};

SyncError withRemedy(const SyncError& failure, const QString& remedy) {
    return SyncError(failure.what() + (' ' + remedy.toStdString()));
}

std::string read(const Uuid& id) {
    try {
        return PasswordStore::read(id);
    } catch (const SyncError& failure) {
        throw withRemedy(failure, KeyringAccess::remedyOfReading());
    }
}

void remove(const Uuid& id) {
    try {
        PasswordStore::remove(id);
    } catch (const SyncError& failure) {
        throw withRemedy(failure, KeyringAccess::tr("Unlock the desktop's keyring and remove the profile again."));
    }
}

} // namespace

// The editor adds the remedy for a password that cannot be stored.
AppModel::PasswordAccess keyringAccess() { return {.save = PasswordStore::save, .read = read, .remove = remove}; }

} // namespace zembrastel::ui
