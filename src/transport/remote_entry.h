// One item of a folder on the server, as a listing gives it.
#pragma once

#include "model/remote_date.h"

#include <optional>
#include <string>

namespace zembrastel {

struct RemoteEntry {
    std::string name; // one path component that passed validName()
    bool directory = false;
    std::optional<RemoteDate> modified; // nothing when the listing gave no date
    bool localOnly = false;             // true only for what exists in the local folder alone

    friend bool operator==(const RemoteEntry&, const RemoteEntry&) = default;
};

} // namespace zembrastel
