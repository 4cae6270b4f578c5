// The keyring for the desktop program: its errors also say what the user can do.
//
// The functions block as long as the keyring does, and throw SyncError. Any thread.
#pragma once

#include "app/app_model.h"

namespace zembrastel::ui {

[[nodiscard]] AppModel::PasswordAccess keyringAccess();

} // namespace zembrastel::ui
