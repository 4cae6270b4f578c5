// The keyring as the desktop program uses it: a failure also tells what the user can do about it.
//
// The functions block for as long as the keyring does, and throw SyncError. Any thread.
#pragma once

#include "app/app_model.h"

namespace zembrastel::ui {

[[nodiscard]] AppModel::PasswordAccess keyringAccess();

} // namespace zembrastel::ui
