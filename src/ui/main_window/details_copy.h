// "Copy details": a profile as whoever helps needs to see it, on the clipboard.
#pragma once

#include "ui/bridge/model_bridge.h"

#include <functional>

namespace zembrastel::ui {

// Main thread. The secret store may have to be asked first for the password, which is then kept out of the text; where
// it gives none, the text is copied all the same: the server's words have lost the password already when they arrive.
// `copied` is called once the text is there. The bridge must outlive the model's answer.
void copyDetails(
    ModelBridge& bridge, const Uuid& id, std::function<void()> copied = [] {});

} // namespace zembrastel::ui
